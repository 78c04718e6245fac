#!/usr/bin/env bash
# Installs what the build, the tests and the examples need on Debian 12.
set -euo pipefail
need=(cmake ninja-build g++ gfortran python3 libgtest-dev libbenchmark-dev valgrind
  libopenblas64-0-serial libopenblas64-0-pthread libopenblas64-0-openmp libtmglib64-3
  libopenblas0-serial libblas-test liblapack-test python3-numpy python3-pytest python3-hypothesis
  python3-scipy libtmglib3 pkg-config ccache liblapacke liblapacke64 liblapacke-dev liblapacke64-dev
  libfftw3-double3 libfftw3-single3 libfftw3-bin libfftw3-dev python3-pyfftw
  libsleef-dev libmpfr-dev libmpc-dev librandom123-dev libboost-dev)
missing=()
for p in "${need[@]}"; do dpkg -s "$p" >/dev/null 2>&1 || missing+=("$p"); done
if ((${#missing[@]})); then
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq "${missing[@]}"
fi
