"""vorn-slices on a real kernel's control groups, version 2 and name=systemd."""

import contextlib
import os
import re
import signal
import subprocess
import sys
import unittest

from harness.files import touch
from harness.listing import open_files
from harness.processes import Announced, Holder, join_group, plain_environment, start, stop
from harness.waiting import wait_until
from unified_host import (DAEMON, LOCAL_UNITS, SERVICES, UNIFIED, Daemon, UnifiedHost, await_service, born_in, end,
                          mount, open_session, output_of, remove_below, service_of)

HOST = UnifiedHost()
NAMED = "[X-Vornalis]\nName=Ours\n"

# A forking service: its first process ends when its child is there, and that has two more.
FORKING = """
import os, sys, time
if os.fork() == 0:
    for _ in range(2):
        if os.fork() == 0:
            break
    os.write(1, b"ready\\n")
    time.sleep(1000)
"""


def setUpModule():
    HOST.set_up()
    unittest.addModuleCleanup(HOST.tear_down)


def members_of(group):
    with open(f"{UNIFIED}/{group}/cgroup.procs", encoding="ascii") as members:
        return [int(line) for line in members]


def sleeper(test, group=None):
    process = start(["sleep", "1000"], group)
    test.addCleanup(stop, process)
    return process.pid


class Daemons(unittest.TestCase):
    def setUp(self):
        self.addCleanup(remove_below, SERVICES)

    def daemon(self):
        return self.enterContext(Daemon())


class Start(Daemons):
    """What runs already is adopted, and in its place when the daemon is ready."""

    def test_processes_of_named_slices(self):
        expected = {sleeper(self, group): path for group, path in (
            ("sshd.slice/ssh.service", "/sshd.slice"),
            ("sshd.slice/ssh@1.service/a/b", "/sshd.slice"),
            ("SMBService.slice/smbd.service", "/SMBService.slice"),
            ("system.slice/cron.service", "/"),
            ("system.slice/sshd.slice", "/"),
        )}
        self.daemon()
        self.assertEqual({pid: service_of(pid) for pid in expected}, expected)

    def test_sessions_that_were_moved_away(self):
        expected = {sleeper(self, group): path for group, path in (
            (open_session(11, "sshd"), "/sshd.slice"),
            (open_session(12, "sshd") + "/below", "/sshd.slice"),
            (open_session(13, "login"), "/"),
            ("user.slice/user-1000.slice/session-14.scope", "/"),
            ("user.slice/user-1000.slice/user@1000.service/app.slice/x.scope", "/"),
        )}
        self.daemon()
        self.assertEqual({pid: service_of(pid) for pid in expected}, expected)


class Following(Daemons):
    def test_a_unit_that_starts(self):
        self.daemon()
        await_service(sleeper(self, "ftpd.slice/vsftpd.service"), "/ftpd.slice")

    def test_a_process_that_comes_to_others(self):
        sleeper(self, "ftpd.slice/vsftpd.service")
        daemon = self.daemon()
        wait_until(daemon.is_at_rest, "the daemon to rest")
        await_service(sleeper(self, "ftpd.slice/vsftpd.service"), "/ftpd.slice")

    def test_a_process_that_is_born_in_its_group(self):
        daemon = self.daemon()
        os.makedirs(f"{UNIFIED}/rsyncd.slice/rsync.service", exist_ok=True)
        wait_until(daemon.is_at_rest, "the daemon to rest")
        pid = born_in("rsyncd.slice/rsync.service", ["sleep", "1000"])
        self.addCleanup(end, pid)
        await_service(pid, "/rsyncd.slice")

    def test_a_unit_that_starts_again_in_the_group_that_it_left(self):
        self.daemon()
        for _ in range(3):
            process = start(["sleep", "1000"], "rsyncd.slice/again.service")
            await_service(process.pid, "/rsyncd.slice")
            stop(process)
            remove_below(f"{UNIFIED}/rsyncd.slice")

    def test_a_session(self):
        self.daemon()
        await_service(sleeper(self, open_session(21, "sshd")), "/sshd.slice")

    def test_a_slice_that_is_added(self):
        self.daemon()
        touch(LOCAL_UNITS + "/ours.slice", NAMED)
        self.addCleanup(os.remove, LOCAL_UNITS + "/ours.slice")
        await_service(sleeper(self, "ours.slice/our.service"), "/ours.slice")

    def test_a_slice_that_gets_and_loses_its_name(self):
        path = touch(LOCAL_UNITS + "/late.slice", "[Unit]\n")
        self.addCleanup(os.remove, path)
        pid = sleeper(self, "late.slice/late.service")
        self.daemon()
        touch(path, NAMED)
        sleeper(self, "sshd.slice/any.service")  # Something happens.
        await_service(pid, "/late.slice")
        touch(path, "[Unit]\n")
        sleeper(self, "sshd.slice/more.service")
        await_service(pid, "/")
        wait_until(lambda: not os.path.exists(SERVICES + "/late.slice"), "the group to be removed")

    def test_what_has_left(self):
        self.daemon()
        pids = [sleeper(self, "sshd.slice/ssh.service") for _ in range(2)]
        for pid in pids:
            await_service(pid, "/sshd.slice")
        join_group("system.slice/run-1.scope", pids[0])
        join_group("ftpd.slice/run-2.scope", pids[1])
        await_service(pids[1], "/ftpd.slice")
        await_service(pids[0], "/")

    def test_all_that_200_forking_units_start(self):
        self.daemon()
        children = []
        for number in range(200):
            group = f"SMBService.slice/fork-{number}.service"
            unit = Announced([sys.executable, "-c", FORKING], group, processes=3)
            self.addCleanup(unit.process.stdout.close)
            self.addCleanup(unit.process.stdin.close)
            unit.process.wait()
            # Who has just ended may be counted for a moment.
            wait_until(lambda group=group: len(members_of(group)) == 3, "the unit's three processes alone")
            children += members_of(group)
        for pid in children:
            self.addCleanup(os.kill, pid, signal.SIGKILL)
        wait_until(lambda: not [pid for pid in children if service_of(pid) != "/SMBService.slice"],
                   "all to be in their slice")

    def test_what_has_come_while_events_were_lost(self):
        daemon = self.daemon()
        os.makedirs(f"{UNIFIED}/ftpd.slice", exist_ok=True)
        with open("/proc/sys/fs/inotify/max_queued_events", encoding="ascii") as file:
            most = int(file.read())
        daemon.process.send_signal(signal.SIGSTOP)
        for number in range(most // 2 + 1):
            os.mkdir(f"{UNIFIED}/ftpd.slice/{number}.service")
            os.rmdir(f"{UNIFIED}/ftpd.slice/{number}.service")
        pid = sleeper(self, "ftpd.slice/late.service")
        daemon.process.send_signal(signal.SIGCONT)
        await_service(pid, "/ftpd.slice")
        await_service(sleeper(self, "ftpd.slice/late.service"), "/ftpd.slice")


class Idle(Daemons):
    def test_host_never_wakes_it(self):
        daemon = self.daemon()
        wait_until(daemon.is_at_rest, "the daemon to rest when it has started")
        await_service(sleeper(self, "sshd.slice/ssh.service"), "/sshd.slice")
        wait_until(daemon.is_at_rest, "the daemon to rest again")


class Names(Daemons):
    def test_are_the_librarys(self):
        with contextlib.ExitStack() as running:
            holder = running.enter_context(Holder("/volume1/file", "ftpd.slice/vsftpd.service"))
            self.assertEqual(open_files("--by", "volume").one("/volume1/file")["service"], "Internal service")
            self.daemon()
            self.assertEqual(open_files("--by", "volume").one("/volume1/file", holder.pid)["service"], "FTP")


class End(Daemons):
    def test_leaves_names_for_the_next(self):
        daemon = self.daemon()
        pid = sleeper(self, "sshd.slice/ssh.service")
        await_service(pid, "/sshd.slice")
        self.assertEqual(daemon.stop()[0], 0)
        self.assertEqual(service_of(pid), "/sshd.slice")

    def test_is_without_a_word_but_one_that_systemd_is_not_there(self):
        self.assertRegex(self.daemon().stop()[1], r"\Avorn-slices: can't listen to systemd: .*\n\Z")

    def test_is_undone(self):
        pid = sleeper(self, "sshd.slice/ssh.service")
        self.daemon().stop()
        self.assertEqual(service_of(pid), "/sshd.slice")
        self.undo_beside_another()
        self.assertEqual(service_of(pid), "/")
        self.assertEqual([entry.name for entry in os.scandir(SERVICES) if entry.is_dir()], ["other"])

    def undo_beside_another(self):
        """The kernel's own hierarchy lives on here, and so does what others have in it."""
        os.mkdir(SERVICES + "/other")
        other = self.mount_elsewhere()
        self.assertEqual(run("--undo"), (0, ""))
        self.assertTrue(os.path.isdir(other + "/other"))

    def mount_elsewhere(self):
        os.makedirs("/run/elsewhere", exist_ok=True)
        mount("-t", "cgroup", "-o", "none,name=systemd", "cgroup", "/run/elsewhere")
        self.addCleanup(output_of, ["umount", "/run/elsewhere"])
        return "/run/elsewhere"


def run(*arguments):
    done = subprocess.run([DAEMON, *arguments], env=plain_environment(), capture_output=True, text=True, check=False,
                          timeout=60)
    return done.returncode, done.stderr


class Unsuitable(unittest.TestCase):
    """It says why and leaves everything alone."""

    def test_where_nothing_is_mounted(self):
        script = f'umount {SERVICES} && "$0"'
        done = subprocess.run(["unshare", "--mount", "sh", "-c", script, DAEMON], env=plain_environment(),
                              capture_output=True, text=True, check=False, timeout=60)
        self.assertEqual((done.returncode, done.stderr),
                         (78, "vorn-slices: no hierarchy name=systemd on /run/vorn/services\n"))

    def test_where_the_hierarchy_is_somebody_elses(self):
        os.makedirs("/run/theirs", exist_ok=True)
        mount("--bind", SERVICES, "/run/theirs")
        self.addCleanup(output_of, ["umount", "/run/theirs"])
        pid = sleeper(self, "sshd.slice/ssh.service")
        status, said = run()
        self.assertEqual((status, "mounted on /run/theirs" in said, service_of(pid)), (78, True, "/"))

    def test_call(self):
        for arguments in (("--unknown",), ("--undo", "more"), ("",)):
            self.assertEqual(run(*arguments)[0], 2, arguments)


class Paper(unittest.TestCase):
    PAGE = os.environ["VORN_SOURCE"] + "/data/man/vorn-slices.8"

    def test_is_well_formed(self):
        output_of(["mandoc", "-T", "lint", "-W", "warning", self.PAGE])

    def test_names_the_options_that_help_names(self):
        usage = subprocess.run([DAEMON, "--help"], capture_output=True, text=True, check=True).stdout
        with open(self.PAGE, encoding="utf-8") as page:
            named = set(re.findall(r"^\.It Fl (-\S+)", page.read(), re.MULTILINE))
        self.assertEqual({f"-{option}" for option in named}, set(re.findall(r"--\w+", usage)))


if __name__ == "__main__":
    unittest.main()
