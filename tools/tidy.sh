#!/bin/sh
# clang-tidy over the library, the command, the examples and the benchmarks, as far as they are
# built here (some need CUDA or MPI); fails on any finding. The kernel files (.cu) are left out:
# their registration uses compiler-specific assembly.
set -eu
cd "$(dirname "$0")/.."
built=$(mktemp)
trap 'rm -f "$built"' EXIT
sed -n "s|^ *\"file\": \"$PWD/\(.*\)\".*|\1|p" build/default/compile_commands.json >"$built"
[ -s "$built" ] || { echo "build/default/compile_commands.json names no file of $PWD" >&2; exit 1; }
git ls-files '*.cpp' ':!tests' | grep -Fxf "$built" |
    xargs -P 2 -n 8 clang-tidy-14 -p build/default --quiet --warnings-as-errors='*'
