#!/usr/bin/env python3
"""The reference manual from the headers' comments:

    reference.py man VERSION DATE FOLDER HEADER...   lumo.3.gz, and a page for every function
    reference.py html VERSION FILE HEADER...
"""

import contextlib
import html
import os
import re
import shutil
import subprocess
import sys
import textwrap

import headers


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


def sections(entries):
    """(title's entry, groups of functions) of each section that has functions."""
    result = []
    for entry in entries:
        if entry.title:
            result.append((entry, []))
        elif entry.functions():
            result[-1][1].append(entry)
    return result


SAME = "The same on device memory:"


def summary(section, groups, entry):
    """A line for a group of functions: their section's title where they are alone in it, else the
    first clause of their comment."""
    words = section.title
    if len(groups) > 1 or section.title == entry.header:
        words = paragraphs(entry.comment)[0][1].replace("`", "")
        words = re.split(r"(?<=\S)[.;](?: |$)", words)[0]
    return words[0].lower() + words[1:] if words[1].islower() else words


class Man:
    """man(7)."""

    def __init__(self, version, date):
        self.version, self.date = version, date

    def text(self, s):
        for plain, roff in (("\\", "\\e"), ("'", "\\(aq"), ("^", "\\(ha")):
            s = s.replace(plain, roff)
        s = re.sub("`([^`]+)`", r"\\fB\1\\fP", s)
        return re.sub(r"(?<![\w-])-(?=[\w.])", r"\\-", s)

    def filled(self, s):
        s = re.sub(r"\b(lumo\w+)", r"\\%\1", self.text(s))  # names are not hyphenated
        return textwrap.fill(s, 78, break_long_words=False, break_on_hyphens=False)

    def begin(self, page, names, line, includes):
        print(f'.\\" Made from the headers by tools/reference.py.\n'
              f'.TH {page} 3 "{self.date}" "Lumo {self.version}" "Lumo reference"\n.SH NAME\n'
              f"{textwrap.fill(', '.join(names), 78)} \\- {self.text(line)}\n.SH SYNOPSIS")
        print("\n.br\n".join(f".B #include <{header}>" for header in includes))

    def overview(self, entries):
        self.begin("LUMO", ["lumo"], "dense linear algebra on NVIDIA GPUs, and whole without one",
                   dict.fromkeys(entry.header for entry in entries))
        print(".PP\n.RI cc\\  file .c\n.B $(pkg\\-config \\-\\-cflags \\-\\-libs lumo)\n"
              ".SH DESCRIPTION\nEvery function has a page of its own as well.")
        for entry in entries:
            if entry.title:
                print(f'.SH "{self.text(entry.title)}"')
            else:
                names = declarations(entry)[1]
                if names:
                    print(f".SS {heading(entry)}")
                self.code(entry, "" if names else ".PP\n")
                self.words(entry)
        print(".SH SEE ALSO\n.BR lumo (1)")

    def function_page(self, line, entry):
        names = list(entry.functions())
        self.begin(names[0], names, line, [entry.header])
        self.code(entry, ".PP\n")
        print(".SH DESCRIPTION")
        self.words(entry)
        print(".SH SEE ALSO\n.BR lumo (3)\ntells what holds for every function.")

    def code(self, entry, before):
        shown, _, device = declarations(entry)
        if shown:
            print(before + ".nf\n" + "\n".join(self.text(aligned(c)) for c in shown) + "\n.fi")
        if device:
            print(".PP\n" + self.filled(f"{SAME} {', '.join(device)}."))

    def words(self, entry):
        between = ".PP\n"
        for kind, *words in paragraphs(entry.comment):
            if kind == "item":
                print(f".TP 16\n{self.text(words[0])}")
                between = ""
            print(between + self.filled(words[-1]))
            between = ".PP\n"

    def pages(self, folder, entries):
        """Writes lumo.3.gz; for each group of functions a page under the first's name, to which
        the others' names lead."""
        shutil.rmtree(folder, ignore_errors=True)
        os.makedirs(folder)
        pages = []

        def write(name, content, *arguments):
            pages.append(os.path.join(folder, name + ".3"))
            with open(pages[-1], "w", encoding="utf-8") as file, contextlib.redirect_stdout(file):
                content(*arguments)

        write("lumo", self.overview, entries)
        for section, groups in sections(entries):
            for entry in groups:
                first, *others = entry.functions()
                write(first, self.function_page, summary(section, groups, entry), entry)
                for other in others:
                    os.symlink(f"{first}.3.gz", os.path.join(folder, f"{other}.3.gz"))
        subprocess.run(["gzip", "-9n", *pages], check=True)


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
            words = [re.sub("`([^`]+)`", r"<code>\1</code>", html.escape(w)) for w in words]
            print(f"<dl><dt>{words[0]}</dt><dd>{words[1]}</dd></dl>" if kind == "item"
                  else f"<p>{words[0]}</p>")


def main():
    form, version, *rest = sys.argv[1:]
    if form == "man":
        date, folder, *paths = rest
        Man(version, date).pages(folder, headers.parse_all(paths))
    else:
        output, *paths = rest
        with open(output, "w", encoding="utf-8") as file, contextlib.redirect_stdout(file):
            Html().page(version, headers.parse_all(paths))


if __name__ == "__main__":
    main()
