"""Operands: their element type, their storage, the copies they need."""

import numpy as np

ALL = tuple(np.dtype(t) for t in (np.float32, np.float64, np.complex64, np.complex128))


def numeric(routine, **operands):
    """The operands as arrays of numbers, in their order."""
    arrays = {name: np.asarray(x) for name, x in operands.items()}
    for name, a in arrays.items():
        if a.dtype.kind not in "biufc":
            raise TypeError(f"lumo.{routine}: {name} holds {a.dtype}, not numbers")
    return arrays


def working_type(routine, *dtypes):
    """The type, of Lumo's four, to compute in: float64 for integers, float32 for float16."""
    dtype = np.result_type(*dtypes)
    if dtype.kind in "biu":
        dtype = np.dtype(np.float64)
    if dtype == np.float16:
        dtype = np.dtype(np.float32)
    if dtype not in ALL:
        raise TypeError(f"lumo.{routine} computes in single or double precision, not in {dtype}")
    return dtype


def converted(routine, dtype, **operands):
    """The operands as arrays, not converted yet, and the type to compute in: the operands' own or,
    if it is given, `dtype`, which must not drop imaginary parts."""
    arrays = numeric(routine, **operands)
    if dtype is None:
        return (*arrays.values(), working_type(routine, *(a.dtype for a in arrays.values())))
    dtype = np.dtype(dtype)
    if dtype not in ALL:
        raise TypeError(
            f"lumo.{routine}: dtype must be float32, float64, complex64 or complex128, not {dtype}"
        )
    for name, a in arrays.items():
        if not np.can_cast(a.dtype, dtype, "same_kind"):
            raise TypeError(
                f"lumo.{routine}: {name} is complex; dtype={dtype} would drop its imaginary part"
            )
    return (*arrays.values(), dtype)


def real(dtype):
    """The type of real numbers in this precision."""
    return np.finfo(dtype).dtype


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


def empty(shape, dtype):
    """An array to write to: a matrix in Fortran order, or a stack of such matrices."""
    return np.empty((*shape[:-2], *shape[:-3:-1]), dtype).swapaxes(-1, -2)


def copied(a, dtype):
    """A copy in Fortran order, of a stack a stack of such matrices."""
    if a.ndim > 2:
        copy = empty(a.shape, dtype)
        copy[...] = a
        return copy
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
    """An array in Fortran order to write to: `a` itself if that is allowed and possible, which it
    is not for stacks.

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


def scale(a):
    """Scales an array in place by a power of two, to where the squares of its elements neither
    overflow nor vanish. Returns what to multiply results by, 1 mostly."""
    limits = np.finfo(a.dtype)
    parts = (a.real, a.imag) if a.dtype.kind == "c" else (a,)
    largest = max((float(np.abs(part).max(initial=0)) for part in parts), default=0.0)
    smallest = float(np.sqrt(limits.tiny) / limits.eps)
    if largest == 0 or not np.isfinite(largest) or smallest <= largest <= 1 / smallest:
        return limits.dtype.type(1)
    # The factor and its inverse must be normal numbers.
    most = limits.maxexp - 3
    exponent = int(np.clip(np.frexp(largest)[1], -most, most))
    a *= limits.dtype.type(2.0**-exponent)
    return limits.dtype.type(2.0**exponent)
