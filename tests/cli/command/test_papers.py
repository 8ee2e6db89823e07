"""Help, man page, completions and schema say what the command does."""

import fcntl
import json
import os
import re
import subprocess
import unittest

from harness.command import COMMAND, run
from harness.files import touch
from harness.processes import Holder
from harness.terminal import Terminal

DATA = os.path.join(os.environ["VORN_SOURCE"], "data")
SCHEMA = os.path.join(DATA, "schema/vorn-openfiles-%s.schema.json")
COMMANDS = ("list", "services", "check", "metrics", "busy", "idle", "disconnect", "events")
WITH_COMMAND = os.path.dirname(COMMAND) + ":" + os.environ["PATH"]
OPTION = re.compile(r"(?<![\w-])--?[A-Za-z][a-z0-9-]*")

# Ctrl-X prints the command line as it stands, then empties it.
ZSH_SETUP = f"""
fpath=({DATA}/completions $fpath)
autoload -Uz compinit && compinit -u -D
show() {{ zle -I; print -r -- "[[$BUFFER]]"; BUFFER= }}
zle -N show
bindkey '^X' show
print '[[ready]]'
"""


def read(name):
    with open(os.path.join(DATA, name), encoding="utf-8") as file:
        return file.read()


def accepted_options():
    """What the command itself takes, as it names them when a word is nearly right."""
    return {option for option in offered_by_help() if is_option(option)}


def is_option(option):
    return any(b"there is no option" not in run(command, option, "--help", cwd="/tmp").stderr for command in COMMANDS)


def offered_by_help():
    usage = "".join(run(command, "--help").stdout.decode().split("\nExample")[0] for command in COMMANDS)
    return {word for word in OPTION.findall(usage) if word != "-0"}


class Options(unittest.TestCase):
    def setUp(self):
        self.options = offered_by_help()
        self.assertGreater(len(self.options), 25)

    def test_help_offers_only_what_is_there(self):
        self.assertEqual(self.options, accepted_options())

    def test_man_page(self):
        text = re.sub(r"\\&|\\-", "", read("man/vorn-openfiles.8"))
        named = {"-" + flag for line in text.split(".Sh OPTIONS")[1].split(".Sh TEXTS")[0].splitlines()
                 if line.startswith(".It Fl") for flag in re.findall(r"Fl (-?[A-Za-z0-9-]+)", line)}
        self.assertEqual(named, self.options)

    def test_bash_completion(self):
        self.assertEqual(self.offered_by_bash("-") | self.offered_by_bash("check -")
                         | self.offered_by_bash("metrics -") | self.offered_by_bash("busy -")
                         | self.offered_by_bash("disconnect -") | self.offered_by_bash("events -"), self.options)

    def offered_by_bash(self, line):
        script = f"""
            source /usr/share/bash-completion/bash_completion
            source {DATA}/completions/vorn-openfiles.bash
            COMP_LINE='vorn-openfiles {line}' COMP_POINT=${{#COMP_LINE}}
            COMP_WORDS=(vorn-openfiles {line}) COMP_CWORD=$((${{#COMP_WORDS[@]}} - 1))
            COMP_POINT=${{#COMP_LINE}} COMP_TYPE=9 COMP_KEY=9
            _vorn_openfiles 2>/dev/null
            printf '%s\\n' "${{COMPREPLY[@]}}"
        """
        result = subprocess.run(["bash", "-c", script], env={"PATH": WITH_COMMAND}, capture_output=True, check=True)
        return set(result.stdout.decode().split("\n")) - {""}

    def test_bash_completes_columns_services_and_users(self):
        self.assertEqual(self.offered_by_bash("--sort ho"), {"host"})
        self.assertEqual(self.offered_by_bash("--columns path,fo"), {"path,folder"})
        self.assertEqual(self.offered_by_bash("--format js"), {"json", "jsonl"})
        self.assertEqual(self.offered_by_bash("ch"), {"check"})
        self.assertEqual(self.offered_by_bash("help me"), {"metrics"})
        with Holder([touch(b"/volume1/photo/a")]):
            self.assertIn(r"Internal\ service", " ".join(self.offered_by_bash("--where service=Int")))
            self.assertEqual(self.offered_by_bash("--not-match user="), {"-"})

    def test_zsh_completion(self):
        named = set(OPTION.findall(read("completions/_vorn-openfiles").split("_vorn_openfiles() {")[1]))
        self.assertEqual(named & {each for each in named if is_option(each)}, self.options)
        subprocess.run(["zsh", "-n", DATA + "/completions/_vorn-openfiles"], check=True)

    def test_fish_completion(self):
        text = read("completions/vorn-openfiles.fish")
        named = {"--" + name for name in re.findall(r"^complete .* -l ([a-z0-9-]+)", text, re.M)}
        named |= {"-" + name for name in re.findall(r"^complete .* -s ([A-Za-z])", text, re.M)}
        self.assertEqual(named, self.options)

    def offered_by_fish(self, line):
        script = f"source {DATA}/completions/vorn-openfiles.fish; complete -C'vorn-openfiles {line}'"
        offered = subprocess.run(["fish", "--no-config", "-c", script], capture_output=True, check=True,
                                 env={"PATH": WITH_COMMAND, "HOME": "/tmp"}).stdout
        return {candidate.partition("\t")[0] for candidate in offered.decode().splitlines()}

    def test_fish_completes_columns_services_and_users(self):
        with Holder([touch(b"/volume1/photo/a")]):
            for line, offered in (("--sort ho", {"host"}), ("--columns path,fo", {"path,folder"}), ("ch", {"check"}), ("help me", {"metrics"}),
                                  ("--where service=Int", {"service=Internal service"}),
                                  ("--not-match user=", {"user=-"})):
                self.assertLessEqual(offered, self.offered_by_fish(line), line)

    def test_zsh_completes_columns_services_and_users(self):
        with open("/tmp/setup.zsh", "w", encoding="utf-8") as setup:
            setup.write(ZSH_SETUP)
        shell = Terminal("zsh", "-f", "-i", columns=200, PATH=WITH_COMMAND, HOME="/tmp")
        shell.type("source /tmp/setup.zsh\n")
        shell.wait_for(b"[[ready]]")
        with Holder([touch(b"/volume1/photo/a")]):
            for line, completed in (("--sort ho", "--sort host"), ("--columns path,fo", "--columns path,folder"),
                                    ("ch", "check"), ("help me", "help metrics"), ("--format js", "--format json"),
                                    ("--where service=Int", "--where service=Internal\\ service"),
                                    ("--not-match user=", "--not-match user=-")):
                # The blank takes the place of a suffix that was added on trial, such as a comma.
                shell.type(f"vorn-openfiles {line}\t \x18")
                shell.wait_for(b"[[")
                self.assertEqual(shell.wait_for(b"]]").decode(), f"vorn-openfiles {completed} ]]")
        shell.type("exit\n")
        self.assertEqual(shell.finish()[0], 0)

    def test_columns_are_the_same_everywhere(self):
        columns = re.search(r"it takes: (.*)", run("--columns", "?").stderr.decode()).group(1).split(", ")
        self.assertEqual(len(columns), 25)
        for name in ("completions/_vorn-openfiles", "completions/vorn-openfiles.bash",
                     "completions/vorn-openfiles.fish"):
            self.assertIn(" ".join(columns), read(name))
        self.assertIn(", ".join(columns), read("man/vorn-openfiles.8").replace(",\n", ", "))

    def test_man_page_has_no_faults(self):
        lint = subprocess.run(["mandoc", "-T", "lint", "-W", "warning", DATA + "/man/vorn-openfiles.8"],
                              capture_output=True, check=False)
        self.assertEqual((lint.returncode, lint.stdout), (0, b""))


class Schema(unittest.TestCase):
    def validate(self, instance, definition=None, name="1"):
        with open(SCHEMA % name, encoding="utf-8") as file:
            schema = json.load(file)
        if definition:
            schema.pop("oneOf", None)
            schema["$ref"] = "#/$defs/" + definition
        for name, content in (("schema", json.dumps(schema).encode()), ("instance", instance)):
            with open("/tmp/" + name, "wb") as file:
                file.write(content)
        return subprocess.run(["/usr/bin/python3", "-W", "ignore", "-m", "jsonschema", "-i", "/tmp/instance",
                               "/tmp/schema"], capture_output=True, check=False)

    def check(self, instance, definition=None, name="1"):
        result = self.validate(instance, definition, name)
        self.assertEqual((result.returncode, result.stderr), (0, b""))

    def test_every_output_is_as_the_schema_has_it(self):
        gone = touch(b"/volume1/photo/\xff gone")
        with Holder([gone, touch(b"/volume1/photo/a"), b"/volume1/photo"]):
            os.unlink(gone)
            self.check(run("--json", "--time").stdout)
            self.check(run("--json", "--by", "volume").stdout)
            self.check(run("--json", "--count-by", "service,path").stdout)
            for line in run("--format", "jsonl").stdout.splitlines():
                self.check(line, "file")
            watch = subprocess.Popen([COMMAND, "--watch", "--format", "jsonl"], stdout=subprocess.PIPE)
            self.check(watch.stdout.readline(), "event")
            watch.stdout.close()
            watch.wait(20)
        self.check(run("services", "--json").stdout, "services")
        self.check(run("check", "--json").stdout, "check")
        with Holder([touch(b"/volume1/photo/\xff"), touch(b"/volume1/photo/a")]):
            for command in ("busy", "idle"):
                self.check(run(command, "--json").stdout, "busy")
                self.check(run(command, "--inside", "--json").stdout, "busy")
            self.check(run("disconnect", "--dry-run", "--json").stdout, "disconnect")
        self.check(run("disconnect", "--dry-run", "--json").stdout, "disconnect")
        for arguments in ([], ["--inside"]):
            self.check(run("busy", "--json", "/volume2", *arguments).stdout, "busy")
        self.check(run("--json", "/volume2").stdout)

    def test_every_output_is_as_the_second_schema_has_it(self):
        two = ("--schema", "2")
        gone = touch(b"/volume1/photo/\xff gone")
        with Holder([gone, touch(b"/volume1/photo/a"), b"/volume1/photo"]) as holder:
            os.unlink(gone)
            document = run("--json", "--time", *two).stdout
            self.check(document, name="2")
            [record] = [file for file in json.loads(document)["files"] if file["filename"] == "a"]
            self.assertEqual([record[key] for key in ("pid", "hidden", "user", "owner", "mode", "size", "locks")],
                             [holder.pid, False, None, "root", ["r"], 0, []])
            self.assertEqual(json.loads(document)["machine"], os.uname().nodename)
            self.assertEqual([type(number) for number in record["fd"]], [int])
            self.check(run("--json", "--columns", "pid,fd", *two).stdout, name="2")
            self.check(run("--json", "--count-by", "pid,mode,deleted", "--sum", "size", *two).stdout, name="2")
            lines = run("--format", "jsonl", "--header", *two).stdout.splitlines()
            self.check(lines[0], "header", "2")
            self.check(lines[1], "file", "2")
            watch = subprocess.Popen([COMMAND, "--watch", "--format", "jsonl", *two], stdout=subprocess.PIPE)
            self.check(watch.stdout.readline(), "event", "2")
            watch.stdout.close()
            watch.wait(20)
            for command in ("busy", "idle"):
                self.check(run(command, "--json", *two).stdout, name="busy-2")
        self.check(run("services", "--json", *two).stdout, name="services-2")
        self.check(run("check", "--json", *two).stdout, name="check-2")

    def test_counts_of_the_second_schema_have_what_its_records_have(self):
        chosen = ("--json", "--schema", "2", "--where", "filename=a")
        with open(touch(b"/volume1/photo/a", b"x" * 5000), "rb+") as file:
            fcntl.lockf(file, fcntl.LOCK_EX, 20, 10)
            [record] = json.loads(run("--time", *chosen).stdout)["files"]
            self.assertRegex(record["started"] + record["time"], r"^(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ){2}$")
            self.assertEqual((record["mode"], len(record["locks"])), (["rw"], 1))
            for column, value in record.items():
                document = run("--count-by", column, *chosen).stdout
                self.check(document, name="2")
                self.assertEqual(json.loads(document)["counts"], [{column: value, "files": 1}])

    def test_second_schema_refuses_the_first_one_and_each_other(self):
        documents = {name: run(*command, "--json", "--schema", "2").stdout for name, command in
                     (("2", []), ("check-2", ["check"]), ("services-2", ["services"]), ("busy-2", ["busy"]))}
        for name, document in documents.items():
            for schema in documents:
                self.assertEqual(self.validate(document, name=schema).returncode, int(schema != name), (name, schema))
        self.assertEqual(self.validate(run("--json").stdout, name="2").returncode, 1)

    def test_schema_refuses_what_is_no_output(self):
        for wrong in ("{}", '{"schema":2,"by":"share","complete":true,"files":[]}',
                      '{"schema":1,"by":"share","complete":false,"files":[]}',
                      '{"schema":1,"by":"share","complete":true,"files":[{"pid":"1"}]}'):
            self.assertEqual(self.validate(wrong.encode()).returncode, 1, wrong)
