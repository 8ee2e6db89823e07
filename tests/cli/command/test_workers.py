"""Sources, threads and what is asked change nothing of what is listed."""

import contextlib
import os
import random
import subprocess
import unittest

from harness.command import COMMAND, run
from harness.files import touch
from harness.processes import Holder, plain_environment

LISTING = os.path.join(os.path.dirname(COMMAND), "vorn_library_listing")
COLUMNS = "full_path,pid,service,host,user,path,filename,hidden,folder"
CSV = ("--format", "csv", "--no-header", "--columns", COLUMNS)
AS_NOBODY = ["setpriv", "--reuid", "65534", "--regid", "65534", "--clear-groups", "--inh-caps=-all"]


def draw_paths(lot, count):
    """Files and folders on both volumes, some of them hidden, several times the same."""
    paths = []
    for _ in range(count):
        folder = lot.choice(["/volume1/photo", "/volume1/photo/@eaDir", "/volume2/photo", "/volume2/docs/a/b"])
        paths.append(f"{folder}/{lot.randrange(60)}")
        if lot.randrange(20) == 0:
            paths.append(folder)
    return paths


class Table:
    """A process table that stays as it is: processes that hold files, some of them deleted."""

    def __init__(self, seed, processes, most):
        self.stack = contextlib.ExitStack()
        lot = random.Random(seed)
        for index in range(processes):
            paths = draw_paths(lot, lot.randrange(most + 1))
            own = [touch(f"/volume1/photo/own-{index}-{i}".encode()) for i in range(lot.randrange(3))]
            for path in paths:
                if not os.path.isdir(path):
                    touch(path.encode())
            self.stack.enter_context(Holder([*own, *(path.encode() for path in paths)]))
            for path in own[:1]:
                os.unlink(path)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.stack.close()


class Workers(unittest.TestCase):
    def test_list_what_the_library_lists(self):
        for seed, processes, most in ((1, 30, 40), (2, 3, 900), (3, 1, 0), (4, 1, 900)):
            with Table(seed, processes, most):
                for by, arguments in (("share", []), ("volume", ["volume"])):
                    expected = subprocess.run([LISTING, *arguments], stdout=subprocess.PIPE, check=True).stdout
                    for jobs in ("1", "2", "5"):
                        done = run("--by", by, "--jobs", jobs, "--source", "walk", *CSV)
                        self.assertEqual(done.stderr, b"")
                        self.assertEqual(done.stdout.splitlines(), expected.splitlines(), (seed, by, jobs))

    def test_order_and_select_as_one_does(self):
        with Table(5, 10, 400):
            for arguments in (["--sort", "filename"], ["--sort", "pid", "--reverse"], ["--reverse"], ["--folders", "only"],
                              ["--folders", "no", "--match", "path=1", "--time"], ["--match", "time=20", "--hidden", "no"],
                              ["--deleted", "only", "--time"], ["/volume2"], ["--where", "time=-"]):
                one = run("--by", "volume", "--jobs", "1", "--json", *arguments)
                self.assertEqual(one.stderr, b"")
                for jobs in ("2", "5"):
                    self.assertEqual(run("--by", "volume", "--jobs", jobs, "--json", *arguments).stdout, one.stdout,
                                     (jobs, arguments))

    def test_are_fewer_where_the_host_gives_no_threads(self):
        os.makedirs("/volume1/photo", exist_ok=True)
        os.chmod("/volume1/photo", 0o777)
        # What looks for leaks needs a thread of its own.
        environment = plain_environment(ASAN_OPTIONS="detect_leaks=0")
        with Holder([touch(b"/volume1/photo/a")], user="nobody"):
            # Behind the change of the user, whose other processes are counted too.
            answers = [subprocess.run([*AS_NOBODY, "prlimit", "--nproc=1", COMMAND, "--by", "volume", *CSV, "--jobs", jobs],
                                      env=environment, check=False, capture_output=True, timeout=60) for jobs in ("1", "5")]
        self.assertEqual(answers[0].returncode, 0, answers[0].stderr)
        self.assertEqual(answers[0].stdout, answers[1].stdout)
        self.assertEqual(answers[0].stderr, answers[1].stderr)
        self.assertIn(b"/volume1/photo/a", answers[0].stdout)


class Columns(unittest.TestCase):
    def test_are_the_same_whatever_else_is_shown(self):
        names = COLUMNS.split(",") + ["deleted", "time"]
        with Table(6, 10, 30):
            rows = [line.split(b",") for line in
                    run("--by", "volume", "--format", "csv", "--no-header", "--columns", ",".join(names)).stdout.splitlines()]
            self.assertGreater(len(rows), 10)
            for index, name in enumerate(names):
                alone = run("--by", "volume", "--format", "csv", "--no-header", "--columns", name).stdout.splitlines()
                self.assertEqual(alone, [row[index] for row in rows], name)


if __name__ == "__main__":
    unittest.main()
