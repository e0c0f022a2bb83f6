"""Lumo: dense linear algebra on NVIDIA GPUs, and whole without one.

Functions take NumPy arrays (or what converts to them) and follow numpy.linalg, scipy.linalg and
scipy.linalg.blas in names, arguments and results. Arrays in Fortran order are used where they lie;
options named overwrite_... save the copies of operands. Calls release the interpreter's lock, and
any thread may make them.

Products work in single and double precision, everything else in single: float64 is refused there
unless `dtype=numpy.float32` (or complex64) asks for conversion.
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
from ._core import __version__
from ._linalg import (
    LinAlgWarning,
    LseResult,
    LstsqResult,
    QRResult,
    RawQRResult,
    SVDResult,
    lse,
    lstsq,
    lu_factor,
    lu_solve,
    qr,
    solve,
    svd,
)

__all__ = [
    "LinAlgError", "LinAlgWarning", "LseResult", "LstsqResult", "QRResult", "RawQRResult",
    "SVDResult", "devices", "gemm", "gemv", "hemm", "her2k", "herk", "info", "lse", "lstsq",
    "lu_factor", "lu_solve", "qr", "select_device", "solve", "svd", "symm", "syr2k", "syrk", "trmm",
    "trsm",
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
