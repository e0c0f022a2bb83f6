"""Statements by which lanes meet: memory, atomic operations, fences, barriers, exchange in a warp.

What has to wait for other lanes returns from the lane's function, with the reason, and goes on
behind a label when the lane is run again.
"""

from operands import Operands
from ptx import C_TYPES, SIZES, NotUnderstood, Statement

SPACES = ("global", "shared", "local", "param")
SCOPES = ("cta", "cluster", "gpu", "sys")


class Waits:
    """The places at which an entry's lanes wait."""

    def __init__(self):
        self.count = 0

    def here(self, reason: str) -> str:
        self.count += 1
        return f"c.state = {self.count}; return Stop::{reason}; wait{self.count}:;"


def space_of(s: Statement) -> str:
    """Without a word the address says which space is meant."""
    words = [w.partition("::")[0] for w in s.words]
    found = [w for w in SPACES if w in words]
    if "shared::cluster" in s.words:
        return "generic"
    return found[0] if found else "generic"


def order_of(s: Statement) -> str | None:
    """The order of a strong access, None for a weak one."""
    if "volatile" in s.words:
        return "relaxed"
    orders = ("acq_rel", "acquire", "release", "relaxed")
    order = next((w for w in orders if w in s.words), None)
    # What holds in a block only orders nothing between blocks.
    return "relaxed" if order and "cta" in s.words else order


def load(o: Operands, s: Statement, waits: Waits) -> str:
    order, kind = order_of(s), s.words[-1]
    target, address = s.operands
    targets = [t.strip() for t in target.strip("{}").split(",")]
    size = SIZES[kind] * len(targets)
    sets = " ".join(o.set(t, f"q[{i}]", kind) for i, t in enumerate(targets))
    get = f"c.{space_of(s)}<{size}>({o.address(address)}, false{strength(order)})"
    done = f"c.readStrongly(q, Order::{order});" if order else ""
    access = f"{{ auto* q = (const {C_TYPES[kind]}*){get}; {done} {sets} }}"
    # Whoever looks again and again waits for somebody to write: that lane must get its turn.
    return f"{waits.here('spin')} {access}" if order else access


def strength(order: str | None) -> str:
    return ", true" if order else ""


def store(o: Operands, s: Statement, waits: Waits) -> str:
    order, kind = order_of(s), s.words[-1]
    address, value = s.operands
    values = [v.strip() for v in value.strip("{}").split(",")]
    size = SIZES[kind] * len(values)
    sets = " ".join(f"q[{i}] = {o.value(v, kind)};" for i, v in enumerate(values))
    get = f"c.{space_of(s)}<{size}>({o.address(address)}, true{strength(order)})"
    done = f"c.writeStrongly(q, Order::{order});" if order else ""
    return f"{{ auto* q = ({C_TYPES[kind]}*){get}; {sets} {done} }}"


def atomic(o: Operands, s: Statement, waits: Waits) -> str:
    kind = s.words[-1]
    reduction = s.words[0] == "red"
    target = "_" if reduction else s.operands[0]
    address, *a = s.operands if reduction else s.operands[1:]
    operation = next((w for w in s.words[1:] if w in ATOMIC), None)
    if operation is None:
        raise NotUnderstood("atomic operation " + s.text)
    number = kind if operation in ("add", "min", "max") else "u" + kind[1:]
    t = C_TYPES[number]
    names = [f"const {t} {n} = {o.value(x, number)};" for n, x in zip("xy", a)]
    get = f"({t}*)c.{space_of(s)}<{SIZES[kind]}>({o.address(address)}, true, true)"
    change = f"c.change(q, {ATOMIC[operation]}, Order::{order_of(s) or 'relaxed'})"
    body = f"{{ {' '.join(names)} auto* q = {get}; {o.set(target, change, number)} }}"
    return body if reduction else f"{waits.here('spin')} {body}"


ATOMIC = {
    "add": "[=](auto old) { return wrapped(old, x); }",
    "min": "[=](auto old) { return std::min(old, x); }",
    "max": "[=](auto old) { return std::max(old, x); }",
    "and": "[=](auto old) { return old & x; }",
    "or": "[=](auto old) { return old | x; }",
    "xor": "[=](auto old) { return old ^ x; }",
    "exch": "[=](auto) { return x; }",
    "cas": "[=](auto old) { return old == x ? y : old; }",
    "inc": "[=](auto old) { return old >= x ? 0 : old + 1; }",
    "dec": "[=](auto old) { return old == 0 || old > x ? x : old - 1; }",
}


def fence(o: Operands, s: Statement, waits: Waits) -> str:
    if s.words[0] == "membar":
        return "" if s.words[-1] == "cta" else "c.fence();"
    if s.words[1] not in ("acq_rel", "sc") or s.words[-1] not in SCOPES:
        raise NotUnderstood("fence " + s.text)
    return "" if s.words[-1] == "cta" else "c.fence();"


def barrier(o: Operands, s: Statement, waits: Waits) -> str:
    words = [w for w in s.words[1:] if w not in ("cta", "aligned")]
    if words == ["warp", "sync"]:
        return exchange(o, waits, "sync", s.operands[0], [])
    if words[:1] == ["cluster"]:
        if words[1:] in (["arrive"], ["arrive", "release"]):
            return "c.arrivedInCluster = true;"
        if words[1:] in (["wait"], ["wait", "acquire"]):
            return waits.here("cluster")
    if words == ["sync"] and s.operands == ["0"]:
        return waits.here("barrier")
    raise NotUnderstood("barrier " + s.text)


def exchange(o: Operands, waits: Waits, kind: str, mask: str, operands: list[str]) -> str:
    values = ", ".join([o.value(mask, "u32")] + operands)
    return f"c.offer(Exchange::{kind}, {values}); {waits.here('warp')}"


def taken(o: Operands, target: str, kind: str) -> str:
    """The result `value`, or `value|predicate`."""
    value, _, flag = target.partition("|")
    text = o.set(value, f"({C_TYPES[kind]})c.taken", kind)
    return text + " " + o.set(flag, "c.takenFlag", "pred") if flag else text


def shuffle(o: Operands, s: Statement, waits: Waits) -> str:
    target, value, where, clamp, mask = s.operands
    operands = [o.value(value, "b32"), o.value(where, "u32"), o.value(clamp, "u32")]
    return exchange(o, waits, s.words[2], mask, operands) + " " + taken(o, target, "b32")


def vote(o: Operands, s: Statement, waits: Waits) -> str:
    target, value, mask = s.operands
    text = exchange(o, waits, s.words[2], mask, [o.value(value, "pred")])
    if s.words[2] == "ballot":
        return text + " " + taken(o, target, "b32")
    return text + " " + o.set(target, "c.takenFlag", "pred")


def match(o: Operands, s: Statement, waits: Waits) -> str:
    target, value, mask = s.operands
    kind = "matchAny" if s.words[1] == "any" else "matchAll"
    text = exchange(o, waits, kind, mask, [o.value(value, s.words[-1])])
    return text + " " + taken(o, target, "b32")


def reduce(o: Operands, s: Statement, waits: Waits) -> str:
    target, value, mask = s.operands
    operation, kind = s.words[2:]
    names = {
        "add": "sum", "min": "least", "max": "largest",
        "and": "bitAnd", "or": "bitOr", "xor": "bitXor",
    }  # fmt: skip
    name = names[operation] + ("Signed" if kind == "s32" and operation in ("min", "max") else "")
    return exchange(o, waits, name, mask, [o.value(value, "u32")]) + " " + taken(o, target, "b32")


def map_rank(o: Operands, s: Statement, waits: Waits) -> str:
    """The address of the same variable in another block of the cluster."""
    address, rank = o.value(s.operands[1], s.words[-1]), o.value(s.operands[2], "u32")
    return o.set(s.operands[0], f"c.ofRank({address}, {rank})", s.words[-1])


TOGETHER = {
    "ld": load, "ldu": load, "st": store, "atom": atomic, "red": atomic, "membar": fence,
    "fence": fence, "bar": barrier, "barrier": barrier, "shfl": shuffle, "vote": vote,
    "match": match, "redux": reduce, "mapa": map_rank,
}  # fmt: skip
WAITING = ("bar", "barrier", "shfl", "vote", "match", "redux", "atom")


def may_wait(s: Statement) -> bool:
    """Whether a lane has to keep its registers while others run."""
    return s.words[0] in WAITING or (s.words[0] == "ld" and order_of(s) is not None)
