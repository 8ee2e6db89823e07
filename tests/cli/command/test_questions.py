"""A question that can't be meant as it is asked, or that is asked in another language."""

import glob
import json
import os
import shutil
import subprocess
import unittest

from harness.command import COMMAND, run
from harness.files import touch
from harness.processes import Holder

DATA = os.environ["VORN_SOURCE"] + "/data"
TEXTS = "share/vornplatform1/texts"
GERMAN = {"LANGUAGE": "de"}


def setUpModule():
    for slice_file in glob.glob(DATA + "/systemd/*.slice"):
        shutil.copy(slice_file, "/usr/lib/systemd/system")
    for prefix in ("/usr", "/usr/local"):
        shutil.copytree(DATA + "/texts", f"{prefix}/{TEXTS}", dirs_exist_ok=True)
    for share in ("/volume1/photo", "/volume2/music"):
        os.makedirs(share)


class Path(unittest.TestCase):
    MISSING = b"vorn-openfiles: '/volume1/phto' does not exist: only files deleted there can be open\n"

    def setUp(self):
        self.enterContext(Holder([touch(b"/volume1/photo/a.jpg")]))

    def test_that_does_not_exist_is_said(self):
        for arguments in ([], ["--by", "volume"], ["--json"], ["--format", "csv"]):
            result = run("/volume1/phto", *arguments)
            self.assertEqual((result.returncode, result.stderr), (1, self.MISSING), arguments)
        both = run("/volume1/photo", "/volume1/phto")
        self.assertEqual((both.returncode, both.stderr), (0, self.MISSING))

    def test_that_does_not_exist_is_no_answer_under_strict(self):
        for arguments in ([], ["-q"], ["-q", "--by", "volume"], ["--json"]):
            result = run("--strict", "/volume1/phto", *arguments)
            self.assertEqual((result.returncode, result.stderr), (2, self.MISSING), arguments)
        watch = subprocess.run([COMMAND, "--watch", "--format", "jsonl", "--strict", "/volume1/phto"],
                               capture_output=True, check=False, timeout=60)
        self.assertEqual((watch.returncode, watch.stderr), (2, self.MISSING))

    def test_that_is_gone_still_has_its_deleted_files(self):
        with Holder([touch(b"/volume1/photo/gone/a.jpg")]):
            shutil.rmtree("/volume1/photo/gone")
            result = run("/volume1/photo/gone", "--print0", "full_path")
        self.assertEqual((result.returncode, result.stdout), (0, b"/volume1/photo/gone/a.jpg (deleted)\0"))

    def test_that_is_a_link_to_nowhere_does_not_exist(self):
        os.symlink("/volume1/nowhere", "/volume1/photo/link")
        self.addCleanup(os.unlink, "/volume1/photo/link")
        self.assertIn(b"'/volume1/photo/link' does not exist", run("/volume1/photo/link").stderr)

    def test_that_was_a_share_still_has_its_deleted_files(self):
        with Holder([touch(b"/volume1/old/a.jpg")]):
            shutil.rmtree("/volume1/old")
            result = run("/volume1/old", "--print0", "full_path")
        self.assertEqual((result.returncode, result.stdout), (0, b"/volume1/old/a.jpg (deleted)\0"))

    def test_in_no_share_is_answered_by_volume(self):
        with Holder([touch(b"/volume1/@system/log")]):
            result = run("/volume1/@system", "--json")
            document = json.loads(result.stdout)
            self.assertEqual((result.returncode, result.stderr),
                             (0, b"vorn-openfiles: '/volume1/@system' is in no share: answering as --by volume does\n"))
            self.assertEqual((document["by"], [file["path"] for file in document["files"]]),
                             ("volume", ["/volume1/@system/log"]))
            self.assertEqual(result.stdout, run("/volume1/@system", "--json", "--by", "volume").stdout)
            self.assertEqual(run("-q", "--strict", "/volume1/@system").returncode, 0)
            mixed = json.loads(run("/volume1/photo", "/volume1/@system", "--json").stdout)
            self.assertEqual([file["path"] for file in mixed["files"]],
                             ["/volume1/@system/log", "/volume1/photo/a.jpg"])

    def test_in_no_share_is_nothing_where_shares_are_asked_for(self):
        with Holder([touch(b"/volume1/@system/log")]):
            result = run("/volume1/@system", "--by", "share")
        self.assertEqual((result.returncode, result.stdout, result.stderr), (1, b"", b""))

    def test_with_shares_below_it_is_answered_by_share(self):
        for path in ("/volume1", "/volume1/photo", "/volume1/photo/a.jpg"):
            result = run(path, "--print0", "path")
            self.assertEqual((result.stdout, result.stderr), (b"photo/a.jpg\0", b""), path)


class Language(unittest.TestCase):
    """Of names of services."""

    def setUp(self):
        for name, group in (("smb", "SMBService.slice/smbd.service"), ("inet", "inetd.slice"), ("own", "")):
            self.enterContext(Holder([touch(f"/volume1/photo/{name}".encode())], group))

    def names(self, *conditions, **env):
        return run("--print0", "filename", *conditions, env=env).stdout.split(b"\0")[:-1]

    def test_is_the_callers_in_a_list(self):
        services = {file["filename"]: file["service"] for file in json.loads(run("--json", env=GERMAN).stdout)["files"]}
        self.assertEqual(services, {"smb": "SMB", "inet": "Internetdienste (inetd)", "own": "Interner Dienst"})

    def test_does_not_matter_to_conditions(self):
        for env in ({}, GERMAN, {"LC_MESSAGES": "fr_FR.UTF-8"}):
            for text, expected in (("SMBService", [b"smb"]), ("SMBService.slice", [b"smb"]), ("SMB", [b"smb"]),
                                   ("inetd", [b"inet"]), ("Internet services (inetd)", [b"inet"]),
                                   ("Internal service", [b"own"]), ("nobody", [])):
                self.assertEqual(self.names("--where", "service=" + text, **env), expected, (env, text))
            self.assertEqual(self.names("--not-where", "service=inetd", **env), [b"own", b"smb"])
            self.assertEqual(self.names("--where", "service=inetd", "--where", "service=SMB", **env),
                             [b"inet", b"smb"])
        self.assertEqual(self.names("--where", "service=Interner Dienst", **GERMAN), [b"own"])

    def test_of_metrics_is_english(self):
        metrics = run("metrics", env=GERMAN).stdout
        for service in (b"SMB", b"Internet services (inetd)", b"Internal service"):
            self.assertIn(b'service="' + service + b'",', metrics)


if __name__ == "__main__":
    unittest.main()
