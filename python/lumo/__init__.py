"""Lumo: dense linear algebra on NVIDIA GPUs, and whole without one.

Functions take NumPy arrays (or what converts to them) and follow numpy.linalg, scipy.linalg and
scipy.linalg.blas in names, arguments and results. Arrays in Fortran order are used where they lie;
options named overwrite_... save the copies of operands. Calls release the interpreter's lock, and
any thread may make them.

They compute in the type of their operands, float32, float64, complex64 or complex128; lists and
integers are float64. `dtype` asks for another of the four.
"""

try:
    from . import _core
except ImportError as error:
    raise ImportError(
        f"lumo's compiled module does not load: {error}. It needs liblumo.so.0, which a wheel has "
        "beside it, and the CPU LAPACK (Debian: libopenblas0); `pip install .` in a clone of Lumo "
        "builds it for this Python"
    ) from error

from numpy.linalg import LinAlgError

from ._blas import gemm, gemv, hemm, her2k, herk, symm, syr2k, syrk, trmm, trsm
from ._checks import LinAlgWarning
from ._cholesky import cho_factor, cho_solve, cholesky
from ._core import __version__
from ._eigen import EighResult, eigh, eigvalsh
from ._least_squares import LseResult, LstsqResult, lse, lstsq
from ._orthogonal import QRResult, RawQRResult, qr
from ._singular import SVDResult, matrix_rank, pinv, svd
from ._systems import SlogdetResult, det, inv, lu_factor, lu_solve, slogdet, solve

__all__ = [
    "EighResult", "LinAlgError", "LinAlgWarning", "LseResult", "LstsqResult", "QRResult", "RawQRResult",
    "SVDResult", "SlogdetResult", "cho_factor", "cho_solve", "cholesky", "det", "devices", "eigh", "eigvalsh", "gemm",
    "gemv", "hemm", "her2k", "herk", "info", "inv", "lse", "lstsq", "lu_factor", "lu_solve", "matrix_rank", "pinv",
    "qr", "select_device", "slogdet", "solve", "svd", "symm", "syr2k", "syrk", "trmm", "trsm",
]  # fmt: skip


def devices():
    """The devices that Lumo can use, as "GeForce (4 GB)". Without a GPU: the software device."""
    return _core.devices()


def select_device(device):
    """Chooses the device to run on, a place in devices(), before the first computation."""
    _core.select_device(device)


def info():
    """What runs: the package's version, the library's file, the device in use."""
    device = _core.executing_device()
    return {
        "version": __version__,
        "library": _core.loaded_from,
        "device": device,
        "device_name": _core.devices()[device],
    }
