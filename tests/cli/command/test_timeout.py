"""A volume that doesn't answer costs no more than the time limit."""

import os
import subprocess
import time
import unittest

from support import Holder, run, touch

SILENT = {"LD_PRELOAD": os.environ["VORN_SILENT_VOLUME"]}


class Timeout(unittest.TestCase):
    def test_an_answer_in_time_is_the_usual_one(self):
        with Holder([touch(b"/volume1/photo/a.jpg")]):
            limited, usual = run("--json", "--timeout", "60"), run("--json")
            self.assertEqual((limited.returncode, limited.stdout), (0, usual.stdout))
        for arguments in (["/etc"], ["--strict", "/volume2"], ["metrics"]):
            self.assertEqual(run(*arguments, "--timeout", "60").returncode, run(*arguments).returncode)

    def test_the_silent_volume_is_named(self):
        with Holder([touch(b"/volume2/music/a.flac")]):
            for arguments in ([], ["--json"], ["metrics"]):
                begin = time.monotonic()
                result = run(*arguments, "--timeout", "0.5", env=SILENT)
                self.assertLess(time.monotonic() - begin, 20)
                self.assertEqual((result.returncode, result.stdout), (2, b""))
                self.assertEqual(result.stderr, b"vorn-openfiles: no answer within 0.5 s; "
                                                b"volumes that don't answer: /volume2\n")

    def test_volumes_that_answer_are_not_blamed(self):
        with Holder([touch(b"/volume1/photo/a.jpg")]):
            self.assertEqual(run("--timeout", "60", env=SILENT).returncode, 0)

    def test_nobody_waits_for_the_end_of_its_output(self):
        with Holder([touch(b"/volume2/music/a.flac")]):
            result = subprocess.run(["sh", "-c", '"$VORN_OPENFILES" --timeout 0.5 2>&1 | cat'],
                                    env={**os.environ, **SILENT}, capture_output=True, check=False, timeout=20)
        self.assertIn(b"/volume2", result.stdout)


if __name__ == "__main__":
    unittest.main()
