"""A volume that doesn't answer costs no more than the time limit."""

import os
import subprocess
import time
import unittest

from support import COMMAND, Holder, run, touch

SILENT = {"LD_PRELOAD": os.environ["VORN_SILENT_VOLUME"]}


class Timeout(unittest.TestCase):
    def test_an_answer_in_time_is_the_usual_one(self):
        with Holder([touch(b"/volume1/photo/a.jpg")]):
            limited, usual = run("--json", "--timeout", "60"), run("--json")
            self.assertEqual((limited.returncode, limited.stdout), (0, usual.stdout))
        for arguments in (["/etc"], ["--strict", "/volume2"], ["metrics"]):
            self.assertEqual(run(*arguments, "--timeout", "60").returncode, run(*arguments).returncode)

    def test_the_silent_volume_is_named(self):
        with Holder([touch(b"/volume2/music/a.flac")]):
            for arguments in ([], ["--json"], ["metrics"]):
                begin = time.monotonic()
                result = run(*arguments, "--timeout", "0.5", env=SILENT)
                self.assertLess(time.monotonic() - begin, 20)
                self.assertEqual((result.returncode, result.stdout), (2, b""))
                self.assertEqual(result.stderr, b"vorn-openfiles: no answer within 0.5 s; "
                                                b"volumes that don't answer: /volume2\n")

    def test_volumes_that_answer_are_not_blamed(self):
        with Holder([touch(b"/volume1/photo/a.jpg")]):
            self.assertEqual(run("--timeout", "60", env=SILENT).returncode, 0)

    def test_nobody_waits_for_the_end_of_its_output(self):
        with Holder([touch(b"/volume2/music/a.flac")]):
            result = subprocess.run(["sh", "-c", '"$VORN_OPENFILES" --timeout 0.5 2>&1 | cat'],
                                    env={**os.environ, **SILENT}, capture_output=True, check=False, timeout=20)
        self.assertIn(b"/volume2", result.stdout)

    def test_a_worker_that_may_never_end_holds_no_output(self):
        with Holder([touch(b"/volume2/music/a.flac")]):
            parent = subprocess.Popen([COMMAND, "--timeout", "60"], env={**os.environ, **SILENT},
                                      stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
            deadline = time.monotonic() + 20
            while outputs_of_children(parent.pid) != ["/dev/null"] * 2 * PROCESSES:
                self.assertLess(time.monotonic(), deadline, "an output is still held")
            parent.terminate()
            parent.communicate(timeout=20)


# The worker and the probe of the silent volume; that of the other one has answered and ended.
PROCESSES = 2


def children(pid):
    found = []
    for entry in filter(str.isdigit, os.listdir("/proc")):
        try:
            with open(f"/proc/{entry}/stat", "rb") as stat:
                state, parent = stat.read().rpartition(b")")[2].split()[:2]
        except OSError:
            continue
        if int(parent) == pid and state != b"Z":
            found.append(entry)
    return found


def outputs_of_children(pid):
    try:
        return [os.readlink(f"/proc/{child}/fd/{fd}") for child in children(pid) for fd in (1, 2)]
    except OSError:
        return []  # One has just ended.


if __name__ == "__main__":
    unittest.main()
