"""Hosts as large as the machine allows: everything is listed, at what cost."""

import contextlib
import json
import os
import resource
import shutil
import subprocess
import sys
import time
import unittest

from harness.command import COMMAND
from harness.processes import Announced

POPULATE = os.environ["VORN_POPULATE"]
HARD_LIMIT = resource.getrlimit(resource.RLIMIT_NOFILE)[1]
MARK = b" (deleted)"
PROCESSES = int(os.environ.get("VORN_SIZE_PROCESSES", 30000))

# The peak of a process counts that of the one it was started from, so that one has to be small.
LAUNCHER = r"""
import os, sys
pid = os.fork()
if pid == 0:
    os.execv(sys.argv[1], sys.argv[1:])
_, status, usage = os.wait4(pid, 0)
print(usage.ru_maxrss, file=sys.stderr)
sys.exit(os.waitstatus_to_exitcode(status))
"""

# Says "ready" when its work is done, and waits until standard input ends.
DEEP = r"""
import os, resource, sys
count, first, limit = int(sys.argv[1]), int(sys.argv[2]), resource.getrlimit(resource.RLIMIT_NOFILE)[1]
resource.setrlimit(resource.RLIMIT_NOFILE, (limit, limit))
os.makedirs("/volume1/photo", exist_ok=True)
os.chdir("/volume1/photo")
for _ in range(15):
    os.makedirs("d" * 254, exist_ok=True)
    os.chdir("d" * 254)
for i in range(first, first + count):
    os.open(f"{i:0240}", os.O_CREAT | os.O_RDWR)
print("ready", flush=True)
sys.stdin.read()
"""

# A web server by its name, each of whose clients comes from another address.
SERVER = r"""
import os, resource, socket, sys
number, count, limit = int(sys.argv[1]), int(sys.argv[2]), resource.getrlimit(resource.RLIMIT_NOFILE)[1]
resource.setrlimit(resource.RLIMIT_NOFILE, (limit, limit))
listener = socket.create_server(("127.0.0.1", 0), backlog=64)
back, front = os.pipe()
client = os.fork()
held = []
if client == 0:
    for i in range(count):
        held.append(socket.create_connection(listener.getsockname(),
                    source_address=(f"127.{number + 1}.{i // 250}.{i % 250 + 1}", 0)))
else:
    held = [listener.accept()[0] for _ in range(count)]
    os.open("/volume1/photo/served-%d" % number, os.O_CREAT | os.O_RDWR)
    print("ready", flush=True)
sys.stdin.read()
"""


def started(*commands):
    """Processes that end with the block."""
    processes = contextlib.ExitStack()
    for command in commands:
        processes.enter_context(Announced(command, patience=600))
    return processes


class Size(unittest.TestCase):
    def tearDown(self):
        # Processes of the populace end after the one that started them.
        while subprocess.run([COMMAND, "--by", "volume", "--quiet"], check=False).returncode == 0:
            time.sleep(0.1)
        for entry in os.scandir("/volume1"):
            shutil.rmtree(entry.path)

    def listed(self, *arguments):
        """The full paths; prints what the command took."""
        begin = time.monotonic()
        result = subprocess.run([sys.executable, "-c", LAUNCHER, COMMAND, "--print0", "full_path", *arguments],
                                capture_output=True, check=True)
        seconds = time.monotonic() - begin
        paths = result.stdout.split(b"\0")[:-1]
        print(f"\n  {len(paths)} records, {len(result.stdout) / 1e6:.1f} MB of paths: {seconds:.2f} s, "
              f"{int(result.stderr) / 1024:.0f} MiB at most", file=sys.stderr)
        return paths

    def test_one_process_with_as_many_descriptors_as_it_may_have(self):
        descriptors = HARD_LIMIT - 100
        os.mkdir("/volume1/one")
        with started([POPULATE, "1", str(descriptors), "0", "/volume1/one"]):
            self.assertEqual(len(self.listed("--by", "volume")), descriptors)

    def test_many_processes(self):
        os.mkdir("/volume1/many")
        with started([POPULATE, str(PROCESSES), "1", "0", "/volume1/many"]):
            self.assertEqual(len(self.listed("--by", "volume")), PROCESSES)

    def test_many_exports(self):
        self.lists_shares("/etc/exports", "", "/volume1/p{0} *(ro)\n")

    def test_many_samba_shares(self):
        self.lists_shares("/etc/samba/smb.conf", "[global]\n", "[share{0}]\npath = /volume1/p{0}\n")

    def lists_shares(self, file, head, share):
        shares = 10000
        os.makedirs(os.path.dirname(file), exist_ok=True)
        with open(file, "w", encoding="ascii") as configuration:
            configuration.write(head + "".join(share.format(i) for i in range(shares)))
        self.addCleanup(os.unlink, file)
        with started([POPULATE, "1000", "10", "0", "/volume1"]):
            self.assertEqual(len(self.listed()), 10000)
            found = json.loads(subprocess.run([COMMAND, "check", "--json"],
                                              stdout=subprocess.PIPE, check=False).stdout)
            self.assertIn(f"{shares} found", json.dumps(found))

    def test_many_connections(self):
        servers, clients = 5, 4000
        os.makedirs("/volume1/photo", exist_ok=True)
        name = "/tmp/nginx"
        subprocess.run(["cp", os.path.realpath(sys.executable), name], check=True)
        with started(*([name, "-c", SERVER, str(i), str(clients)] for i in range(servers))):
            self.assertEqual(len(self.listed()), servers)
            rows = json.loads(subprocess.run([COMMAND, "--json"], stdout=subprocess.PIPE, check=True).stdout)
            hosts = {row["host"] for row in rows["files"]}
            # Each with the client at its highest descriptor.
            last = clients - 1
            self.assertEqual(hosts, {f"127.{i + 1}.{last // 250}.{last % 250 + 1}" for i in range(servers)})
            found = subprocess.run([COMMAND, "check"], stdout=subprocess.PIPE, check=False).stdout
            self.assertIn(b"20000 records of client connections", found)

    def test_hundreds_of_megabytes_of_paths(self):
        each = min(HARD_LIMIT - 100, 15000)
        with started(*([sys.executable, "-c", DEEP, str(each), str(i * each)] for i in range(4))):
            paths = self.listed()
            self.assertEqual((len(paths), len(set(paths))), (4 * each, 4 * each))
            self.assertEqual({len(path) for path in paths}, {4080})

    def test_the_longest_paths_that_the_kernel_tells(self):
        parts = ["d" * 239] * 16
        folder = "/".join(["/volume1/photo", *parts]).encode()
        os.makedirs("/volume1/photo", exist_ok=True)
        os.chdir("/volume1/photo")
        for part in parts:
            os.mkdir(part)
            os.chdir(part)
        names = [b"n" * (length - len(folder) - 1) for length in (4094, 4095, 4096)]
        gone = [b"g" * (length - len(folder) - 1 - len(MARK)) for length in (4095, 4096)]
        held = [os.open(name, os.O_CREAT | os.O_RDWR) for name in names + gone]
        for name in gone:
            os.unlink(name)
        os.chdir("/")
        # The kernel refuses to tell those of 4,096 bytes, and the list is without them.
        self.assertEqual(self.listed(), [folder + b"/" + name for name in (gone[0] + MARK, *names[:2])])
        for file in held:
            os.close(file)
