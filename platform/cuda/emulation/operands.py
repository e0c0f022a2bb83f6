"""Operands of PTX statements as expressions of C++."""

import re

from ptx import C_TYPES, SIZES, Entry, NotUnderstood

# What a lane knows of itself, by the name of the special register.
SPECIAL = {
    "%laneid": "c.laneId()",
    "%warpid": "c.warpId()",
    "%nwarpid": "c.warps()",
    "%lanemask_eq": "(1u << c.laneId())",
    "%lanemask_lt": "((1u << c.laneId()) - 1)",
    "%lanemask_le": "((2u << c.laneId()) - 1)",
    "%lanemask_gt": "~((2u << c.laneId()) - 1)",
    "%lanemask_ge": "~((1u << c.laneId()) - 1)",
    "%cluster_ctarank": "c.shape->rankOf(c.ctaid)",
    "%cluster_nctarank": "c.shape->blocksInCluster()",
    "%envreg1": "uint32_t(c.shape->gridWorkspace >> 32)",
    "%envreg2": "uint32_t(c.shape->gridWorkspace)",
    "WARP_SZ": "32u",
}
BY_AXIS = {
    "tid": "c.tid[{0}]",
    "ntid": "c.shape->ntid[{0}]",
    "ctaid": "c.ctaid[{0}]",
    "nctaid": "c.shape->nctaid[{0}]",
    "cluster_ctaid": "(c.ctaid[{0}] % c.shape->cluster[{0}])",
    "cluster_nctaid": "c.shape->cluster[{0}]",
    "clusterid": "(c.ctaid[{0}] / c.shape->cluster[{0}])",
    "nclusterid": "(c.shape->nctaid[{0}] / c.shape->cluster[{0}])",
}


class Layout:
    """Offsets of variables that lie one behind the other."""

    def __init__(self, variables):
        self.offsets, self.size = {}, 0
        for v in sorted(variables, key=lambda v: getattr(v, "dynamic", False)):
            self.size = (self.size + v.alignment - 1) // v.alignment * v.alignment
            self.offsets[v.name] = self.size
            self.size += v.size


class Operands:
    """The operands of an entry's statements. Registers are locals, or members of `r` where the lane
    has to keep them while others run."""

    def __init__(self, entry: Entry, kept: bool):
        self.entry, self.kept = entry, kept
        self.parameters = Layout(entry.parameters)
        self.shared = Layout(entry.shared)
        self.local = Layout(entry.local)

    def register(self, name: str) -> str:
        return ("r." if self.kept else "") + name[1:].replace("%", "_")

    def kind(self, operand: str) -> str | None:
        """The PTX type of a register or of a floating-point number, None for any other operand."""
        if operand.startswith(("0f", "0F")):
            return "f32"
        if operand.startswith(("0d", "0D")):
            return "f64"
        return self.entry.registers.get(operand)

    def raw(self, operand: str) -> str:
        if operand in self.entry.registers:
            return self.register(operand)
        if operand in SPECIAL:
            return SPECIAL[operand]
        if axis := re.match(r"%(\w+)\.([xyz])$", operand):
            if axis.group(1) in BY_AXIS:
                return BY_AXIS[axis.group(1)].format("xyz".index(axis.group(2)))
        if re.match(r"0[fF][0-9a-fA-F]{8}$", operand):
            return f"bits<float>(0x{operand[2:]}u)"
        if re.match(r"0[dD][0-9a-fA-F]{16}$", operand):
            return f"bits<double>(0x{operand[2:]}ull)"
        if operand == "-9223372036854775808":
            return "(-9223372036854775807ll - 1)"
        if re.match(r"-?\d+$", operand):
            return f"({operand}ll)"
        if re.match(r"0x[0-9a-fA-F]+U?$", operand):
            return operand.rstrip("U") + "ull"
        if operand in self.shared.offsets:
            return f"(c.sharedBase + {self.shared.offsets[operand]}ull)"
        if operand in self.local.offsets:
            return f"(localWindow + {self.local.offsets[operand]}ull)"
        if operand in self.parameters.offsets:
            return f"(parameterWindow + {self.parameters.offsets[operand]}ull)"
        raise NotUnderstood("operand " + operand)

    def value(self, operand: str, kind: str) -> str:
        """An operand as a value of PTX type `kind`; between integers and floating-point numbers of
        one size its bits are taken as they are."""
        if operand.startswith("!"):
            return "!" + self.value(operand[1:], kind)
        have, raw = self.kind(operand), self.raw(operand)
        floating = kind in ("f32", "f64")
        if (have in ("f32", "f64")) != floating and have is not None:
            if kind == "pred" or have == "pred" or SIZES[have] != SIZES[kind]:
                raise NotUnderstood(f"{operand} as {kind}")
            return f"bits<{C_TYPES[kind]}>({raw})"
        if floating and have != kind:
            raise NotUnderstood(f"{operand} as {kind}")
        return raw if floating else f"({C_TYPES[kind]})({raw})"

    def set(self, target: str, expression: str, kind: str) -> str:
        """The assignment of a value of PTX type `kind`."""
        if target == "_":
            return f"(void)({expression});"
        have = self.kind(target)
        if have is None:
            raise NotUnderstood("target " + target)
        if (have in ("f32", "f64")) != (kind in ("f32", "f64")):
            expression = f"bits<{C_TYPES[have]}>(({C_TYPES[kind]})({expression}))"
        return f"{self.register(target)} = {expression};"

    def address(self, operand: str) -> str:
        match = re.match(r"\[\s*([%\w$]+)\s*(?:\+\s*(-?\d+))?\s*\]$", operand)
        if not match:
            raise NotUnderstood("address " + operand)
        return f"(uint64_t)({self.raw(match.group(1))}) + (uint64_t)({match.group(2) or 0}ll)"
