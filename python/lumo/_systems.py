"""Linear systems, inverses and determinants, by LU factorisation with partial pivoting."""

import math
import warnings
from typing import NamedTuple

import numpy as np

from . import _core
from ._arrays import converted, readable, real, writable
from ._checks import (
    LinAlgWarning,
    not_positive_definite,
    require_finite,
    require_matrix,
    require_rows,
    singular,
    warn_if_ill_conditioned,
)

_STRUCTURES = {"general": "gen", "symmetric": "sym", "hermitian": "her", "positive definite": "pos"}


class SlogdetResult(NamedTuple):
    sign: np.ndarray
    logabsdet: np.ndarray


def _complete(a, lower, hermitian):
    """Fills the triangle of a matrix that is not given, in place."""
    below = np.tri(len(a), k=-1, dtype=bool)
    np.copyto(a, a.T.conj() if hermitian else a.T, where=below.T if lower else below)
    if hermitian:
        np.fill_diagonal(a, a.diagonal().real)


def _solve_one(a, x, structure, lower, mixed):
    """Overwrites x, the right-hand sides, by the solution, and a by its factors. Returns the info
    and the reciprocal condition number."""
    if structure == "pos":
        return _core.posv("L" if lower else "U", a, x)
    if structure != "gen":
        _complete(a, lower, structure == "her")
    pivots = np.empty(len(a), np.int32)
    return _core.dsgesv(a, pivots, x.copy("F"), x) if mixed else _core.gesv(a, pivots, x)


def _solve(
    routine, a, b, dtype, overwrite_a, overwrite_b, check_finite, structure="gen", lower=False,
    mixed=False,
):  # fmt: skip
    """The solutions, for operands whose shapes have been checked, and the least of the matrices'
    reciprocal condition numbers."""
    stack = np.broadcast_shapes(a.shape[:-2], b.shape[:-2])
    vectors = bool(stack) and b.ndim == 1
    if stack:
        columns = b[:, None] if vectors else b
        b = np.broadcast_to(columns, (*stack, *columns.shape[-2:]))
        a = np.broadcast_to(a, (*stack, *a.shape[-2:]))
    x = writable(b, dtype, overwrite_b, beside=a)
    if check_finite:
        require_finite(routine, b=x)
    least = 1.0
    for i in np.ndindex(stack):
        factors = writable(a[i], dtype, overwrite_a)
        if check_finite:
            require_finite(routine, a=factors)
        info, rcond = _solve_one(factors, x[i], structure, lower, mixed)
        if info:
            raise (not_positive_definite if structure == "pos" else singular)(info, i)
        least = min(least, rcond)  # which leaves out a NaN, an unknown one
    return x[..., 0] if vectors else x, least


def _joined(stack):
    """The matrices of a stack side by side, as one matrix."""
    rows = np.moveaxis(stack, -2, 0)
    return rows.reshape(len(rows), math.prod(rows.shape[1:]))


def _separated(joined, shape):
    *stack, n, k = shape
    return np.moveaxis(joined.reshape(n, *stack, k), 0, -2)


def solve(
    a, b, lower=False, overwrite_a=False, overwrite_b=False, check_finite=True, assume_a="gen",
    transposed=False, *, mixed=False, dtype=None,
):  # fmt: skip
    """The x that solves a x = b or, if transposed, a^T x = b; see scipy.linalg.solve.

    a is n x n; b has n rows and one or two dimensions, as x has. Both may be stacks of matrices,
    (..., n, n) and (..., n, k), whose leading dimensions are broadcast; b of one dimension goes
    with every matrix.

    assume_a: "gen" (LU factorisation), "pos" (Cholesky's), "sym" or "her", or the long names of
    these. Except for "gen" only one triangle of a is used, the lower or the upper one as `lower`
    says; "sym" and "her" take as long as "gen". mixed=True factorises in single precision and
    refines to double, or starts again in double where that fails. `overwrite_a` and `overwrite_b`
    allow the factors and the solution to take the place of operands in Fortran order, which saves
    copies.

    Raises LinAlgError if a is singular or, for "pos", not positive definite; ValueError if an
    operand has infs or NaNs (unless check_finite is False). Warns, by LinAlgWarning, if a is
    singular to working precision: rcond, estimated, is below eps. With mixed=True this is not
    known where refinement converges, as it seldom does then.
    """
    structure = _STRUCTURES.get(assume_a, assume_a)
    if structure not in _STRUCTURES.values():
        raise ValueError(
            f"lumo.solve: assume_a must be 'gen', 'sym', 'her' or 'pos', not {assume_a!r}"
        )
    a, b, dtype = converted("solve", dtype, a=a, b=b)
    require_matrix("solve", a, square=True, stacks=True)
    require_rows("solve", b, a.shape[-1], stacks=True)
    if mixed and structure == "pos":
        raise ValueError("lumo.solve: mixed precision is by LU factorisation, not for 'pos'")
    if mixed and real(dtype) != np.float64:
        raise TypeError(f"lumo.solve: mixed precision gives float64 or complex128, not {dtype}")
    if transposed:
        a, lower = a.swapaxes(-1, -2), not lower
    shared = a.ndim == 2 and b.ndim > 2  # one factorisation serves the stack
    x, rcond = _solve(
        "solve", a, _joined(b) if shared else b, dtype, overwrite_a, overwrite_b, check_finite,
        structure, lower, mixed,
    )  # fmt: skip
    warn_if_ill_conditioned(rcond, dtype)
    return _separated(x, b.shape) if shared else x


def inv(a, overwrite_a=False, check_finite=True, *, dtype=None):
    """The inverse of a, n x n, or of each matrix of a stack; see scipy.linalg.inv. Errors and
    warnings are solve's."""
    a, dtype = converted("inv", dtype, a=a)
    require_matrix("inv", a, square=True, stacks=True)
    identity = np.eye(a.shape[-1], dtype=dtype, order="F")
    x, rcond = _solve("inv", a, identity, dtype, overwrite_a, True, check_finite)
    warn_if_ill_conditioned(rcond, dtype)
    return x


def lu_factor(a, overwrite_a=False, check_finite=True, *, dtype=None):
    """The LU factors of the m x n matrix a with its pivots, counted from 0; see
    scipy.linalg.lu_factor. For lu_solve. Warns if a is singular."""
    a, dtype = converted("lu_factor", dtype, a=a)
    require_matrix("lu_factor", a)
    lu = writable(a, dtype, overwrite_a)
    if check_finite:
        require_finite("lu_factor", a=lu)
    piv = np.empty(min(lu.shape), np.int32)
    if zero := _core.getrf(lu, piv):
        warnings.warn(str(singular(zero)), LinAlgWarning, stacklevel=2)
    piv -= 1
    return lu, piv


def lu_solve(lu_and_piv, b, trans=0, overwrite_b=False, check_finite=True):
    """The x that solves op(a) x = b from lu_factor's result for a; see scipy.linalg.lu_solve.

    trans: 0 for a, 1 for its transpose, 2 for its conjugate transpose.
    """
    lu, piv = lu_and_piv
    lu, b, dtype = converted("lu_solve", None, lu=lu, b=b)
    require_matrix("lu_solve", lu, "lu", square=True)
    n = len(lu)
    require_rows("lu_solve", b, n)
    piv = np.asarray(piv)
    if piv.shape != (n,) or piv.dtype.kind not in "iu" or np.any((piv < 0) | (piv >= n)):
        raise ValueError("lumo.lu_solve: piv must hold a row's number for each row of lu")
    if trans not in (0, 1, 2):
        raise ValueError(f"lumo.lu_solve: trans must be 0, 1 or 2, not {trans!r}")
    zeros = np.flatnonzero(np.diagonal(lu) == 0)
    if zeros.size:
        raise singular(zeros[0] + 1)
    if check_finite:
        require_finite("lu_solve", lu=lu, b=b)
    x = writable(b, dtype, overwrite_b, beside=lu)
    _core.getrs("NTC"[trans], readable(lu, dtype), piv.astype(np.int32) + np.int32(1), x)
    return x


def _diagonals(routine, a, overwrite_a, check_finite, dtype):
    """The diagonal of the factor U of each matrix, in double precision and zero for a singular one,
    and whether its rows were interchanged an odd number of times; and the type of the factors."""
    a, dtype = converted(routine, dtype, a=a)
    require_matrix(routine, a, square=True, stacks=True)
    diagonals = np.zeros(a.shape[:-1], np.result_type(dtype, np.float64))
    odd = np.zeros(a.shape[:-2], bool)
    piv = np.empty(a.shape[-1], np.int32)
    for i in np.ndindex(odd.shape):
        lu = writable(a[i], dtype, overwrite_a)
        if check_finite:
            require_finite(routine, a=lu)
        if not _core.getrf(lu, piv):
            diagonals[i] = np.diagonal(lu)
            odd[i] = np.count_nonzero(piv != np.arange(1, piv.size + 1)) % 2
    return diagonals, odd, dtype


def det(a, overwrite_a=False, check_finite=True, *, dtype=None):
    """The determinant of a, n x n, or of each matrix of a stack; see scipy.linalg.det. In double
    precision, the product of the factors' diagonal elements; 0 for a singular matrix."""
    diagonals, odd, _ = _diagonals("det", a, overwrite_a, check_finite, dtype)
    return np.where(odd, -1, 1) * diagonals.prod(-1)


def slogdet(a, overwrite_a=False, check_finite=True, *, dtype=None):
    """The sign and the logarithm of the magnitude of the determinant of a, n x n, or of each matrix
    of a stack, where the determinant itself would overflow; see numpy.linalg.slogdet."""
    diagonals, odd, dtype = _diagonals("slogdet", a, overwrite_a, check_finite, dtype)
    sizes = np.abs(diagonals)
    signs = np.divide(diagonals, sizes, out=np.zeros_like(diagonals), where=sizes != 0)
    with np.errstate(divide="ignore"):
        logabsdet = np.log(sizes).sum(-1)
    sign = np.where(odd, -1, 1) * signs.prod(-1)
    return SlogdetResult(sign.astype(dtype), logabsdet.astype(real(dtype)))
