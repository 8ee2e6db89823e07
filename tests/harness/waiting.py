"""For what must happen."""

import time

PATIENCE = 60


def wait_until(condition, what, patience=PATIENCE):
    """Polls until condition() is true and gives its value."""
    deadline = time.monotonic() + patience
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            raise AssertionError(f"waited {patience} s in vain for {what}")
        time.sleep(0.02)
