#!/usr/bin/env python3
"""The reference manual from the headers' comments: reference.py {man,html} VERSION OUTPUT HEADER...

A general tool would want its marks in every comment, and puts each of a routine's variants apart
from what is said of all. The headers are regular enough to be read as they are: a comment
"---- Title ----" opens a section, any other comment speaks of the declarations that follow it.
"""

import contextlib
import html
import re
import sys
import textwrap
from dataclasses import dataclass


@dataclass
class Entry:
    title: str  # of the section that it opens, or ""
    comment: list  # the comment's lines
    code: list  # declarations

    def functions(self):
        """Name -> declaration on one line, without what only compilers need."""
        flat = [re.sub(r"\s+", " ", c.replace("LUMO_API ", "")) for c in self.code]
        named = ((re.search(r"(lumo\w+)\(", c), c) for c in flat)
        return {match[1]: c for match, c in named if match}


def parse(text):
    """The entries of a header."""
    token = re.compile(
        r"/\* -{4} (?P<title>.*?) -+ \*/|/\*(?P<comment>.*?)\*/(?P<compilers>\n#if defined)?"
        r"|(?P<code>^typedef [^;{]*\{.*?\} \w+;|^LUMO_API .*?;)",
        re.S | re.M)
    entries = []
    for match in token.finditer(text):
        if match["title"]:
            entries.append(Entry(match["title"], [], []))
        elif match["compilers"]:
            pass
        elif match["comment"]:
            lines = [re.sub(r"^ \* ?", "", line) for line in match["comment"].split("\n")]
            entries.append(Entry("", [line.rstrip() for line in lines], []))
        else:
            entries[-1].code.append(match["code"])
    return entries


def paragraphs(lines):
    """("text", string) or ("item", term, string): what a comment's lines are."""
    result, fresh = [], True
    for line in lines:
        item = re.match(r" {0,2}(\S+?)(?:  +|(?<=\.\.\.) )(\S.*)", line)
        if not line:
            fresh = True
        elif item and not line.startswith("    "):
            result.append(["item", item[1], item[2]])
        elif fresh or re.match(r"Status \d|Device memory ", line.strip()) or (
                result[-1][0] == "item" and not line.startswith("    ")):
            result.append(["text", line.strip()])
        else:
            result[-1][-1] += " " + line.strip()
        fresh = not line
    return result


def declarations(entry):
    """The declarations to show, the names they declare, and the names of the functions that take
    the same arguments in device memory."""
    functions = entry.functions()
    device = []
    for name, declaration in functions.items():
        other = "lumoDevice" + name[len("lumo"):]
        if other in functions:
            if functions[other] != declaration.replace(name, other):
                sys.exit(f"{other} and {name} differ in more than their names")
            device.append(other)
    shown = [c for c in entry.code if not any(d + "(" in c for d in device)]
    return [re.sub("LUMO_(API|ANY_INT) ", "", c) for c in shown], list(functions), device


def heading(entry):
    """The routines' names: gemm for lumoSgemm, lumoDeviceSgemm and so on."""
    _, names, device = declarations(entry)
    if not device:
        return ", ".join(names)
    return ", ".join(dict.fromkeys(name[len("lumoDeviceS"):] for name in device))


def aligned(declaration):
    """Continuation lines indented as little as reads well."""
    return re.sub(r"\n {5,}", "\n        ", declaration)


SAME = "The same on device memory:"


class Man:
    """man(7)."""

    def text(self, s):
        for plain, roff in (("\\", "\\e"), ("'", "\\(aq"), ("^", "\\(ha"), ("`", "\\(ga")):
            s = s.replace(plain, roff)
        return re.sub(r"(?<![\w-])-(?=[\w.])", r"\\-", s)

    def filled(self, s):
        s = re.sub(r"\b(lumo\w+)", r"\\%\1", self.text(s))  # names are not hyphenated
        return textwrap.fill(s, 78, break_long_words=False, break_on_hyphens=False)

    def page(self, version, entries):
        print(f'.\\" Made from the headers by tools/reference.py.\n'
              f'.TH LUMO 3 "" "Lumo {version}" "Lumo reference"\n.SH NAME\n'
              "lumo \\- dense linear algebra on NVIDIA GPUs, and whole without one\n"
              ".SH SYNOPSIS\n.B #include <lumo.h>\n.br\n.B #include <lumo_memory.h>\n.PP\n"
              ".RI cc\\  file .c\n.B $(pkg\\-config \\-\\-cflags \\-\\-libs lumo)\n.SH DESCRIPTION")
        for entry in entries:
            if entry.title:
                print(f'.SH "{self.text(entry.title)}"')
            else:
                self.entry(entry)
        print(".SH SEE ALSO\n.BR lumo (1)")

    def entry(self, entry):
        code, names, device = declarations(entry)
        if names:
            print(f".SS {heading(entry)}")
        if code:
            print(".nf" if names else ".PP\n.nf")
            print("\n".join(self.text(aligned(c)) for c in code))
            print(".fi")
        between = ".PP\n" if code else ""
        if device:
            print(between + self.filled(f"{SAME} {', '.join(device)}."))
        for kind, *words in paragraphs(entry.comment):
            if kind == "item":
                print(f".TP 16\n{self.text(words[0])}")
                between = ""
            print(between + self.filled(words[-1]))
            between = ".PP\n"


class Html:
    STYLE = """body { max-width: 56em; margin: 2em auto; padding: 0 1em; line-height: 1.45;
       font-family: sans-serif; color: #222 }
pre { background: #f4f4f2; padding: .6em .8em; overflow-x: auto; font-size: .9em }
h2 { border-bottom: 1px solid #bbb; margin-top: 2.2em } h3 { margin-bottom: .3em }
nav { columns: 2 } nav p { margin: 0 0 .4em; break-inside: avoid } a { color: #0645ad }
dt { font-family: monospace; float: left } dd { margin: 0 0 .3em 8em } .same { font-size: .9em }"""

    def page(self, version, entries):
        print(f'<!DOCTYPE html>\n<html lang="en"><head><meta charset="utf-8"><title>Lumo</title>\n'
              f"<style>{self.STYLE}</style></head><body>\n<h1>Lumo {version}: reference</h1>\n"
              f"<nav>{self.index(entries)}</nav>")
        for number, entry in enumerate(entries):
            if entry.title:
                print(f'<h2 id="s{number}">{html.escape(entry.title)}</h2>')
            else:
                self.entry(entry)
        print("</body></html>")

    def index(self, entries):
        parts = []
        for number, entry in enumerate(entries):
            if entry.title:
                parts.append(f'<p><a href="#s{number}"><b>{html.escape(entry.title)}</b></a>')
            elif heading(entry):
                names = declarations(entry)[1]
                parts.append(f'<br><a href="#{names[0]}">{heading(entry)}</a>')
        return "\n".join(parts)

    def entry(self, entry):
        code, names, device = declarations(entry)
        if heading(entry):
            print(f"<h3>{heading(entry)}</h3>")
        print("".join(f'<a id="{name}"></a>' for name in names))
        if code:
            text = html.escape("\n".join(aligned(c) for c in code))
            print("<pre>" + re.sub(r"(lumo\w+)\(", r"<b>\1</b>(", text) + "</pre>")
        if device:
            print(f'<p class="same">{SAME} ' + ", ".join(device) + ".</p>")
        for kind, *words in paragraphs(entry.comment):
            words = [html.escape(w) for w in words]
            print(f"<dl><dt>{words[0]}</dt><dd>{words[1]}</dd></dl>" if kind == "item"
                  else f"<p>{words[0]}</p>")


def main():
    form, version, output, *headers = sys.argv[1:]
    entries = []
    for header in headers:
        with open(header, encoding="utf-8") as file:
            found = parse(file.read())
        if entries:  # a second header is a section
            found.insert(0, Entry("Device memory", [], []))
        entries += found
    with open(output, "w", encoding="utf-8") as file, contextlib.redirect_stdout(file):
        {"man": Man, "html": Html}[form]().page(version, entries)


if __name__ == "__main__":
    main()
