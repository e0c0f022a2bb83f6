#!/usr/bin/env python3
"""Translates kernels from PTX to C++ for the emulated GPU: translate.py FILE.cpp FILE.ptx

Each kernel becomes a function that runs one lane until it ends or must wait for others (lane.h).
Every access to memory is checked. A statement that is not known is an error, so that nothing is
skipped in silence.
"""

import sys

from arithmetic import ARITHMETIC
from operands import Operands
from ptx import C_TYPES, Entry, Label, NotUnderstood, Statement, parse
from together import TOGETHER, Waits, may_wait


def label(name: str) -> str:
    return name.replace("$", "_")


def translated(o: Operands, s: Statement, waits: Waits) -> str:
    name = s.words[0]
    if name == "bra":
        return f"goto {label(s.operands[0])};"
    if name in ("ret", "exit"):
        return "return Stop::exited;"
    if name == "trap":
        return 'c.fault("a trap", 0, 0, false, 719);'
    if name == "nanosleep":
        return ""
    if name in TOGETHER:
        return TOGETHER[name](o, s, waits)
    if name in ARITHMETIC:
        return ARITHMETIC[name](o, s)
    raise NotUnderstood("opcode " + s.text)


def declarations(entry: Entry) -> list[str]:
    """The registers that the entry uses, by type; most that PTX declares are used."""
    by_type: dict[str, list[str]] = {}
    for name, kind in entry.registers.items():
        by_type.setdefault(C_TYPES[kind], []).append(name[1:].replace("%", "_"))
    return [f"{kind} {', '.join(names)};" for kind, names in by_type.items()]


def function(entry: Entry, number: int) -> tuple[list[str], str]:
    """The function's lines, and its kernel's row in the table."""
    statements = [s for s in entry.code if isinstance(s, Statement)]
    kept = any(may_wait(s) for s in statements)
    o, waits = Operands(entry, kept), Waits()
    registers = declarations(entry)
    if o.local.size:
        registers.append(f"alignas(16) unsigned char localMemory[{o.local.size}];")
    body = []
    for item in entry.code:
        if isinstance(item, Label):
            body.append(f"{label(item.name)}:;")
            continue
        try:
            text = translated(o, item, waits)
        except NotUnderstood as problem:
            raise NotUnderstood(f"{problem} in {entry.name}") from None
        if item.guard:
            text = f"if ({o.value(item.guard, 'pred')}) {{ {text} }}"
        body.append("    " + text)
    lines = [f"// {entry.name}"]
    if kept:
        lines += [f"struct Registers{number} {{", *("    " + r for r in registers), "};"]
    lines.append(f"Stop kernel{number}(Lane& c) {{")
    if kept:
        lines.append(f"    auto& r = *static_cast<Registers{number}*>(c.registers);")
    else:
        lines += ["    " + r for r in registers]
    if o.local.size:
        lines.append(f"    c.useLocal({'r.' if kept else ''}localMemory, {o.local.size});")
    if waits.count:
        cases = " ".join(f"case {i}: goto wait{i};" for i in range(1, waits.count + 1))
        lines.append(f"    switch (c.state) {{ {cases} }}")
    lines += [*body, "    return Stop::exited;", "}"]
    offsets = ", ".join(f"{{{o.parameters.offsets[p.name]}, {p.size}}}" for p in entry.parameters)
    lines.append(f"const Parameter parameters{number}[] = {{{offsets or '{0, 0}'}}};")
    size = f"sizeof(Registers{number})" if kept else "0"
    row = (
        f'{{"{entry.name}", kernel{number}, {size}, parameters{number}, {len(entry.parameters)}, '
        f"{o.parameters.size}, {o.shared.size}, {{{', '.join(map(str, entry.cluster))}}}}}"
    )
    return lines, row


def main() -> None:
    target, source = sys.argv[1:]
    lines = [f'#include "platform/cuda/emulation/{header}"' for header in ("kernel.h", "lane.h")]
    lines += ["namespace {", "using namespace emulated;"]
    rows = []
    try:
        with open(source, encoding="ascii") as file:
            entries = parse(file.read())
        for number, entry in enumerate(entries):
            text, row = function(entry, number)
            lines += text
            rows.append(row)
    except NotUnderstood as problem:
        sys.exit(f"{source}: not understood: {problem}")
    lines += ["const Kernel kernels[] = {", ",\n".join(rows), "};"] if rows else []
    lines += ["const KernelRegistration registration(kernels, std::size(kernels));"] if rows else []
    lines.append("}  // namespace")
    with open(target, "w", encoding="ascii") as file:
        file.write("\n".join(lines) + "\n")


main()
