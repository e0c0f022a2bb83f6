"""Cholesky's factorisation of symmetric and Hermitian positive definite matrices."""

import numpy as np

from . import _core
from ._arrays import converted, readable, writable
from ._checks import not_positive_definite, require_finite, require_matrix, require_rows


def _factor(routine, a, lower, overwrite_a, check_finite, dtype, stacks):
    a, dtype = converted(routine, dtype, a=a)
    require_matrix(routine, a, square=True, stacks=stacks)
    c = writable(a, dtype, overwrite_a)
    if check_finite:
        require_finite(routine, a=c)
    for i in np.ndindex(c.shape[:-2]):
        if order := _core.potrf("L" if lower else "U", c[i]):
            raise not_positive_definite(order, i)
    return c


def cholesky(a, lower=False, overwrite_a=False, check_finite=True, *, dtype=None):
    """The upper triangular factor u of a = u^H u, n x n, or with lower=True l of a = l l^H; of a
    stack, the factor of each matrix. See scipy.linalg.cholesky.

    Only this triangle of a is used. Raises LinAlgError if a is not positive definite.
    """
    c = _factor("cholesky", a, lower, overwrite_a, check_finite, dtype, stacks=True)
    n = c.shape[-1]
    np.copyto(c, 0, where=~np.tri(n, dtype=bool) if lower else np.tri(n, k=-1, dtype=bool))
    return c


def cho_factor(a, lower=False, overwrite_a=False, check_finite=True, *, dtype=None):
    """cholesky's factor with `lower`, for cho_solve; see scipy.linalg.cho_factor. The other
    triangle is not set to zero: it is a's."""
    c = _factor("cho_factor", a, lower, overwrite_a, check_finite, dtype, stacks=False)
    return c, lower


def cho_solve(c_and_lower, b, overwrite_b=False, check_finite=True):
    """The x that solves a x = b from cho_factor's result for a; see scipy.linalg.cho_solve."""
    c, lower = c_and_lower
    c, b, dtype = converted("cho_solve", None, c=c, b=b)
    require_matrix("cho_solve", c, "c", square=True)
    require_rows("cho_solve", b, len(c))
    if check_finite:
        require_finite("cho_solve", c=c, b=b)
    x = writable(b, dtype, overwrite_b, beside=c)
    _core.potrs("L" if lower else "U", readable(c, dtype), x)
    return x
