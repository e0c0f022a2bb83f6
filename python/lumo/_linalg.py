"""Linear systems, factorisations and least squares, with the arguments and results of numpy.linalg
and scipy.linalg. In single precision only."""

import warnings
from typing import NamedTuple

import numpy as np
from numpy.linalg import LinAlgError

from . import _core
from ._arrays import readable, refuse_non_finite, single, writable


class LinAlgWarning(RuntimeWarning):
    """There is an answer, but it may be far off."""


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


class LstsqResult(NamedTuple):
    x: np.ndarray
    residuals: np.ndarray
    rank: int
    s: None


class LseResult(NamedTuple):
    x: np.ndarray
    residual: np.floating


def _matrix(routine, a, name="a", square=False):
    if a.ndim != 2:
        raise LinAlgError(f"lumo.{routine}: {name} must have 2 dimensions, not {a.ndim}")
    if square and a.shape[0] != a.shape[1]:
        raise LinAlgError(f"lumo.{routine}: {name} must be square, not {a.shape[0]} x {a.shape[1]}")


def _right_hand_sides(routine, b, rows, name="b"):
    if b.ndim not in (1, 2):
        raise LinAlgError(f"lumo.{routine}: {name} must have 1 or 2 dimensions, not {b.ndim}")
    if b.shape[0] != rows:
        raise ValueError(f"lumo.{routine}: a has {rows} rows, but {name} has {b.shape[0]}")


def _singular(pivot):
    return LinAlgError(f"matrix is singular: pivot {pivot} is exactly zero")


def solve(a, b, *, dtype=None, overwrite_a=False, overwrite_b=False, check_finite=True):
    """The x that solves a x = b, by LU factorisation with partial pivoting; see numpy.linalg.solve.

    a is n x n, b has n rows and one or two dimensions, as x has. float32 or complex64; `dtype` asks
    for the conversion of others. `overwrite_a` and `overwrite_b` allow the factors and the solution
    to take the place of operands in Fortran order, which saves copies. Raises LinAlgError if a is
    singular, ValueError if an operand has infs or NaNs (unless check_finite is False). Warns, by
    LinAlgWarning, if a is singular to working precision: rcond, estimated, is below eps.
    """
    a, b, dtype = single("solve", dtype, a=a, b=b)
    _matrix("solve", a, square=True)
    _right_hand_sides("solve", b, len(a))
    x = writable(b, dtype, overwrite_b, beside=a)
    lu = writable(a, dtype, overwrite_a)
    if check_finite:
        refuse_non_finite("solve", a=lu, b=x)
    zero, rcond = _core.gesv(lu, np.empty(len(lu), np.int32), x)
    if zero:
        raise _singular(zero)
    if rcond < np.finfo(np.float32).eps / 2:  # LAPACK's eps
        warnings.warn(
            f"matrix is ill-conditioned (rcond = {rcond:.2g}): x may have no correct digit",
            LinAlgWarning,
            stacklevel=2,
        )
    return x


def lu_factor(a, *, dtype=None, overwrite_a=False, check_finite=True):
    """The LU factors of the m x n matrix a with its pivots, counted from 0; see
    scipy.linalg.lu_factor. For lu_solve. Warns if a is singular."""
    a, dtype = single("lu_factor", dtype, a=a)
    _matrix("lu_factor", a)
    lu = writable(a, dtype, overwrite_a)
    if check_finite:
        refuse_non_finite("lu_factor", a=lu)
    piv = np.empty(min(lu.shape), np.int32)
    if zero := _core.getrf(lu, piv):
        warnings.warn(str(_singular(zero)), LinAlgWarning, stacklevel=2)
    piv -= 1
    return lu, piv


def lu_solve(lu_and_piv, b, trans=0, *, overwrite_b=False, check_finite=True):
    """The x that solves op(a) x = b from lu_factor's result for a; see scipy.linalg.lu_solve.

    trans: 0 for a, 1 for its transpose, 2 for its conjugate transpose. The triangular systems are
    solved by Lumo's trsm. b must be as precise as the factors, or becomes so; float64 is refused.
    """
    lu, piv = lu_and_piv
    lu, dtype = single("lu_solve", None, lu=lu)
    b, b_type = single("lu_solve", None, b=b)
    _matrix("lu_solve", lu, "lu", square=True)
    _right_hand_sides("lu_solve", b, len(lu))
    n = len(lu)
    piv = np.asarray(piv)
    if piv.shape != (n,) or piv.dtype.kind not in "iu" or np.any((piv < 0) | (piv >= n)):
        raise ValueError("lumo.lu_solve: piv must hold a row's number for each row of lu")
    if trans not in (0, 1, 2):
        raise ValueError(f"lumo.lu_solve: trans must be 0, 1 or 2, not {trans!r}")
    zeros = np.flatnonzero(np.diagonal(lu) == 0)
    if zeros.size:
        raise _singular(zeros[0] + 1)
    dtype = np.result_type(dtype, b_type)
    if check_finite:
        refuse_non_finite("lu_solve", lu=lu, b=b)

    rows = np.arange(n)
    for i, p in enumerate(piv.tolist()):
        rows[i], rows[p] = rows[p], rows[i]
    lu = readable(lu, dtype)
    x = writable(b, dtype, overwrite_b, beside=lu)
    columns = x if x.ndim == 2 else x[:, None]
    letter = "NTC"[trans]
    if trans == 0:
        columns[...] = columns[rows]
        _core.trsm("L", "L", "N", "U", 1, lu, columns)
        _core.trsm("L", "U", "N", "N", 1, lu, columns)
    else:
        _core.trsm("L", "U", letter, "N", 1, lu, columns)
        _core.trsm("L", "L", letter, "U", 1, lu, columns)
        columns[rows] = columns.copy()
    return x


def qr(a, mode="reduced", *, dtype=None, overwrite_a=False, check_finite=True):
    """The QR factors of the m x n matrix a; see numpy.linalg.qr for the modes.

    Lumo computes R and the Householder reflectors. "reduced" and "complete" then form Q from them
    by the CPU LAPACK (orgqr, ungqr): Lumo has no routine for that. "r" and "raw" need no Q.
    """
    if mode not in ("reduced", "complete", "r", "raw"):
        raise ValueError(f"lumo.qr: mode must be reduced, complete, r or raw, not {mode!r}")
    a, dtype = single("qr", dtype, a=a)
    _matrix("qr", a)
    h = writable(a, dtype, overwrite_a)
    if check_finite:
        refuse_non_finite("qr", a=h)
    m, n = h.shape
    k = min(m, n)
    tau = np.zeros(k, dtype)
    _core.geqrf(h, tau)
    if mode == "raw":
        return RawQRResult(h.T, tau)
    r = np.triu(h if mode == "complete" else h[:k])
    if mode == "r":
        return r
    q = h[:, :k]
    if mode == "complete" and m > k:
        q = np.zeros((m, m), dtype, order="F")
        q[:, :k] = h[:, :k]
    _core.orgqr(q, tau)
    return QRResult(q, r)


def _scale(a):
    """Scales an array in place by a power of two, to where squares do not overflow. Returns what
    to multiply results by, 1 mostly."""
    parts = (a.real, a.imag) if a.dtype.kind == "c" else (a,)
    largest = max((float(np.abs(part).max(initial=0)) for part in parts), default=0.0)
    if largest == 0 or not np.isfinite(largest) or 1e-12 <= largest <= 1e12:
        return np.float32(1)
    # The factor and its inverse must be normal numbers.
    exponent = int(np.clip(np.frexp(largest)[1], -125, 125))
    a *= np.float32(2.0**-exponent)
    return np.float32(2.0**exponent)


def _squares(columns):
    return np.square(np.abs(columns)).sum(axis=0)


def lstsq(
    a, b, rcond=None, *, dtype=None, overwrite_a=False, overwrite_b=False, check_finite=True
):
    """The x that minimises the 2-norm of b - a x or, for a wide a, the shortest x with a x = b; by
    QR or LQ. See numpy.linalg.lstsq for shapes and results.

    Unlike NumPy's, a must have full rank: LinAlgError is raised if a diagonal element of its
    triangular factor is at most rcond (default: eps max(m, n)) times the largest, a matrix that
    NumPy would find rank-deficient too. So `rank` is min(m, n), and `s`, the singular values, is
    None. residuals: the sums of squares of b - a x for m > n, else empty.
    """
    a, b, dtype = single("lstsq", dtype, a=a, b=b)
    _matrix("lstsq", a)
    m, n = a.shape
    _right_hand_sides("lstsq", b, m)
    k = min(m, n)
    # b and x share one array, of max(m, n) rows.
    if m >= n:
        x = writable(b, dtype, overwrite_b, beside=a)
    else:
        x = np.zeros((n, *b.shape[1:]), dtype, order="F")
        x[:m] = b
    factors = writable(a, dtype, overwrite_a)
    if check_finite:
        refuse_non_finite("lstsq", a=factors, b=x)
    if k == 0:
        residuals = np.atleast_1d(_squares(x)) if m > n else np.empty(0, np.float32)
        return LstsqResult(np.zeros((n, *b.shape[1:]), dtype), residuals, 0, None)

    of_a, of_b = _scale(factors), _scale(x)
    if zero := _core.gels("N", m, n, factors, x):
        raise LinAlgError(
            f"matrix has not full rank: diagonal element {zero} of its triangular factor is "
            "exactly zero"
        )
    diagonal = np.abs(np.diagonal(factors))
    limit = max(m, n) * np.finfo(np.float32).eps if rcond is None else rcond
    small = np.flatnonzero(diagonal <= limit * diagonal.max())
    if small.size:
        raise LinAlgError(
            f"matrix has not full rank: diagonal element {small[0] + 1} of its triangular factor "
            f"is {diagonal[small[0]] / diagonal.max():.1e} times the largest"
        )
    residuals = np.empty(0, np.float32)
    if m > n:
        residuals = np.atleast_1d(_squares(x[n:])) * of_b * of_b
        x = np.array(x[:n], order="F")
    # One after the other: their quotient may overflow where x does not.
    x *= of_b
    x /= of_a
    return LstsqResult(x, residuals, k, None)


def lse(a, b, c, d, *, dtype=None, check_finite=True):
    """The x that minimises the 2-norm of c - a x among those with b x = d, by a generalised RQ
    factorisation (LAPACK's gglse), and the square of that norm.

    a is m x n, b is p x n, c and d are vectors of m and p; p <= n <= m + p. Raises LinAlgError if b
    or (a; b) has not full rank.
    """
    a, b, c, d, dtype = single("lse", dtype, a=a, b=b, c=c, d=d)
    _matrix("lse", a)
    _matrix("lse", b, "b")
    (m, n), p = a.shape, len(b)
    for name, vector, matrix in (("c", c, a), ("d", d, b)):
        if vector.shape != matrix.shape[:1]:
            raise ValueError(
                f"lumo.lse: {name} must be a vector of {len(matrix)}, not of shape {vector.shape}"
            )
    if b.shape[1] != n:
        raise ValueError(f"lumo.lse: a has {n} columns, but b has {b.shape[1]}")
    if not p <= n <= m + p:
        raise ValueError(
            f"lumo.lse: {n} unknowns want at most {n} constraints (not {p}) and at least {n} "
            f"equations and constraints (not {m + p})"
        )
    a, b, c, d = (writable(operand, dtype) for operand in (a, b, c, d))
    if check_finite:
        refuse_non_finite("lse", a=a, b=b, c=c, d=d)
    x = np.zeros(n, dtype)
    if deficient := _core.gglse(a, b, c, d, x):
        raise LinAlgError(
            "the constraints b have not full rank: some are missing or contradict each other"
            if deficient == 1
            else "(a; b) has not full rank: it leaves a part of x undetermined"
        )
    return LseResult(x, _squares(c[n - p :]))


def svd(
    a, full_matrices=True, compute_uv=True, *, dtype=None, overwrite_a=False, check_finite=True
):
    """The singular value decomposition a = U @ diag(S) @ Vh; see numpy.linalg.svd.

    Returns (U, S, Vh), or S alone unless compute_uv. Of an m x n matrix, U is m x m and Vh n x n
    with full_matrices, else U has min(m, n) columns and Vh as many rows. Raises LinAlgError if the
    iteration does not converge, ValueError if a has infs or NaNs (unless check_finite is False).
    """
    a, dtype = single("svd", dtype, a=a)
    _matrix("svd", a)
    a = writable(a, dtype, overwrite_a)
    if check_finite:
        refuse_non_finite("svd", a=a)
    m, n = a.shape
    k = min(m, n)
    s = np.zeros(k, np.float32)
    job, of_u, of_vh = "N", (0, 0), (0, 0)
    if compute_uv:
        job, of_u, of_vh = ("A", (m, m), (n, n)) if full_matrices else ("S", (m, k), (k, n))
    # Without a singular value there is nothing to call: any orthonormal columns and rows will do.
    u, vh = (
        np.empty(shape, dtype, order="F") if k > 0 else np.eye(*shape, dtype=dtype)
        for shape in (of_u, of_vh)
    )
    scale = _scale(a)
    if k > 0 and _core.gesvd(job, a, s, u, vh):
        raise LinAlgError("SVD did not converge")
    s *= scale
    return SVDResult(u, s, vh) if compute_uv else s
