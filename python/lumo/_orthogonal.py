"""QR factorisation."""

from typing import NamedTuple

import numpy as np

from . import _core
from ._arrays import converted, empty, writable
from ._checks import require_finite, require_matrix

_MODES = {"full": "complete", "economic": "reduced"}


class QRResult(NamedTuple):
    Q: np.ndarray
    R: np.ndarray


class RawQRResult(NamedTuple):
    h: np.ndarray
    tau: np.ndarray


def qr(a, mode="reduced", *, dtype=None, overwrite_a=False, check_finite=True):
    """The QR factors of the m x n matrix a, or of each matrix of a stack; see numpy.linalg.qr for
    the modes. "full" and "economic", SciPy's words for "complete" and "reduced", are taken too.
    """
    mode = _MODES.get(mode, mode)
    if mode not in ("reduced", "complete", "r", "raw"):
        raise ValueError(f"lumo.qr: mode must be reduced, complete, r or raw, not {mode!r}")
    a, dtype = converted("qr", dtype, a=a)
    require_matrix("qr", a, stacks=True)
    h = writable(a, dtype, overwrite_a)
    if check_finite:
        require_finite("qr", a=h)
    *stack, m, n = h.shape
    k = min(m, n)
    tau = np.zeros((*stack, k), dtype)
    for i in np.ndindex(*stack):
        _core.geqrf(h[i], tau[i])
    if mode == "raw":
        return RawQRResult(h.swapaxes(-1, -2), tau)
    r = np.triu(h if mode == "complete" else h[..., :k, :])
    if mode == "r":
        return r
    q = h[..., :k]
    if mode == "complete" and m > k:
        q = empty((*stack, m, m), dtype)
        q[..., :k] = h[..., :k]
    for i in np.ndindex(*stack):
        _core.orgqr(q[i], tau[i])
    return QRResult(q, r)
