from typing import Any, Literal, NamedTuple, TypeAlias, TypedDict, overload, type_check_only

import numpy as np
from numpy.linalg import LinAlgError as LinAlgError
from numpy.typing import ArrayLike, DTypeLike, NDArray

__version__: str
__all__: list[str]

_Array: TypeAlias = NDArray[Any]
_Reals: TypeAlias = NDArray[np.floating[Any]]
_Scalar: TypeAlias = complex | np.number[Any]
# Variables are ints and bools to a type checker, whatever literals they hold.
_Trans: TypeAlias = int  # 0, 1 or 2
_Flag: TypeAlias = int  # 0 or 1

class LinAlgWarning(RuntimeWarning): ...

class QRResult(NamedTuple):
    Q: _Array
    R: _Array

class RawQRResult(NamedTuple):
    h: _Array
    tau: _Array

class SVDResult(NamedTuple):
    U: _Array
    S: _Reals
    Vh: _Array

class EighResult(NamedTuple):
    eigenvalues: _Reals
    eigenvectors: _Array

class SlogdetResult(NamedTuple):
    sign: Any  # numbers, of a stack arrays
    logabsdet: Any

class LstsqResult(NamedTuple):
    x: _Array
    residuals: _Reals
    rank: int
    s: None

class LseResult(NamedTuple):
    x: _Array
    residual: np.floating[Any]

@type_check_only
class Info(TypedDict):
    version: str
    library: str
    device: int
    device_name: str

def devices() -> list[str]: ...
def select_device(device: int) -> None: ...
def info() -> Info: ...
def solve(
    a: ArrayLike, b: ArrayLike, lower: bool = ..., overwrite_a: bool = ...,
    overwrite_b: bool = ..., check_finite: bool = ..., assume_a: str = ...,
    transposed: bool = ..., *, mixed: bool = ..., dtype: DTypeLike | None = ...,
) -> _Array: ...
def inv(
    a: ArrayLike, overwrite_a: bool = ..., check_finite: bool = ..., *,
    dtype: DTypeLike | None = ...,
) -> _Array: ...
def det(
    a: ArrayLike, overwrite_a: bool = ..., check_finite: bool = ..., *,
    dtype: DTypeLike | None = ...,
) -> Any: ...  # a number, of a stack an array
def slogdet(
    a: ArrayLike, overwrite_a: bool = ..., check_finite: bool = ..., *,
    dtype: DTypeLike | None = ...,
) -> SlogdetResult: ...
def lu_factor(
    a: ArrayLike, overwrite_a: bool = ..., check_finite: bool = ..., *,
    dtype: DTypeLike | None = ...,
) -> tuple[_Array, NDArray[np.int32]]: ...
def lu_solve(
    lu_and_piv: tuple[ArrayLike, ArrayLike], b: ArrayLike, trans: _Trans = ...,
    overwrite_b: bool = ..., check_finite: bool = ...,
) -> _Array: ...
def cholesky(
    a: ArrayLike, lower: bool = ..., overwrite_a: bool = ..., check_finite: bool = ..., *,
    dtype: DTypeLike | None = ...,
) -> _Array: ...
def cho_factor(
    a: ArrayLike, lower: bool = ..., overwrite_a: bool = ..., check_finite: bool = ..., *,
    dtype: DTypeLike | None = ...,
) -> tuple[_Array, bool]: ...
def cho_solve(
    c_and_lower: tuple[ArrayLike, bool], b: ArrayLike, overwrite_b: bool = ...,
    check_finite: bool = ...,
) -> _Array: ...
@overload
def qr(
    a: ArrayLike, mode: Literal["reduced", "complete", "economic", "full"] = ..., *,
    dtype: DTypeLike | None = ..., overwrite_a: bool = ..., check_finite: bool = ...,
) -> QRResult: ...
@overload
def qr(
    a: ArrayLike, mode: Literal["r"], *, dtype: DTypeLike | None = ..., overwrite_a: bool = ...,
    check_finite: bool = ...,
) -> _Array: ...
@overload
def qr(
    a: ArrayLike, mode: Literal["raw"], *, dtype: DTypeLike | None = ..., overwrite_a: bool = ...,
    check_finite: bool = ...,
) -> RawQRResult: ...
@overload
def qr(
    a: ArrayLike, mode: str, *, dtype: DTypeLike | None = ..., overwrite_a: bool = ...,
    check_finite: bool = ...,
) -> QRResult | _Array | RawQRResult: ...
def lstsq(
    a: ArrayLike, b: ArrayLike, rcond: float | None = ..., *,
    lapack_driver: Literal["gelsd", "gels"] = ..., dtype: DTypeLike | None = ...,
    overwrite_a: bool = ..., overwrite_b: bool = ..., check_finite: bool = ...,
) -> LstsqResult: ...
def lse(
    a: ArrayLike, b: ArrayLike, c: ArrayLike, d: ArrayLike, *, dtype: DTypeLike | None = ...,
    check_finite: bool = ...,
) -> LseResult: ...
@overload
def svd(
    a: ArrayLike, full_matrices: bool = ..., compute_uv: Literal[True] = ...,
    overwrite_a: bool = ..., check_finite: bool = ..., lapack_driver: str = ..., *,
    dtype: DTypeLike | None = ...,
) -> SVDResult: ...
@overload
def svd(
    a: ArrayLike, full_matrices: bool = ..., *, compute_uv: Literal[False],
    overwrite_a: bool = ..., check_finite: bool = ..., lapack_driver: str = ...,
    dtype: DTypeLike | None = ...,
) -> _Reals: ...
@overload
def svd(
    a: ArrayLike, full_matrices: bool, compute_uv: Literal[False], overwrite_a: bool = ...,
    check_finite: bool = ..., lapack_driver: str = ..., *, dtype: DTypeLike | None = ...,
) -> _Reals: ...
@overload
def svd(
    a: ArrayLike, full_matrices: bool = ..., compute_uv: bool = ..., overwrite_a: bool = ...,
    check_finite: bool = ..., lapack_driver: str = ..., *, dtype: DTypeLike | None = ...,
) -> SVDResult | _Reals: ...
def matrix_rank(
    A: ArrayLike, tol: ArrayLike | None = ..., hermitian: bool = ..., *,
    rtol: ArrayLike | None = ..., check_finite: bool = ..., dtype: DTypeLike | None = ...,
) -> Any: ...  # a number, of a stack an array
def pinv(
    a: ArrayLike, rcond: ArrayLike | None = ..., hermitian: bool = ..., *,
    rtol: ArrayLike | None = ..., check_finite: bool = ..., dtype: DTypeLike | None = ...,
) -> _Array: ...
@overload
def eigh(
    a: ArrayLike, b: ArrayLike | None = ..., *, lower: bool = ...,
    eigvals_only: Literal[False] = ..., overwrite_a: bool = ..., overwrite_b: bool = ...,
    type: int = ..., check_finite: bool = ..., dtype: DTypeLike | None = ...,
) -> EighResult: ...
@overload
def eigh(
    a: ArrayLike, b: ArrayLike | None = ..., *, lower: bool = ..., eigvals_only: Literal[True],
    overwrite_a: bool = ..., overwrite_b: bool = ..., type: int = ..., check_finite: bool = ...,
    dtype: DTypeLike | None = ...,
) -> _Reals: ...
@overload
def eigh(
    a: ArrayLike, b: ArrayLike | None = ..., *, lower: bool = ..., eigvals_only: bool,
    overwrite_a: bool = ..., overwrite_b: bool = ..., type: int = ..., check_finite: bool = ...,
    dtype: DTypeLike | None = ...,
) -> EighResult | _Reals: ...
def eigvalsh(
    a: ArrayLike, b: ArrayLike | None = ..., *, lower: bool = ..., overwrite_a: bool = ...,
    overwrite_b: bool = ..., type: int = ..., check_finite: bool = ...,
    dtype: DTypeLike | None = ...,
) -> _Reals: ...
def gemm(
    alpha: _Scalar, a: ArrayLike, b: ArrayLike, beta: _Scalar = ..., c: ArrayLike | None = ...,
    trans_a: _Trans = ..., trans_b: _Trans = ..., overwrite_c: bool = ...,
) -> _Array: ...
def gemv(
    alpha: _Scalar, a: ArrayLike, x: ArrayLike, beta: _Scalar = ..., y: ArrayLike | None = ...,
    trans: _Trans = ..., overwrite_y: bool = ...,
) -> _Array: ...
def symm(
    alpha: _Scalar, a: ArrayLike, b: ArrayLike, beta: _Scalar = ..., c: ArrayLike | None = ...,
    side: _Flag = ..., lower: _Flag = ..., overwrite_c: bool = ...,
) -> _Array: ...
def hemm(
    alpha: _Scalar, a: ArrayLike, b: ArrayLike, beta: _Scalar = ..., c: ArrayLike | None = ...,
    side: _Flag = ..., lower: _Flag = ..., overwrite_c: bool = ...,
) -> _Array: ...
def syrk(
    alpha: _Scalar, a: ArrayLike, beta: _Scalar = ..., c: ArrayLike | None = ...,
    trans: _Flag = ..., lower: _Flag = ..., overwrite_c: bool = ...,
) -> _Array: ...
def herk(
    alpha: float, a: ArrayLike, beta: float = ..., c: ArrayLike | None = ...,
    trans: _Flag = ..., lower: _Flag = ..., overwrite_c: bool = ...,
) -> _Array: ...
def syr2k(
    alpha: _Scalar, a: ArrayLike, b: ArrayLike, beta: _Scalar = ..., c: ArrayLike | None = ...,
    trans: _Flag = ..., lower: _Flag = ..., overwrite_c: bool = ...,
) -> _Array: ...
def her2k(
    alpha: _Scalar, a: ArrayLike, b: ArrayLike, beta: float = ..., c: ArrayLike | None = ...,
    trans: _Flag = ..., lower: _Flag = ..., overwrite_c: bool = ...,
) -> _Array: ...
def trmm(
    alpha: _Scalar, a: ArrayLike, b: ArrayLike, side: _Flag = ..., lower: _Flag = ...,
    trans_a: _Trans = ..., diag: _Flag = ..., overwrite_b: bool = ...,
) -> _Array: ...
def trsm(
    alpha: _Scalar, a: ArrayLike, b: ArrayLike, side: _Flag = ..., lower: _Flag = ...,
    trans_a: _Trans = ..., diag: _Flag = ..., overwrite_b: bool = ...,
) -> _Array: ...
