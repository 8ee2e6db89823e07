"""Processor share and memory of programs that tell of opens and closes, while files are opened at a steady rate."""

import argparse
import os
import re
import subprocess
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.realpath(__file__)), "..", "tests"))
from harness.journal import Journal  # noqa: E402

FOLDER = "/volume1/photo"
OUTPUT = "/tmp/told"


def opened(rate, seconds, files):
    """Opens and closes files, so many a second; gives how many a second it really were."""
    began, done = time.monotonic(), 0
    while (passed := time.monotonic() - began) < seconds:
        for _ in range(max(0, int(rate * passed) - done)):
            os.close(os.open(f"{FOLDER}/{done % files}", os.O_WRONLY))
            done += 1
        time.sleep(0.001)
    return done / (time.monotonic() - began)


def processor_seconds(pid):
    with open(f"/proc/{pid}/stat", encoding="ascii") as stat:
        fields = stat.read().rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def peak_memory(pid):
    with open(f"/proc/{pid}/status", encoding="ascii") as status:
        return int(re.search(r"VmHWM:\s+(\d+)", status.read()).group(1)) / 1024


def measure(name, argv, options):
    with open(OUTPUT, "wb") as output:
        process = subprocess.Popen(argv, stdout=output, stderr=subprocess.DEVNULL, cwd=FOLDER)
    time.sleep(1)
    before, began = processor_seconds(process.pid), time.monotonic()
    rate = opened(options.rate, options.seconds, options.files)
    time.sleep(0.5)
    share = (processor_seconds(process.pid) - before) / (time.monotonic() - began - 0.5)
    memory = peak_memory(process.pid)
    process.terminate()
    process.wait()
    with open(OUTPUT, "rb") as told:
        lines = sum(1 for _ in told)
    print(f"| {name} | {rate:,.0f} | {lines / options.seconds:,.0f} | {share:.2f} | {memory:.1f} MiB |", flush=True)


def measure_journal(binaries, options):
    """The same for entries of a journal, with what journald takes; these rows have columns of their own."""
    journal = Journal()
    process = subprocess.Popen([f"{binaries}/vorn-openfiles", "events", "--journal", FOLDER], cwd=FOLDER,
                               stderr=subprocess.DEVNULL)
    pids = (process.pid, journal.process.pid)
    time.sleep(1)
    before, began = [processor_seconds(pid) for pid in pids], time.monotonic()
    rate = opened(options.rate, options.seconds, options.files)
    time.sleep(0.5)
    passed = time.monotonic() - began - 0.5
    shares = [(processor_seconds(pid) - old) / passed for pid, old in zip(pids, before)]
    memory = peak_memory(process.pid)
    process.terminate()
    process.wait()
    entries = journal.entries()
    lost = sum(entry["VORN_EVENT"] == [b"lost"] for entry in entries)
    size = sum(os.stat(os.path.join(journal.folder, name)).st_blocks * 512 for name in os.listdir(journal.folder))
    print(f"| {rate:,.0f} | {len(entries) / options.seconds:,.0f} | {lost} | {shares[0]:.2f} | {shares[1]:.2f} | "
          f"{memory:.1f} MiB | {size / len(entries):,.0f} |", flush=True)
    journal.close()


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--binaries", required=True)
    parser.add_argument("--rate", type=int, default=20000)
    parser.add_argument("--seconds", type=int, default=10)
    parser.add_argument("--files", type=int, default=1000)
    parser.add_argument("--journal", action="store_true", help="into a journal, by itself")
    options = parser.parse_args()
    os.makedirs(FOLDER)
    for number in range(options.files):
        with open(f"{FOLDER}/{number}", "wb"):
            pass
    if options.journal:
        print("| opens a second | entries a second | lost | processors | of journald | peak memory | bytes an entry |\n"
              "|---|---|---|---|---|---|---|")
        measure_journal(options.binaries, options)
        return
    print("| what | opens a second | lines a second | processors | peak memory |\n|---|---|---|---|---|")
    measure("vorn-openfiles events", [f"{options.binaries}/vorn-openfiles", "events", FOLDER], options)
    measure("fatrace", ["fatrace", "--current-mount"], options)
    measure("inotifywait", ["inotifywait", "--monitor", "--event", "open,close", FOLDER], options)


main()
