#!/usr/bin/env bash
# Installs the build in BUILD_DIR into a fresh prefix and builds and runs a
# consumer program against it: once through find_package(qnl_rt), once through
# pkg-config, and once reaching the library through a link named as its
# soname in another folder, where the loader must still find the back-ends
# beside the real file.
set -euo pipefail
build=$(realpath "${1:-build}")
here=$(cd "$(dirname "$0")" && pwd)
work=$build/consumer
rm -rf "$work"
prefix=$work/prefix
cmake --install "$build" --prefix "$prefix" >/dev/null
lib=$(find "$prefix" -name 'libqnl_rt.so.0' -printf '%h\n')

# Every run must succeed and print nothing but the consumer's own line.
check() {
  local out
  echo "== $1"
  out=$("${@:2}" 2>&1)
  echo "$out"
  [[ $out == consumer:* && $(wc -l <<<"$out") -eq 1 ]] || { echo "unexpected output" >&2; exit 1; }
}

cmake -S "$here" -B "$work/cmake" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$work/cmake" >/dev/null
check find_package "$work/cmake/consumer"

export PKG_CONFIG_PATH=$lib/pkgconfig
# shellcheck disable=SC2046
cc -o "$work/consumer_pc" "$here/consumer.c" $(pkg-config --cflags --libs qnl_rt) \
  -Wl,-rpath,"$(pkg-config --variable=libdir qnl_rt)"
check pkg-config "$work/consumer_pc"

mkdir -p "$work/links"
ln -s "$lib/libqnl_rt.so.0" "$work/links/libqnl_rt.so.0"
check "through a link named libqnl_rt.so.0 in another folder" env LD_LIBRARY_PATH="$work/links" "$work/consumer_pc"
