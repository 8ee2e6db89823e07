"""Measures busy beside fuser, in the sample host."""

import argparse
import contextlib
import statistics
import subprocess

from process_table import populated
from timing import Contender, interleave, machine, ratios

FUSER = "fuser -m"
PIDS = "busy --pids"


def contenders(binaries, volume):
    """As it is on a host that has the kernel's iterators, and on one that hasn't."""
    asked = ["--inside", volume]
    ways = [("", []), (", by /proc alone", ["--source", "walk"])]
    return [Contender(binaries, FUSER, ["/usr/bin/fuser", "-m", volume])] + [
        Contender(binaries, what + way, [f"{binaries}/vorn-openfiles", *what.split(), *source, *asked])
        for way, source in ways for what in ("busy --pids", "busy", "busy --json", "idle --quiet")]


def measure(binaries, what, volume, rounds):
    found = {}
    for contender in (all_of := contenders(binaries, volume)):
        if contender.name != FUSER and not contender.name.startswith(PIDS):
            continue
        found[contender.name] = set(subprocess.run(contender.argv, capture_output=True, text=True,
                                                   check=False).stdout.split())
    for name, pids in found.items():
        if not found[FUSER] <= pids:
            raise SystemExit(f"{what}: fuser finds {sorted(found[FUSER] - pids)} beside {name}")
    interleave(all_of, rounds)
    lines = []
    for contender in all_of:
        # Of each round, as for the other figures: how many times as fast as fuser.
        times = [1 / ratio for ratio in ratios(contender, all_of[0])]
        lines.append(f"| {what} | {contender.name} | {contender.median() * 1000:.1f} ms "
                     f"| {statistics.median(times):.1f} ({times[-1]:.1f} to {times[0]:.1f}) |")
    return lines


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--binaries", required=True)
    parser.add_argument("--processes", type=int, default=100)
    parser.add_argument("--descriptors", type=int, default=500)
    parser.add_argument("--rounds", type=int, default=9)
    parser.add_argument("--output", required=True)
    options = parser.parse_args()
    lines = [f"{machine()}; {options.processes} processes x {options.descriptors} descriptors, "
             f"{options.rounds} rounds.", "",
             "| what lies on the volume | what | median | times as fast as fuser -m (least to most) |",
             "|---|---|---|---|"]
    for what, outside, volume in (("every descriptor", 0, "/volume1"), ("one of ten", 90, "/volume1"),
                                  ("none, all on another", 0, "/volume2")):
        with contextlib.ExitStack() as stack:
            stack.enter_context(populated(options.binaries, options.processes, options.descriptors, outside))
            lines += measure(options.binaries, what, volume, options.rounds)
    text = "\n".join(lines) + "\n"
    print(text, end="")
    with open(options.output, "w", encoding="utf-8") as file:
        file.write(text)


main()
