"""What people see: widths, colours and the watch."""

import json
import os
import re
import signal
import subprocess
import time
import unicodedata
import unittest

from harness.command import COMMAND, run
from harness.files import touch
from harness.processes import Holder, output_of, stop
from harness.terminal import Terminal

LONG = "/volume1/photo/" + "holiday on the sea " * 8 + "\u5199\u771f\u5199\u771f.jpg"


def columns(text):
    """Columns that a terminal takes for a text without escapes."""
    return sum(0 if unicodedata.combining(c) else 2 if unicodedata.east_asian_width(c) in "WF" else 1 for c in text)


class OnATerminal(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.holder = Holder([touch(LONG.encode()), touch(b"/volume1/photo/a.jpg")])

    @classmethod
    def tearDownClass(cls):
        cls.holder.__exit__()

    def test_table_fits_every_width(self):
        for width in (20, 40, 79, 80, 132):
            status, lines = Terminal(COMMAND, columns=width, NO_COLOR="1").finish()
            self.assertEqual((status, len(lines), lines[-1]), (0, 4, ""))
            self.assertLessEqual(max(map(columns, lines)), width)
            self.assertTrue(any("\u2026" in line for line in lines))
        self.assertTrue(any(line.endswith("\u771f.jpg") for line in lines))

    def test_counts_fit_every_width(self):
        for width in (20, 40, 79, 80, 132):
            status, lines = Terminal(COMMAND, "--count-by", "service,path", columns=width, NO_COLOR="1").finish()
            self.assertEqual((status, len(lines), lines[-1]), (0, 4, ""))
            self.assertLessEqual(max(map(columns, lines)), width)

    def test_long_path_is_whole_where_it_fits_and_off_a_terminal(self):
        _, lines = Terminal(COMMAND, columns=400, NO_COLOR="1").finish()
        self.assertTrue(any(line.endswith(LONG[len("/volume1/"):]) for line in lines))
        self.assertIn(LONG[len("/volume1/"):].encode(), run().stdout)

    def test_ascii_locale(self):
        _, lines = Terminal(COMMAND, columns=60, NO_COLOR="1", LANG="C").finish()
        self.assertTrue(any("\\..." in line for line in lines))
        self.assertLessEqual(max(map(columns, lines)), 60)

    def test_colour_on_a_terminal_alone(self):
        self.assertIn("\x1b[1mSERVICE", "\n".join(Terminal(COMMAND).finish()[1]))
        for env in ({"NO_COLOR": "1"}, {"TERM": "dumb"}):
            self.assertNotIn("\x1b", "\n".join(Terminal(COMMAND, **env).finish()[1]))
        self.assertNotIn(b"\x1b", run(env={"TERM": "xterm"}).stdout)

    def test_watch_marks_what_is_new_and_leaves_the_screen_as_it_was(self):
        terminal = Terminal(COMMAND, "--watch", "0.1", columns=70)
        self.assertIn(b"\x1b[?1049h", terminal.wait_for(b"a.jpg"))
        with Holder([touch(b"/volume1/photo/new.jpg")]):
            self.assertIn(b"\x1b[32m+", terminal.wait_for(b"new.jpg"))
        terminal.wait_for(b"1 closed")
        terminal.process.send_signal(signal.SIGINT)
        status, lines = terminal.finish()
        self.assertEqual(status, 0)
        self.assertTrue("\n".join(lines).endswith("\x1b[?25h\x1b[?1049l"))

    def test_watch_shows_on_its_screen_what_was_left_out(self):
        terminal = Terminal(COMMAND, "--watch", "0.1", columns=300)
        terminal.wait_for(b"a.jpg")
        with Holder([touch(b"/volume")]) as holder:
            terminal.wait_for(b'left out an object named "/volume"')
            terminal.wait_for(f"held open by: {holder.pid}".encode())
        os.unlink("/volume")
        terminal.process.send_signal(signal.SIGINT)
        self.assertEqual(terminal.finish()[0], 0)

    def test_watch_follows_the_size(self):
        terminal = Terminal(COMMAND, "--watch", "1000", columns=60, NO_COLOR="1")
        terminal.wait_for(b"\x1b[J")
        terminal.resize(300, 24)
        terminal.wait_for(LONG[len("/volume1/"):].encode())
        terminal.wait_for(b"\x1b[J")
        terminal.resize(20, 4)
        screen = terminal.wait_for(b"\x1b[J").decode()
        self.assertEqual(screen.count("\r\n"), 3)
        for line in screen.replace("\x1b[H", "").replace("\x1b[K", "").replace("\x1b[J", "").split("\r\n"):
            self.assertLessEqual(columns(line), 20)
        terminal.process.send_signal(signal.SIGTERM)
        self.assertEqual(terminal.finish()[0], 0)

    @staticmethod
    def rows(screen):
        """Of a drawn look, lines that are too long as they go on."""
        text = re.sub("\x1b\\[[?]?[0-9]*[a-zA-Z]", "", screen.decode())
        return text.split("\r\n")

    def test_watch_is_wide_on_request(self):
        for height in (24, 8, 7, 4):
            terminal = Terminal(COMMAND, "--watch", "1000", "--wide", "-o", "path", columns=30, lines=height)
            rows = self.rows(terminal.wait_for(b"\x1b[J"))
            terminal.type("q")
            self.assertEqual(self.ended(terminal), 0)
            # A line of status, the heading, one line that fits and one that takes six rows.
            self.assertEqual([row.strip() for row in rows[1:3]], ["PATH", "photo/a.jpg"][:height - 2])
            wide = [row for row in rows if LONG[len("/volume1/"):] in row]
            self.assertEqual((len(wide), rows[-1]), (1, wide[0]) if height >= 9 else (0, "1 more"))
            self.assertLessEqual(sum(-(-columns(row) // 30) for row in rows), height)

    def test_watch_has_sections(self):
        with Holder([touch(b"/volume1/photo/b.jpg")]) as other:
            for height, left in ((24, None), (7, None), (6, "1 more"), (5, "2 more"), (4, "3 more")):
                terminal = Terminal(COMMAND, "--watch", "1000", "--group-by", "pid", "-o", "pid,filename", lines=height)
                rows = self.rows(terminal.wait_for(b"\x1b[J"))
                terminal.type("q")
                self.assertEqual(self.ended(terminal), 0)
                self.assertLessEqual(len(rows), height)
                sections = [int(row.split()[1]) for row in rows if row.startswith("pid ")]
                self.assertEqual(sections, sorted([self.holder.pid, other.pid])[:len(sections)])
                self.assertEqual(rows[-1] if left else None, left)
                self.assertFalse(rows[-2 if left else -1].startswith("pid "), rows)

    def watch(self, *arguments, **terminal):
        """A watch that has drawn its first look."""
        watched = Terminal(COMMAND, "--watch", "0.1", *arguments, **terminal)
        watched.wait_for(b" open, ")
        return watched

    def ended(self, terminal):
        """Its exit status; the terminal is as it was."""
        status, lines = terminal.finish()
        self.assertTrue("\n".join(lines).endswith("\x1b[?25h\x1b[?1049l"), lines[-3:])
        self.assertEqual(terminal.settings_after, terminal.settings_before)
        return status

    def test_watch_ends_at_any_time_and_leaves_the_terminal_as_it_was(self):
        for attempt in range(24):
            terminal = self.watch(*(["--timeout", "30"] if attempt % 2 else []))
            time.sleep(attempt * 0.005)
            # As Ctrl-C does: to all processes on the terminal.
            os.killpg(terminal.process.pid, (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)[attempt % 3])
            self.assertEqual(self.ended(terminal), 0)

    def test_watch_is_ended_by_a_key(self):
        for key in ("q", "xQ"):
            terminal = self.watch()
            self.assertNotEqual(terminal.settings(), terminal.settings_before)
            terminal.type(key)
            self.assertEqual(self.ended(terminal), 0)

    def test_watch_that_found_nothing_ends_so(self):
        terminal = self.watch("/volume2")
        terminal.type("q")
        self.assertEqual(self.ended(terminal), 1)

    def test_watch_can_be_suspended(self):
        terminal = self.watch()
        terminal.process.send_signal(signal.SIGTSTP)
        terminal.wait_for(b"\x1b[?25h\x1b[?1049l")
        os.waitid(os.P_PID, terminal.process.pid, os.WSTOPPED)
        self.assertEqual(terminal.settings(), terminal.settings_before)
        terminal.process.send_signal(signal.SIGCONT)
        terminal.wait_for(b"\x1b[?1049h")
        terminal.wait_for(b" open, ")
        terminal.type("q")
        self.assertEqual(self.ended(terminal), 0)

    def test_watch_says_why_it_failed_on_the_terminal_as_it_was(self):
        terminal = Terminal("unshare", "--mount", "sh", "-c",
                            f'(sleep 1; umount -l /volume1 /volume2) & exec "{COMMAND}" --watch 0.1')
        terminal.wait_for(b" open, ")
        status, lines = terminal.finish()
        self.assertEqual(status, 2)
        self.assertRegex("\n".join(lines), r"\x1b\[\?1049lvorn-openfiles: no data volume is mounted[^\x1b]*\Z")

    def test_watch_on_a_dumb_terminal_writes_no_escape_sequence(self):
        terminal = Terminal(COMMAND, "--watch", "0.1", TERM="dumb")
        terminal.wait_for(b"a.jpg")
        with Holder([touch(b"/volume1/photo/new.jpg")]):
            drawn = terminal.wait_for(b"1 new") + terminal.wait_for(b"new.jpg")
            self.assertIn(b"+  Internal service", drawn)
        drawn += terminal.wait_for(b"1 closed")
        terminal.type("q")
        status, lines = terminal.finish()
        self.assertEqual((status, "\x1b" in drawn.decode() + "".join(lines)), (0, False))

    def test_watch_counts_what_a_low_window_has_no_room_for(self):
        with Holder([touch(b"/volume1/photo/%d" % number) for number in range(4)]):
            for lines, shown in ((4, 1), (5, 2), (7, 4), (2, 0)):
                terminal = Terminal(COMMAND, "--watch", "60", lines=lines)
                drawn = terminal.wait_for(b"\x1b[J").split(b"\x1b[H")[1]
                terminal.type("q")
                terminal.finish()
                drawn_lines = drawn.split(b"\r\n")
                self.assertLessEqual(len(drawn_lines), lines)
                self.assertEqual(drawn.count(b"photo/"), shown, drawn)
                self.assertEqual(drawn_lines[-1], b"%d more\x1b[K\x1b[J" % (6 - shown))
            terminal = Terminal(COMMAND, "--watch", "60", lines=8)
            self.assertNotIn(b"more", terminal.wait_for(b"\x1b[J"))
            terminal.type("q")
            terminal.finish()

    def test_width_of_the_environment_counts_where_the_terminal_knows_none(self):
        for env, width in (({"COLUMNS": "50"}, 50), ({"COLUMNS": "5x"}, 80), ({"COLUMNS": "0"}, 80), ({}, 80)):
            status, lines = Terminal(COMMAND, columns=0, lines=0, NO_COLOR="1", **env).finish()
            self.assertEqual((status, max(map(columns, lines))), (0, width), env)

    def test_watch_needs_a_terminal_for_its_table(self):
        result = run("--watch")
        self.assertEqual(result.returncode, 2)
        self.assertIn(b"--format jsonl", result.stderr)


class Events(unittest.TestCase):
    def start(self, *arguments):
        return subprocess.Popen([COMMAND, "--watch", "0.1", "--format", "jsonl", *arguments],
                                stdout=subprocess.PIPE)

    def test_opened_and_closed_with_the_whole_record(self):
        with Holder([touch(b"/volume1/photo/first")]):
            watch = self.start("/volume1/photo/first", "/volume1/photo/second")
            first = json.loads(watch.stdout.readline())
            with Holder([touch(b"/volume1/photo/second")]) as holder:
                opened = json.loads(watch.stdout.readline())
            closed = json.loads(watch.stdout.readline())
            watch.send_signal(signal.SIGTERM)
            self.assertEqual((watch.stdout.read(), watch.wait(20)), (b"", 0))
            watch.stdout.close()
        self.assertEqual([(each["event"], each["initial"], each["file"]["filename"])
                          for each in (first, opened, closed)],
                         [("opened", True, "first"), ("opened", False, "second"), ("closed", False, "second")])
        self.assertEqual(opened["file"], closed["file"])
        self.assertEqual(opened["file"]["pid"], str(holder.pid))

    def test_have_the_members_that_events_of_the_kernel_have(self):
        with Holder([touch(b"/volume1/photo/first")]) as holder:
            watch = self.start("/volume1/photo/first", "/volume1/photo/second")
            lines = [json.loads(watch.stdout.readline())]
            with Holder([touch(b"/volume1/photo/second")]):
                lines += [json.loads(watch.stdout.readline())]
            lines += [json.loads(watch.stdout.readline())]
            with open(f"/proc/{holder.pid}/stat", encoding="ascii") as file:
                start = int(file.read().rpartition(")")[2].split()[19])
            stop(watch)
        self.assertEqual([line["seq"] for line in lines], [1, 2, 3])
        self.assertEqual({(line["schema"], line["node"], line["volume"]) for line in lines},
                         {(1, os.uname().nodename, "/volume1")})
        self.assertEqual(len({(line["run"], line["machine_id"]) for line in lines}), 1)
        self.assertEqual(lines[0]["process_start"], start)
        self.assertEqual(lines[1]["process_start"], lines[2]["process_start"])
        self.assertRegex(lines[0]["at"], r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{6}Z$")

    def test_tell_readers_of_the_second_schema_once_what_looks_may_lack(self):
        for folder in ("/volume1/inner", "/mnt/outside"):
            os.makedirs(folder, exist_ok=True)
        output_of(["mount", "--bind", "/volume1/inner", "/mnt/outside"])
        self.addCleanup(output_of, ["umount", "/mnt/outside"])
        for schema, events in (("1", ["opened", "closed"]), ("2", ["opened", "incomplete", "closed"])):
            held = Holder([touch(b"/volume1/photo/first")])
            watch = self.start("/volume1/photo/first", "--schema", schema)
            lines = [json.loads(watch.stdout.readline()) for _ in events[:-1]]
            held.stop()
            lines.append(json.loads(watch.stdout.readline()))
            stop(watch)
            self.assertEqual([line["event"] for line in lines], events)
            self.assertEqual([line["seq"] for line in lines], list(range(1, len(events) + 1)))

    def test_that_never_saw_anything_ends_so(self):
        for arguments in ([], ["--timeout", "30"]):
            watch = self.start("/volume2", *arguments)
            time.sleep(0.5)
            watch.terminate()
            self.assertEqual((watch.communicate(timeout=20)[0], watch.returncode), (b"", 1))

    def test_looking_leaves_no_dead_process_behind(self):
        with Holder([touch(b"/volume1/photo/first")]):
            watch = self.start("--timeout", "30")
            watch.stdout.readline()
            time.sleep(1)
            watch.send_signal(signal.SIGSTOP)
            states = subprocess.run(["ps", "--ppid", str(watch.pid), "-o", "stat="], capture_output=True, check=True)
            watch.send_signal(signal.SIGCONT)
            watch.terminate()
            watch.communicate(timeout=20)
        self.assertEqual(len(states.stdout.split()), 1, states.stdout)

    def test_interrupt_ends_it_with_a_time_limit_as_well(self):
        with Holder([touch(b"/volume1/photo/first")]):
            watch = self.start("--timeout", "30")
            watch.stdout.readline()
            watch.send_signal(signal.SIGINT)
            watch.stdout.read()
            self.assertEqual(watch.wait(20), 0)
            watch.stdout.close()

    def test_closed_pipe_ends_it_though_nothing_happens(self):
        with Holder([touch(b"/volume1/photo/first")]):
            watch = self.start()
            watch.stdout.readline()
            watch.stdout.close()
            self.assertEqual(watch.wait(20), 0)
