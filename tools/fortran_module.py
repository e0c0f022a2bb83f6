#!/usr/bin/env python3
"""The Fortran module of the whole interface, from the headers: fortran_module.py FILE HEADER...

Scalars go by value, as in C. Matrices in host memory are arrays of Fortran's own numbers, complex
ones too: complex(c_float_complex) is laid out and passed as C's float _Complex is, and that as
lumoFloatComplex. What may lie in device memory is a type(c_ptr).
"""

import re
import sys
import textwrap

import headers

NUMBERS = {
    "int": "integer(c_int)",
    "lumoStatus": "integer(c_int)",
    "size_t": "integer(c_size_t)",
    "char": "character(kind=c_char)",
    "float": "real(c_float)",
    "double": "real(c_double)",
    "lumoFloatComplex": "complex(c_float_complex)",
    "lumoDoubleComplex": "complex(c_double_complex)",
}

NO_BREAK = "\u00a0"  # where a line may not be broken


def argument(function, type_, name, names):
    """An argument's type and attributes, and its name with its shape."""
    base, stars = re.fullmatch(r"(?:const )?(\w+)(\**)", type_).groups()
    if not stars:
        return f"{NUMBERS[base]}, value", name
    if stars == "**":
        return "type(c_ptr), intent(out)", name
    takes_matrices = any(f"ld{n}" in names for n in names)
    if base == "void" or (function.startswith("lumoDevice") and takes_matrices):
        return "type(c_ptr), value", name
    if base == "int" and name != "ipiv":  # one number, an answer
        return "integer(c_int), intent(out)", name
    intent = "in" if type_.startswith("const ") else "inout"
    leading = f"ld{name}, " if f"ld{name}" in names else ""
    return f"{NUMBERS[base]}, intent({intent})", f"{name}({leading}*)"


def interface(name, declaration):
    """The lines of a function's interface body."""
    result, parameters = re.fullmatch(rf"(.*?) ?{name}\((.*)\);", declaration).groups()
    pairs = [p.rsplit(" ", 1) for p in parameters.split(", ") if p != "void"]
    names = [n for _, n in pairs]
    kind, start = "function", "type(c_ptr) " if result.endswith("*") else ""
    if result == "void":
        kind = "subroutine"
    elif not start:
        start = NUMBERS[result] + " "
    yield f'{start}{kind} {name}({", ".join(names)}) bind(C,{NO_BREAK}name="{name}")'
    yield "    import"
    by_type = {}
    for type_, n in pairs:
        attributes, shaped = argument(name, type_, n, names)
        by_type.setdefault(attributes, []).append(shaped)
    # Scalars first: they shape the arrays.
    for attributes, shaped in sorted(by_type.items(), key=lambda item: "value" not in item[0]):
        yield f'    {attributes} :: {", ".join(shaped)}'
    yield f"end {kind}"


def continued(line):
    """A line of Fortran, broken where it is too long."""
    indent = re.match(" *", line)[0]
    return textwrap.fill(line, 98, subsequent_indent=indent + "    ") \
        .replace("\n", " &\n").replace(NO_BREAK, " ")


def module(entries):
    yield """! The interface of lumo.h and the headers beside it for Fortran: lumo(3) has the contracts.
! Made from the headers by tools/fortran_module.py; compile it with your program.
!
! Matrices in device memory, and whatever else may lie there, are of type(c_ptr). So are the
! texts of lumoGetStatusString and of functions like it: C strings."""
    yield "module lumo\n    use, intrinsic :: iso_c_binding\n    implicit none\n"
    for entry in entries:
        for enumeration in (c for c in entry.code if c.startswith("typedef enum")):
            for name, value in re.findall(r"(\w+) = (\d+)", enumeration):
                yield f"    integer(c_int), parameter :: {name} = {value}"
    yield "\n    interface"
    for entry in entries:
        if entry.title:
            yield f"        ! {entry.title}"
        for name, declaration in entry.functions().items():
            for line in interface(name, declaration):
                yield continued(" " * 8 + line)
    yield "    end interface\nend module lumo"


def main():
    output, *paths = sys.argv[1:]
    text = "\n".join(module(headers.parse_all(paths)))
    with open(output, "w", encoding="utf-8") as file:
        file.write(text + "\n")


if __name__ == "__main__":
    main()
