"""The library and the command beside the bare walk and the peers, on one process table.

Run by compare.sh in the sample host.
"""

import argparse
import sys

import process_table
import timing

PEERS = [
    ("lsof -nPw", ["/usr/bin/lsof", "-nPw"]),
    ("lsof -nPw -F pfn", ["/usr/bin/lsof", "-nPw", "-F", "pfn"]),
    ("lsof -nPw on the mount points", ["/usr/bin/lsof", "-nPw", "/volume1", "/volume2"]),
    ("lsfd", ["/usr/bin/lsfd"]),
    ("lsfd with a filter on the name", ["/usr/bin/lsfd", "-Q", 'NAME =~ "^/volume"']),
    ("fuser -m", ["/usr/bin/fuser", "-m", "/volume1", "/volume2"]),
]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--binaries", required=True)
    parser.add_argument("--project", required=True)
    parser.add_argument("--processes", type=int, default=200)
    parser.add_argument("--descriptors", type=int, default=250)
    parser.add_argument("--outside", type=int, default=20, help="percent outside the volumes")
    parser.add_argument("--clients", type=int, default=20)
    parser.add_argument("--rounds", type=int, default=7)
    parser.add_argument("--output", required=True, help="files to write, without extension")
    options = parser.parse_args()

    total = options.processes * options.descriptors
    binaries = options.binaries
    base = timing.Contender(binaries, "bare walk", [f"{binaries}/bare_walk"], prints_seconds=True)
    contenders = [
        base,
        timing.Contender(binaries, "library call", [f"{binaries}/library_call"],
                         prints_seconds=True),
        timing.Contender(binaries, "vorn-openfiles --format jsonl",
                         [f"{binaries}/vorn-openfiles", "--by", "volume", "--format", "jsonl"]),
    ] + [timing.Contender(binaries, name, argv) for name, argv in PEERS]

    process_table.install_units(options.project, named=True)
    with process_table.clients(options.clients), \
            process_table.populated(binaries, options.processes, options.descriptors,
                                    options.outside,
                                    process_table.make_groups(process_table.SLICES)):
        timing.interleave(contenders, options.rounds)
        stages = timing.stages(binaries, options.rounds)

    heading = (f"{total} descriptors: {options.processes} processes x {options.descriptors}, "
               f"{options.outside} % of them outside the volumes, {options.clients} clients; "
               f"{options.rounds} rounds. {timing.machine()}.\n\n")
    text = timing.table(contenders, base, total) + "\n" + timing.stage_table(stages)
    sys.stdout.write(heading + text)
    with open(f"{options.output}.md", "w", encoding="utf-8") as file:
        file.write(heading + text)
    with open(f"{options.output}.tsv", "w", encoding="utf-8") as file:
        for contender in contenders:
            file.write(f"{total}\t{contender.name}\t{contender.median():.6f}\n")


if __name__ == "__main__":
    main()
