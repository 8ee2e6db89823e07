"""Every example of help and man page, as it is printed, gives the right answer."""

import os
import re
import signal
import subprocess
import unittest

from harness.command import COMMAND, run
from harness.files import touch, write_file
from harness.processes import Holder, plain_environment
from harness.terminal import Terminal

MAN_PAGE = os.environ["VORN_SOURCE"] + "/data/man/vorn-openfiles.8"
BIN = "/tmp/bin"
PRIVATE_VOLUMES = "/etc/vorn/private-volumes"
PROMETHEUS = "/var/lib/prometheus/node-exporter"
WIDE = "200"

# What each prints, and its exit status, while the files below are open.
PHOTO, GONE, OLD = b"photo/2024/a.jpg", b"/volume1/projects/2023.tar", b"/volume1/photo/old/b"
CHECK = "vorn-openfiles check || mail -s 'open files: something is missing' root"
ANSWERS = {
    "vorn-openfiles /volume1/photo": (0, PHOTO),
    "vorn-openfiles --where user=alice --columns host,path": (1, b""),
    "vorn-openfiles --where user=alice --sort host": (1, b""),
    "vorn-openfiles --by volume --deleted only /volume1": (0, GONE + b" (deleted)"),
    "vorn-openfiles --deleted only --count-by owner --sum space": (0, b"TOTAL_SPACE  OWNER"),
    "vorn-openfiles --where mode=w --since 1h --sort size --reverse -o +size": (1, b""),
    "vorn-openfiles busy /volume1": (0, PHOTO),
    "vorn-openfiles busy /volume1/photo": (0, PHOTO),
    "vorn-openfiles idle /volume1 && umount /volume1": (1, PHOTO),
    "vorn-openfiles --count-by service --limit 5": (0, b"3  Internal service"),
    "vorn-openfiles --count-by service": (0, b"3  Internal service"),
    "vorn-openfiles --deleted no --print0 full_path | xargs -0 ls -ld": (0, OLD),
    "vorn-openfiles services": (0, b"SSH"),
    CHECK: (0, b"ok       processes: every process can be examined"),
    f"vorn-openfiles metrics --output {PROMETHEUS}/vorn_openfiles.prom": (0, b""),
}
# Those that end otherwise have a test of their own; of the last one Debian's systemd is in charge.
WATCHES = {"vorn-openfiles --watch --format jsonl | jq .": b'"event": "opened"',
           "vorn-openfiles --watch --format jsonl | jq -r '[.at, .event, .file.user, .file.path] | @tsv'":
               b"\topened\t-\t" + PHOTO}
# These wait for the end of what is open.
WAITS = {"vorn-openfiles idle --wait=60 /volume1", "vorn-openfiles idle --wait=60 /volume1 && umount /volume1"}
# A sample host has a PID namespace of its own.
INSIDE = b"vorn-openfiles: incomplete: this is a PID namespace, which hides the processes outside of it " \
         b"(with --inside they are left out of account)\n"
SCREEN = "vorn-openfiles --watch"
KILL = "vorn-openfiles --pids /volume1/photo/old | xargs -r kill"
TIMER = "systemctl enable --now vorn-openfiles-metrics.timer"


def of_man_page(renderer):
    """Lines that are set off below the recipes' questions."""
    page = subprocess.run(renderer, capture_output=True, check=True,
                          env=plain_environment(MANWIDTH=WIDE, MANROFFOPT="-rLL=200n")).stdout.decode()
    plain = re.sub(r"\x1b\[[0-9;]*m", "", re.sub(r".\x08", "", page))
    recipes = plain.split("\nRECIPES\n")[1].split("\nLIMITS\n")[0]
    return {line.strip() for line in recipes.splitlines() if line.startswith(" " * 8)}


def of_help():
    """What stands before the explanation, two blanks or more."""
    examples = set()
    for command in ([], ["services"], ["check"], ["metrics"], ["busy"]):
        text = run(*command, "--help").stdout.decode()
        lines = re.split(r"\nExamples?:\n", text)[1].splitlines()
        examples |= {re.split(r" {2,}", line.strip())[0] for line in lines}
    return examples


class Examples(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        os.makedirs(BIN)
        os.symlink(COMMAND, BIN + "/vorn-openfiles")
        write_file(BIN + "/mail", '#!/bin/sh\nprintf "%s|" "$@"\n', 0o755)
        os.makedirs(PROMETHEUS, exist_ok=True)
        touch("/usr/lib/systemd/system/sshd.slice", "[X-Vornalis]\nName=SSH\n")

    def setUp(self):
        self.enterContext(Holder([touch(b"/volume1/" + PHOTO), touch(GONE)]))
        os.unlink(GONE)
        self.old = self.enterContext(Holder([touch(OLD)]))

    def environment(self):
        return plain_environment(PATH=f"{BIN}:{os.environ['PATH']}")

    def test_are_those_that_are_tried(self):
        tried = {*ANSWERS, *WATCHES, *WAITS, SCREEN, KILL, TIMER}
        page = of_man_page(["mandoc", "-T", "utf8", "-O", "width=" + WIDE, MAN_PAGE])
        self.assertEqual(page, of_man_page(["man", "--local-file", "--encoding=UTF-8", "--no-hyphenation", MAN_PAGE]))
        self.assertEqual(page | of_help(), tried)

    def test_give_the_right_answers(self):
        for example, (status, said) in ANSWERS.items():
            with self.subTest(example):
                done = subprocess.run(["bash", "-c", example], env=self.environment(), capture_output=True,
                                      stdin=subprocess.DEVNULL, check=False, timeout=60)
                in_use = " busy " in example or " idle " in example
                self.assertEqual((done.returncode, done.stderr), (status, INSIDE if in_use else b""))
                self.assertIn(said, done.stdout)
                self.assertEqual(done.stdout == b"", said == b"")
        with open(PROMETHEUS + "/vorn_openfiles.prom", "rb") as metrics:
            self.assertIn(b"vorn_openfiles_files{", metrics.read())

    def test_tell_root_what_is_missing(self):
        os.rename(PRIVATE_VOLUMES, PRIVATE_VOLUMES + ".away")
        self.addCleanup(os.rename, PRIVATE_VOLUMES + ".away", PRIVATE_VOLUMES)
        done = subprocess.run(["bash", "-c", CHECK], env=self.environment(), capture_output=True, check=False,
                              timeout=60)
        self.assertEqual(done.returncode, 0)
        self.assertTrue(done.stdout.endswith(b"\n-s|open files: something is missing|root|"), done.stdout)

    def test_wait_until_nothing_is_open(self):
        for example in WAITS:
            with self.subTest(example):
                waits = subprocess.Popen(["bash", "-c", example], env=self.environment(), stdout=subprocess.PIPE,
                                         stderr=subprocess.STDOUT, start_new_session=True)
                self.addCleanup(waits.communicate)
                self.addCleanup(os.killpg, waits.pid, signal.SIGKILL)
                with self.assertRaises(subprocess.TimeoutExpired):
                    waits.wait(1)

    def test_watch_files(self):
        # As many as make jq write, which it does in blocks where nobody looks on.
        for number in range(300):
            touch(b"/volume1/photo/many/%d" % number)
        self.enterContext(Holder(folder="/volume1/photo/many"))
        for example, said in WATCHES.items():
            with self.subTest(example):
                watch = subprocess.Popen(["bash", "-c", example], env=self.environment(), stdout=subprocess.PIPE,
                                         start_new_session=True)
                read = b""
                while said not in read:
                    chunk = os.read(watch.stdout.fileno(), 65536)
                    self.assertTrue(chunk, read)
                    read += chunk
                os.killpg(watch.pid, signal.SIGKILL)
                watch.communicate()

    def test_show_a_screen(self):
        terminal = Terminal("bash", "-c", SCREEN, PATH=self.environment()["PATH"])
        terminal.wait_for(PHOTO)
        terminal.type("q")
        self.assertEqual(terminal.finish()[0], 0)

    def test_end_processes(self):
        subprocess.run(["bash", "-c", KILL], env=self.environment(), check=True, timeout=60)
        self.assertEqual(self.old.process.wait(60), -signal.SIGTERM)


if __name__ == "__main__":
    unittest.main()
