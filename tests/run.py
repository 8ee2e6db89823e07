#!/usr/bin/python3
"""Runs a module of tests in a sample host of its own.

    tests/run.py FILE [TEST...]

FILE is such as tests/e2e/ssh_test.py; TEST is a class or a test in it, without one all are run. So
each module has volumes, users, configuration files, network and processes to itself, and whatever
it leaves is gone with them.

Exit status: 0 when all tests have passed, 77 when any was skipped, 1 otherwise.
"""

import os
import sys
import unittest

SKIPPED = 77


def in_sample_host():
    """True only where every write is private; VORN_SAMPLE_HOST alone could be anybody's."""
    with open("/proc/self/mounts", encoding="utf-8") as mounts:
        root = [line.split() for line in mounts if line.split()[1] == "/"]
    return bool(root) and root[-1][0] == "sample-host" and "VORN_SAMPLE_HOST" in os.environ


def enter_sample_host(arguments):
    if os.geteuid() != 0:
        print("skipped: a sample host needs root")
        sys.exit(SKIPPED)
    this = os.path.realpath(__file__)
    sample_host = os.path.join(os.path.dirname(this), "..", "scripts", "sample-host.sh")
    os.execv(sample_host, [sample_host, sys.executable, this, *arguments])


def run(file, tests):
    folder, name = os.path.split(os.path.realpath(file))
    sys.path.insert(0, folder)  # modules beside it; "harness" lies beside this one
    result = unittest.main(name.removesuffix(".py"), argv=[file, *tests], exit=False, verbosity=2).result
    if not result.wasSuccessful():
        return 1
    if result.testsRun == 0:
        return "no test has run"
    return SKIPPED if result.skipped else 0


def main(arguments):
    if not arguments or arguments[0].startswith("-"):
        print(__doc__, file=sys.stderr)
        sys.exit(2)
    if not in_sample_host():
        enter_sample_host(arguments)
    sys.dont_write_bytecode = True
    sys.exit(run(arguments[0], arguments[1:]))


main(sys.argv[1:])
