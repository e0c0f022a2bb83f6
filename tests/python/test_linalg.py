"""Linear systems, factorisations and least squares: by residuals, as LAPACK's testers measure
them, and against NumPy in double precision."""

import numpy as np
import pytest
from conftest import SINGLE, adjoint, close, fortran, misaligned, part, random, storages

import lumo
from lumo import LinAlgError

EPS = np.finfo(np.float32).eps
dtypes = pytest.mark.parametrize("dtype", SINGLE, ids=lambda t: t.__name__)


def wide(a):
    return a.astype(np.complex128 if a.dtype.kind == "c" else np.float64)


def residual(a, x, b):
    a, x, b = wide(a), wide(x), wide(b)
    return np.linalg.norm(b - a @ x) / (np.linalg.norm(a) * np.linalg.norm(x) * EPS)


def orthonormal(q):
    q = wide(q)
    return np.linalg.norm(q.conj().T @ q - np.eye(q.shape[1])) <= 30 * EPS * max(q.shape)


@storages
@dtypes
@pytest.mark.filterwarnings("error")
@pytest.mark.parametrize("columns", [(), (3,)])
def test_solve(dtype, stored, columns):
    a, b = stored(random((150, 150), dtype)), stored(random((150, *columns), dtype, 2))
    kept = a.copy(), b.copy()
    x = lumo.solve(a, b)
    assert x.shape == b.shape and x.dtype == dtype and residual(a, x, b) < 30
    assert np.array_equal(a, kept[0]) and np.array_equal(b, kept[1])

    lu, piv = lumo.lu_factor(a)
    for trans, op in enumerate((a, a.T, adjoint(a))):
        assert residual(op, lumo.lu_solve((lu, piv), b, trans), b) < 30
        assert np.array_equal(b, kept[1])


@dtypes
@pytest.mark.parametrize("shape", [(7, 4), (4, 7), (5, 1), (1, 5), (0, 3)])
def test_lu_of_any_shape(dtype, shape):
    a = random(shape, dtype)
    lu, piv = lumo.lu_factor(a)
    k = min(shape)
    product = (np.tril(lu[:, :k], -1) + np.eye(shape[0], k)) @ np.triu(lu[:k])
    for i in reversed(range(k)):
        product[[i, piv[i]]] = product[[piv[i], i]]
    assert close(product.astype(dtype), a)


@storages
@dtypes
@pytest.mark.parametrize("shape", [(90, 40), (40, 90), (60, 60), (0, 3), (3, 0)])
def test_qr(dtype, stored, shape):
    a = stored(random(shape, dtype))
    for mode in "reduced", "complete":
        q, r = lumo.qr(a, mode)
        expected = np.linalg.qr(a, mode)
        assert (q.shape, r.shape) == (expected[0].shape, expected[1].shape)
        assert orthonormal(q) and np.array_equal(r, np.triu(r)) and close(q @ r, a)
    assert np.array_equal(lumo.qr(a, "r"), lumo.qr(a).R)
    h, tau = lumo.qr(a, "raw")
    assert h.shape == shape[::-1] and np.array_equal(np.triu(h.T[: len(tau)]), lumo.qr(a).R)


@storages
@dtypes
@pytest.mark.parametrize("shape", [(90, 40), (40, 90), (60, 60), (5, 0), (0, 5)])
@pytest.mark.parametrize("columns", [(), (3,)])
def test_lstsq(dtype, stored, shape, columns):
    a, b = stored(random(shape, dtype)), stored(random((shape[0], *columns), dtype, 2))
    x, residuals, rank, s = lumo.lstsq(a, b)
    expected = np.linalg.lstsq(wide(a), wide(b), rcond=None)
    condition = np.linalg.cond(wide(a)) if a.size else 1
    assert rank == expected[2] and s is None and x.dtype == dtype
    assert close(x, expected[0], 30 * condition) and close(residuals, expected[1], 100)


@dtypes
@pytest.mark.filterwarnings("ignore:overflow")  # of residuals
@pytest.mark.parametrize("size_a, size_b", [(1e-42, 1e-42), (3e38, 3e38), (1, 1e15)])
def test_lstsq_scales(dtype, size_a, size_b):
    """As LAPACK's routine does, and the library's own does not."""
    a, b = random((30, 10), dtype), random(30, dtype, 2)
    a, b = ((x / np.abs(x).max() * size).astype(dtype) for x, size in ((a, size_a), (b, size_b)))
    x, residuals, _, _ = lumo.lstsq(a, b)
    ratio = size_b / size_a
    expected = np.linalg.lstsq(wide(a) / size_a, wide(b) / size_b, rcond=None)
    assert close(x / np.float32(ratio), expected[0], 100)
    with np.errstate(over="ignore", under="ignore"):
        assert np.allclose(residuals, (expected[1] * size_b**2).astype("f"), 1e-3, 0)


@dtypes
@pytest.mark.parametrize("m, n, p", [(40, 30, 10), (25, 30, 10), (20, 30, 10), (9, 5, 0), (0, 4, 4)])
def test_lse(dtype, m, n, p):
    a, b = random((m, n), dtype), random((p, n), dtype, 2)
    c, d = random(m, dtype, 3), random(p, dtype, 4)
    x, square = lumo.lse(a, b, c, d)
    # The same by Lagrange's multipliers.
    a, b = wide(a), wide(b)
    system = np.block([[adjoint(a) @ a, adjoint(b)], [b, np.zeros((p, p))]])
    expected = np.linalg.solve(system, np.concatenate([adjoint(a) @ c, d]))[:n]
    assert close(x, expected, 3e3)
    assert close(np.asarray(square), np.linalg.norm(c - a @ expected) ** 2, 3e3)


@dtypes
@pytest.mark.parametrize("shape", [(90, 40), (40, 90), (60, 60), (0, 3), (3, 0)])
@pytest.mark.parametrize("scale", [1, 1e-30, 1e30])
def test_svd(dtype, shape, scale):
    a = random(shape, dtype) * np.float32(scale)
    expected = np.linalg.svd(wide(a), compute_uv=False)
    for full in True, False:
        u, s, vh = lumo.svd(a, full)
        assert [x.shape for x in (u, s, vh)] == [x.shape for x in np.linalg.svd(a, full)]
        assert orthonormal(u) and orthonormal(adjoint(vh)) and close(s / scale, expected / scale)
        k = len(s)
        assert close(u[:, :k] * (s / scale).astype("f") @ vh[:k], a / scale)
    assert close(lumo.svd(a, compute_uv=False) / scale, expected / scale)


def test_operands_are_overwritten_if_allowed():
    a, b = fortran(random((9, 9), np.float32)), part(random((9, 2), np.float32, 2))
    kept = a.copy(), b.copy()
    x = lumo.solve(a, b, overwrite_a=True, overwrite_b=True)
    assert x is b and not np.array_equal(a, kept[0]) and residual(*kept[:1], x, kept[1]) < 30
    assert lumo.lu_factor(a, overwrite_a=True)[0] is a
    # ... but not where that would be wrong.
    same = fortran(kept[0])
    x = lumo.solve(same, same, overwrite_a=True, overwrite_b=True)
    assert close(x, np.eye(9, dtype=np.float32), 1e3)
    locked = fortran(kept[0])
    locked.flags.writeable = False
    lumo.solve(locked, b, overwrite_a=True)
    assert np.array_equal(locked, kept[0])
    lumo.solve(misaligned(kept[0]), b, overwrite_a=True)


def test_conversion():
    a, b = random((5, 5), np.float64), random(5, np.complex128)
    x = lumo.solve(a, b, dtype=np.complex64)
    assert x.dtype == np.complex64 and residual(a, x, b) < 30
    assert lumo.solve(a.astype("f"), b.astype("F")).dtype == np.complex64
    assert lumo.lu_solve(lumo.lu_factor(a.astype("f")), b.astype("F")).dtype == np.complex64


def singular(n, k):
    a = np.eye(n, dtype=np.float32)
    a[k - 1, k - 1] = 0
    return a


single = np.float32
ONES = np.ones(4, single)


@pytest.mark.parametrize("call, error, words", [
    (lambda: lumo.solve(singular(4, 3), ONES), LinAlgError,
     "^matrix is singular: pivot 3 is exactly zero$"),
    (lambda: lumo.lu_solve((singular(4, 2), [0, 1, 2, 3]), ONES), LinAlgError, "pivot 2"),
    (lambda: lumo.lu_solve((singular(4, 2), [0, 1, 2, 4]), ONES), ValueError, "piv must hold"),
    (lambda: lumo.lstsq(singular(4, 3)[:, :3], ONES), LinAlgError, "element 3 .* exactly zero"),
    (lambda: lumo.lstsq(single([[1, 2], [3, 6], [5, 10], [7, 14]]), ONES), LinAlgError,
     "element 2 .* times the largest"),
    (lambda: lumo.lse(singular(4, 4), single([[1, 0, 0, 0], [0, 0, 0, 0]]), ONES, ONES[:2]),
     LinAlgError, "constraints b have not full rank"),
    (lambda: lumo.lse(singular(4, 2), single([[0, 0, 0, 1]]), ONES, ONES[:1]), LinAlgError,
     r"\(a; b\) has not full rank"),
    (lambda: lumo.lse(singular(4, 4), single([[1, 0, 0, 0]]), ONES, ONES), ValueError,
     "d must be a vector of 1"),
    (lambda: lumo.lse(singular(4, 4)[:2], single([[1, 0, 0, 0]]), ONES[:2], ONES[:1]), ValueError,
     "4 unknowns want"),
    (lambda: lumo.solve(np.eye(4), ONES), TypeError,
     "single precision, but a is float64; pass dtype=numpy.float32"),
    (lambda: lumo.solve(np.eye(4, dtype="f"), [1, 2, 3, 4]), TypeError, "but b is int64"),
    (lambda: lumo.qr(np.eye(4, dtype="D")), TypeError, "pass dtype=numpy.complex64"),
    (lambda: lumo.qr(np.eye(4), dtype=np.float64), TypeError, "must be float32 or complex64"),
    (lambda: lumo.qr(1j * np.eye(4), dtype=np.float32), TypeError, "drop its imaginary part"),
    (lambda: lumo.qr(np.eye(4, dtype="f"), "economic"), ValueError, "mode must be"),
    (lambda: lumo.solve(np.eye(4, dtype="f"), ONES * np.nan), ValueError, "b must not contain"),
    (lambda: lumo.solve(np.full((4, 4), np.inf, "f"), ONES), ValueError, "a must not contain"),
    (lambda: lumo.solve(np.eye(4, 3, dtype="f"), ONES), LinAlgError, "a must be square, not 4 x 3"),
    (lambda: lumo.solve(np.eye(5, dtype="f"), ONES), ValueError, "a has 5 rows, but b has 4"),
    (lambda: lumo.solve(np.zeros((2, 4, 4), "f"), ONES), LinAlgError, "2 dimensions, not 3"),
])  # fmt: skip
def test_failures_in_words(call, error, words):
    with pytest.raises(error, match=words):
        call()


def test_answers_that_may_be_far_off():
    with pytest.warns(lumo.LinAlgWarning, match="pivot 3 is exactly zero"):
        lu, piv = lumo.lu_factor(singular(4, 3))
    assert np.array_equal(lu, singular(4, 3)) and piv.tolist() == [0, 1, 2, 3]

    for dtype in SINGLE:
        with pytest.warns(lumo.LinAlgWarning, match="rcond = 3.3e-09"):
            lumo.solve(np.diag(np.array([3, 1e-8, 1, 1], dtype)), ONES)


def test_non_finite_numbers_come_through_if_allowed():
    x = lumo.solve(np.eye(4, dtype="f"), ONES * np.nan, check_finite=False)
    assert np.isnan(x).all()
