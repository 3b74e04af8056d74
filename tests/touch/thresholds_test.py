#!/usr/bin/env python3
"""The guide's table of thresholds is that of the code. Takes the project's folder; with --write it writes the table."""

import pathlib
import re
import sys

ROOT = pathlib.Path(sys.argv[1])
HEADER = ROOT / "touch/Thresholds.h"
GUIDE = ROOT / "docs/TOUCH.md"
BEGIN, END = "<!-- thresholds -->\n", "<!-- end of thresholds -->\n"
CONSTANT = re.compile(r"((?:^///.*\n)*)^constexpr (\w+) (k\w+)( = ([^;]+)|\{([^}]+)\});", re.MULTILINE)


def unit_of(kind, name):
    if kind == "Time":
        return ""
    if name.endswith("InPoints"):
        return " points"
    if name == "kFastest":
        return " mm/s"
    return "" if re.search("Clearness|Share", name) else " mm"


def rows():
    for comment, kind, name, _, value, pair in CONSTANT.findall(HEADER.read_text(encoding="utf-8")):
        text = " ".join(line.removeprefix("///").strip() for line in comment.splitlines())
        shown = re.sub(r"\.0\b", "", (pair.replace(", ", " × ") if pair else value).replace("'", ""))
        yield f"| `{name}` | {shown}{unit_of(kind, name)} | {text} |\n"


def table():
    return "| number | value | what it decides, why, and where it comes from |\n|---|---|---|\n" + "".join(rows())


def main():
    guide = GUIDE.read_text(encoding="utf-8")
    before, rest = guide.split(BEGIN)
    written, after = rest.split(END)
    if "--write" in sys.argv:
        GUIDE.write_text(before + BEGIN + table() + END + after, encoding="utf-8")
        return 0
    constants = HEADER.read_text(encoding="utf-8").count("constexpr ")
    count = len(list(rows()))
    assert count == constants, f"{count} of {constants} thresholds are understood"
    if written != table():
        print(f"{GUIDE.name} has another table than {HEADER.name}; this writes it: {sys.argv[0]} . --write")
        return 1
    print(f"{count} thresholds stand in the guide as in the code")
    return 0


sys.exit(main())
