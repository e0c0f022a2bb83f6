#!/bin/sh
# clang-tidy over everything that is compiled here as C++, kernels and tests included (some parts
# need CUDA or MPI); fails on any finding. What nvcc compiles is left out: a kernel's other half.
set -eu
cd "$(dirname "$0")/.."
commands=$(mktemp -d)
trap 'rm -rf "$commands"' EXIT
git ls-files '*.cpp' '*.cu' | python3 -c '
import json, os, sys
tracked = {os.path.abspath(line.strip()) for line in sys.stdin}
database = [c for c in json.load(open("build/default/compile_commands.json"))
            if c["file"] in tracked and not any("nvcc" in word for word in c["command"].split()[:2])]
files = sorted({c["file"] for c in database})
if not files:
    sys.exit("build/default/compile_commands.json names no file of " + os.getcwd())
json.dump(database, open(sys.argv[1] + "/compile_commands.json", "w"))
print(*files, sep="\n")' "$commands" >"$commands/files"
xargs -P 2 -n 4 clang-tidy-14 -p "$commands" --quiet --warnings-as-errors='*' <"$commands/files"
