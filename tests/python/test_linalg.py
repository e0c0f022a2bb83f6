"""Systems, factorisations, least squares: by scaled residuals, and against NumPy in double."""

import numpy as np
import pytest
from conftest import adjoint, close, fortran, misaligned, part, random, storages, wide

import lumo
from lumo import LinAlgError

SHAPES = [(90, 40), (40, 90), (60, 60), (0, 3), (3, 0), (2, 3, 9, 4), (3, 4, 9), (0, 4, 9), (2, 0, 4)]


def residual(a, x, b):
    norm, eps = np.linalg.norm, np.finfo(x.dtype).eps
    a, x, b = wide(a), wide(x), wide(b)
    return norm(b - a @ x) / (norm(a) * norm(x) * eps)


def orthonormal(q):
    distance = adjoint(wide(q)) @ wide(q) - np.eye(q.shape[-1])
    return np.linalg.norm(distance) <= 30 * np.finfo(q.dtype).eps * max(q.shape)


def positive(shape, dtype):
    a = random(shape, dtype)
    return a @ a.conj().swapaxes(-1, -2) + np.eye(shape[-1], dtype=dtype)


@storages
@pytest.mark.filterwarnings("error")
@pytest.mark.parametrize("columns", [(), (3,)])
def test_solve(dtype, stored, columns):
    a, b = stored(random((150, 150), dtype)), stored(random((150, *columns), dtype, 2))
    kept = a.copy(), b.copy()
    x = lumo.solve(a, b)
    assert x.shape == b.shape and x.dtype == dtype and residual(a, x, b) < 30
    assert residual(a.T, lumo.solve(a, b, transposed=True), b) < 30
    assert residual(a, lumo.inv(a), np.eye(150)) < 30
    lumo.solve(np.diag([1, 9 * np.finfo(dtype).eps]).astype(dtype), b[:2])  # not worth a warning
    lu, piv = lumo.lu_factor(a)
    for trans, op in enumerate((a, a.T, adjoint(a))):
        assert residual(op, lumo.lu_solve((lu, piv), b, trans), b) < 30
    assert np.array_equal(a, kept[0]) and np.array_equal(b, kept[1])


@storages
@pytest.mark.filterwarnings("error")
@pytest.mark.parametrize("lower", [False, True])
def test_one_triangle(dtype, stored, lower):
    """... is read of matrices that are symmetric, Hermitian or positive definite."""
    h, g, b = positive((90, 90), dtype), random((90, 90), dtype), stored(random((90, 2), dtype, 2))
    triangle = np.tri(90) if lower else np.tri(90).T
    for words, a in ("sym", g + g.T), ("her", h - 90 * np.eye(90, dtype=dtype)), ("pos", h):
        given = np.where(triangle, a, 7e7).astype(dtype)
        if words != "sym" and g.dtype.kind == "c":  # the diagonal is real whatever is there
            given += 7e7j * np.eye(90)
        given = stored(given)
        for transposed, op in (False, a), (True, a.T):
            x = lumo.solve(given, b, lower, assume_a=words, transposed=transposed)
            assert x.dtype == dtype and residual(op, x, b) < 30
    c = lumo.cholesky(given, lower)
    assert c.dtype == dtype and close(c @ adjoint(c) if lower else adjoint(c) @ c, h)
    assert np.array_equal(c, np.tril(c) if lower else np.triu(c))
    assert residual(h, lumo.cho_solve(lumo.cho_factor(given, lower), b), b) < 30


@pytest.mark.parametrize("scale", [1, 1e-60, 1e60])
@pytest.mark.parametrize("dtype", [np.float64, np.complex128])
def test_mixed_precision(dtype, scale):
    """Where single precision's range will not do, too."""
    a, b = random((150, 150), dtype) * scale, random((150, 2), dtype, 2)
    x = lumo.solve(a, b, mixed=True)
    assert x.dtype == dtype and residual(a, x, b) < 30
    if scale == 1:  # it was refined, and is not gesv's
        assert not np.array_equal(x, lumo.solve(a, b))


@pytest.mark.parametrize("shape", [(7, 4), (4, 7), (5, 1), (1, 5), (0, 3)])
def test_lu_of_any_shape(dtype, shape):
    a, k = random(shape, dtype), min(shape)
    lu, piv = lumo.lu_factor(a)
    for i, p in enumerate(piv):
        a[[i, p]] = a[[p, i]]
    assert close((np.tril(lu[:, :k], -1) + np.eye(shape[0], k, dtype=dtype)) @ np.triu(lu[:k]), a)


def test_determinants(dtype):
    stack = random((3, 2, 6, 6), dtype)
    stack[1, 1, :, 2] = 0
    det, (sign, logarithm) = lumo.det(stack), lumo.slogdet(stack)
    assert det.dtype == wide(stack).dtype and sign.dtype == dtype
    assert close(det.astype(dtype), np.linalg.det(wide(stack)), 300)
    assert close(sign * np.exp(logarithm), det, 300)
    assert det[1, 1] == sign[1, 1] == 0 and logarithm[1, 1] == -np.inf
    large = dtype(1e30) * np.eye(12, dtype=dtype)[[1, 0, *range(2, 12)]]
    assert np.isclose(lumo.det(large[:3, :3]), -1e90) and lumo.det(large[:0, :0]) == 1
    assert np.isclose(lumo.slogdet(large), [-1, 360 * np.log(10)]).all()
    assert lumo.det(large * (np.arange(12) < 11)) == 0


@pytest.mark.parametrize("of_a, of_b", [((2, 3), (2, 3)), ((2, 3), None), ((), (4,)), ((2, 1), (3,)),
                                        ((0,), ()), ((0,), None)])  # fmt: skip
def test_stacks(dtype, of_a, of_b):
    """Leading dimensions, broadcast as by NumPy; None: one vector for all matrices."""
    a, h = random((*of_a, 20, 20), dtype), positive((*of_a, 20, 20), dtype)
    b = random(20 if of_b is None else (*of_b, 20, 3), dtype, 2)
    for matrix, options in (a, {}), (h, {"assume_a": "pos"}), (a, {"mixed": a.dtype.char in "dD"}):
        expected = np.linalg.inv(wide(matrix)) @ b
        assert close(lumo.solve(matrix, b, **options), expected, 1e3)
    assert close(lumo.inv(a), np.linalg.inv(wide(a)), 1e3)
    assert close(lumo.cholesky(h, lower=True), np.linalg.cholesky(wide(h)), 1e3)


@storages
@pytest.mark.parametrize("shape", SHAPES)
def test_qr(dtype, stored, shape):
    a = stored(random(shape, dtype))
    for mode, of_scipy in ("reduced", "economic"), ("complete", "full"):
        q, r = lumo.qr(a, mode)
        assert [x.shape for x in (q, r)] == [x.shape for x in np.linalg.qr(a, mode)]
        assert orthonormal(q) and np.array_equal(r, np.triu(r)) and close(q @ r, a)
        assert np.array_equal(lumo.qr(a, of_scipy).Q, q)
    h, tau = lumo.qr(a, "raw")
    r = np.triu(h.swapaxes(-1, -2)[..., : tau.shape[-1], :])
    assert np.array_equal(lumo.qr(a, "r"), r) and np.array_equal(lumo.qr(a).R, r)


@pytest.mark.parametrize("shape", SHAPES)
@pytest.mark.parametrize("power, driver", [(0, "gesdd"), (-0.8, "gesdd"), (0.8, "gesdd"), (0.8, "gesvd")])
def test_svd(dtype, shape, power, driver):
    scale = np.float64(np.finfo(dtype).max) ** power
    a = (random(shape, dtype) * scale).astype(dtype)
    for full in True, False:
        u, s, vh = lumo.svd(a, full, lapack_driver=driver)
        expected = np.linalg.svd(wide(a) / scale, full)
        assert [x.shape for x in (u, s, vh)] == [x.shape for x in expected]
        s, k = (s / scale).astype(s.dtype), s.shape[-1]
        assert orthonormal(u) and orthonormal(adjoint(vh)) and close(s, expected[1])
        assert close(u[..., :k] * s[..., None, :] @ vh[..., :k, :], wide(a) / scale)
    values = lumo.svd(a, compute_uv=False, lapack_driver=driver)
    assert close((values / scale).astype(s.dtype), expected[1])


@pytest.mark.parametrize("shape", SHAPES)
def test_rank_and_inverse_of_deficient_matrices(dtype, shape):
    """Of half the rank that the shape allows, and to a tolerance of each matrix's own."""
    *stack, m, n = shape
    rank = (min(m, n) + 1) // 2
    a = random((*stack, m, rank), dtype) @ random((*stack, rank, n), dtype, 2)
    ranks = np.full(stack, rank if a.size else 0)
    assert np.array_equal(lumo.matrix_rank(a), ranks) and lumo.matrix_rank(a).shape == ranks.shape
    x = lumo.pinv(a)
    assert x.dtype == dtype and close(x, np.linalg.pinv(wide(a), 1e-6), 1e4)
    if a.size:
        first = np.linalg.svd(wide(a), compute_uv=False)[..., 0]
        for rtol in 0.5, np.linspace(1e-4, 0.7, first.size).reshape(first.shape):
            expected = np.linalg.matrix_rank(wide(a), rtol * first)
            assert np.array_equal(lumo.matrix_rank(a, rtol * first), expected)
            assert np.array_equal(lumo.matrix_rank(a, rtol=rtol), expected)
            assert close(lumo.pinv(a, rtol), np.linalg.pinv(wide(a), rtol), 1e4)
    h = a @ adjoint(a)
    assert np.array_equal(lumo.matrix_rank(h - 3 * h, hermitian=True, rtol=1e-4), ranks)
    assert close(lumo.pinv(-h, 1e-4, hermitian=True), np.linalg.pinv(-wide(h), 1e-4, True), 1e5)


@storages
@pytest.mark.parametrize("lower", [False, True])
@pytest.mark.parametrize("type", [None, 1, 2, 3])  # None: without b
def test_eigh(dtype, stored, lower, type):
    """Of triangles, single matrices and broadcast stacks: what is not given is not read."""
    for of_a, of_b in ((), ()), ((3, 2), (2,)), ((0,), ()), ((2,), (3, 1)):
        n = 0 if of_a == (2,) else 30
        a, b = random((*of_a, n, n), dtype), positive((*of_b, n, n), dtype)
        a, triangle = a + adjoint(a), np.tri(n) if lower else np.tri(n).T
        given = [stored(np.where(triangle, x, 7e7).astype(dtype)) for x in (a, b)]
        options = {"lower": lower} | ({} if type is None else {"b": given[1], "type": type})
        kept = [x.copy() for x in given]
        w, v = lumo.eigh(given[0], **options)
        assert v.dtype == dtype and w.dtype == a.real.dtype and w.shape == v.shape[:-1]
        assert (np.diff(w) >= 0).all() and all(map(np.array_equal, given, kept))
        values = lumo.eigvalsh(given[0], **options)
        assert np.array_equal(lumo.eigh(given[0], eigvals_only=True, **options), values)
        b = b if type else np.eye(n, dtype=dtype)
        left = a @ v if type in (None, 1) else a @ (b @ v) if type == 2 else b @ (a @ v)
        assert close(left, (b @ v if type == 1 else v) * w[..., None, :], 300)
        metric = v @ adjoint(v) if type == 3 else adjoint(v) @ b @ v
        assert close(metric, np.broadcast_to(b if type == 3 else np.eye(n), v.shape), 300)
        assert close(values, w, 30 * (n if type else 1))


@storages
@pytest.mark.parametrize("shape", [(90, 40), (40, 90), (60, 60), (5, 0), (0, 5)])
@pytest.mark.parametrize("columns", [(), (3,)])
@pytest.mark.parametrize("driver", ["gelsd", "gels"])
def test_lstsq(dtype, stored, shape, columns, driver):
    a, b = stored(random(shape, dtype)), stored(random((shape[0], *columns), dtype, 2))
    x, residuals, rank, s = lumo.lstsq(a, b, lapack_driver=driver)
    expected = np.linalg.lstsq(wide(a), wide(b), rcond=None)
    condition = np.linalg.cond(wide(a)) if a.size else 1
    assert rank == expected[2] and x.dtype == dtype
    assert s is None if driver == "gels" else close(s, expected[3], 30)
    assert close(x, expected[0], 30 * condition) and close(residuals, expected[1], 100)


@pytest.mark.parametrize("shape", [(40, 20), (20, 40), (20, 20)])
def test_lstsq_of_lower_rank(dtype, shape):
    a = (random((shape[0], 5), dtype) @ random((5, shape[1]), dtype, 2)).astype(dtype)
    b = random((shape[0], 3), dtype, 3)
    x, residuals, rank, _ = lumo.lstsq(a, b, rcond=1e-5)
    expected = np.linalg.lstsq(wide(a), wide(b), rcond=1e-5)
    assert rank == 5 and residuals.size == 0 and close(x, expected[0], 3000)


@pytest.mark.filterwarnings("ignore:overflow")  # of residuals
@pytest.mark.parametrize("of_a, of_b", [("tiny", "tiny"), ("max", "max"), ("eps", "tiny")])
def test_lstsq_scales(dtype, of_a, of_b):
    """As LAPACK's routine does, and the library's own does not."""
    factors = {"tiny": 1e-4, "max": 0.2, "eps": 1}
    roots = [np.sqrt(np.float64(getattr(np.finfo(dtype), size)) * factors[size]) for size in (of_a, of_b)]
    a, b = ((random(shape, dtype) * r * r).astype(dtype) for shape, r in zip(((30, 10), 30), roots))
    x, residuals, _, _ = lumo.lstsq(a, b)
    a, b = (wide(operand) / r / r for operand, r in zip((a, b), roots))
    expected = np.linalg.lstsq(a, b, rcond=None)
    ratio = roots[1] / roots[0]
    assert close((x / ratio / ratio).astype(dtype), expected[0], 100)
    assert np.allclose(residuals, (expected[1] * roots[1] ** 4).astype(residuals.dtype), 1e-3, 0)


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


def test_operands_are_overwritten_if_allowed():
    a, b = fortran(random((9, 9), np.float32)), part(random((9, 2), np.float32, 2))
    kept = a.copy(), b.copy()
    x = lumo.solve(a, b, overwrite_a=True, overwrite_b=True)
    assert x is b and not np.array_equal(a, kept[0]) and residual(kept[0], x, kept[1]) < 30
    assert lumo.lu_factor(a, overwrite_a=True)[0] is a
    assert lumo.eigh(a, overwrite_a=True).eigenvectors is a
    # ... but not where that would be wrong.
    same, locked = fortran(kept[0]), fortran(kept[0])
    assert close(lumo.solve(same, same, overwrite_a=True, overwrite_b=True), np.eye(9), 1e3)
    locked.flags.writeable = False
    lumo.solve(locked, b, overwrite_a=True)
    assert np.array_equal(locked, kept[0])
    lumo.solve(misaligned(kept[0]), b, overwrite_a=True)


def test_types_of_results(dtype):
    a = np.eye(2, dtype=dtype)
    for other in (np.bool_, np.float16, np.int64, np.float32, np.float64, np.complex64):
        expected = np.result_type(a, np.float64 if other is np.int64 else other)
        assert lumo.solve(a, np.ones(2, other)).dtype == expected
        assert lumo.lu_solve(lumo.lu_factor(a), np.ones(2, other)).dtype == expected
    swapped = a.astype(a.dtype.newbyteorder())
    assert lumo.inv(swapped).dtype == lumo.inv(a.real, dtype=dtype).dtype == dtype
    assert lumo.inv([[2, 0], [0, 2]]).dtype == lumo.inv([[True]]).dtype == np.float64
    assert lumo.inv(np.eye(2, dtype=np.float16)).dtype == np.float32


def singular(n, k):
    return np.diag(np.arange(1.0, n + 1) != k).astype(float)


ONES, LAST = np.ones(4), np.eye(1, 4, 3)


@pytest.mark.parametrize("call, error, words", [
    (lambda: lumo.solve(singular(4, 3), ONES), LinAlgError,
     "^matrix is singular: pivot 3 is exactly zero$"),
    (lambda: lumo.inv([[np.eye(4)], [singular(4, 2)]]), LinAlgError,
     r"^matrix \[1, 0\] of the stack is singular: pivot 2"),
    (lambda: lumo.lu_solve((singular(4, 2), [0, 1, 2, 3]), ONES), LinAlgError, "pivot 2"),
    (lambda: lumo.lu_solve((singular(4, 2), [0, 1, 2, 4]), ONES), ValueError, "piv must hold"),
    (lambda: lumo.cholesky([-np.eye(4)]), LinAlgError, r"matrix \[0\] .* not positive .* order 1 is"),
    (lambda: lumo.solve(singular(4, 3), ONES, assume_a="pos"), LinAlgError, "of order 3 is"),
    (lambda: lumo.solve(np.eye(4), ONES, assume_a="banded"), ValueError, "assume_a must be"),
    (lambda: lumo.solve(np.eye(4), ONES, assume_a="pos", mixed=True), ValueError, "not for 'pos'"),
    (lambda: lumo.solve(np.eye(4), ONES, mixed=True, dtype="f"), TypeError, "mixed precision gives"),
    (lambda: lumo.inv(1j * np.eye(4), dtype="f4"), TypeError, "drop its imaginary part"),
    (lambda: lumo.solve(np.eye(4), ONES * np.nan), ValueError, "b must not contain"),
    (lambda: lumo.solve(np.full((4, 4), np.inf), ONES), ValueError, "a must not contain"),
    (lambda: lumo.solve(np.eye(5), ONES), ValueError, "a has 5 rows, but b has 4"),
    (lambda: lumo.solve(np.zeros((2, 4, 4)), np.ones((3, 4, 1))), ValueError, "broadcast"),
    (lambda: lumo.lstsq(singular(4, 3)[:, :3], ONES, lapack_driver="gels"), LinAlgError, "element 3 .* exactly zero"),
    (lambda: lumo.lstsq(np.float32([[1, 2], [3, 6], [5, 10], [7, 14]]), np.float32(ONES),
                        lapack_driver="gels"), LinAlgError, "element 2 .* times the largest"),
    (lambda: lumo.lse(np.eye(4), np.vstack([LAST, LAST]), ONES, ONES[:2]), LinAlgError,
     "constraints b have not full rank"),
    (lambda: lumo.lse(singular(4, 2), LAST, ONES, ONES[:1]), LinAlgError,
     r"\(a; b\) has not full rank"),
    (lambda: lumo.qr(np.eye(4), "upper"), ValueError, "mode must be"),
    (lambda: lumo.svd(np.eye(4), lapack_driver="gesvx"), ValueError, "must be gesdd or gesvd"),
    (lambda: lumo.svd(np.eye(4) * np.nan, check_finite=False), LinAlgError, "did not converge"),
    (lambda: lumo.pinv(np.eye(4), 0.1, rtol=0.1), ValueError, "can't both be given"),
    (lambda: lumo.matrix_rank(np.eye(4), 1j), TypeError, "a tolerance must be real"),
    (lambda: lumo.eigh(np.eye(4), [np.eye(4), -np.eye(4)]), LinAlgError,
     r"^matrix b \[1\] of the stack is not positive definite: .* order 1 is"),
    (lambda: lumo.eigh(np.eye(4) * np.nan, check_finite=False), LinAlgError, "did not converge"),
    (lambda: lumo.eigvalsh(np.eye(4), np.eye(4) * np.nan), ValueError, "b must not contain"),
    (lambda: lumo.eigvalsh(np.eye(4), type=0), ValueError, "type must be 1, 2 or 3, not 0"),
    (lambda: lumo.eigvalsh(np.eye(4), np.eye(3)), ValueError, "a has 4 rows, but b has 3"),
    (lambda: lumo.eigh(np.eye(4), "L"), TypeError, "b holds <U1, not numbers"),
])  # fmt: skip
def test_failures_in_words(call, error, words):
    with pytest.raises(error, match=words):
        call()


def test_answers_that_may_be_far_off(dtype):
    """The caller's own line is told."""
    with pytest.warns(lumo.LinAlgWarning, match="pivot 3 is exactly zero"):
        lu, piv = lumo.lu_factor(singular(4, 3))
    assert np.array_equal(lu, singular(4, 3)) and piv.tolist() == [0, 1, 2, 3]
    assert np.isnan(lumo.solve(np.eye(4), ONES * np.nan, check_finite=False)).all()
    small = 1e-8 if np.finfo(dtype).eps > 1e-9 else 1e-18
    a, b = np.diag(np.array([3, small, 1, 1], dtype)), ONES.astype(dtype)
    a[0, 2] = a[2, 0] = 1
    for call in (lambda: lumo.solve([a, np.eye(4)], b, dtype=dtype), lambda: lumo.inv(a),
                 lambda: lumo.solve(np.triu(a), b, assume_a="pos"),
                 lambda: lumo.solve(np.tril(a), b, lower=True, assume_a="pos")):  # fmt: skip
        with pytest.warns(lumo.LinAlgWarning) as warned:
            call()
        assert f"matrix (rcond={small / 4:.6g}):" in str(warned[0].message)
        assert len(warned) == 1 and warned[0].filename == __file__
