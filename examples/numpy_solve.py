"""Solves a system by NumPy and SciPy in single precision, unchanged programs as far as Lumo goes:

    LD_PRELOAD=liblumo-lapack.so LUMO_REPORT=1 python3 examples/numpy_solve.py [n]

On a machine without a GPU, LUMO_CROSSOVER=0 has Lumo's software device serve it.
"""
import sys

import numpy as np
from scipy import linalg


def main():
    n = int(sys.argv[1]) if len(sys.argv) > 1 else 1000
    random = np.random.default_rng(1)
    a = random.standard_normal((n, n), dtype=np.float32)
    b = random.standard_normal((n, 3), dtype=np.float32)

    # numpy.linalg.solve works in double precision whatever it is given; SciPy's keeps float32.
    x = linalg.solve(a, b)
    rest = np.dot(a, x) - b

    scale = n * linalg.norm(a, 1) * linalg.norm(x, 1) * np.finfo(np.float32).eps
    residual = linalg.norm(rest, 1) / scale
    print(f"n = {n}, {x.dtype}: |A x - b| / (n |A| |x| eps) = {residual:.3g}")
    return int(not residual < 30)


if __name__ == "__main__":
    sys.exit(main())
