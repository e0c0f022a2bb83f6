"""Statements on registers alone."""

from operands import Operands
from ptx import C_TYPES, SIZES, NotUnderstood, Statement

FLOATING = ("f32", "f64")
COMPARISONS = {"eq": "==", "ne": "!=", "lt": "<", "le": "<=", "gt": ">", "ge": ">="}
SAME_FOR_UNSIGNED = {"lo": "<", "ls": "<=", "hi": ">", "hs": ">="}


def unsigned(kind: str) -> str:
    return "u" + kind[1:]


def floating(o: Operands, s: Statement, kind: str) -> str:
    if any(w in ("approx", "full", "ftz", "rz", "rm", "rp", "sat") for w in s.words):
        raise NotUnderstood("rounding " + s.text)
    a = [o.value(x, kind) for x in s.operands[1:]]
    forms = {
        "add": "{0} + {1}", "sub": "{0} - {1}", "mul": "{0} * {1}", "div": "{0} / {1}",
        "fma": "std::fma({0}, {1}, {2})", "min": "std::fmin({0}, {1})",
        "max": "std::fmax({0}, {1})", "sqrt": "std::sqrt({0})", "rcp": "1 / {0}",
        "neg": "negate({0})", "abs": "std::fabs({0})", "copysign": "std::copysign({1}, {0})",
    }  # fmt: skip
    if s.words[0] not in forms:
        raise NotUnderstood("opcode " + s.text)
    return o.set(s.operands[0], forms[s.words[0]].format(*a), kind)


def predicate(o: Operands, s: Statement) -> str:
    forms = {"and": "{0} && {1}", "or": "{0} || {1}", "xor": "{0} != {1}", "not": "!{0}"}
    a = [f"({o.value(x, 'pred')})" for x in s.operands[1:]]
    return o.set(s.operands[0], forms[s.words[0]].format(*a), "pred")


def product(o: Operands, s: Statement, kind: str) -> str:
    """mul and mad: the low half, the high half, or all of it."""
    target, a = s.operands[0], s.operands[1:]
    if "wide" in s.words:
        wide = kind[0] + str(2 * SIZES[kind] * 8)
        x, y = (f"({C_TYPES[wide]})({o.value(n, kind)})" for n in a[:2])
        text = f"{x} * {y}"
        if s.words[0] == "mad":
            text = f"({C_TYPES[unsigned(wide)]})({text}) + {o.value(a[2], unsigned(wide))}"
        return o.set(target, text, wide)
    if "hi" in s.words:
        text = f"highHalf({o.value(a[0], kind)}, {o.value(a[1], kind)})"
        if s.words[0] == "mad":
            text = f"{text} + {o.value(a[2], kind)}"
        return o.set(target, text, kind)
    if "lo" not in s.words:
        raise NotUnderstood("product " + s.text)
    return wrapping(o, s, kind)


def wrapping(o: Operands, s: Statement, kind: str) -> str:
    """Integers wrap around: computed unsigned. Whether a signed result of 32 bits fits can be
    asked for."""
    forms = {
        "add": "{0} + {1}", "sub": "{0} - {1}", "mul": "{0} * {1}", "mad": "{0} * {1} + {2}",
        "neg": "0 - {0}", "and": "{0} & {1}", "or": "{0} | {1}", "xor": "{0} ^ {1}", "not": "~{0}",
        "abs": "{0} >> (8 * sizeof({0}) - 1) ? 0 - {0} : {0}", "cnot": "{0} == 0",
    }  # fmt: skip
    u = unsigned(kind)
    form, target = forms[s.words[0]], s.operands[0]
    text = form.format(*(o.value(x, u) for x in s.operands[1:]))
    assignment = o.set(target, f"({C_TYPES[u]})({text})", u)
    if kind != "s32" or s.words[0] not in ("add", "sub", "mul", "mad"):
        return assignment
    exact = form.format(*(f"(int64_t){o.value(x, 's32')}" for x in s.operands[1:]))
    return f"c.fits32({exact}); {assignment}"


def integer(o: Operands, s: Statement, kind: str) -> str:
    name, target, a = s.words[0], s.operands[0], s.operands[1:]
    if name in ("mul", "mad"):
        return product(o, s, kind)
    if name == "shl":
        x = o.value(a[0], unsigned(kind))
        return o.set(target, f"shiftLeft({x}, {o.value(a[1], 'u32')})", kind)
    if name == "shr":
        signed = kind if kind[0] == "s" else unsigned(kind)
        return o.set(target, f"shiftRight({o.value(a[0], signed)}, {o.value(a[1], 'u32')})", kind)
    if name in ("min", "max"):
        x, y = (o.value(n, kind) for n in a)
        return o.set(target, f"std::{name}<{C_TYPES[kind]}>({x}, {y})", kind)
    if name in ("div", "rem"):
        sign = "/" if name == "div" else "%"
        return o.set(target, f"{o.value(a[0], kind)} {sign} {o.value(a[1], kind)}", kind)
    return wrapping(o, s, kind)


def arithmetic(o: Operands, s: Statement) -> str:
    kind = s.words[-1]
    if kind in FLOATING:
        return floating(o, s, kind)
    return predicate(o, s) if kind == "pred" else integer(o, s, kind)


def bit_field(o: Operands, s: Statement) -> str:
    """popc, clz, brev, bfind, bfe, bfi, lop3, prmt, shf: functions of lane_arithmetic.h."""
    name, kind = s.words[0], s.words[-1]
    functions = {
        "popc": "countBits", "clz": "leadingZeros", "brev": "reverseBits", "bfind": "highestBit",
        "bfe": "extractBits", "bfi": "insertBits", "lop3": "logic3", "prmt": "permuteBytes",
        "shf": "funnel",
    }  # fmt: skip
    if name == "prmt" and len(s.words) > 2:
        raise NotUnderstood("opcode " + s.text)
    first = 2 if name == "bfi" else 1 if name in ("bfe",) else len(s.operands)
    a = [o.value(x, kind if i < first else "u32") for i, x in enumerate(s.operands[1:])]
    if name == "bfind":
        a.append("true" if "shiftamt" in s.words else "false")
    if name == "shf":
        a += ["true" if "l" in s.words else "false", "true" if "wrap" in s.words else "false"]
    result = "u32" if name in ("popc", "clz", "bfind") else kind
    return o.set(s.operands[0], f"{functions[name]}({', '.join(a)})", result)


def convert(o: Operands, s: Statement) -> str:
    to, of = s.words[-2:]
    if "sat" in s.words or "ftz" in s.words:
        raise NotUnderstood("conversion " + s.text)
    value = o.value(s.operands[1], of)
    if of in FLOATING and to not in FLOATING:
        modes = {"rni": "nearest", "rzi": "zero", "rmi": "down", "rpi": "up"}
        mode = next((modes[w] for w in s.words if w in modes), None)
        if mode is None:
            raise NotUnderstood("conversion " + s.text)
        return o.set(s.operands[0], f"toInteger<{C_TYPES[to]}>({value}, Towards::{mode})", to)
    if to in FLOATING and any(w in ("rz", "rm", "rp", "rni", "rzi", "rmi", "rpi") for w in s.words):
        raise NotUnderstood("conversion " + s.text)
    return o.set(s.operands[0], f"({C_TYPES[to]})({value})", to)


def move(o: Operands, s: Statement) -> str:
    target, source, kind = s.operands[0], s.operands[1], s.words[-1]
    if source.startswith("{"):
        halves = [x.strip() for x in source.strip("{}").split(",")]
        half, whole = "u" + str(SIZES[kind] * 8 // len(halves)), unsigned(kind)
        values = ", ".join(o.value(h, half) for h in halves)
        return o.set(target, f"packed<{C_TYPES[whole]}>({values})", whole)
    if target.startswith("{"):
        halves = [x.strip() for x in target.strip("{}").split(",")]
        bits = SIZES[kind] * 8 // len(halves)
        value = o.value(source, unsigned(kind))
        parts = [f"(uint{bits}_t)({value} >> {i * bits})" for i in range(len(halves))]
        return " ".join(o.set(h, part, f"u{bits}") for h, part in zip(halves, parts))
    if o.kind(source) is None and kind in FLOATING:
        raise NotUnderstood(s.text)
    return o.set(target, o.value(source, kind), kind)


def compare(o: Operands, s: Statement) -> str:
    """setp, and with a boolean operation setp.lt.and. Comparisons ending in u hold for NaN too."""
    kind, comparison = s.words[-1], s.words[1]
    x, y = (o.value(a, kind) for a in s.operands[1:3])
    if kind in FLOATING:
        ordered = f"({x} == {x} && {y} == {y})"
        if comparison == "num":
            text = ordered
        elif comparison == "nan":
            text = f"!{ordered}"
        elif comparison in COMPARISONS:
            text = f"({ordered} && {x} {COMPARISONS[comparison]} {y})"
        elif comparison[:-1] in COMPARISONS and comparison[-1] == "u":
            text = f"(!{ordered} || {x} {COMPARISONS[comparison[:-1]]} {y})"
        else:
            raise NotUnderstood("comparison " + s.text)
    else:
        signs = COMPARISONS | SAME_FOR_UNSIGNED
        if comparison not in signs:
            raise NotUnderstood("comparison " + s.text)
        text = f"({x} {signs[comparison]} {y})"
    targets = s.operands[0].split("|")
    if len(s.words) == 4:
        sign = {"and": "&&", "or": "||", "xor": "!="}[s.words[2]]
        third = f"({o.value(s.operands[3], 'pred')})"
        texts = [f"{text} {sign} {third}", f"!{text} {sign} {third}"]
    else:
        texts = [text, f"!{text}"]
    if len(targets) == 1:
        return o.set(targets[0], texts[0], "pred")
    # Both are computed before either target, which may be an operand, is set.
    return (
        f"{{ const bool first = {texts[0]}, second = {texts[1]}; "
        f"{o.set(targets[0], 'first', 'pred')} {o.set(targets[1], 'second', 'pred')} }}"
    )


def select(o: Operands, s: Statement) -> str:
    kind = s.words[-1]
    a, b = (o.value(x, kind) for x in s.operands[1:3])
    return o.set(s.operands[0], f"{o.value(s.operands[3], 'pred')} ? {a} : {b}", kind)


def window(o: Operands, s: Statement) -> str:
    """cvta: the address spaces lie in one space of addresses here, each where it is."""
    return o.set(s.operands[0], o.value(s.operands[1], s.words[-1]), s.words[-1])


OPERATORS = (
    "add sub mul div rem min max and or xor shl shr mad fma neg abs not cnot sqrt rcp copysign"
)
ARITHMETIC = dict.fromkeys(OPERATORS.split(), arithmetic)
ARITHMETIC |= dict.fromkeys("popc clz brev bfind bfe bfi lop3 prmt shf".split(), bit_field)
ARITHMETIC |= {"cvt": convert, "mov": move, "setp": compare, "selp": select, "cvta": window}
