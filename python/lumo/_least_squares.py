"""Least squares, free and under linear constraints."""

from typing import NamedTuple

import numpy as np
from numpy.linalg import LinAlgError

from . import _core
from ._arrays import converted, real, scale, writable
from ._checks import require_finite, require_matrix, require_rows


class LstsqResult(NamedTuple):
    x: np.ndarray
    residuals: np.ndarray
    rank: int
    s: np.ndarray | None


class LseResult(NamedTuple):
    x: np.ndarray
    residual: np.floating


def _squares(columns):
    return np.square(np.abs(columns)).sum(axis=0)


def _by_qr(a, x, rcond):
    """Solves in place for a matrix of full rank."""
    m, n = a.shape
    of_a, of_b = scale(a), scale(x)
    if zero := _core.gels("N", m, n, a, x):
        raise LinAlgError(
            f"matrix has not full rank: diagonal element {zero} of its triangular factor is "
            "exactly zero"
        )
    diagonal = np.abs(np.diagonal(a))
    small = np.flatnonzero(diagonal <= rcond * diagonal.max())
    if small.size:
        raise LinAlgError(
            f"matrix has not full rank: diagonal element {small[0] + 1} of its triangular factor "
            f"is {diagonal[small[0]] / diagonal.max():.1e} times the largest"
        )
    residuals = np.atleast_1d(_squares(x[n:])) * of_b * of_b if m > n else None
    # One after the other: their quotient may overflow where x does not.
    x[:n] *= of_b
    x[:n] /= of_a
    return residuals, min(m, n), None


def _by_values(a, x, rcond):
    """Solves in place for a matrix of any rank."""
    m, n = a.shape
    s = np.zeros(min(m, n), real(a.dtype))
    info, rank = _core.gelsd(a, x, s, rcond)
    if info:
        raise LinAlgError("SVD did not converge in linear least squares")
    return (np.atleast_1d(_squares(x[n:])) if rank == n < m else None), rank, s


def lstsq(
    a, b, rcond=None, *, lapack_driver="gelsd", dtype=None, overwrite_a=False, overwrite_b=False,
    check_finite=True,
):  # fmt: skip
    """The x that minimises the 2-norm of b - a x, and of those the shortest. See numpy.linalg.lstsq
    for shapes and results.

    "gelsd" takes matrices of any rank: singular values up to rcond times the largest count as zero
    (default: eps max(m, n)), and `s` are all of them. "gels" goes by QR or LQ, some times faster,
    and wants full rank: LinAlgError is raised if a diagonal element of its triangular factor is at
    most rcond times the largest, a matrix that NumPy would find rank-deficient too; `s` is None.
    residuals: the sums of squares of b - a x for m > n and a rank of n, else empty.
    """
    if lapack_driver not in ("gelsd", "gels"):
        raise ValueError(f"lumo.lstsq: lapack_driver must be gelsd or gels, not {lapack_driver!r}")
    a, b, dtype = converted("lstsq", dtype, a=a, b=b)
    require_matrix("lstsq", a)
    m, n = a.shape
    require_rows("lstsq", b, m)
    # b and x share one array, of max(m, n) rows.
    if m >= n:
        x = writable(b, dtype, overwrite_b, beside=a)
    else:
        x = np.zeros((n, *b.shape[1:]), dtype, order="F")
        x[:m] = b
    factors = writable(a, dtype, overwrite_a)
    if check_finite:
        require_finite("lstsq", a=factors, b=x)
    if min(m, n) == 0:
        residuals = np.atleast_1d(_squares(x)) if m > n else np.empty(0, real(dtype))
        s = np.empty(0, real(dtype)) if lapack_driver == "gelsd" else None
        return LstsqResult(np.zeros((n, *b.shape[1:]), dtype), residuals, 0, s)
    limit = max(m, n) * np.finfo(dtype).eps if rcond is None else rcond
    solve = _by_values if lapack_driver == "gelsd" else _by_qr
    residuals, rank, s = solve(factors, x, limit)
    if residuals is None:
        residuals = np.empty(0, real(dtype))
    if m > n:
        x = np.array(x[:n], order="F")
    return LstsqResult(x, residuals, rank, s)


def lse(a, b, c, d, *, dtype=None, check_finite=True):
    """The x that minimises the 2-norm of c - a x among those with b x = d, by a generalised RQ
    factorisation (LAPACK's gglse), and the square of that norm.

    a is m x n, b is p x n, c and d are vectors of m and p; p <= n <= m + p. Raises LinAlgError if b
    or (a; b) has not full rank.
    """
    a, b, c, d, dtype = converted("lse", dtype, a=a, b=b, c=c, d=d)
    require_matrix("lse", a)
    require_matrix("lse", b, "b")
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
        require_finite("lse", a=a, b=b, c=c, d=d)
    x = np.zeros(n, dtype)
    if deficient := _core.gglse(a, b, c, d, x):
        raise LinAlgError(
            "the constraints b have not full rank: some are missing or contradict each other"
            if deficient == 1
            else "(a; b) has not full rank: it leaves a part of x undetermined"
        )
    return LseResult(x, _squares(c[n - p :]))
