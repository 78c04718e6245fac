#!/usr/bin/env bash
# Installs what the build, the tests and the examples need on Debian 12.
set -euo pipefail
need=(cmake ninja-build g++ gfortran python3 libgtest-dev libbenchmark-dev valgrind
  libopenblas64-0-serial libopenblas64-0-pthread libopenblas64-0-openmp libtmglib64-3
  libopenblas0-serial libblas-test liblapack-test python3-numpy python3-pytest python3-hypothesis
  liblapacke liblapacke64)
missing=()
for p in "${need[@]}"; do dpkg -s "$p" >/dev/null 2>&1 || missing+=("$p"); done
if ((${#missing[@]})); then
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq "${missing[@]}"
fi
