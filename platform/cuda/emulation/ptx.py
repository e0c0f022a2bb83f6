"""PTX modules as nvcc writes them: entries with their parameters, memory and statements."""

import re
from dataclasses import dataclass, field

# C++'s type of a PTX type.
C_TYPES = {
    "u8": "uint8_t", "s8": "int8_t", "b8": "uint8_t",
    "u16": "uint16_t", "s16": "int16_t", "b16": "uint16_t",
    "u32": "uint32_t", "s32": "int32_t", "b32": "uint32_t",
    "u64": "uint64_t", "s64": "int64_t", "b64": "uint64_t",
    "f32": "float", "f64": "double", "pred": "bool",
}  # fmt: skip
SIZES = {t: int(t[1:]) // 8 for t in C_TYPES if t != "pred"}


class NotUnderstood(Exception):
    """Something in a module that would otherwise be skipped in silence."""


@dataclass
class Label:
    name: str


@dataclass
class Statement:
    """`@guard opcode operands;`, the opcode split at its points."""

    text: str
    guard: str | None
    words: list[str]
    operands: list[str]


@dataclass
class Memory:
    """A variable in shared or local memory. Of dynamic shared memory the launch says the size."""

    name: str
    size: int
    alignment: int
    dynamic: bool = False


@dataclass
class Entry:
    name: str
    parameters: list[Memory] = field(default_factory=list)
    shared: list[Memory] = field(default_factory=list)
    local: list[Memory] = field(default_factory=list)
    registers: dict[str, str] = field(default_factory=dict)  # name to PTX type
    code: list[Label | Statement] = field(default_factory=list)
    cluster: tuple[int, int, int] = (0, 0, 0)


VARIABLE = re.compile(r"\.(shared|local)\s+\.align\s+(\d+)\s+\.(\w+)\s+([\w$]+)(?:\[(\d*)\])?$")
CLUSTER = re.compile(r"\.reqnctapercluster\s+(\d+)(?:\s*,\s*(\d+))?(?:\s*,\s*(\d+))?")
ENTRY = re.compile(
    r"(?:\.(?:visible|weak)\s+)?\.entry\s+([\w$]+)\s*\((.*?)\)\s*(.*?)\{(.*?)^\}", re.S | re.M
)


def variable(line: str) -> tuple[str, Memory]:
    """The space and the variable; an array without a size is dynamic shared memory."""
    match = VARIABLE.match(line)
    if not match:
        raise NotUnderstood("variable " + line)
    space, alignment, kind, name, count = match.groups()
    count = 1 if count is None else int(count or 0)
    return space, Memory(name, count * SIZES[kind], int(alignment), count == 0)


def split_operands(text: str) -> list[str]:
    """At the commas that stand in no bracket."""
    parts, depth, current = [], 0, ""
    for letter in text:
        depth += (letter in "{[") - (letter in "}]")
        if letter == "," and depth == 0:
            parts.append(current.strip())
            current = ""
        else:
            current += letter
    return parts + [current.strip()] if current.strip() else parts


def parameter(text: str) -> Memory:
    array = re.match(r"\.param\s+\.align\s+(\d+)\s+\.b8\s+([\w$]+)\[(\d+)\]$", text)
    if array:
        return Memory(array.group(2), int(array.group(3)), int(array.group(1)))
    pointer = r"(?:\.ptr\s+(?:\.\w+\s+)?\.align\s+\d+\s+)?"
    scalar = re.match(r"\.param\s+\.(\w+)\s+" + pointer + r"([\w$]+)$", text)
    if not scalar:
        raise NotUnderstood("parameter " + text)
    size = SIZES[scalar.group(1)]
    return Memory(scalar.group(2), size, size)


class Body:
    """Splits an entry's body. Inline assembly may open scopes with registers of their own, which
    get names of their own here."""

    def __init__(self, entry: Entry, text: str):
        self.entry = entry
        self.scopes: list[dict[str, str]] = []
        self.count = 0
        position = 0
        text = text.strip()
        while position < len(text):
            if text[position].isspace():
                position += 1
            elif text[position] == "{":
                self.scopes.append({})
                self.count += 1
                position += 1
            elif text[position] == "}":
                self.scopes.pop()
                position += 1
            elif label := re.compile(r"([\w$]+):").match(text, position):
                entry.code.append(Label(label.group(1)))
                position = label.end()
            else:
                end = text.index(";", position)
                self.line(" ".join(text[position:end].split()))
                position = end + 1

    def line(self, line: str) -> None:
        if line.startswith("."):
            self.directive(line)
            return
        for scope in self.scopes:
            for name, unique in scope.items():
                line = re.sub(re.escape(name) + r"\b", unique, line)
        match = re.match(r"(?:@(!?%\w+)\s+)?([\w.:]+)\s*(.*)$", line)
        if not match:
            raise NotUnderstood("statement " + line)
        guard, opcode, operands = match.groups()
        statement = Statement(line, guard, opcode.split("."), split_operands(operands))
        self.entry.code.append(statement)

    def directive(self, line: str) -> None:
        if line.startswith((".pragma", ".loc", ".file")):
            return
        if match := re.match(r"\.reg\s+\.(\w+)\s+(.*)$", line):
            for name in split_operands(match.group(2)):
                self.register(match.group(1), name)
        else:
            space, memory = variable(line)
            getattr(self.entry, space).append(memory)

    def register(self, kind: str, name: str) -> None:
        if many := re.match(r"(%\w+)<(\d+)>$", name):
            for i in range(1, int(many.group(2))):
                self.entry.registers[many.group(1) + str(i)] = kind
        elif self.scopes:
            unique = f"{name}_in{self.count}"
            self.scopes[-1][name] = unique
            self.entry.registers[unique] = kind
        else:
            self.entry.registers[name] = kind


def parse(text: str) -> list[Entry]:
    text = re.sub(r"//[^\n]*|/\*.*?\*/", "", text, flags=re.S)
    if re.search(r"^\s*(?:\.(?:visible|weak|extern)\s+)?\.func\b", text, re.M):
        raise NotUnderstood("a device function that is called")
    outside = ENTRY.sub("", text)
    if unknown := re.search(r"^\s*(?:\.\w+\s+)*\.(?:global|const)\s.*$", outside, re.M):
        raise NotUnderstood("a variable of the module: " + unknown.group(0).strip())
    lines = re.findall(r"^\s*(?:\.extern\s+)?(\.shared\s[^;]*);", outside, re.M)
    of_module = [variable(" ".join(line.split()))[1] for line in lines]
    entries = []
    for match in ENTRY.finditer(text):
        entry = Entry(match.group(1))
        entry.parameters = [parameter(" ".join(p.split())) for p in split_operands(match.group(2))]
        entry.shared = [m for m in of_module if m.name in match.group(4)]
        if size := CLUSTER.search(match.group(3)):
            entry.cluster = tuple(int(n or 1) for n in size.groups())
        Body(entry, match.group(4))
        entries.append(entry)
    if len(entries) != len(re.findall(r"\.entry\b", text)):
        raise NotUnderstood("not every entry was found")
    return entries
