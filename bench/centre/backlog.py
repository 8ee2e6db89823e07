"""How quickly the loader takes what has gathered; backlog.sh runs it."""

import argparse
import os
import sys
import time

TESTS = os.path.join(os.path.dirname(os.path.realpath(__file__)), "..", "..", "tests")
sys.path[:0] = [TESTS, os.path.join(TESTS, "centre")]

from centre_host import JOURNALS, Host, ask, load, set_up_centre  # noqa: E402


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--events", type=int, default=400_000)
    parser.add_argument("--hosts", type=int, default=20)
    options = parser.parse_args()
    set_up_centre(settings=("shared_buffers=128MB",))  # as Debian has it
    written = 0
    for number in range(options.hosts):
        host, held = Host(f"host{number}"), []
        while host.seq < options.events // options.hosts:
            process = {"PID": 1000 + host.seq % 25, "USER": f"user{host.seq % 25}"}
            held.append((f"/volume1/projects/folder{host.seq % 100}/document-{host.seq}.dat", process))
            host.opened(held[-1][0], **process)
            if len(held) > 100:
                path, process = held.pop(0)
                host.closed(path, **process)
        written += host.seq
        host.write()
    size = sum(os.stat(f"{JOURNALS}/{name}").st_size for name in os.listdir(JOURNALS))
    started = time.perf_counter()
    load()
    seconds = time.perf_counter() - started
    stored = ask("select sum(events)::int from vorn.runs")[0][0]
    print(f"{stored} of {written} events of {options.hosts} hosts in {seconds:.1f} s: {stored / seconds:.0f} a second;"
          f" journals {size / written:.0f} bytes an event")


main()
