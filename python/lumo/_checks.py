"""Shapes that are refused, and what is said of matrices that have no answer or a doubtful one."""

import warnings

import numpy as np
from numpy.linalg import LinAlgError


class LinAlgWarning(RuntimeWarning):
    """There is an answer, but it may be far off."""


def require_matrix(routine, a, name="a", square=False, stacks=False):
    if a.ndim < 2 or (a.ndim > 2 and not stacks):
        least = "at least " if stacks else ""
        raise LinAlgError(f"lumo.{routine}: {name} must have {least}2 dimensions, not {a.ndim}")
    m, n = a.shape[-2:]
    if square and m != n:
        raise LinAlgError(f"lumo.{routine}: {name} must be square, not {m} x {n}")


def require_rows(routine, b, rows, stacks=False):
    """Right-hand sides: a vector, or the columns of a matrix."""
    if b.ndim < 1 or (b.ndim > 2 and not stacks):
        wanted = "at least 1 dimension" if stacks else "1 or 2 dimensions"
        raise LinAlgError(f"lumo.{routine}: b must have {wanted}, not {b.ndim}")
    if b.shape[-2:][0] != rows:
        raise ValueError(f"lumo.{routine}: a has {rows} rows, but b has {b.shape[-2:][0]}")


def require_finite(routine, **arrays):
    for name, a in arrays.items():
        if not np.isfinite(a).all():
            raise ValueError(f"lumo.{routine}: {name} must not contain infs or NaNs")


def _matrix(index, name=""):
    matrix = f"matrix {name}" if name else "matrix"
    return f"{matrix} {list(index)} of the stack" if index else matrix


def singular(pivot, index=()):
    """`index`: the matrix's place in a stack."""
    return LinAlgError(f"{_matrix(index)} is singular: pivot {pivot} is exactly zero")


def not_positive_definite(order, index=(), name=""):
    return LinAlgError(
        f"{_matrix(index, name)} is not positive definite: its leading minor of order {order} is not "
        "positive"
    )


def warn_if_ill_conditioned(rcond, dtype):
    """Called by a function of the package's interface, whose caller is warned."""
    if rcond < np.finfo(dtype).eps / 2:  # LAPACK's eps
        warnings.warn(
            f"Ill-conditioned matrix (rcond={rcond:.6g}): result may not be accurate.",
            LinAlgWarning,
            stacklevel=3,
        )
