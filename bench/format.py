"""Runs in a sample host; see format.sh."""

import resource
import subprocess

from harness.command import run
from harness.files import touch
from harness.processes import Holder

ROUNDS = 5
FORMATS = (["--format", "table"], ["--format", "json"], ["--format", "jsonl"], ["--format", "csv"],
           ["--print0", "full_path"], ["--pids"], ["--count-by", "service,user"])


def processor_seconds(arguments):
    """Of one run, system time included."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    run(*arguments, stdout=subprocess.DEVNULL)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return after.ru_utime - before.ru_utime + after.ru_stime - before.ru_stime


def main():
    for number in range(10000):
        touch(b"/volume1/photo/holidays/by the sea %05d.jpg" % number)
    with Holder(folder=b"/volume1/photo/holidays", forks=9):
        least = {}
        for _ in range(ROUNDS):
            for arguments in (["-q"], *FORMATS):
                seconds = processor_seconds(arguments)
                key = tuple(arguments)
                least[key] = min(seconds, least.get(key, seconds))
    found = least.pop(("-q",))
    print(f"finding 100,000 records: {found:.3f} s")
    for arguments, seconds in least.items():
        print(f"{' '.join(arguments):24} {seconds - found:8.3f} s   ratio {(seconds - found) / found:5.2f}")


main()
