"""Standard descriptors that are closed, full or nobody's: the answer's status is what it would be."""

import os
import subprocess
import unittest

from harness.command import COMMAND, run
from harness.files import touch
from harness.processes import Holder

AS_NOBODY = ["setpriv", "--reuid", "65534", "--regid", "65534", "--clear-groups", "--inh-caps=-all"]


def status_of(shell_redirection, prefix, arguments):
    """Of the command behind a shell's redirection."""
    script = f'exec "$@" {shell_redirection}'
    return subprocess.run(["sh", "-c", script, "sh", *prefix, COMMAND, *arguments], stdout=subprocess.DEVNULL,
                          stderr=subprocess.DEVNULL, check=False, timeout=60).returncode


class StandardError(unittest.TestCase):
    CASES = (([], ["--sotr", "pid"], 2), ([], ["--where"], 2), ([], ["/etc"], 2), ([], ["metrics", "--output", "/"], 2),
             (AS_NOBODY, [], 1), (AS_NOBODY, ["--json"], 1), (AS_NOBODY, ["-q", "--strict"], 2),
             (AS_NOBODY, ["--strict", "--timeout", "60"], 2), ([], [], 0), ([], ["--timeout", "60"], 0))

    @classmethod
    def setUpClass(cls):
        cls.holder = Holder([touch(b"/volume1/photo/a.jpg")])

    @classmethod
    def tearDownClass(cls):
        cls.holder.__exit__()

    def test_that_cannot_be_written_changes_no_status(self):
        for redirection in ("2>&-", "2>/dev/full", "<&- 2>&-", "2>/dev/null"):
            for prefix, arguments, status in self.CASES:
                self.assertEqual(status_of(redirection, prefix, arguments), status, (redirection, arguments))

    def test_that_nobody_reads_changes_no_status(self):
        for prefix, arguments, status in self.CASES:
            reader, writer = os.pipe()
            os.close(reader)
            result = subprocess.run([*prefix, COMMAND, *arguments], stdout=subprocess.DEVNULL, stderr=writer,
                                    check=False, timeout=60)
            os.close(writer)
            self.assertEqual(result.returncode, status, arguments)


class ClosedDescriptors(unittest.TestCase):
    def test_are_those_of_no_other_file(self):
        with Holder([touch(b"/volume1/photo/a.jpg")]):
            script = 'exec "$@" 0<&- 2>&-'
            watch = subprocess.Popen(["sh", "-c", script, "sh", COMMAND, "--watch", "60", "--format", "jsonl"],
                                     stdout=subprocess.PIPE)
            watch.stdout.readline()
            held = [os.readlink(f"/proc/{watch.pid}/fd/{fd}") for fd in (0, 2)]
            watch.terminate()
            watch.communicate(timeout=60)
        self.assertEqual(held, ["/dev/null", "/dev/null"])

    def test_output_is_missed(self):
        for redirection in (">&-", ">&- 2>&-", "<&- >&- 2>&-"):
            for arguments in (["--help"], ["--timeout", "60"], ["--json"], ["check"], ["metrics"]):
                with Holder([touch(b"/volume1/photo/a.jpg")]):
                    self.assertEqual(status_of(redirection, [], arguments), 2, (redirection, arguments))


class Words(unittest.TestCase):
    """What is said to somebody who mistyped."""

    def said(self, *arguments):
        result = run(*arguments, cwd="/tmp")
        self.assertEqual((result.returncode, result.stdout), (2, b""))
        return result.stderr.decode().splitlines()[0].removeprefix("vorn-openfiles: ")

    def test_value_that_is_missing(self):
        self.assertEqual(self.said("--where"), "--where needs COLUMN=TEXT behind it")
        self.assertEqual(self.said("--deleted"), "--deleted needs 'yes', 'no' or 'only' behind it")
        self.assertEqual(self.said("check", "--timeout"), "--timeout needs a number of seconds behind it")

    def test_command_that_is_mistyped(self):
        on_no_volume = "is on no volume; the volumes are: /volume1, /volume2"
        self.assertEqual(self.said("lsit"), f"'/tmp/lsit' {on_no_volume} (did you mean 'list'?)")
        self.assertEqual(self.said("metrcis"), f"'/tmp/metrcis' {on_no_volume} (did you mean 'metrics'?)")
        self.assertEqual(self.said("./lsit"), f"'/tmp/lsit' {on_no_volume}")
        self.assertEqual(self.said("help", "chek"), "there is no command 'chek' (did you mean 'check'?)")

    def test_path_on_no_volume_is_quoted_and_escaped(self):
        self.assertEqual(self.said("/etc/a 'b'\n"),
                         r"'/etc/a 'b'\n' is on no volume; the volumes are: /volume1, /volume2")

    def test_each_command_has_its_help(self):
        for command in ("list", "services", "check", "metrics"):
            asked = run("help", command)
            self.assertEqual((asked.returncode, asked.stderr), (0, b""))
            self.assertEqual(run(command, "--help").stdout, asked.stdout)
            self.assertEqual(run(command, "-h").stdout, asked.stdout)
            self.assertRegex(asked.stdout.decode(), rf"\AUsage: vorn-openfiles \[?{command}")
        self.assertEqual(run("help").stdout, run("--help").stdout)
        self.assertEqual(run("-V").stdout, run("--version").stdout)
        self.assertRegex(run("-V").stdout.decode(), r"\Avorn-openfiles \d+\.\d+\.\d+\n\Z")
