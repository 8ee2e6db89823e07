"""Measures each goal of speed and size, a row each. Run by goals.sh in the sample host."""

import argparse
import contextlib
import os
import statistics
import subprocess
import sys

import process_table
import timing

ROWS = ["| what | goal | measured | met |", "|---|---|---|---|"]


class Bench:
    def __init__(self, options):
        self.binaries = options.binaries
        self.project = options.project
        self.rounds = options.rounds
        self.figures = os.path.dirname(options.output)

    def contender(self, name, *argv, prints_seconds=False):
        return timing.Contender(self.binaries, name, argv, prints_seconds)

    def bare_walk(self, *arguments):
        return self.contender("bare walk", f"{self.binaries}/bare_walk", *arguments,
                              prints_seconds=True)

    def library(self, *arguments):
        return self.contender("library call", f"{self.binaries}/library_call", *arguments,
                              prints_seconds=True)

    def command(self):
        return self.contender("command", f"{self.binaries}/vorn-openfiles", "--by", "volume",
                              "--format", "jsonl")

    def lsof(self):
        return self.contender("lsof", "/usr/bin/lsof", "-nPw")

    def populated(self, processes, descriptors, named=True):
        process_table.install_units(self.project, named)
        groups = process_table.make_groups(
            process_table.SLICES if named else ("system.slice",))
        return process_table.populated(self.binaries, processes, descriptors, groups=groups)

    def printed(self, *arguments):
        return subprocess.run([f"{self.binaries}/library_call", *arguments], check=True,
                              stdout=subprocess.PIPE, text=True).stdout.strip()

    def ratio(self, contender, base):
        timing.interleave([base, contender], self.rounds)
        return statistics.median(timing.ratios(contender, base))


def row(what, goal, measured, met):
    line = f"| {what} | {goal} | {measured} | {'yes' if met else 'no'} |"
    print(line, flush=True)
    ROWS.append(line)


def at_most(what, limit, measured):
    row(what, f"at most {limit}", f"{measured:.2f}", measured <= limit)


def faster(what, limit, measured):
    row(what, f"at least {limit} x faster", f"{measured:.1f} x", measured >= limit)


def call_against_walk(bench):
    with bench.populated(200, 250), process_table.clients(20):
        at_most("library call, 200 x 250 descriptors, in bare walks", 1.25,
                bench.ratio(bench.library(), bench.bare_walk()))
    with bench.populated(64, 15625), process_table.clients(20):
        library = bench.library()
        at_most("library call, 64 x 15,625 descriptors, in bare walks", 1.5,
                bench.ratio(library, bench.bare_walk()))
        million = library.median() / 1e6
        row("memory", "at most 400 bytes a record beside its texts",
            bench.printed("memory"), float(bench.printed("memory").split()[0]) <= 400)
        row("peak memory at 1,000,000 descriptors", "reported", peaks(bench), True)
    with bench.populated(40, 250), process_table.clients(20):
        library = bench.library()
        timing.interleave([library], bench.rounds)
        at_most("time a descriptor at 1,000,000 descriptors, in that at 10,000", 1.4,
                million / (library.median() / 1e4))


def peaks(bench):
    command = bench.command()
    lsof = bench.lsof()
    timing.interleave([command, lsof], 1)
    return (f"command {command.peak_kib / 1024:.0f} MiB, "
            f"lsof {lsof.peak_kib / 1024:.0f} MiB")


def no_service(bench):
    with bench.populated(200, 250, named=False), process_table.clients(20):
        at_most("library call, no service resolvable, 50,000 records, in bare walks with the same "
                "look-ups", 1.3, bench.ratio(bench.library(), bench.bare_walk("--services")))


def many_services(bench):
    """2,000 slices with a unit file each, 5,000 processes in them."""
    units = [f"bench{i}.slice" for i in range(2000)]
    for unit in units:
        with open(f"{process_table.UNIT_FOLDER}/{unit}", "w", encoding="utf-8") as file:
            file.write(f"[Unit]\nDescription=Bench\n\n[X-Vornalis]\nName={unit}\n"
                       "NameI18n=service:ssh\n")
    groups = process_table.make_groups(units)
    with process_table.populated(bench.binaries, 5000, 100, groups=groups):
        seconds = timing.stages(bench.binaries, bench.rounds)
    at_most("services of 5,000 processes x 100 descriptors in 2,000 slices, in descriptor scans",
            0.15, seconds["services"] / seconds["scan"])


def connections(bench):
    for count, limit in ((100, 0.2), (1000, 0.4)):
        with bench.populated(200, 250), process_table.clients(count):
            seconds = timing.stages(bench.binaries, bench.rounds)
        rest = sum(seconds.values()) - seconds["connections"]
        at_most(f"what {count:,} client connections add, in enumerations without any", limit,
                seconds["connections"] / rest)


def against_peers(bench):
    """From what compare.sh measured: its rounds at 500,000 descriptors take minutes."""
    for descriptors, goal in ((50000, 3.5), (500000, 5)):
        with open(f"{bench.figures}/descriptors-{descriptors:07}.tsv", encoding="utf-8") as file:
            seconds = {name: float(value)
                       for _, name, value in (line.rstrip("\n").split("\t") for line in file)}
        command = seconds["vorn-openfiles --format jsonl"]
        for peer, limit in (("lsof", goal), ("lsfd", goal), ("fuser", 1)):
            name = min((name for name in seconds if name.startswith(peer)), key=seconds.get)
            faster(f"command against the fastest form of {peer} ({name}), {descriptors:,} "
                   "descriptors", limit, seconds[name] / command)


def idle_host(bench):
    with bench.populated(150, 4):
        lsof = bench.lsof()
        command = bench.command()
        timing.interleave([lsof, command], bench.rounds * 3)
        faster("command against lsof -nPw, idle host (150 processes x 4)", 3,
               lsof.median() / command.median())


@contextlib.contextmanager
def shares(count):
    folders = [f"/volume2/share{i}" for i in range(count)]
    for folder in folders:
        os.mkdir(folder)
    with open("/etc/exports", "w", encoding="utf-8") as file:
        file.writelines(f"{folder} *(ro)\n" for folder in ["/volume1/photo", *folders])
    yield
    os.remove("/etc/exports")
    for folder in folders:
        os.rmdir(folder)


def many_texts(bench):
    """The same call with more shares or more hidden directories, against itself with one."""
    hidden = "/etc/vorn/hidden-directories"
    os.makedirs(os.path.dirname(hidden), exist_ok=True)
    with bench.populated(200, 250):
        one, many = [], []
        for _ in range(bench.rounds):
            for count, seconds in ((0, one), (9999, many)):
                with shares(count):
                    library = bench.library("again")
                    library.run()
                    seconds += library.seconds
        at_most("whole call with 10,000 shares, in calls with 1", 1.05,
                statistics.median(many) / statistics.median(one))
        one, many = [], []
        for _ in range(bench.rounds):
            for count, seconds in ((1, one), (1000, many)):
                with open(hidden, "w", encoding="utf-8") as file:
                    file.writelines(f"/.hidden{i}\n" for i in range(count))
                library = bench.library("volume")
                library.run()
                seconds += library.seconds
        os.remove(hidden)
        at_most("whole call with 1,000 hidden directories, in calls with 1", 1.1,
                statistics.median(many) / statistics.median(one))


def soak(bench):
    with bench.populated(10, 20):
        lines = bench.printed("soak", "10000").splitlines()
    sizes = [int(line.split()[3]) for line in lines]
    counts = [line.split()[5] for line in lines]
    row("10,000 enumerations in one process", "resident size and descriptors flat",
        "; ".join(lines), sizes[1] - sizes[0] <= 256 and counts[0] == counts[1])


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--binaries", required=True)
    parser.add_argument("--project", required=True)
    parser.add_argument("--rounds", type=int, default=9)
    parser.add_argument("--output", required=True)
    parser.add_argument("--only", action="append")
    options = parser.parse_args()
    bench = Bench(options)
    for goal in (call_against_walk, no_service, many_services, connections, idle_host,
                 many_texts, soak, against_peers):
        if options.only is None or goal.__name__ in options.only:
            goal(bench)
    if options.only is None:
        with open(options.output, "w", encoding="utf-8") as file:
            file.write(f"{timing.machine()}; {options.rounds} rounds.\n\n")
            file.write("\n".join(ROWS) + "\n")
    return 0 if all(not line.endswith("| no |") for line in ROWS) else 1


if __name__ == "__main__":
    sys.exit(main())
