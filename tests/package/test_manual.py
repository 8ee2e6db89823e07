"""The library's man pages, in section 3, say what its header says."""

import glob
import os
import re
import subprocess
import unittest

from harness.processes import output_of
from harness.sample_host import PROJECT, BUILD

HEADER = os.path.join(PROJECT, "include/vorn/filehandle.h")
PAGES = sorted(glob.glob(os.path.join(PROJECT, "data/man/*.3")))
INSTALLED = "/opt/vorn/share/man/man3"


def read(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


def code_of(header):
    """A header's declarations without comments and directives."""
    code = re.sub(r"/\*.*?\*/|//[^\n]*", "", header, flags=re.S)
    code = re.sub(r"^#.*$", "", code, flags=re.M)
    return code.replace("VORN_FILEHANDLE_API", "")


def synopsis_of(page):
    return "\n".join(re.findall(r"^\.Bd -literal\n(.*?)^\.Ed", page.split(".Sh DESCRIPTION")[0], re.M | re.S))


def declarations(code):
    """What others may use of it: {name within the namespace: declaration, one blank between words}."""
    found, scopes, text, depth = {}, [], "", 0
    for token in re.findall(r"[{};]|public:|private:|[^{};]+?(?=[{};]|public:|private:)", code):
        if token == "{" and re.search(r"\b(namespace|class) \w+$", text):
            kind, name = text.split()[-2:]
            if kind == "class":
                add(found, scopes, name, f"class {name}")
            scopes.append([kind, name, "private:" if kind == "class" else "public:"])
            text = ""
        elif token == "{":
            depth, text = depth + 1, text + " {"
        elif token == "}" and depth:
            depth, text = depth - 1, text + " }"
        elif token == "}":
            text = "class's end" if scopes.pop()[0] == "class" else ""
        elif token in ("public:", "private:"):
            scopes[-1][2] = token
        elif token == ";" and not depth:
            if text != "class's end" and not text.startswith("friend"):
                add(found, scopes, name_of(text), text)
            text = ""
        else:
            text = " ".join((text + token).split())
    return found


def add(found, scopes, name, declaration):
    if all(access == "public:" for _, _, access in scopes):
        scope = [name for kind, name, _ in scopes if kind == "class"]
        found["::".join([*scope, name])] = declaration


def name_of(declaration):
    """int f(int a), enum E { A }, extern T name[5], T name = {...}"""
    enumeration = re.match(r"enum (\w+)", declaration)
    if enumeration:
        return enumeration.group(1)
    head = re.sub(r"operator\(\)", "operator", declaration)
    if "(" in head:
        return head.split("(")[0].split()[-1]
    return re.sub(r"\[.*", "", head).split()[-1]


class Declarations(unittest.TestCase):
    """The reader of declarations that the other tests rely on."""

    def test_are_read_with_their_scope(self):
        self.assertEqual(declarations("""
            namespace A { namespace B {
            enum E { X = 0, Y };
            class C { public: class D { public: D(int a, bool b); bool operator()(int a);
                                        private: int no; };
                      static const std::map<int, std::string> table;
                      int  get();
                      private: friend struct F; bool no_ = false; };
            int f(std::list<C>&  list,
                  int by);
            extern const char* const names[5];
            } }
        """), {
            "E": "enum E { X = 0, Y }", "C": "class C", "C::D": "class D", "C::D::D": "D(int a, bool b)",
            "C::D::operator": "bool operator()(int a)",
            "C::table": "static const std::map<int, std::string> table", "C::get": "int get()",
            "f": "int f(std::list<C>& list, int by)", "names": "extern const char* const names[5]"})


class Manual(unittest.TestCase):
    def setUp(self):
        self.header = declarations(code_of(read(HEADER)))
        self.pages = {os.path.basename(page): read(page) for page in PAGES}
        self.assertGreaterEqual(len(self.pages), 9)

    def exported(self):
        """Names of the symbols that the library exports, as a test of the package holds them."""
        names = set()
        for symbol in read(os.path.join(PROJECT, "tests/package/exported-symbols.txt")).splitlines():
            name = re.sub(r"\(.*|\[abi:\w+\]", "", symbol.replace("operator()", "operator"))
            names.add(name.removeprefix("VORN::FileHandle::"))
        return names

    def named(self, page):
        """The names that a page has in its section NAME."""
        section = self.pages[page].split(".Sh NAME\n")[1].split("\n.Nd ")[0]
        return re.findall(r"^\.Nm (\S+)", section, re.M)

    def test_every_exported_name_is_in_the_header(self):
        types = {"OpenedFile", "OpenedFile::Compare", "MEMBER", "ENUM_BY"}
        self.assertEqual(set(self.header) - types, self.exported())

    def test_every_declaration_stands_in_one_synopsis_as_in_the_header(self):
        shown = [declarations(synopsis_of(page)) for page in self.pages.values()]
        together = {name: text for page in shown for name, text in page.items()}
        self.assertEqual(together, self.header)
        twice = {name for name in together if sum(name in page for page in shown) > 1}
        self.assertEqual(twice, {"OpenedFile"})

    def test_every_declaration_is_named_and_described_on_its_page(self):
        for page, text in self.pages.items():
            declared = set(declarations(synopsis_of(text)))
            # The class is named where its members are; those of Compare are found by its name.
            declared = {re.sub(r"(::Compare)::\w+$", r"\1", name) for name in declared}
            if page != "OpenedFile.3":
                declared.discard("OpenedFile")
            if page != "vornfilehandle.3":
                self.assertEqual(set(self.named(page)), declared, page)
            description = text.split(".Sh DESCRIPTION")[1].split(".Sh SEE ALSO")[0]
            for name in declared - {"OpenedFile", "MEMBER", "ENUM_BY"}:
                last = name.rpartition("::")[2]
                self.assertRegex(description, rf"\.(It )?(Va|Fn|.*, Fn) (\w+::)?{last}\b", f"{page}: {name}")
            for name in re.findall(r"\bENUM_BY_\w+(?= =)", synopsis_of(text)):
                self.assertIn(f".It Dv {name}", description)

    def test_every_name_leads_to_its_page(self):
        output_of(["cmake", "--install", BUILD, "--prefix", "/opt/vorn"])
        names = {name for page in self.pages for name in self.named(page)}
        self.assertEqual({file.removesuffix(".3") for file in os.listdir(INSTALLED)}, names)
        for page in self.pages:
            whole = self.rendered(os.path.join(INSTALLED, page))
            for name in self.named(page):
                self.assertEqual(self.rendered(f"{INSTALLED}/{name}.3"), whole)

    @staticmethod
    def rendered(path):
        return output_of(["mandoc", "-T", "utf8", path], cwd=os.path.dirname(INSTALLED))

    def test_references_lead_somewhere(self):
        names = {name for page in self.pages for name in self.named(page)}
        for page, text in self.pages.items():
            for name in re.findall(r"\bXr (\S+) 3\b", text):
                self.assertIn(name, names | {"setlocale", "strtol", "toupper"}, page)

    def test_pages_have_no_faults(self):
        for page in PAGES:
            lint = subprocess.run(["mandoc", "-T", "lint", "-W", "warning", page], capture_output=True, check=False)
            self.assertEqual((lint.returncode, lint.stdout), (0, b""))


if __name__ == "__main__":
    unittest.main()
