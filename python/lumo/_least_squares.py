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
    s: None


class LseResult(NamedTuple):
    x: np.ndarray
    residual: np.floating


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
    a, b, dtype = converted("lstsq", dtype, a=a, b=b)
    require_matrix("lstsq", a)
    m, n = a.shape
    require_rows("lstsq", b, m)
    k = min(m, n)
    # b and x share one array, of max(m, n) rows.
    if m >= n:
        x = writable(b, dtype, overwrite_b, beside=a)
    else:
        x = np.zeros((n, *b.shape[1:]), dtype, order="F")
        x[:m] = b
    factors = writable(a, dtype, overwrite_a)
    if check_finite:
        require_finite("lstsq", a=factors, b=x)
    if k == 0:
        residuals = np.atleast_1d(_squares(x)) if m > n else np.empty(0, real(dtype))
        return LstsqResult(np.zeros((n, *b.shape[1:]), dtype), residuals, 0, None)

    of_a, of_b = scale(factors), scale(x)
    if zero := _core.gels("N", m, n, factors, x):
        raise LinAlgError(
            f"matrix has not full rank: diagonal element {zero} of its triangular factor is "
            "exactly zero"
        )
    diagonal = np.abs(np.diagonal(factors))
    limit = max(m, n) * np.finfo(dtype).eps if rcond is None else rcond
    small = np.flatnonzero(diagonal <= limit * diagonal.max())
    if small.size:
        raise LinAlgError(
            f"matrix has not full rank: diagonal element {small[0] + 1} of its triangular factor "
            f"is {diagonal[small[0]] / diagonal.max():.1e} times the largest"
        )
    residuals = np.empty(0, real(dtype))
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
