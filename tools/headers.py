"""What the public headers say, for the manual (reference.py) and the Fortran module.

A general tool would want its marks in every comment, and puts each of a routine's variants apart
from what is said of all. The headers are regular enough to be read as they are: a comment
"---- Title ----" opens a section, any other comment speaks of the declarations that follow it.
"""

import os
import re
from dataclasses import dataclass


@dataclass
class Entry:
    header: str  # its file's name
    title: str  # of the section that it opens, or ""
    comment: list  # the comment's lines
    code: list  # declarations

    def functions(self):
        """Name -> declaration on one line, without what only compilers need."""
        flat = [re.sub(r"\s+", " ", c.replace("LUMO_API ", "")) for c in self.code]
        named = ((re.search(r"(lumo\w+)\(", c), c) for c in flat)
        return {match[1]: c for match, c in named if match}


def parse(path):
    """The entries of a header."""
    with open(path, encoding="utf-8") as file:
        text = file.read()
    header = os.path.basename(path)
    token = re.compile(
        r"/\* -{4} (?P<title>.*?) -+ \*/|/\*(?P<comment>.*?)\*/(?P<compilers>\n#if defined)?"
        r"|(?P<code>^typedef [^;{]*\{.*?\} \w+;|^LUMO_API .*?;"
        r"|^#define LUMO_VERSION(?!_H)[^\n]*)",
        re.S | re.M)
    entries = []
    for match in token.finditer(text):
        if match["title"]:
            entries.append(Entry(header, match["title"], [], []))
        elif match["compilers"]:
            pass
        elif match["comment"]:
            lines = [re.sub(r"^ \* ?", "", line) for line in match["comment"].split("\n")]
            entries.append(Entry(header, "", [line.rstrip() for line in lines], []))
        else:
            entries[-1].code.append(match["code"])
    return entries


def parse_all(paths):
    """The entries of lumo.h and of the headers that extend it, each of these a section."""
    entries = []
    for path in paths:
        found = parse(path)
        if entries:
            entries.append(Entry(found[0].header, found[0].header, [], []))
        entries += found
    return entries
