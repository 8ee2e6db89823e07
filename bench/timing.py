"""Times programs side by side: interleaved rounds, medians, ratios to the first, peak memory."""

import os
import statistics
import subprocess

class Contender:
    """A program to time. Where it prints its own seconds first, those count."""

    def __init__(self, binaries, name, argv, prints_seconds=False):
        self.name = name
        self.argv = argv
        self.launcher = f"{binaries}/timed"
        self.prints_seconds = prints_seconds
        self.seconds = []
        self.peak_kib = 0

    def run(self):
        stdout = subprocess.PIPE if self.prints_seconds else subprocess.DEVNULL
        # The program's own complaints, as of processes that ended meanwhile, come before the line.
        result = subprocess.run([self.launcher, *self.argv], check=True, text=True, errors="replace",
                                stdin=subprocess.DEVNULL, stdout=stdout, stderr=subprocess.PIPE)
        elapsed, peak, status = result.stderr.splitlines()[-1].split()
        # lsof and fuser give 1 for what they could not look at.
        if int(status) not in (0, 1):
            raise SystemExit(f"{self.name}: ended with status {status}\n{result.stderr}")
        self.seconds.append(float(result.stdout.split()[0] if self.prints_seconds else elapsed))
        self.peak_kib = max(self.peak_kib, int(peak))

    def median(self):
        return statistics.median(self.seconds)


def interleave(contenders, rounds):
    """One unmeasured round to warm up, then so many measured ones."""
    for round_number in range(rounds + 1):
        for contender in contenders:
            contender.run()
            if round_number == 0:
                contender.seconds.clear()


def ratios(contender, base):
    """Ratio of each round, so that what slows both down at once cancels out."""
    return sorted(a / b for a, b in zip(contender.seconds, base.seconds))


def table(contenders, base, descriptors):
    lines = ["| what | median | ratio to the bare walk (least to most) | per descriptor | peak memory |",
             "|---|---|---|---|---|"]
    for contender in contenders:
        spread = ratios(contender, base)
        lines.append(
            f"| {contender.name} | {contender.median() * 1000:.1f} ms "
            f"| {statistics.median(spread):.2f} ({spread[0]:.2f} to {spread[-1]:.2f}) "
            f"| {contender.median() / descriptors * 1e6:.2f} us "
            f"| {contender.peak_kib / 1024:.1f} MiB |")
    return "\n".join(lines) + "\n"


def stages(binaries, rounds):
    """Median seconds of each stage of the library call."""
    seconds = {}
    for _ in range(rounds):
        printed = subprocess.run([f"{binaries}/library_call", "stages"], check=True,
                                 stdout=subprocess.PIPE, text=True).stdout
        for line in printed.splitlines():
            value, name = line.split()
            seconds.setdefault(name, []).append(float(value))
    return {name: statistics.median(values) for name, values in seconds.items()}


def stage_table(seconds):
    total = sum(seconds.values())
    lines = ["| stage of the library call | median | part |", "|---|---|---|"]
    lines += [f"| {name} | {value * 1000:.1f} ms | {value / total:.1%} |"
              for name, value in seconds.items()]
    return "\n".join(lines) + "\n"


def machine():
    """Kernel, processors and what versions the peers say of themselves."""
    def first_line(*argv):
        try:
            result = subprocess.run(argv, capture_output=True, text=True, check=False)
        except FileNotFoundError:
            return ""
        lines = [line.strip() for line in (result.stdout + result.stderr).splitlines()]
        return next((line for line in lines if any(c.isdigit() for c in line)), "")

    return (f"Linux {os.uname().release.split('-')[0]}, {os.cpu_count()} CPUs; "
            f"lsof {first_line('/usr/bin/lsof', '-v').split(':')[-1].strip()}; "
            f"{first_line('/usr/bin/lsfd', '--version')}; "
            f"{first_line('/usr/bin/fuser', '-V')}")
