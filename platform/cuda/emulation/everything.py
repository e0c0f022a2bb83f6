#!/usr/bin/env python3
"""All that the emulated GPU can show: everything.py SOURCE BUILD NVCC [part...]

schedules     the numerical tests under every schedule and lane order, and with rounding noise
faults        faults seeded in kernels and in the runtime: the tests must find each of them
machine-code  what the assembler makes of the kernels, for each architecture: no local memory,
              bounded registers and shared memory
acceptance    LAPACK's and BLAS's test programs served by the emulated GPU through the drop-in

Without a part: all. `make emulate` builds what is needed first.
"""

import os
import re
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass
from pathlib import Path

SOURCE, BUILD, NVCC = Path(sys.argv[1]), Path(sys.argv[2]), Path(sys.argv[3])
HERE, WORK = SOURCE / "platform/cuda/emulation", BUILD / "platform/cuda/emulation"
PROGRAMS = ["test_kernels", "test_lapack", "test_blas"]
COMPILE = "g++ -std=c++17 -w -O1 -march=native -ffp-contract=off -fno-strict-aliasing -fPIC".split()
FOUND = 86  # the exit status of a process in which the emulated GPU found a fault
FAILED = 1  # of a test program with failed tests

# What the lanes of a block share, and how many lanes a block has of a kernel that no test launches.
REGISTERS, SHARED, LANES = 65536, 49152, 512


@dataclass
class Run:
    name: str
    status: int
    output: str

    def summary(self) -> str:
        tests = re.findall(r"\[ *(PASSED|FAILED|SKIPPED) *\] (\d+) test", self.output)
        first = re.search(r"^emulated GPU: .*$", self.output, re.M)
        words = [f"{n} {what.lower()}" for what, n in tests]
        return ", ".join(words) + (f"; {first.group(0)[:150]}" if first else "")


def run(name: str, command: list[str], timeout: int = 3600, **variables: str) -> Run:
    environment = dict(
        os.environ,
        LUMO_PLATFORM="cuda",
        LUMO_CUDA_PLUGIN=str(WORK / "liblumo-cuda.so"),
        LD_LIBRARY_PATH=str(WORK),
        OPENBLAS_NUM_THREADS="1",
        **variables,
    )
    done = subprocess.run(
        command, env=environment, capture_output=True, text=True, errors="replace", timeout=timeout
    )
    return Run(name, done.returncode, done.stdout + done.stderr)


def test(program: str, *arguments: str) -> list[str]:
    return [str(BUILD / "tests" / program), "--gtest_brief=1", *arguments]


def schedules() -> bool:
    jobs = []
    for schedule in ("late", "early", "random"):
        for order in ("forward", "reverse", "random"):
            setting = {"SCHEDULE": schedule, "ORDER": order, "OVERFLOW": "1"}
            jobs += [(f"{p} {schedule} {order}", p, setting) for p in PROGRAMS]
            jobs.append((f"itself {schedule} {order}", None, setting | {"OVERFLOW": "0"}))
    jobs += [(f"{p} with rounding noise", p, {"NOISE": "1", "RACES": "0"}) for p in PROGRAMS]

    def job(one: tuple) -> bool:
        name, program, setting = one
        command = test(program) if program else [str(WORK / "test_emulated_gpu")]
        done = run(name, command, **{f"EMULATED_GPU_{k}": v for k, v in setting.items()})
        print(f"{name:40} exit {done.status:3}  {done.summary() if program else ''}", flush=True)
        return done.status == 0

    with ThreadPoolExecutor(os.cpu_count()) as pool:
        return all(list(pool.map(job, jobs)))


# Faults in translated kernels: what the PTX is changed from and to, the first time or everywhere.
KERNEL_FAULTS = [
    ("a barrier is missing, Transpose", "Transpose", r"\tbar\.sync \t0;", "", 0),
    ("a barrier is missing, gemv", "gemv", r"\tbar\.sync \t0;", "", 1),
    ("a barrier is missing, PermuteRows", "PermuteRows", r"\tbar\.sync \t0;", "", 0),
    ("a barrier is missing, larfg", "larfg", r"\tbar\.sync \t0;", "", 0),
    ("a barrier is missing, LuPanel", "LuPanel", r"\tbar\.sync \t0;", "", 1),
    ("a barrier is missing, QrPanel", "QrPanel", r"\tbar\.sync \t0;", "", 1),
    ("blocks meet without a fence", "LuPanel", r"\tmembar\.gl;", "", 0),
    ("one element too many, Copy", "Copy", r"setp\.ge\.u64", "setp.gt.u64", 0),
    ("one row too many, LASET", "LASET", r"setp\.ge\.s32", "setp.gt.s32", 0),
    ("shared memory out of bounds", "Transpose",
     r"(st\.shared\.f32\s+\[%rd?\d+)\]", r"\1+4096]", 0),
    ("lanes part ways at a barrier", "larfg", r"\tbar\.sync \t0;", "\t@%p1 bar.sync \t0;", 0),
    ("a write goes elsewhere in its vector", "Scale",
     r"(st\.global\.f32\s+\[%rd\d+)\]", r"\1+4]", 0),
    ("operands in the wrong order", "Subtract",
     r"sub\.f32 \t(%f\d+), (%f\d+), (%f\d+)", r"sub.f32 \1, \3, \2", 0),
]  # fmt: skip

# Faults of the runtime: one call fails, or waiting for a stream does nothing.
RUNTIME_FAULTS = [
    ("waiting for a stream does nothing", "test_lapack", {"DROP": "synchronise"}),
    ("a kernel fails", "test_lapack", {"FAIL": "kernel:100"}),
    ("CUBLAS fails", "test_lapack", {"FAIL": "cublas:100"}),
    ("an allocation fails", "test_blas", {"FAIL": "malloc:3"}),
    ("an allocation of page-locked memory fails", "test_lapack", {"FAIL": "host:1"}),
    ("the device is small", "test_lapack", {"MEMORY": "33"}),
]


def mutant(unit: str, pattern: str, replacement: str, count: int) -> Path | None:
    """A library with the unit's kernels, changed, which come before the plugin's; None where the
    change does not apply."""
    text = (WORK / "kernels" / f"{unit}.ptx").read_text()
    changed = re.sub(pattern, replacement, text, count=count)
    if changed == text:
        return None
    base = WORK / "faults" / f"{unit}-{abs(hash((pattern, replacement)))}"
    base.parent.mkdir(exist_ok=True)
    ptx, cpp, library = (base.with_suffix(s) for s in (".ptx", ".cpp", ".so"))
    ptx.write_text(changed)
    subprocess.run([sys.executable, HERE / "translate.py", cpp, ptx], check=True)
    command = [*COMPILE, f"-I{SOURCE}", "-shared", "-o", library, cpp, f"-L{WORK}", "-lcuda"]
    subprocess.run(command, check=True)
    return library


def faults() -> bool:
    def judged(name: str, done: Run | None) -> bool:
        found = done is not None and done.status in (FAILED, FOUND)
        how = done.summary() if done else "the fault could not be seeded"
        print(f"{'found' if found else 'NOT FOUND':10} {name:45} {how}", flush=True)
        return found

    def kernel(one: tuple) -> bool:
        name, *change = one
        library = mutant(*change)
        done = run(name, test("test_kernels"), LD_PRELOAD=str(library)) if library else None
        return judged(name, done)

    def runtime(one: tuple) -> bool:
        name, program, setting = one
        variables = {f"EMULATED_GPU_{k}": v for k, v in setting.items()}
        return judged(name, run(name, test(program), **variables))

    with ThreadPoolExecutor(os.cpu_count()) as pool:
        results = list(pool.map(kernel, KERNEL_FAULTS)) + list(pool.map(runtime, RUNTIME_FAULTS))
    return all(results)


def oldest_ptx(units: list[Path], capability: int) -> dict[str, Path]:
    """The units' PTX for an old capability, from which later architectures are assembled too."""
    folder = WORK / f"ptx-{capability}"
    folder.mkdir(exist_ok=True)
    flags = ["-std=c++17", "-O3", "-DNDEBUG", f"-arch=compute_{capability}", "-ptx"]
    flags += ["-Wno-deprecated-gpu-targets", f"-I{SOURCE}", f"-I{SOURCE}/src"]
    made = {}
    for unit in units:
        made[unit.stem] = folder / f"{unit.stem}.ptx"
        subprocess.run([NVCC, *flags, "-o", made[unit.stem], unit], check=True)
    return made


def largest_blocks() -> dict[str, int]:
    """How many lanes the tests' blocks have, by kernel."""
    counts = WORK / "counts"
    counts.unlink(missing_ok=True)
    for program in PROGRAMS:
        run(program, test(program), EMULATED_GPU_COUNTS=str(counts), EMULATED_GPU_RACES="0")
    largest: dict[str, int] = {}
    for lanes, name in re.findall(r"(\d+) lanes (\S+)", counts.read_text()):
        largest[name] = max(largest.get(name, 0), int(lanes))
    return largest


def machine_code() -> bool:
    lanes = largest_blocks()
    made = (WORK / "kernels").glob("*.ptx")
    newer = {p.stem: p for p in made if not p.stem.startswith("selftest")}
    some = next(iter(newer.values())).read_text()
    emulated = int(re.search(r"\.target sm_(\d+)", some).group(1))
    listed = subprocess.run([NVCC, "--list-gpu-code"], capture_output=True, text=True, check=True)
    architectures = sorted({int(a) for a in re.findall(r"sm_(\d+)", listed.stdout)})
    units = [u for u in (SOURCE / "src").rglob("*.cu") if u.stem in newer]
    older = oldest_ptx(units, architectures[0])

    def look(architecture: int) -> bool:
        complaints, kernels, registers, shared = [], 0, 0, 0
        for ptx in (newer if architecture >= emulated else older).values():
            done = subprocess.run(
                [NVCC.parent / "ptxas", "-v", f"-arch=sm_{architecture}", ptx, "-o", "/dev/null"],
                capture_output=True, text=True,
            )  # fmt: skip
            if done.returncode != 0:
                complaints.append(f"{ptx.stem}: {done.stderr.strip()[:200]}")
            for part in done.stderr.split("Compiling entry function ")[1:]:
                name = part.split("'")[1]
                numbers = re.search(r"(\d+) bytes stack frame, (\d+) .*?, (\d+) ", part)
                used = int(re.search(r"Used (\d+) registers", part).group(1))
                smem = re.search(r"(\d+) bytes smem", part)
                block = lanes.get(name, LANES)
                kernels, registers = kernels + 1, max(registers, used)
                shared = max(shared, int(smem.group(1)) if smem else 0)
                if not numbers or any(int(n) for n in numbers.groups()):
                    complaints.append(f"{name}: local memory")
                if (used + 7) // 8 * 8 * block > REGISTERS:
                    complaints.append(f"{name}: {used} registers for {block} lanes")
                if smem and int(smem.group(1)) > SHARED:
                    complaints.append(f"{name}: {smem.group(0)}")
        print(
            f"sm_{architecture}: {kernels} kernels, at most {registers} registers and {shared} "
            f"bytes of shared memory, {len(complaints)} complaints "
            f"({len(lanes)} kernels' blocks known)",
            *complaints, sep="\n    ", flush=True,
        )  # fmt: skip
        return kernels > 0 and not complaints

    with ThreadPoolExecutor(os.cpu_count()) as pool:
        return all(list(pool.map(look, architectures)))


def acceptance() -> bool:
    script = str(SOURCE / "tests/acceptance/run.sh")
    small = str(BUILD / "tests/acceptance/small-blocks")
    dropin, work = str(BUILD / "liblumo-lapack.so"), str(WORK / "acceptance")
    done = run("acceptance", ["sh", script, dropin, small, work, "short"], timeout=3600)
    print("\n".join(done.output.splitlines()[:2]), flush=True)
    if done.status not in (0, 77):
        print(done.output)
    return done.status in (0, 77)  # 77: the programs are not installed, as it says


PARTS = {
    "machine-code": machine_code,
    "faults": faults,
    "schedules": schedules,
    "acceptance": acceptance,
}


def main() -> None:
    failed = []
    for name in sys.argv[4:] or PARTS:
        print(f"== {name}", flush=True)
        if not PARTS[name]():
            failed.append(name)
    sys.exit("failed: " + ", ".join(failed) if failed else 0)


main()
