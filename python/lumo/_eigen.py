"""Symmetric and Hermitian eigenproblems, and generalized ones with a definite matrix."""

from typing import NamedTuple

import numpy as np
from numpy.linalg import LinAlgError

from . import _core
from ._arrays import converted, real, writable
from ._checks import not_positive_definite, require_finite, require_matrix


class EighResult(NamedTuple):
    eigenvalues: np.ndarray
    eigenvectors: np.ndarray


def _solve(routine, a, b, lower, vectors, overwrite_a, overwrite_b, type, check_finite, dtype):
    """The eigenvalues; and what a becomes, the eigenvectors if they are wanted."""
    if type not in (1, 2, 3):
        raise ValueError(f"lumo.{routine}: type must be 1, 2 or 3, not {type!r}")
    given = {"a": a} if b is None else {"a": a, "b": b}
    *arrays, dtype = converted(routine, dtype, **given)
    given = dict(zip(given, arrays))
    for name, x in given.items():
        require_matrix(routine, x, name, square=True, stacks=True)
    a, b = given["a"], given.get("b")
    n = a.shape[-1]
    if b is not None:
        if b.shape[-1] != n:
            raise ValueError(f"lumo.{routine}: a has {n} rows, but b has {b.shape[-1]}")
        if stack := np.broadcast_shapes(a.shape[:-2], b.shape[:-2]):
            a, b = (np.broadcast_to(x, (*stack, n, n)) for x in (a, b))
    if check_finite:
        require_finite(routine, **given)
    v = writable(a, dtype, overwrite_a, beside=b)
    f = None if b is None else writable(b, dtype, overwrite_b, beside=v)
    w = np.zeros(v.shape[:-1], real(dtype))
    job, uplo = "V" if vectors else "N", "L" if lower else "U"
    for i in np.ndindex(v.shape[:-2]):
        if f is None:
            info = _core.syevd(job, uplo, v[i], w[i])
        else:
            info = _core.sygvd(int(type), job, uplo, v[i], f[i], w[i])
        if info > n:
            raise not_positive_definite(info - n, i, "b")
        if info:
            raise LinAlgError("Eigenvalues did not converge")
    return w, v


def eigh(
    a, b=None, *, lower=True, eigvals_only=False, overwrite_a=False, overwrite_b=False, type=1,
    check_finite=True, dtype=None,
):  # fmt: skip
    """The eigenvalues w and eigenvectors v of the symmetric or Hermitian matrix a, n x n, or of
    each matrix of a stack; see scipy.linalg.eigh. With b, positive definite, those of
    a @ v = b @ v * w (type 1), a @ b @ v = v * w (2) or b @ a @ v = v * w (3).

    Returns (w, v), or w alone with eigvals_only. The values ascend; v[:, i] goes with w[i]. The
    vectors are orthonormal; with b, v^H @ b @ v = I for type 1 and 2, v^H @ inv(b) @ v = I for 3.
    Of a and b only the lower triangle is used, or with lower=False the upper one. Stacks of a and b
    are broadcast.

    Raises LinAlgError if the iteration does not converge or b is not positive definite, ValueError
    if an operand has infs or NaNs (unless check_finite is False).
    """
    w, v = _solve(
        "eigh", a, b, lower, not eigvals_only, overwrite_a, overwrite_b, type, check_finite, dtype
    )
    return w if eigvals_only else EighResult(w, v)


def eigvalsh(
    a, b=None, *, lower=True, overwrite_a=False, overwrite_b=False, type=1, check_finite=True,
    dtype=None,
):  # fmt: skip
    """The eigenvalues alone, in ascending order; see eigh."""
    return _solve(
        "eigvalsh", a, b, lower, False, overwrite_a, overwrite_b, type, check_finite, dtype
    )[0]
