"""A road's profile from noisy heights: a polynomial of least squares, free and through two points
that were surveyed exactly."""

import sys

import numpy as np

import lumo

rng = np.random.default_rng(7)
truth = np.array([2.0, 1.0, -3.0, 2.5])  # 2 + x - 3 x^2 + 2.5 x^3
x = np.linspace(0, 1, 500)
noise = 0.2 * rng.standard_normal(x.size)
heights = np.vander(x, 4, increasing=True) @ truth + noise
ends = np.array([0.0, 1.0])

# In single precision, which is plenty beside the noise.
powers = np.vander(x, 4, increasing=True)
free = lumo.lstsq(powers, heights, dtype=np.float32)

at_ends = np.vander(ends, 4, increasing=True)
tied = lumo.lse(powers, at_ends, heights, at_ends @ truth, dtype=np.float32)

print(lumo.info()["device_name"])
for name, result in ("free", free.x), ("tied", tied.x):
    print(f"{name}: misses the ends by", *(f"{e:9.2e}" for e in at_ends @ (result - truth)))

expected = np.linalg.lstsq(powers, heights, rcond=None)[0]
if np.abs(powers @ (free.x - expected)).max() > 1e-5:
    sys.exit("the free polynomial is not NumPy's")
if np.abs(at_ends @ (tied.x - truth)).max() > 1e-5:
    sys.exit("the tied polynomial misses the ends")
