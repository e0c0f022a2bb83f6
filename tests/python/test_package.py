"""What holds for every function: threads, the interpreter's lock, the package itself."""

import ast
import inspect
import pathlib
import re
import shutil
import subprocess
import sys
import time
from concurrent.futures import ThreadPoolExecutor

import numpy as np
import pytest
from conftest import random

import lumo


def test_threads_get_their_own_results():
    """Each is registered by its first call and leaves; errors are not mixed up."""

    def work(seed):
        for i in range(30):
            n = 20 + seed
            a, b = random((n, n), np.float32, seed), random(n, np.float32, i)
            x = lumo.solve(a, b)
            assert np.abs(a @ x - b).max() <= 1e-2 * max(1, np.abs(x).max())
            a = np.asfortranarray(np.eye(n, dtype=np.float32))
            a[seed, seed] = 0
            with pytest.raises(lumo.LinAlgError, match=f"pivot {seed + 1} is"):
                lumo.solve(a, b)
            # Without Python in between, and so beside those of other threads.
            piv = np.empty(n, np.int32)
            assert {lumo._core.getrf(a, piv) for _ in range(100)} == {seed + 1}

    for _ in range(3):
        with ThreadPoolExecutor(8) as pool:
            list(pool.map(work, range(8)))


def test_other_threads_run_during_a_call():
    a, ticks = random((1600, 1600), np.float64), []
    with ThreadPoolExecutor(1) as pool:
        call = pool.submit(lambda: (time.perf_counter(), lumo.gemm(1, a, a), time.perf_counter()))
        while not call.done():
            ticks.append(time.perf_counter())
            time.sleep(0.001)
    start, _, end = call.result()
    margin = 0.25 * (end - start)
    assert any(start + margin < tick < end - margin for tick in ticks)


def test_info():
    info = lumo.info()
    assert pathlib.Path(info["library"]).exists()
    assert lumo.devices()[info["device"]] == info["device_name"]
    assert re.fullmatch(r"\d+\.\d+\.\d+", info["version"])


def python(code, **env):
    env |= {"PYTHONPATH": str(pathlib.Path(lumo.__file__).parent.parent), "PATH": ""}
    return subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, env=env)


def test_failures_of_the_platform():
    """In a process of its own: the choice of a platform and of a device is final."""
    solve = "import lumo, numpy; lumo.solve(numpy.eye(2, dtype='f'), numpy.ones(2, 'f'))"
    outcome = python(solve, LUMO_PLATFORM="cloud")
    assert "RuntimeError: CUDA runtime or driver is not supported" in outcome.stderr
    outcome = python("import lumo; lumo.select_device(7)", LUMO_PLATFORM="software")
    assert "ValueError: Argument 1 is invalid" in outcome.stderr
    selected = python(f"import lumo; lumo.select_device(0); {solve}", LUMO_PLATFORM="software")
    assert selected.returncode == 0 and not selected.stderr


def test_a_missing_library(tmp_path):
    """The package without what it was linked to says so, and what to do."""
    shutil.copytree(pathlib.Path(lumo.__file__).parent, tmp_path / "lumo")
    module = next((tmp_path / "lumo").glob("_core*"))
    module.write_bytes(module.read_bytes().replace(b"liblumo.so.0", b"liblost.so.0"))
    outcome = python(f"import sys; sys.path.insert(0, {str(tmp_path)!r}); import lumo")
    assert "lumo's compiled module does not load: liblost.so.0" in outcome.stderr


def test_stubs_list_the_package():
    """The stub file has each name with the arguments that the function has, in every overload."""
    stub, functions = pathlib.Path(lumo.__file__).resolve().with_suffix(".pyi"), {}
    for node in ast.parse(stub.read_text()).body:
        if isinstance(node, ast.FunctionDef):
            a = node.args
            arguments = [arg.arg for arg in a.posonlyargs + a.args + a.kwonlyargs]
            assert functions.setdefault(node.name, arguments) == arguments
    public = {name: getattr(lumo, name) for name in lumo.__all__}
    assert functions == {name: list(inspect.signature(f).parameters)
                         for name, f in public.items() if inspect.isfunction(f)}  # fmt: skip
