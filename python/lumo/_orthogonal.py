"""QR factorisation and singular value decomposition."""

from typing import NamedTuple

import numpy as np
from numpy.linalg import LinAlgError

from . import _core
from ._arrays import converted, empty, real, scale, writable
from ._checks import require_finite, require_matrix

_MODES = {"full": "complete", "economic": "reduced"}


class QRResult(NamedTuple):
    Q: np.ndarray
    R: np.ndarray


class RawQRResult(NamedTuple):
    h: np.ndarray
    tau: np.ndarray


class SVDResult(NamedTuple):
    U: np.ndarray
    S: np.ndarray
    Vh: np.ndarray


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


def svd(
    a, full_matrices=True, compute_uv=True, overwrite_a=False, check_finite=True, *, dtype=None
):
    """The singular value decomposition a = U @ diag(S) @ Vh, or that of each matrix of a stack; see
    numpy.linalg.svd.

    Returns (U, S, Vh), or S alone unless compute_uv. Of an m x n matrix, U is m x m and Vh n x n
    with full_matrices, else U has min(m, n) columns and Vh as many rows. Raises LinAlgError if the
    iteration does not converge, ValueError if a has infs or NaNs (unless check_finite is False).
    """
    a, dtype = converted("svd", dtype, a=a)
    require_matrix("svd", a, stacks=True)
    *stack, m, n = a.shape
    k = min(m, n)
    s = np.zeros((*stack, k), real(dtype))
    job, of_u, of_vh = "N", (0, 0), (0, 0)
    if compute_uv:
        job, of_u, of_vh = ("A", (m, m), (n, n)) if full_matrices else ("S", (m, k), (k, n))
    u, vh = empty((*stack, *of_u), dtype), empty((*stack, *of_vh), dtype)
    if k == 0:  # there is nothing to call: any orthonormal columns and rows will do
        u[...], vh[...] = np.eye(*of_u), np.eye(*of_vh)
        return SVDResult(u, s, vh) if compute_uv else s
    for i in np.ndindex(*stack):
        one = writable(a[i], dtype, overwrite_a)
        if check_finite:
            require_finite("svd", a=one)
        factor = scale(one)
        if _core.gesvd(job, one, s[i], u[i], vh[i]):
            raise LinAlgError("SVD did not converge")
        s[i] *= factor
    return SVDResult(u, s, vh) if compute_uv else s
