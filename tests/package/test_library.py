"""What docs/library.md promises to programs, tried with the programs that the documents show."""

import json
import os
import re
import shutil
import subprocess
import unittest

from harness.files import touch
from harness.processes import Holder, output_of, plain_environment
from harness.sample_host import BUILD, PROJECT, set_up_host

CONSUMERS = os.path.join(PROJECT, "tests/package/consumer")
CAREFUL = "/tmp/careful"
BY_SHARE = os.path.join(BUILD, "bin/vornfilehandle_raised_caller")
NOBODY = "65534"


def setUpModule():
    set_up_host()
    output_of(["localedef", "-i", "de_DE", "-f", "UTF-8", "de_DE.UTF-8"])
    flags = output_of(["pkg-config", "--cflags", "--libs", "vornfilehandle"]).split()
    output_of(["c++", "-std=c++17", "-Wall", "-Wextra", "-Werror", f"{CONSUMERS}/careful.cpp", "-o", CAREFUL, *flags])


def careful(*before, **environment):
    done = subprocess.run([*before, CAREFUL], env=plain_environment(**environment), capture_output=True, text=True,
                          check=False, timeout=60)
    return done.returncode, [json.loads(line) for line in done.stdout.splitlines()], done.stderr


def without_volumes(*argv):
    return ["unshare", "--mount", "sh", "-c", 'umount --lazy /volume1 /volume2; exec "$@"', "sh", *argv]


def read(*path):
    with open(os.path.join(PROJECT, *path), encoding="utf-8") as file:
        return file.read()


def blocks(text):
    """Indented blocks of a document, whole lines."""
    found = re.findall(r"^    .*\n(?:(?:    .*)?\n)*", text, re.M)
    return [re.sub(r"^    ", "", block, flags=re.M).strip("\n") + "\n" for block in found]


def program(name):
    """A consumer's source, without the line that names its licence, which nobody is shown."""
    return re.sub(r"^// SPDX-License-Identifier: .*\n", "", read("tests/package/consumer", name))


class ShownPrograms(unittest.TestCase):
    def test_are_those_that_are_built(self):
        consumer = program("consumer.cpp")
        self.assertIn(consumer, blocks(read("README.md")))
        self.assertIn(consumer.replace("\\n", "\\en"), read("data/man/vornfilehandle.3"))
        self.assertIn(program("careful.cpp"), blocks(read("docs/library.md")))


class Answers(unittest.TestCase):
    def setUp(self):
        shutil.rmtree("/volume1/photo")
        os.mkdir("/volume1/photo")

    def test_are_one_record_a_file(self):
        with Holder([touch(b"/volume1/photo/a")]) as holder:
            status, records, said = careful()
        time = records[0].pop("time")
        self.assertRegex(time, r"^\d{4}/\d\d/\d\d \d\d:\d\d:\d\d$")
        self.assertEqual((status, said), (0, ""))
        self.assertEqual(records, [{
            "service": "Internal service", "pid": str(holder.pid), "user": "-", "host": "-", "filename": "a",
            "path": "/volume1/photo/a", "hidden": 0}])

    def test_are_none_where_nothing_is_open(self):
        self.assertEqual(careful(), (1, [], ""))

    def test_count_deleted_files_that_have_no_time(self):
        with Holder([touch(b"/volume1/photo/a"), touch(b"/volume1/photo/b")]):
            os.unlink("/volume1/photo/a")
            status, records, said = careful()
        self.assertEqual((status, [record["filename"] for record in records]), (0, ["b"]))
        self.assertEqual(said, "1 more are deleted or out of this user's reach\n")

    def test_have_texts_in_place_of_bytes_that_are_none(self):
        with Holder([touch(b"/volume1/photo/\xff")]):
            status, records, _ = careful()
        self.assertEqual((status, records[0]["filename"]), (0, "\ufffd"))

    def test_are_in_the_language_of_the_locale_or_else_of_the_environment(self):
        with Holder([touch(b"/volume1/photo/a")]):
            for environment, name in (({"LC_ALL": "de_DE.UTF-8", "LANGUAGE": "fr"}, "Interner Dienst"),
                                      ({"LC_ALL": "C", "LANGUAGE": "de"}, "Interner Dienst"),
                                      ({"LC_ALL": "C"}, "Internal service"),
                                      ({"LC_ALL": "C.UTF-8"}, "Internal service")):
                self.assertEqual(careful(**environment)[1][0]["service"], name, environment)

    def test_name_ssh_the_same_in_every_language(self):
        texts = [read("data/texts", language, "service") for language in os.listdir(f"{PROJECT}/data/texts")]
        self.assertEqual(["\nssh=SSH\n" in text for text in texts], [True] * 13)

    def test_hold_only_what_the_caller_may_see(self):
        with Holder([touch(b"/volume1/photo/a")]):
            self.assertEqual(careful("setpriv", f"--reuid={NOBODY}", f"--regid={NOBODY}", "--clear-groups"),
                             (1, [], ""))


class Failures(unittest.TestCase):
    def test_without_volumes_are_told_from_nothing_open(self):
        done = subprocess.run(without_volumes(CAREFUL), env=plain_environment(), capture_output=True, text=True,
                              check=False)
        self.assertEqual((done.returncode, done.stdout), (2, ""))
        self.assertEqual(done.stderr, "user 0 can't tell what is open: no list, error 0x0700\n")

    def test_by_share_are_none_without_volumes_or_shares(self):
        with Holder([touch(b"/volume1/photo/a")]):
            self.assertIn("/volume1/photo/a - -", output_of([BY_SHARE, NOBODY]))
            self.assertEqual(output_of(without_volumes(BY_SHARE, NOBODY)), "")
        without_shares = ["unshare", "--mount", "sh", "-c", """
            mount -t tmpfs none /volume1 && mount -t tmpfs none /volume2 && exec 9>/volume1/top && exec "$@" """, "sh"]
        self.assertEqual(output_of([*without_shares, BY_SHARE, NOBODY]), "")
        self.assertIn('"/volume1/top"', output_of([*without_shares, CAREFUL]))

    def test_by_an_exception_leave_the_rights_that_were_before(self):
        os.mkdir("/volume")
        self.addCleanup(os.rmdir, "/volume")
        with Holder([b"/volume"]):
            status, records, said = careful("setpriv", f"--euid={NOBODY}", f"--egid={NOBODY}", "--clear-groups")
        self.assertEqual((status, records), (2, []))
        self.assertRegex(said, rf"^user {NOBODY} can't tell what is open: basic_string::substr:.*\n$")


class Versions(unittest.TestCase):
    def test_are_the_same_everywhere(self):
        version = re.search(r"project\(vornfilehandle VERSION (\S+)", read("CMakeLists.txt")).group(1)
        self.assertEqual(output_of(["pkg-config", "--modversion", "vornfilehandle"]).strip(), version)
        folder = output_of(["pkg-config", "--variable=libdir", "vornfilehandle"]).strip()
        library = os.path.realpath(os.path.join(folder, "libvornfilehandle.so"))
        self.assertEqual(os.path.basename(library), "libvornfilehandle.so." + version.rpartition(".")[0])
        headings = re.findall(r"^## (.*)$", read("CHANGELOG.md"), re.M)
        self.assertEqual(headings[0], "[Unreleased]")
        self.assertRegex(headings[1], rf"^\[{re.escape(version)}\] - \d{{4}}-\d\d-\d\d$")

    def test_of_strings_that_are_not_the_libraries_do_not_link(self):
        flags = output_of(["pkg-config", "--cflags", "--libs", "vornfilehandle"]).split()
        done = subprocess.run(["c++", "-std=c++17", "-D_GLIBCXX_USE_CXX11_ABI=0", f"{CONSUMERS}/consumer.cpp",
                               "-o", "/tmp/old_strings", *flags], capture_output=True, text=True, check=False)
        self.assertNotEqual(done.returncode, 0)
        self.assertIn("undefined reference to `VORN::FileHandle::VORNEnumOpenedFile", done.stderr)

    def test_have_their_changes_in_the_change_log(self):
        changes = output_of([os.path.join(PROJECT, "scripts/changes.sh"), "7.0.0"])
        self.assertRegex(changes, r"\A## \[7\.0\.0\] - (?s:.*)libvornfilehandle\.so\.7")
        self.assertEqual(changes.count("\n## "), 0)
        self.assertNotIn("]: #", changes)
        self.assertIn("CHANGELOG.md has no version 7.0\n", subprocess.run(
            [os.path.join(PROJECT, "scripts/changes.sh"), "7.0"], capture_output=True, text=True, check=False).stderr)

    def test_change_log_has_the_sections_of_its_form(self):
        sections = set(re.findall(r"^### (.*)$", read("CHANGELOG.md"), re.M))
        self.assertLessEqual(sections, {"Added", "Changed", "Deprecated", "Removed", "Fixed", "Security"})
        self.assertNotEqual(sections, set())


if __name__ == "__main__":
    unittest.main()
