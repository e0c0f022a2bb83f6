"""Operands: their element type, their storage, the copies they need."""

import numpy as np

SINGLE = (np.dtype(np.float32), np.dtype(np.complex64))
ALL = SINGLE + (np.dtype(np.float64), np.dtype(np.complex128))


def numeric(routine, **operands):
    """The operands as arrays of numbers, in their order."""
    arrays = {name: np.asarray(x) for name, x in operands.items()}
    for name, a in arrays.items():
        if a.dtype.kind not in "biufc":
            raise TypeError(f"lumo.{routine}: {name} holds {a.dtype}, not numbers")
    return arrays


def single(routine, dtype, **operands):
    """The operands as arrays, and the single-precision type to work in.

    Other types are refused unless `dtype` asks for conversion, which must not drop imaginary parts.
    """
    arrays = numeric(routine, **operands)
    if dtype is None:
        for name, a in arrays.items():
            if a.dtype not in SINGLE:
                wish = "complex64" if a.dtype.kind == "c" else "float32"
                raise TypeError(
                    f"lumo.{routine} works in single precision, but {name} is {a.dtype}; "
                    f"pass dtype=numpy.{wish} to convert it"
                )
        dtype = np.result_type(*arrays.values())
    else:
        dtype = np.dtype(dtype)
        if dtype not in SINGLE:
            raise TypeError(f"lumo.{routine}: dtype must be float32 or complex64, not {dtype}")
        for name, a in arrays.items():
            if not np.can_cast(a.dtype, dtype, "same_kind"):
                raise TypeError(
                    f"lumo.{routine}: {name} is complex; dtype=numpy.float32 would drop its "
                    "imaginary part"
                )
    return (*arrays.values(), dtype)


def in_columns(a):
    """Whether Lumo can take the array where it lies: Fortran order, perhaps a part of a matrix."""
    if not a.flags.aligned or a.ndim > 2:
        return False
    if a.ndim < 2 or a.flags.f_contiguous:
        return a.flags.f_contiguous
    rows, columns = a.shape
    return (rows == 1 or a.strides[0] == a.itemsize) and (
        a.strides[1] >= rows * a.itemsize and a.strides[1] % a.itemsize == 0
    )


def copied(a, dtype):
    """A copy in Fortran order."""
    if a.ndim != 2 or not a.flags.c_contiguous:
        return np.array(a, dtype, order="F")
    # By bands of rows, that stay in the cache: a whole matrix at once takes several times as long.
    copy = np.empty(a.shape, dtype, order="F")
    for first in range(0, len(a), 64):
        copy[first : first + 64] = a[first : first + 64]
    return copy


def readable(a, dtype):
    """The array in Fortran order, a copy only if it is not yet."""
    return a if a.dtype == dtype and in_columns(a) else copied(a, dtype)


def writable(a, dtype, overwrite=False, beside=None):
    """An array in Fortran order to write to: `a` itself if that is allowed and possible.

    `beside` is another operand, with which it must not share memory.
    """
    if (
        overwrite
        and a.dtype == dtype
        and in_columns(a)
        and a.flags.writeable
        and (beside is None or not np.may_share_memory(a, beside))
    ):
        return a
    return copied(a, dtype)


def refuse_non_finite(routine, **arrays):
    for name, a in arrays.items():
        if not np.isfinite(a).all():
            raise ValueError(f"lumo.{routine}: {name} must not contain infs or NaNs")
