"""Hosts that send events through the receiver into the database; load.sh runs it."""

import argparse
import os
import random
import signal
import subprocess
import sys
import time

TESTS = os.path.join(os.path.dirname(os.path.realpath(__file__)), "..", "..", "tests")
sys.path[:0] = [TESTS, os.path.join(TESTS, "centre")]

import centre_host  # noqa: E402
import receiver_test  # noqa: E402
from centre_host import REMOTE, Host, ask  # noqa: E402
from harness.processes import output_of, start  # noqa: E402
from receiver_test import Receiver, make_certificate, upload_command  # noqa: E402

PROCESSES = 25  # of a host, each of a user
TICK = os.sysconf("SC_CLK_TCK")


class SendingHost:
    """A host: events that its journal is told, and the sender that follows the journal."""

    def __init__(self, number):
        self.events = Host(f"host{number:04}", run=f"{number:032x}")
        self.held = []
        make_certificate(self.events.node, f"/CN={self.events.node}", "ours")
        path = f"{centre_host.FOLDER}/{self.events.node}.journal"
        self.writer = start([REMOTE, "--output", path, "-"], stdin=subprocess.PIPE, stderr=subprocess.DEVNULL)
        self.tell("started", VOLUMES="/volume1")
        self.sender = None

    def start_sender(self):
        # Each as a user of few others: the kernel counts what a user watches, and these stand for many machines.
        user = str(20_000 + int(self.events.run, 16) // 100)
        for path in (f"{centre_host.FOLDER}/{self.events.node}.journal",
                     f"{receiver_test.CERTIFICATES}/{self.events.node}.key"):
            os.chmod(path, 0o644)
        self.sender = start(["setpriv", f"--reuid={user}", "--clear-groups", *upload_command(self.events.node),
                             "--follow"], stderr=subprocess.DEVNULL)

    def tell(self, event, **fields):
        self.events.at = time.time_ns() // 1000 - 1_000_000
        self.events.tell(event, **fields)
        self.writer.stdin.write(self.events.entries.pop())
        self.writer.stdin.flush()

    def act(self):
        """As many opens as closes; most files are held shortly, some for minutes."""
        if self.held and random.random() < 0.5:
            place = -1 if random.random() < 0.8 else random.randrange(len(self.held))
            path, process = self.held.pop(place)
            self.tell("closed-written" if random.random() < 0.2 else "closed", PATH=path, **process)
            return
        number = random.randrange(PROCESSES)
        process = {"PID": 1000 + number, "USER": f"user{number}", "HOST": f"192.0.2.{number}"}
        path = f"/volume1/projects/folder{random.randrange(100)}/document-{random.randrange(100_000)}.dat"
        self.held.append((path, process))
        self.tell("opened", PATH=path, **process)


def seconds_of(pids):
    """Processor time of processes and of their children that have ended."""
    return sum(int(word) for text in texts(pids, "stat") for word in text.rpartition(")")[2].split()[11:15]) / TICK


def memory_of(pids):
    """Proportional shares, in MiB."""
    return sum(int(line.split()[1]) for text in texts(pids, "smaps_rollup") for line in text.splitlines()
               if line.startswith("Pss:")) / 1024


def texts(pids, name):
    """What /proc has of those that are still there."""
    for pid in pids:
        try:
            with open(f"/proc/{pid}/{name}", encoding="utf-8") as file:
                yield file.read()
        except (FileNotFoundError, ProcessLookupError):
            pass


def family(pid):
    found = [pid]
    for child in centre_host.children_of(pid):
        found += family(child)
    return found


def size_of(folder):
    return sum(os.stat(os.path.join(path, name)).st_blocks * 512
               for path, _, names in os.walk(folder) for name in names)


def stored():
    return ask("select coalesce(sum(events), 0)::bigint from vorn.runs")[0][0]


def send(hosts, options):
    """At an even rate; gives the longest time that an event took until it was stored, as seen every ten seconds."""
    started, sent, looked, longest = time.monotonic(), 0, time.monotonic(), 0
    while (now := time.monotonic()) < started + options.seconds:
        while sent < (now - started) * options.rate:
            random.choice(hosts).act()
            sent += 1
        if now > looked + 10:
            looked = now
            behind = sum(host.events.seq for host in hosts) - stored()
            longest = max(longest, behind / options.rate)
        time.sleep(0.02)
    return longest


def await_all(total):
    deadline = time.monotonic() + 120
    while stored() < total and time.monotonic() < deadline:
        time.sleep(0.2)


def report(parts, before, options, total):
    print(f"{'part':12} {'processes':>9} {'% of a processor':>17} {'MiB':>7}")
    for name, pids in parts.items():
        used = 100 * (seconds_of(pids) - before[name]) / options.seconds
        print(f"{name:12} {len(pids):9} {used:17.1f} {memory_of(pids):7.1f}")
    intervals = ask("select count(*) from vorn.intervals")[0][0]
    tables = ask("select pg_database_size('vornopenfiles')")[0][0]
    print(f"sent {total}, stored {stored()}, repeated {ask('select sum(repeated) from vorn.runs')[0][0]},"
          f" gaps {ask('select count(*) from vorn.gaps')[0][0]}, refused {ask('select sum(refused) from vorn.nodes')[0][0]}")
    print(f"intervals {intervals}, database {tables / 2**20:.1f} MiB, journals {size_of(centre_host.JOURNALS) / 2**20:.1f} MiB")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--folder", required=True)
    parser.add_argument("--hosts", type=int, default=50)
    parser.add_argument("--rate", type=float, default=1160)
    parser.add_argument("--seconds", type=int, default=600)
    options = parser.parse_args()
    output_of(["mount", "--bind", options.folder, prepare(centre_host.FOLDER)])
    receiver_test.set_up_receiver(settings=("shared_buffers=128MB",))  # as Debian has it
    os.chmod(centre_host.FOLDER, 0o1777)
    hosts = [SendingHost(number) for number in range(options.hosts)]
    receiver = Receiver(*(host.events.node for host in hosts))
    loader = centre_host.start_loader(stderr=subprocess.DEVNULL)
    for host in hosts:
        host.start_sender()
    while stored() < len(hosts):
        time.sleep(0.1)
    parts = {"senders": [host.sender.pid for host in hosts], "nginx": family(receiver.server.pid),
             "journals": [process.pid for process in receiver.nodes.values()], "loader": [loader.pid],
             "PostgreSQL": [receiver_test.postgresql.pid]}
    before = {name: seconds_of(family(pids[0]) if name == "PostgreSQL" else pids) for name, pids in parts.items()}
    longest = send(hosts, options)
    total = sum(host.events.seq for host in hosts)
    await_all(total)
    parts["PostgreSQL"] = family(receiver_test.postgresql.pid)
    print(f"{options.hosts} hosts, {options.rate:.0f} events a second for {options.seconds} s;"
          f" behind by {longest:.1f} s at most")
    report(parts, before, options, total)
    status = 0 if stored() == total else 1
    loader.send_signal(signal.SIGTERM)
    for host in hosts:
        host.sender.kill()
        host.writer.kill()
    receiver.stop()
    receiver_test.postgresql.stop()
    sys.exit(status)


def prepare(folder):
    os.makedirs(folder)
    return folder


main()
