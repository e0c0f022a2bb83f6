# The commands a newcomer types. Everything else is CMake: see CMakePresets.json.
#
#   make demo      solves a real system, checked against a published result
#   make demo-fit  fits 44 years of carbon dioxide measurements, and draws the fit
#   make demo-svd  compresses a photograph by its singular values
#   make check     builds everything and runs every test
#   make emulate   runs the tests on an emulated GPU in every way (with a CUDA toolkit)
#
# All install what is missing first (Debian packages; without root they say what to type).

.PHONY: help setup configure build demo demo-fit demo-svd demo-distributed check emulate acceptance sanitize thread-check fuzz bench bench-unset bench-load install bundle packages test-packages docs pictures format format-check tidy clean

help:
	@sed -n 's/^#   //p' Makefile

setup:
	@tools/setup.sh

configure: setup
	@mkdir -p build
	@cmake --preset default >build/configure.log 2>&1 || { cat build/configure.log; exit 1; }

build: configure
	cmake --build --preset default

demo: configure
	cmake --build --preset default --target example_plate example_cylinder
	build/default/examples/plate
	build/default/examples/cylinder

demo-fit: configure
	cmake --build --preset default --target example_co2
	cd build/default/examples && ./co2

# ScaLAPACK's solvers on 1, 2 and 4 ranks of this machine, their local work done by Lumo.
demo-distributed: setup
	@tools/setup.sh libscalapack-openmpi-dev libopenmpi-dev openmpi-bin
	cmake --preset default >/dev/null
	cmake --build --preset default --target demo-distributed

demo-svd: configure
	cmake --build --preset default --target lumo-command
	build/default/tools/lumo/lumo svd examples/data/chelsea.png -k 5,20,50,100 --compare \
	    -o build/default/examples/chelsea

check: build
	ctest --preset default --parallel 2

# The emulated GPU (docs/gpu.md) in every schedule and order, with seeded faults, and the kernels'
# machine code. Without a CUDA toolkit it says that it is left out.
emulate: build
	@cmake --build --preset default --target emulate

# LAPACK's own test programs, and those of NumPy and SciPy, served by Lumo (docs/drop-in.md).
acceptance: build
	@tools/setup.sh python3-numpy python3-scipy python3-pytest python3-hypothesis python3-venv octave r-base-core
	cmake --build --preset default --target acceptance

# The same tests under the address and undefined-behaviour sanitizers.
sanitize: setup
	cmake --preset sanitize
	cmake --build --preset sanitize
	ctest --preset sanitize --parallel 2

# The tests that use threads, under the thread sanitizer.
thread-check: setup
	cmake --preset thread
	cmake --build --preset thread --target test_threads
	ctest --preset thread

# Random files for the readers, and random calls of every function, FUZZ_SECONDS for each kind. What
# is found is left in build/fuzz; mend it, and keep it under tests/fuzz/corpus.
FUZZ_SECONDS ?= 60
fuzz: setup
	@tools/setup.sh clang-14 libclang-rt-14-dev
	cmake --preset fuzz >/dev/null
	cmake --build --preset fuzz
	set -e; cd build/fuzz; for kind in matrix_market npy png pnm crossover calls; do \
	    case $$kind in calls) fuzzer=calls ;; *) fuzzer=files ;; esac; mkdir -p corpus/$$kind; \
	    OPENBLAS_NUM_THREADS=1 tests/fuzz/fuzz_$$fuzzer -max_total_time=$(FUZZ_SECONDS) \
	        -timeout=10 -max_len=4096 -len_control=0 -artifact_prefix=$$kind- -verbosity=0 \
	        -print_funcs=0 -print_final_stats=1 corpus/$$kind \
	        ../../tests/fuzz/corpus/$$kind; \
	done

# Lumo against the CPU LAPACK and BLAS: one thread each; with nothing set; beside two busy loops.
one_thread = OPENBLAS_NUM_THREADS=1 LUMO_SOFTWARE_THREADS=1
benchmarks = lapack least_squares svd eigen blas
bench: build
	for b in $(benchmarks) kernels; do $(one_thread) build/default/bench/bench_$$b; done
bench-unset: build
	for b in $(benchmarks); do build/default/bench/bench_$$b; done
bench-load: build
	for b in $(benchmarks); do build/default/bench/bench_$$b --load=2; done

install: build
	cmake --install build/default

# build/default/lumo-bundle.tar.gz, for a machine with a GPU: unpack it and ./run-checks.
bundle: build
	cd build/default && cpack -G TGZ >/dev/null && ls -l lumo-bundle.tar.gz

# build/package/debian/*.deb: the library, what builds with it need, the drop-in, the command.
packages: setup
	@mkdir -p build
	@cmake --preset package >build/package.log 2>&1 || { cat build/package.log; exit 1; }
	cmake --build --preset package

# The packages in a clean Debian root. As root; a minute when the root is made, then 15 seconds.
test-packages: packages
	@tools/setup.sh debootstrap
	tools/test-packages || [ $$? = 77 ]

# The reference as a page for browsers.
docs: configure
	cmake --build --preset default --target manual
	@echo build/default/lumo.html

# docs/pictures, the README's, by the commands that it shows. Measures speed: a quiet machine helps.
pictures: configure
	cmake --build --preset default --target example_co2 lumo-command
	mkdir -p build/default/pictures
	cd build/default/pictures && ../examples/co2 && \
	    ../tools/lumo/lumo svd ../../../examples/data/chelsea.png -k 5,20,50 -o chelsea && \
	    gnuplot -e 'photograph = "../../../examples/data/chelsea.png"' ../../../docs/pictures/ranks.gp
	cp build/default/pictures/co2_fit.png build/default/pictures/ranks.jpeg docs/pictures
	OPENBLAS_NUM_THREADS=1 LUMO_SOFTWARE_THREADS=1 build/default/tools/lumo/lumo bench \
	    sgemm sgesv sgesvd --plot docs/pictures/speed.svg

format:
	git ls-files '*.c' '*.cpp' '*.cu' '*.h' | xargs clang-format-14 -i

format-check:
	git ls-files '*.c' '*.cpp' '*.cu' '*.h' | xargs clang-format-14 --dry-run --Werror

tidy: build
	tools/tidy.sh

clean:
	rm -rf build
