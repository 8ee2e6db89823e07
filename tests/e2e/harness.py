"""A sample host of its own for each module of end-to-end tests.

A test module calls main(). Outside of a sample host that starts the module again inside of one
(scripts/sample-host.sh), so each module has volumes, users, configuration files, network and
processes to itself, and whatever it leaves is gone with them.
"""

import os
import shutil
import subprocess
import sys
import time
import unittest

PROJECT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.realpath(__file__))))
BUILD = os.environ.get("VORN_BUILD_FOLDER", os.path.join(PROJECT, "build", "debug"))
SKIPPED = 77
PATIENCE = 20
NO_LOGIN = "4294967295"
PASSWORD = "secret-of-tests"


def in_sample_host():
    """True only where every write is private; VORN_SAMPLE_HOST alone could be anybody's."""
    with open("/proc/self/mounts", encoding="utf-8") as mounts:
        root = [line.split() for line in mounts if line.split()[1] == "/"]
    return bool(root) and root[-1][0] == "sample-host" and "VORN_SAMPLE_HOST" in os.environ


def main():
    """Runs the tests of the calling module and ends the program; 77 when any was skipped."""
    if not in_sample_host():
        if os.geteuid() != 0:
            print("needs root to make a sample host")
            sys.exit(SKIPPED)
        sample_host = os.path.join(PROJECT, "scripts", "sample-host.sh")
        os.execv(sample_host, [sample_host, sys.executable, *sys.argv])
    result = unittest.main(module="__main__", exit=False, verbosity=2).result
    if not result.wasSuccessful():
        sys.exit(1)
    if result.testsRun == 0:
        sys.exit("no test has run")
    sys.exit(SKIPPED if result.skipped else 0)


def set_up_host():
    """Installs the project as on a real host and gives it users; for setUpModule()."""
    forget_login()
    run(["cmake", "--install", BUILD])
    run(["ldconfig"])
    for user in ("alice", "bob"):
        run(["useradd", "--create-home", "--shell", "/bin/bash", user])
        run(["chpasswd"], input=f"{user}:{PASSWORD}")
    for share in ("/volume1/share", "/volume1/photo", "/volume2/backup"):
        os.mkdir(share)
        os.chmod(share, 0o1777)


def forget_login():
    """Whoever runs the tests may have logged in by SSH; the kernel hands that on to children."""
    if os.path.exists("/proc/self/loginuid") and login_of("self") is not None:
        write_file("/proc/self/loginuid", NO_LOGIN)


def login_of(pid):
    """User id of the login that the kernel counts a process to, if any; needs audit support."""
    if not os.path.exists("/proc/self/loginuid"):
        raise unittest.SkipTest("the kernel keeps no record of logins (CONFIG_AUDIT)")
    with open(f"/proc/{pid}/loginuid", encoding="ascii") as file:
        login = file.read()
    return None if login == NO_LOGIN else int(login)


def needs(*programs):
    """Skips the calling test where a program is not installed."""
    path = os.environ["PATH"] + ":/usr/sbin:/sbin"
    missing = [program for program in programs if shutil.which(program, path=path) is None]
    if missing:
        raise unittest.SkipTest(f"not installed: {', '.join(missing)}")


def run(argv, **options):
    """Runs a command that must succeed and gives its output."""
    done = subprocess.run(argv, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          check=False, timeout=60, **options)
    if done.returncode != 0:
        raise AssertionError(f"{argv} ended with {done.returncode}: {done.stdout}")
    return done.stdout


def wait_until(condition, what, patience=PATIENCE):
    """Polls until condition() is true and gives its value."""
    deadline = time.monotonic() + patience
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            raise AssertionError(f"waited {patience} s in vain for {what}")
        time.sleep(0.02)


def write_file(path, content=b"", mode=0o644):
    if isinstance(content, str):
        content = content.encode()
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as file:
        file.write(content)
    if not path.startswith("/proc/"):
        os.chmod(path, mode)
    return path
