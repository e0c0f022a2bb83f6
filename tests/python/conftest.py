"""Operands in every storage that NumPy has, and the measure of a result."""

import numpy as np
import pytest


@pytest.fixture(params="fdFD")
def dtype(request):
    return np.dtype(request.param).type


def random(shape, dtype, seed=1):
    rng = np.random.default_rng(seed)
    a = rng.standard_normal(shape)
    return (a + 1j * rng.standard_normal(shape) if np.dtype(dtype).kind == "c" else a).astype(dtype)


def adjoint(a):
    return a.conj().swapaxes(-1, -2)


def wide(a):
    return np.asarray(a, np.result_type(a, np.float64))


def fortran(a):
    return np.array(a, order="F")


def part(a):
    """A part of a larger matrix in Fortran order."""
    whole = np.full([size + 3 for size in a.shape], np.nan, a.dtype, order="F")
    view = whole[tuple(slice(1, size + 1) for size in a.shape)]
    view[...] = a
    return view


def backward(a):
    return np.ascontiguousarray(a[::-1])[::-1]


def spread(a):
    """Neither rows nor columns lie together."""
    return np.repeat(np.repeat(a, 2, 0), 3, -1)[::2, ..., ::3] if a.ndim > 1 else np.repeat(a, 2)[::2]


def misaligned(a):
    memory = np.zeros(a.nbytes + 1, np.uint8)[1:].view(a.dtype).reshape(a.shape, order="F")
    memory[...] = a
    return memory


STORAGES = [fortran, np.ascontiguousarray, part, backward, spread, misaligned]
storages = pytest.mark.parametrize("stored", STORAGES, ids=lambda f: f.__name__)


def close(actual, expected, bound=30):
    """In units of the type's precision, the size and the largest element."""
    expected = np.asarray(expected)
    assert actual.shape == expected.shape
    scale = np.finfo(actual.dtype).eps * max(expected.shape, default=1)
    scale *= max(1, np.abs(expected).max(initial=0))
    return bool(np.all(np.abs(actual - expected) <= bound * scale))
