"""What the sample host has, its users, the project installed on it."""

import os
import shutil
import unittest

from harness.files import touch
from harness.processes import output_of

PROJECT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.realpath(__file__))))
BUILD = os.environ.get("VORN_BUILD_FOLDER", os.path.join(PROJECT, "build", "debug"))
NO_LOGIN = "4294967295"
PASSWORD = "secret-of-tests"


def set_up_host():
    """Installs the project as on a real host and gives it users; for setUpModule()."""
    forget_login()
    output_of(["cmake", "--install", BUILD])
    output_of(["ldconfig"])
    for user in ("alice", "bob"):
        output_of(["useradd", "--create-home", "--shell", "/bin/bash", user])
        output_of(["chpasswd"], input=f"{user}:{PASSWORD}")
    for share in ("/volume1/share", "/volume1/photo", "/volume2/backup"):
        os.mkdir(share)
        os.chmod(share, 0o1777)


def forget_login():
    """Whoever runs the tests may have logged in by SSH; the kernel hands that on to children."""
    if os.path.exists("/proc/self/loginuid") and login_of("self") is not None:
        touch("/proc/self/loginuid", NO_LOGIN)


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
