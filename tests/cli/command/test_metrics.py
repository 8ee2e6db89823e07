"""The metrics as Prometheus itself takes them."""

import os
import re
import socket
import stat
import subprocess
import unittest

from harness.command import run
from harness.files import touch
from harness.monitoring import TEXTFILES, NodeExporter, Prometheus
from harness.processes import Holder
from harness.waiting import PATIENCE, wait_until

OUTPUT = TEXTFILES + "/vorn_openfiles.prom"


class Metrics(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        os.makedirs(TEXTFILES)
        cls.holder = Holder([touch(b'/volume1/a "b\\c\n\xff/x'), touch(b"/volume1/photo/a"), touch(b"/volume2/music/b")])

    @classmethod
    def tearDownClass(cls):
        cls.holder.__exit__()

    def test_promtool_has_nothing_to_say(self):
        for arguments in (["--by", "share"], ["--no-user"], ["--by", "volume"]):
            result = run("metrics", *arguments)
            check = subprocess.run(["promtool", "check", "metrics"], input=result.stdout, capture_output=True,
                                   check=False)
            self.assertEqual((result.returncode, check.returncode, check.stdout, check.stderr), (0, 0, b"", b""))
        self.assertIn(b'{volume="/volume2",service="Internal service",user="-"} 1\n', result.stdout)

    def test_hosts_and_paths_are_no_labels(self):
        labels = set(re.findall(rb'(\w+)="', run("metrics").stdout))
        self.assertEqual(labels, {b"share", b"service", b"user"})

    def test_users_are_none_where_nobody_wants_them(self):
        for sizes in ([], ["--sum", "size,space"]):
            text = run("metrics", "--no-user", *sizes).stdout
            self.assertEqual(set(re.findall(rb'(\w+)="', text)), {b"share", b"service"})
            self.assertIn(b'vorn_openfiles_files{share="photo",service="Internal service"} 1\n', text)
            self.assertIn(b"vorn_openfiles_complete 1\n", text)

    def test_output_replaces_the_file_in_one_step(self):
        with open(OUTPUT, "w") as old, open(OUTPUT) as reader:
            old.write("old")
            old.flush()
            self.assertEqual(run("metrics", "--output", OUTPUT).returncode, 0)
            self.assertEqual(reader.read(), "old")
        with open(OUTPUT) as new:
            self.assertIn("vorn_openfiles_complete 1\n", new.read())
        self.assertEqual(stat.S_IMODE(os.stat(OUTPUT).st_mode), 0o644)
        self.assertEqual(os.listdir(TEXTFILES), ["vorn_openfiles.prom"])

    def test_output_that_cannot_be_written(self):
        result = run("metrics", "--output", "/nowhere/x.prom")
        self.assertEqual(result.returncode, 2)
        self.assertIn(b"can't write '/nowhere/x.prom'", result.stderr)
        os.mkdir("/tmp/folder.prom")
        os.makedirs("/tmp/folder.prom/x")
        self.assertEqual(run("metrics", "--output", "/tmp/folder.prom").returncode, 2)
        self.assertEqual([name for name in os.listdir("/tmp") if name.startswith("folder.prom.")], [])

    def put(self, path):
        result = run("metrics", "--output", path, cwd=TEXTFILES)
        return result.returncode, result.stderr.decode().removeprefix("vorn-openfiles: ")

    def in_folder(self, name):
        path = TEXTFILES + "/" + name
        self.addCleanup(lambda: os.path.lexists(path) and os.unlink(path))
        return path

    def test_output_follows_links_to_what_they_lead_to(self):
        target, link, further = map(self.in_folder, ("target", "link", "further"))
        os.symlink("target", link)
        os.symlink(link, further)
        for path in (link, further, "link"):
            with self.subTest(path):
                self.assertEqual(self.put(path), (0, ""))
                self.assertTrue(os.path.islink(link) and os.path.islink(further))
                with open(target) as file:
                    self.assertIn("vorn_openfiles_complete 1\n", file.read())
                os.unlink(target)
        os.unlink(link)
        os.symlink(further, link)
        self.assertEqual(self.put(link), (2, f"can't write '{link}': Too many levels of symbolic links\n"))

    def test_output_is_written_into_a_device(self):
        null, full = map(self.in_folder, ("null", "full"))
        os.mknod(null, stat.S_IFCHR | 0o666, os.makedev(1, 3))
        os.mknod(full, stat.S_IFCHR | 0o666, os.makedev(1, 7))
        self.assertEqual(self.put(null), (0, ""))
        self.assertEqual(self.put(full), (2, f"can't write '{full}': No space left on device\n"))
        self.assertEqual([os.stat(path).st_rdev for path in (null, full)], [os.makedev(1, 3), os.makedev(1, 7)])

    def test_output_is_written_into_a_fifo(self):
        fifo = self.in_folder("fifo")
        os.mkfifo(fifo)
        with subprocess.Popen(["timeout", str(PATIENCE), "cat", fifo], stdout=subprocess.PIPE) as reader:
            self.assertEqual(self.put(fifo), (0, ""))
            self.assertIn(b"vorn_openfiles_complete 1\n", reader.stdout.read())
        self.assertTrue(stat.S_ISFIFO(os.stat(fifo).st_mode))

    def test_output_leaves_alone_what_is_none(self):
        disk, named = map(self.in_folder, ("disk", "socket"))
        os.mknod(disk, stat.S_IFBLK | 0o600, os.makedev(7, 250))
        with socket.socket(socket.AF_UNIX) as listener:
            listener.bind(named)
            for path in (disk, named):
                before = os.stat(path)
                why = "it is neither a file nor a FIFO nor a character device"
                self.assertEqual(self.put(path), (2, f"can't write '{path}': {why}\n"))
                self.assertEqual(os.stat(path), before)
        self.assertEqual(self.put("/tmp"), (2, "can't write '/tmp': it is a folder\n"))

    def test_output_dash_is_standard_output(self):
        result = run("metrics", "--output", "-", cwd=TEXTFILES)
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        self.assertIn(b"vorn_openfiles_complete 1\n", result.stdout)
        self.assertFalse(os.path.exists(TEXTFILES + "/-"))

    def test_prometheus_reads_them_from_the_node_exporter(self):
        self.assertEqual(run("metrics", "--output", OUTPUT).returncode, 0)
        exporter = NodeExporter()
        self.addCleanup(exporter.stop)
        prometheus = Prometheus(exporter)
        self.addCleanup(prometheus.stop)
        result = wait_until(lambda: prometheus.query("vorn_openfiles_files"), "Prometheus to have read the metrics")
        self.assertEqual({series["metric"]["share"]: series["value"][1] for series in result},
                         {'a "b\\c\n\ufffd': "1", "photo": "1", "music": "1"})
