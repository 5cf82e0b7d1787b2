#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the tools need, when
# any of them is missing.
set -euo pipefail

packages=(
  cmake ninja-build g++ clang-14 pkg-config
  libboost-dev libgtest-dev libgmock-dev libbenchmark-dev
  nlohmann-json3-dev libhwy-dev libuchardet-dev libfast-float-dev
  zlib1g-dev libbz2-dev liblzma-dev libzstd-dev
  pybind11-dev python3-dev python3-numpy python3-pandas python3-dask python3-distributed python3-pytest
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

sudo=""
[ "$(id -u)" -ne 0 ] && sudo="sudo"
echo "Installing: ${missing[*]}"
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq "${missing[@]}"
