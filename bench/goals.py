"""Measures each goal of speed and size, a row each. Run by goals.sh in the sample host."""

import argparse
import contextlib
import os
import resource
import shlex
import statistics
import subprocess
import sys

import process_table
import timing

UNNAMED = ("system.slice/cron.service",)
# Kinds of holders: what they are called, their units, and whether those have names.
KINDS = (("in slices with a name", process_table.SLICES, True), ("in a unit without a name", UNNAMED, False),
         ("in no unit", (), False))
WALKS = {"iterator": 0.6, "walk": 1.1}
TIMES_FASTER = {"lsof": {"iterator": 8, "walk": 4.5}, "lsfd": {"iterator": 8, "walk": 4.5},
                "fuser": {"iterator": 4, "walk": 2}}

ROWS = ["| what | goal | measured | met |", "|---|---|---|---|"]


class Bench:
    def __init__(self, options):
        self.binaries = options.binaries
        self.project = options.project
        self.rounds = options.rounds
        self.few = max(1, options.rounds // 3)

    def contender(self, name, *argv, prints_seconds=False):
        return timing.Contender(self.binaries, name, argv, prints_seconds)

    def bare_walk(self, *arguments):
        return self.contender("bare walk", f"{self.binaries}/bare_walk", *arguments,
                              prints_seconds=True)

    def library(self, *arguments):
        return self.contender("library call", f"{self.binaries}/library_call", *arguments,
                              prints_seconds=True)

    def command(self, *arguments):
        form = () if any(each.startswith(("--format", "--json", "--print0", "--pids")) for each in arguments) \
            else ("--format", "jsonl")
        return self.contender("command", f"{self.binaries}/vorn-openfiles", "--by", "volume", *form, *arguments)

    def peers(self):
        """Each in its fastest form."""
        return {"lsof": self.contender("lsof -nPw -F pfn", "/usr/bin/lsof", "-nPw", "-F", "pfn"),
                "lsfd": self.contender("lsfd with a filter on the name", "/usr/bin/lsfd", "-Q", 'NAME =~ "^/volume"'),
                "fuser": self.contender("fuser -m", "/usr/bin/fuser", "-m", "/volume1", "/volume2")}

    def lsof(self):
        return self.contender("lsof", "/usr/bin/lsof", "-nPw")

    def populated(self, processes, descriptors, named=True, units=None):
        process_table.install_units(self.project, named)
        if units is None:
            units = process_table.SLICES if named else ("system.slice",)
        groups = process_table.make_groups(units)
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


def client_further_up(bench):
    """One client whose server has it above the lowest descriptors: all are looked at."""
    for processes, descriptors in ((1000, 20), (1000, 100), (200, 250)):
        ratios = []
        for descriptor in (process_table.LOW, process_table.FURTHER_UP):
            with bench.populated(processes, descriptors), process_table.clients(1, descriptor):
                seconds = timing.stages(bench.binaries, bench.rounds)
            rest = sum(seconds.values()) - seconds["connections"]
            ratios.append(f"{seconds['connections'] / rest:.2f} "
                          f"({seconds['connections'] * 1000:.1f} ms)")
        row(f"what one client adds further up instead of among the lowest descriptors, "
            f"{processes:,} x {descriptors} descriptors, in enumerations without any",
            "reported", f"{ratios[1]} instead of {ratios[0]}", True)


def sources(bench):
    """The sources that this host has, with what is asked of them in goals: (name, limits)."""
    found = []
    for name in ("iterator", "walk"):
        if subprocess.run([f"{bench.binaries}/vorn-openfiles", "--by", "volume", "--source", name, "-q"], check=False,
                          stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL).returncode < 2:
            found.append(name)
    return found


def against_peers(bench):
    """Each kind of holder: the service of one with a named slice is asked for least."""
    for kind, units, named in KINDS:
        for processes, descriptors in ((100, 500), (100, 5000)):
            with bench.populated(processes, descriptors, named, units):
                peers_beside(bench, f"{processes * descriptors:,} descriptors, {kind}", processes * descriptors)


def peers_beside(bench, table, total):
    bare, peers = bench.bare_walk(), bench.peers()
    commands = {name: bench.command("--source", name) for name in sources(bench)}
    timing.interleave([bare, *commands.values(), *peers.values()], bench.rounds if total <= 50000 else bench.few)
    for name, command in commands.items():
        if total <= 50000:
            at_most(f"command, {name}, {table}, in bare walks", WALKS[name], middle(command, bare))
        for peer, contender in peers.items():
            faster(f"command, {name}, against {contender.name}, {table}", TIMES_FASTER[peer][name],
                   middle(contender, command))


def middle(contender, base):
    return statistics.median(timing.ratios(contender, base))


def threads(bench):
    """On a machine with more processors than two, this shows what more of them give."""
    jobs = [1 << power for power in range(7) if 1 << power <= max(2, os.cpu_count())]
    with bench.populated(100, 1, False, UNNAMED):
        fixed = bench.command("--source", "walk", "--jobs", "1")
        timing.interleave([fixed], bench.rounds)
    with bench.populated(100, 500, False, UNNAMED):
        runs = {each: bench.command("--source", "walk", "--jobs", str(each)) for each in jobs}
        alone = shlex.join(runs[1].argv)
        two = bench.contender("two commands", "/bin/sh", "-c", f"{alone} & {alone} & wait")
        timing.interleave([*runs.values(), two], bench.rounds)
    faster("walk with --jobs 2 against --jobs 1, 50,000 descriptors", 1.7, middle(runs[1], runs[2]))
    row("two separate commands with --jobs 1 side by side, against one after the other", "reported",
        f"{2 / middle(two, runs[1]):.1f} x", True)
    for each in jobs[2:]:
        row(f"walk with --jobs {each} against --jobs 1, 50,000 descriptors", "reported",
            f"{middle(runs[1], runs[each]):.1f} x", True)
    row("what is the same with 1 descriptor in each of the 100 processes, with --jobs 1", "reported",
        f"{fixed.median() / runs[1].median():.1%}", True)


def one_process(bench):
    # The process has some of its own.
    descriptors = min(20000, resource.getrlimit(resource.RLIMIT_NOFILE)[1] - 100)
    with bench.populated(1, descriptors, False, UNNAMED):
        for name in sources(bench):
            at_most(f"command, {name}, one process with {descriptors:,} descriptors, in bare walks",
                    {"iterator": 0.7, "walk": 1.3}[name],
                    bench.ratio(bench.command("--source", name), bench.bare_walk()))


def million(bench):
    with bench.populated(64, 15625, False, UNNAMED):
        for name in sources(bench):
            bare, command, lsof = bench.bare_walk(), bench.command("--source", name), bench.lsof()
            timing.interleave([bare, command], bench.few)
            timing.interleave([lsof], 1)
            at_most(f"command, {name}, 1,000,000 descriptors, in bare walks", {"iterator": 0.5, "walk": 1.0}[name],
                    middle(command, bare))
            at_most(f"peak memory, {name}, 1,000,000 descriptors, in that of lsof", 0.9,
                    command.peak_kib / lsof.peak_kib)


def output(bench):
    """What a format adds, over a look that asks for the same and shows one record."""
    with bench.populated(100, 1000, False, UNNAMED):
        library = bench.library()
        timing.interleave([library], bench.few)
        for form in (("--format", "table"), ("--format", "csv"), ("--json",), ("--format", "jsonl"),
                     ("--print0", "path"), ("--pids",)):
            shown, one = bench.command(*form), bench.command(*form, "--limit", "1")
            timing.interleave([shown, one], bench.few)
            at_most(f"{' '.join(form)} of 100,000 records, in finding them by the library's call", 0.5,
                    max(0, shown.median() - one.median()) / library.median())


def idle_host(bench):
    with bench.populated(150, 4):
        lsof = bench.lsof()
        command = bench.command()
        timing.interleave([lsof, command], bench.rounds * 3)
        faster("command against lsof -nPw, idle host (150 processes x 4)", 4,
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


def other_rows(name):
    """Those of a file that were not measured now."""
    measured = {line.split("|")[1] for line in ROWS}
    with open(name, encoding="utf-8") as file:
        return [line for line in file.read().splitlines()
                if line.startswith("| ") and line.split("|")[1] not in measured]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--binaries", required=True)
    parser.add_argument("--project", required=True)
    parser.add_argument("--rounds", type=int, default=9)
    parser.add_argument("--output", required=True)
    parser.add_argument("--only", action="append")
    options = parser.parse_args()
    bench = Bench(options)
    for goal in (call_against_walk, no_service, many_services, connections, client_further_up,
                 idle_host, many_texts, soak, against_peers, threads, one_process, million, output):
        if options.only is None or goal.__name__ in options.only:
            goal(bench)
    kept = [] if options.only is None else other_rows(options.output)
    with open(options.output, "w", encoding="utf-8") as file:
        file.write(f"{timing.machine()}; {options.rounds} rounds.\n\n")
        file.write("\n".join(ROWS[:2] + kept + ROWS[2:]) + "\n")
    return 0 if all(not line.endswith("| no |") for line in ROWS) else 1


if __name__ == "__main__":
    sys.exit(main())
