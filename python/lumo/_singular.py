"""Singular value decomposition, and what is told by it."""

from typing import NamedTuple

import numpy as np
from numpy.linalg import LinAlgError

from . import _core
from ._arrays import converted, empty, real, scale, writable
from ._blas import gemm
from ._checks import require_finite, require_matrix
from ._eigen import eigh, eigvalsh


class SVDResult(NamedTuple):
    U: np.ndarray
    S: np.ndarray
    Vh: np.ndarray


def svd(
    a, full_matrices=True, compute_uv=True, overwrite_a=False, check_finite=True,
    lapack_driver="gesdd", *, dtype=None,
):  # fmt: skip
    """The singular value decomposition a = U @ diag(S) @ Vh, or that of each matrix of a stack; see
    scipy.linalg.svd.

    Returns (U, S, Vh), or S alone unless compute_uv. Of an m x n matrix, U is m x m and Vh n x n
    with full_matrices, else U has min(m, n) columns and Vh as many rows. "gesdd" divides and
    conquers; "gesvd" iterates, much slower with vectors, to small values that are as accurate,
    beside themselves, as a's elements let them be. Raises LinAlgError if neither converges,
    ValueError if a has infs or NaNs (unless check_finite is False).
    """
    if lapack_driver not in ("gesdd", "gesvd"):
        raise ValueError(f"lumo.svd: lapack_driver must be gesdd or gesvd, not {lapack_driver!r}")
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
        factor = scale(one) if lapack_driver == "gesvd" else 1  # gesdd scales by itself
        if getattr(_core, lapack_driver)(job, one, s[i], u[i], vh[i]):
            raise LinAlgError("SVD did not converge")
        s[i] *= factor
    return SVDResult(u, s, vh) if compute_uv else s


def _above(routine, s, shape, relative, absolute=None):
    """Which singular values count as not zero: those above `absolute` or, if that is not given,
    above `relative` times the largest one of their matrix, by itself max(m, n) eps."""
    least = relative if absolute is None else absolute
    least = np.asarray(max(shape) * np.finfo(s.dtype).eps if least is None else least)
    if least.dtype.kind not in "biuf":
        raise TypeError(f"lumo.{routine}: a tolerance must be real, not {least.dtype}")
    least = least[..., None]
    return s > (least * s.max(axis=-1, keepdims=True, initial=0) if absolute is None else least)


def matrix_rank(A, tol=None, hermitian=False, *, rtol=None, check_finite=True, dtype=None):
    """How many singular values of a matrix, or of each matrix of a stack, are above tol, or above
    rtol times the largest one: max(m, n) eps if neither is given; see numpy.linalg.matrix_rank.
    hermitian: A is, and its eigenvalues tell. Of a vector, whether it is not zero.
    """
    if tol is not None and rtol is not None:
        raise ValueError("lumo.matrix_rank: tol and rtol can't both be given")
    a, dtype = converted("matrix_rank", dtype, A=A)
    if a.ndim < 2:
        return int(a.any())
    options = {"check_finite": check_finite, "dtype": dtype}
    s = np.abs(eigvalsh(a, **options)) if hermitian else svd(a, compute_uv=False, **options)
    above = _above("matrix_rank", s, a.shape[-2:], rtol, tol)
    return np.count_nonzero(above, axis=-1)


def pinv(a, rcond=None, hermitian=False, *, rtol=None, check_finite=True, dtype=None):
    """The Moore-Penrose inverse of a matrix, or of each matrix of a stack; see numpy.linalg.pinv.

    Singular values up to rcond, or rtol, times the largest one count as zeros: max(m, n) eps if
    neither is given. hermitian: a is, its lower triangle is used, and its eigenvalues are.
    """
    if rcond is not None and rtol is not None:
        raise ValueError("lumo.pinv: rcond and rtol can't both be given")
    a, dtype = converted("pinv", dtype, a=a)
    require_matrix("pinv", a, square=hermitian, stacks=True)
    *stack, m, n = a.shape
    options = {"check_finite": check_finite, "dtype": dtype}
    if hermitian:
        s, u = eigh(a, **options)
        vh = u.conj().swapaxes(-1, -2)
    else:
        u, s, vh = svd(a, full_matrices=False, **options)
    above = _above("pinv", np.abs(s), (m, n), rcond if rtol is None else rtol)
    inverse = np.divide(1, s, out=np.zeros_like(s), where=above)
    result = empty((*stack, n, m), dtype)
    for i in np.ndindex(*stack):
        result[i] = gemm(1, vh[i], u[i] * inverse[i], trans_a=2, trans_b=2)
    return result
