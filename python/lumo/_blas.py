"""BLAS, with the arguments of scipy.linalg.blas; the element type is the operands'."""

import numpy as np

from . import _core
from ._arrays import in_columns, numeric, readable, working_type, writable

# The routine for the other kind of elements.
_OTHER_KIND = {"symm": "hemm", "syr2k": "her2k", "hemm": "symm", "her2k": "syr2k", "herk": "syrk"}


def _operands(routine, *scalars, **operands):
    """The arrays and the type to compute in: float64 for integers, complex for complex scalars."""
    for scalar in scalars:
        if np.ndim(scalar) != 0 or np.asarray(scalar).dtype.kind not in "biufc":
            raise TypeError(f"lumo.{routine}: alpha and beta must be numbers, not {scalar!r}")
    arrays = numeric(routine, **{name: a for name, a in operands.items() if a is not None})
    dtype = working_type(routine, *(a.dtype for a in arrays.values()))
    if any(np.iscomplexobj(scalar) for scalar in scalars):
        dtype = np.result_type(dtype, np.complex64)
    kind = {"symm": "f", "syr2k": "f", "hemm": "c", "herk": "c", "her2k": "c"}.get(routine)
    if kind and dtype.kind != kind:
        have, want = ("complex", "real") if kind == "f" else ("real", "complex")
        raise TypeError(
            f"lumo.{routine} is for {want} arrays; for {have} ones use lumo.{_OTHER_KIND[routine]}"
        )
    return (*(arrays.get(name) for name in operands), dtype)


def _require(condition, routine, text):
    if not condition:
        raise ValueError(f"lumo.{routine}: {text}")


def _matrices(routine, **arrays):
    for name, a in arrays.items():
        _require(a.ndim == 2, routine, f"{name} must have 2 dimensions, not {a.ndim}")


def _letter(routine, trans):
    _require(trans in (0, 1, 2), routine, f"trans must be 0, 1 or 2, not {trans!r}")
    return "NTC"[trans]


def _shape_of(a, letter):
    return a.shape if letter == "N" else a.shape[::-1]


def _uplo(lower):
    return "L" if lower else "U"


def _result(routine, c, shape, dtype, overwrite):
    """The array to write to: zeros where nothing is to be added to."""
    if c is None:
        return np.zeros(shape, dtype, order="F")
    _require(c.shape == shape, routine, f"the result is {shape}, but what to add it to {c.shape}")
    return writable(c, dtype, overwrite)


def _is_transpose(a, dtype):
    """Whether the array's transpose can be taken where it lies, and itself cannot."""
    return a.dtype == dtype and a.ndim == 2 and not in_columns(a) and in_columns(a.T)


def _op(a, dtype, letter):
    """The array and the letter of op or, if that saves a copy, the transpose and its letter."""
    if _is_transpose(a, dtype) and (letter != "C" or dtype.kind == "f"):
        return a.T, "T" if letter == "N" else "N"
    return readable(a, dtype), letter


def gemm(alpha, a, b, beta=0.0, c=None, trans_a=0, trans_b=0, overwrite_c=False):
    """alpha op(a) op(b) + beta c; op by trans_a and trans_b: 0 as it is, 1 transposed, 2 conjugate
    transposed.

    Operands in C or in Fortran order are used where they lie (but for the conjugate transpose of a
    complex one in C order). The result is in Fortran order; it is c's own memory if overwrite_c
    allows it and c is writable, of the result's type and in Fortran order.
    """
    a, b, c, dtype = _operands("gemm", alpha, beta, a=a, b=b, c=c)
    _matrices("gemm", a=a, b=b)
    trans_a, trans_b = _letter("gemm", trans_a), _letter("gemm", trans_b)
    (m, ka), (kb, n) = _shape_of(a, trans_a), _shape_of(b, trans_b)
    _require(ka == kb, "gemm", f"op(a) is {m} x {ka}, but op(b) is {kb} x {n}")
    c = _result("gemm", c, (m, n), dtype, overwrite_c)
    a, trans_a = _op(a, dtype, trans_a)
    b, trans_b = _op(b, dtype, trans_b)
    _core.gemm(trans_a, trans_b, alpha, a, b, beta, c)
    return c


def gemv(alpha, a, x, beta=0.0, y=None, trans=0, overwrite_y=False):
    """alpha op(a) x + beta y, with op and copies as in gemm; x may have any stride."""
    a, x, y, dtype = _operands("gemv", alpha, beta, a=a, x=x, y=y)
    _matrices("gemv", a=a)
    trans = _letter("gemv", trans)
    m, n = _shape_of(a, trans)
    _require(x.shape == (n,), "gemv", f"op(a) is {m} x {n}, but x has shape {x.shape}")
    y = _result("gemv", y, (m,), dtype, overwrite_y)
    if a.size == 0:  # BLAS would leave y as it is
        y[...] = beta * y if beta else 0
        return y
    strided = x.dtype == dtype and x.flags.aligned and x.strides[0] % x.itemsize == 0
    if not strided or x.strides[0] == 0:
        x = np.array(x, dtype)
    a, trans = _op(a, dtype, trans)
    _core.gemv(trans, alpha, a, x, beta, y)
    return y


def _one_sided(routine, alpha, a, b, beta, c, side, lower, overwrite_c):
    a, b, c, dtype = _operands(routine, alpha, beta, a=a, b=b, c=c)
    _check_side(routine, a, b, side)
    c = _result(routine, c, b.shape, dtype, overwrite_c)
    if dtype.kind == "f" and _is_transpose(a, dtype):
        a, lower = a.T, not lower
    a, b = readable(a, dtype), readable(b, dtype)
    getattr(_core, routine)("R" if side else "L", _uplo(lower), alpha, a, b, beta, c)
    return c


def _check_side(routine, a, b, side):
    _matrices(routine, a=a, b=b)
    order = b.shape[1 if side else 0]
    _require(a.shape == (order, order), routine, f"a must be {order} x {order}, not {a.shape}")


def symm(alpha, a, b, beta=0.0, c=None, side=0, lower=False, overwrite_c=False):
    """alpha a b + beta c (side 0) or alpha b a + beta c (side 1) for a real symmetric a, of which
    one triangle is read."""
    return _one_sided("symm", alpha, a, b, beta, c, side, lower, overwrite_c)


def hemm(alpha, a, b, beta=0.0, c=None, side=0, lower=False, overwrite_c=False):
    """alpha a b + beta c (side 0) or alpha b a + beta c (side 1) for a Hermitian a, of which one
    triangle is read."""
    return _one_sided("hemm", alpha, a, b, beta, c, side, lower, overwrite_c)


def _rank_update(routine, alpha, a, b, beta, c, trans, lower, overwrite_c):
    if routine[:2] == "he":
        real = (alpha, beta) if b is None else (beta,)
        _require(not any(map(np.iscomplexobj, real)), routine, "a real scalar is wanted")
    a, b, c, dtype = _operands(routine, alpha, beta, a=a, b=b, c=c)
    _matrices(routine, a=a)
    trans = ("C" if routine[:2] == "he" else "T") if trans else "N"
    n = _shape_of(a, trans)[0]
    c = _result(routine, c, (n, n), dtype, overwrite_c)
    if b is None:
        if routine == "syrk":
            a, trans = _op(a, dtype, trans)
        operands = (readable(a, dtype),)
    else:
        _require(b.shape == a.shape, routine, f"a is {a.shape}, but b is {b.shape}")
        operands = readable(a, dtype), readable(b, dtype)
    getattr(_core, routine)(_uplo(lower), trans, alpha, *operands, beta, c)
    return c


def syrk(alpha, a, beta=0.0, c=None, trans=0, lower=False, overwrite_c=False):
    """One triangle of alpha a a^T + beta c, or with trans of alpha a^T a + beta c. The other
    triangle is c's, or zeros."""
    return _rank_update("syrk", alpha, a, None, beta, c, trans, lower, overwrite_c)


def herk(alpha, a, beta=0.0, c=None, trans=0, lower=False, overwrite_c=False):
    """syrk with the conjugate transpose, for complex a and real alpha and beta."""
    return _rank_update("herk", alpha, a, None, beta, c, trans, lower, overwrite_c)


def syr2k(alpha, a, b, beta=0.0, c=None, trans=0, lower=False, overwrite_c=False):
    """One triangle of alpha a b^T + alpha b a^T + beta c, or with trans of alpha a^T b + alpha b^T
    a + beta c, for real arrays. The other triangle is c's, or zeros."""
    return _rank_update("syr2k", alpha, a, b, beta, c, trans, lower, overwrite_c)


def her2k(alpha, a, b, beta=0.0, c=None, trans=0, lower=False, overwrite_c=False):
    """syr2k with conjugate transposes, the second alpha conjugated, for complex arrays and a real
    beta."""
    return _rank_update("her2k", alpha, a, b, beta, c, trans, lower, overwrite_c)


def _triangular(routine, alpha, a, b, side, lower, trans_a, diag, overwrite_b):
    a, b, dtype = _operands(routine, alpha, a=a, b=b)
    _check_side(routine, a, b, side)
    letter = _letter(routine, trans_a)
    a, trans = _op(a, dtype, letter)
    if trans != letter:  # the transpose's other triangle
        lower = not lower
    b = writable(b, dtype, overwrite_b)
    options = "R" if side else "L", _uplo(lower), trans, "U" if diag else "N"
    getattr(_core, routine)(*options, alpha, a, b)
    return b


def trmm(alpha, a, b, side=0, lower=False, trans_a=0, diag=0, overwrite_b=False):
    """alpha op(a) b (side 0) or alpha b op(a) (side 1) for a triangular a, with ones on its diagonal
    if diag is 1."""
    return _triangular("trmm", alpha, a, b, side, lower, trans_a, diag, overwrite_b)


def trsm(alpha, a, b, side=0, lower=False, trans_a=0, diag=0, overwrite_b=False):
    """trmm with the inverse of op(a), which is not tested for singularity."""
    return _triangular("trsm", alpha, a, b, side, lower, trans_a, diag, overwrite_b)
