#!/usr/bin/python3
"""Lists the values of all unit files of a folder, for comparison with the platform's reader.

Works on the whole text with regular expressions, not line by line, so as not to share the other
reader's mistakes.
"""

import pathlib
import re
import sys


def values(text):
    text = text.replace("\r\n", "\n")
    text = re.sub(r"(?m)^[ \t]*[#;].*(\n|\Z)", "", text)
    text = re.sub(r"(?<!\\)((?:\\\\)*)\\\n[ \t]*", r"\1 ", text)
    found = {}
    for section in re.finditer(r"(?ms)^[ \t]*\[([^\n]*)\][ \t]*$(.*?)(?=^[ \t]*\[|\Z)", text):
        for key, value in re.findall(r"(?m)^[ \t]*([^=\n]*?)[ \t]*=[ \t]*(.*?)[ \t]*$", section[2]):
            if value:
                found[section[1], key] = value
    return found


for unit in sorted(pathlib.Path(sys.argv[1]).rglob("*")):
    if unit.is_file():
        for (section, key), value in values(unit.read_text(encoding="utf-8")).items():
            print(unit, section, key, value, sep="\x1f")
