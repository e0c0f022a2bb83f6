#!/bin/sh
# Makes sure that what the build needs is installed: Debian packages, by apt-get as root or with
# sudo. Without either it prints the one command to type and fails. Arguments are further packages.
set -eu

packages="build-essential cmake ninja-build pkg-config libopenblas-dev libboost-dev libcli11-dev
          libpng-dev zlib1g-dev gnuplot-nox libgtest-dev libbenchmark-dev
          clang-format-14 clang-tidy-14
          python3-dev python3-numpy python3-pytest pybind11-dev
          liblapack-test libblas-test liblapack3 libblas3 $*"

missing=""
for package in $packages; do
    status=$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$status" = installed ] || missing="$missing $package"
done
[ -n "$missing" ] || exit 0

install="apt-get install -y --no-install-recommends$missing"
if [ "$(id -u)" = 0 ]; then
    as_root=""
elif command -v sudo >/dev/null && sudo -n true 2>/dev/null; then
    as_root="sudo"
else
    echo "Some packages are missing. Please type:" >&2
    echo "    sudo sh -c 'apt-get update && $install'" >&2
    exit 1
fi

echo "Installing:$missing"
export DEBIAN_FRONTEND=noninteractive
$as_root apt-get update -qq
$as_root $install -qq >/dev/null
