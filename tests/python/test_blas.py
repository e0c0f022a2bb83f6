"""Products against NumPy's."""

import numpy as np
import pytest
from conftest import adjoint, close, random, storages

import lumo

M, N, K = 37, 23, 29


def op(a, trans):
    return [a, a.T, adjoint(a)][trans]


def stored_for(a, trans):
    return a if trans == 0 else a.T


def scalars(dtype):
    return (1.5 - 0.5j, 0.25 + 1j) if np.dtype(dtype).kind == "c" else (1.5, 0.25)


@storages
@pytest.mark.parametrize("trans", [0, 1, 2])
def test_general(dtype, stored, trans):
    alpha, beta = scalars(dtype)
    a = stored(stored_for(random((M, K), dtype), trans))
    b = stored(stored_for(random((K, N), dtype, 2), 2 - trans))
    c = stored(random((M, N), dtype, 3))
    kept = c.copy()
    expected = alpha * op(a, trans) @ op(b, 2 - trans) + beta * c
    result = lumo.gemm(alpha, a, b, beta, c, trans, 2 - trans)
    assert result.dtype == dtype and close(result, expected)
    assert np.array_equal(c, kept)
    assert close(lumo.gemm(alpha, a, b, trans_a=trans, trans_b=2 - trans), expected - beta * c)

    x, y = stored(random(K, dtype, 4)), stored(random(M, dtype, 5))
    expected = alpha * op(a, trans) @ x + beta * y
    assert close(lumo.gemv(alpha, a, x, beta, y, trans), expected)
    assert close(lumo.gemv(alpha, a, np.broadcast_to(x[:1], K), trans=trans),
                 alpha * op(a, trans).sum(1) * x[0])  # fmt: skip


@storages
@pytest.mark.parametrize("lower", [False, True])
@pytest.mark.parametrize("side", [0, 1])
def test_one_triangle(dtype, stored, lower, side):
    """symm, hemm, trmm and trsm must not look at the other triangle."""
    alpha, beta = scalars(dtype)
    b, c = stored(random((M, N), dtype, 2)), stored(random((M, N), dtype, 3))
    order = N if side else M
    full = random((order, order), dtype) + order * np.eye(order, dtype=dtype)
    kept = np.tril(full) if lower else np.triu(full)
    a = stored(np.where(kept == 0, np.nan, full))

    hermitian = np.dtype(dtype).kind == "c"
    whole = kept + adjoint(kept) - np.diag(np.diag(kept).real.astype(dtype))
    routine = lumo.hemm if hermitian else lumo.symm
    product = b @ whole if side else whole @ b
    assert close(routine(alpha, a, b, beta, c, side, lower), alpha * product + beta * c)

    # With ones on the diagonal, the rest small enough for its inverse.
    unit = np.eye(order) + (kept - np.diag(np.diag(kept))) / order
    used = stored(np.where((kept == 0) | (np.eye(order) == 1), np.nan, unit).astype(dtype))
    for matrix, t, diag in (a, kept, 0), (used, unit, 1):
        for trans in 0, 1, 2:
            product = b @ op(t, trans) if side else op(t, trans) @ b
            result = lumo.trmm(alpha, matrix, b, side, lower, trans, diag)
            assert close(result, alpha * product)
            assert close(lumo.trsm(1 / alpha, matrix, result, side, lower, trans, diag), b)


@storages
@pytest.mark.parametrize("lower", [False, True])
@pytest.mark.parametrize("trans", [0, 1])
def test_rank_updates(dtype, stored, lower, trans):
    alpha, beta = scalars(dtype)
    hermitian = np.dtype(dtype).kind == "c"
    a, b = (stored(stored_for(random((N, K), dtype, seed), trans)) for seed in (1, 2))
    c = random((N, N), dtype, 3)
    c = stored(c + adjoint(c))

    def agree(result, expected):
        parts = (np.tril(expected), np.triu(c, 1)) if lower else (np.triu(expected), np.tril(c, -1))
        return close(result, sum(parts))

    left, right = (adjoint(a), adjoint(b)) if trans else (a, b)
    plain = (a.T, a) if trans else (a, a.T)
    syrk = alpha * plain[0] @ plain[1] + beta * c
    assert agree(lumo.syrk(alpha, a, beta, c, trans, lower), syrk)
    if hermitian:
        herk = 1.5 * left @ adjoint(left) + 0.25 * c
        assert agree(lumo.herk(1.5, a, 0.25, c, trans, lower), herk)
    update = alpha * left @ adjoint(right)
    routine = lumo.her2k if hermitian else lumo.syr2k
    expected = update + adjoint(update) + 0.25 * c
    assert agree(routine(alpha, a, b, 0.25, c, trans, lower), expected)


def test_results_are_put_in_place():
    a, b = random((M, K), np.float32), random((K, N), np.float32)
    whole = np.zeros((50, 50), np.float32, order="F")
    c = whole[5 : 5 + M, 7 : 7 + N]
    result = lumo.gemm(1, a, b, 0, c, overwrite_c=True)
    assert np.shares_memory(result, c) and close(c, a @ b)
    c[...] = 0
    assert not whole.any()


def test_shapes_and_types_at_their_limits():
    c, none = random((3, 2), np.float32), np.ones((3, 0), "f")
    assert np.array_equal(lumo.gemm(1, none, none[:2].T, 2, c), 2 * c)
    assert np.array_equal(lumo.gemv(1, none, none[0], 2, c[:, 0]), 2 * c[:, 0])
    assert lumo.syrk(1, none.T).shape == (0, 0)
    # Fortran order, but for a leading dimension below the number of rows.
    hankel = np.lib.stride_tricks.sliding_window_view(random(9, np.float32), 5)
    assert close(lumo.gemm(1, hankel, hankel, trans_b=1), hankel @ hankel.T)
    assert lumo.gemm(1j, np.eye(2, dtype=np.float32), [[1, 2], [3, 4]]).dtype == np.complex128


@pytest.mark.parametrize("call, error, words", [
    (lambda a, z: lumo.gemm(1, a, a), ValueError, "op.a. is 3 x 2, but op.b. is 3 x 2"),
    (lambda a, z: lumo.gemm(1, a, a, trans_a=3), ValueError, "trans must be 0, 1 or 2"),
    (lambda a, z: lumo.gemm(1, a, a, c=a, trans_b=1), ValueError, r"result is \(3, 3\)"),
    (lambda a, z: lumo.trsm(1, a, a), ValueError, "a must be 3 x 3"),
    (lambda a, z: lumo.herk(1, a), TypeError, "use lumo.syrk"),
    (lambda a, z: lumo.herk(1j, z), ValueError, "real scalar"),
    (lambda a, z: lumo.gemm(1, a.astype(np.longdouble), a.T), TypeError, "longdouble|float128"),
    (lambda a, z: lumo.gemm(1, a, a.T, beta="1"), TypeError, "alpha and beta must be numbers"),
    (lambda a, z: lumo.gemm(1, a.astype(str), a.T), TypeError, "not numbers"),
])  # fmt: skip
def test_bad_arguments(call, error, words):
    with pytest.raises(error, match=words):
        call(np.ones((3, 2), np.float32), np.ones((3, 3), np.complex64))
