"""10,000 files whose names are random bytes go through every format and come back."""

import base64
import csv
import io
import json
import os
import random
import re
import subprocess
import unittest

from harness.command import PHOTO, run, unescape
from harness.processes import Holder

FILES = 10000
MARK = b" (deleted)"
NASTY = [
    b"\n", b"a\nb", b"\n\n", b"a\r\nb", b"\t", b" ", b"  ", b" a", b"a ", b"a  b", b"\\", b"\\n", b"\\x41",
    b"\\u{41}", b'"', b'"",""', b",", b"'", b"-", b"--help", b"=cmd()", b"\x1b[2J\x1b[31mred", b"\x1b]0;title\x07",
    b"\x7f", b"\x80", b"\x9b31m", "\u009b31m".encode(), "\u202egpj.exe".encode(), "\u2066x\u2069".encode(),
    "\u200bzero".encode(), "\ufeffbom".encode(), "\u2028line".encode(), "\u2026".encode(), "e\u0301".encode(),
    "\u5199\u771f".encode(), "\U0001f600".encode(), "\U000e0041".encode(), b"\xed\xa0\x80", b"\xf4\x90\x80\x80",
    b"\xc0\xaf", b"\xff" * 255, b"n" * 255, b"\n" * 255, "\u5199".encode() * 85, b"x (deleted)", b" (deleted)",
    b"y (deleted) (deleted)", b"true", b"null", b"{}", b"%s%n", b"$(id)", b"`id`", b"\x00"[:0] + b"~",
]


def names():
    """Different names of every length and of every byte but "/" and NUL."""
    generator = random.Random(20240307)
    allowed = [byte for byte in range(1, 256) if byte != ord("/")]
    found = set(NASTY)
    while len(found) < FILES:
        name = bytes(generator.choices(allowed, k=generator.randint(1, 255)))
        if name not in (b".", b".."):
            found.add(name)
    return sorted(found)


class HostileNames(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        os.mkdir(PHOTO)
        cls.paths = [PHOTO + b"/" + name for name in names()]
        for path in cls.paths:
            os.close(os.open(path, os.O_CREAT | os.O_WRONLY, 0o600))
        cls.holder = Holder(folder=PHOTO)
        # Every tenth stays open without a name.
        cls.gone = set(cls.paths[::10]) - {path[:-len(MARK)] for path in cls.paths}
        for path in cls.gone:
            os.unlink(path)
        cls.held = sorted(path + MARK if path in cls.gone else path for path in cls.paths)

    @classmethod
    def tearDownClass(cls):
        cls.holder.__exit__()

    def output(self, *arguments):
        result = run(*arguments)
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        return result.stdout

    def strict_json(self, text):
        def refuse(constant):
            raise ValueError(constant)

        def unique(pairs):
            self.assertEqual(len(pairs), len({key for key, _ in pairs}))
            return dict(pairs)

        return json.loads(text.decode("utf-8", "strict"), parse_constant=refuse, object_pairs_hook=unique)

    @staticmethod
    def whole(file, key):
        encoded = file.get(key + "_b64")
        return base64.b64decode(encoded, validate=True) if encoded else file[key].encode()

    def check_files(self, files):
        self.assertEqual(sorted(self.whole(file, "full_path") for file in files), self.held)
        for file in files:
            full = self.whole(file, "full_path")
            self.assertEqual(self.whole(file, "filename"), full[len(PHOTO) + 1:])
            self.assertEqual(self.whole(file, "path"), full[len(b"/volume1/"):])
            self.assertEqual(file["deleted"], full.endswith(MARK) and full[:-len(MARK)] in self.gone)

    def test_json(self):
        document = self.strict_json(self.output("--json"))
        self.assertEqual((document["schema"], document["by"], document["complete"]), (1, "share", True))
        self.check_files(document["files"])

    def test_jsonl(self):
        self.check_files([self.strict_json(line) for line in self.output("--format", "jsonl").split(b"\n")[:-1]])

    def test_jq(self):
        program = '.files[] | .full_path_b64 // (.full_path | @base64)'
        lines = subprocess.run(["jq", "-r", program], input=self.output("--json"), stdout=subprocess.PIPE,
                               check=True).stdout.split()
        self.assertEqual(sorted(map(base64.b64decode, lines)), self.held)

    def test_csv(self):
        text = io.TextIOWrapper(io.BytesIO(self.output("--format", "csv")), "latin-1", newline="")
        rows = list(csv.DictReader(text, strict=True))
        self.assertEqual(sorted(row["full_path"].encode("latin-1") for row in rows), self.held)

    def test_print0(self):
        self.assertEqual(sorted(self.output("--print0", "full_path").split(b"\0")[:-1]), self.held)

    def check_table(self, locale):
        result = run("--by", "volume", env={"LANG": locale, "LC_ALL": locale})
        lines = result.stdout.split(b"\n")
        self.assertEqual(len(lines), len(self.held) + 2)
        self.assertEqual(lines[0].split(), [b"SERVICE", b"PID", b"USER", b"HOST", b"PATH"])
        cells = [re.split(rb" {2,}", line.lstrip()) for line in lines[1:-1]]
        self.assertEqual({len(row) for row in cells}, {5})
        self.assertEqual(sorted(unescape(row[4]) for row in cells), self.held)
        return result.stdout

    def test_table(self):
        text = self.check_table("C.UTF-8").decode("utf-8", "strict")
        self.assertNotRegex(text, "[\x00-\x09\x0b-\x1f\x7f-\x9f\u202a-\u202e\u2066-\u2069\u2028]")

    def test_table_in_ascii(self):
        self.check_table("C").decode("ascii", "strict")

    def test_counts_of_every_name(self):
        document = self.strict_json(self.output("--count-by", "full_path", "--json"))
        self.assertEqual(sorted(self.whole(count, "full_path") for count in document["counts"]), self.held)
        self.assertEqual({count["files"] for count in document["counts"]}, {1})

    def test_selecting_deleted_files(self):
        only = self.output("--deleted", "only", "--print0", "full_path").split(b"\0")[:-1]
        self.assertEqual(sorted(only), sorted(path + MARK for path in self.gone))

    def test_selecting_by_path(self):
        generator = random.Random(7)
        for path in generator.sample(sorted(set(self.paths) - self.gone), 20):
            shown = self.output("--print0", "full_path", "--", path).split(b"\0")[:-1]
            self.assertIn(path, shown)

    def test_metrics(self):
        self.assertIn(b'vorn_openfiles_files{share="photo",service="Internal service",user="-"} %d\n' % FILES,
                      self.output("metrics"))
