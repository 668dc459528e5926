#!/usr/bin/env bash
# Builds the library alone (no tool, tests or benchmarks; only a compiler is needed), installs it
# and builds the example consumer against it, by CMake package and by pkg-config, for the static
# and the shared library: check_package.sh ROOT WORK-FOLDER
set -euo pipefail
root=$1
work=$2
word='=?ISO-2022-JP?B?GyRCJDMkcyRLJEEkTxsoQg==?='
expected='こんにちは'

check() { # NAME PROGRAM
  local shown
  shown=$("$2" "$word")
  [ "$shown" = "$expected" ] || { echo "$1: shows '$shown'"; exit 1; }
  echo "$1: builds and runs"
}

rm -rf "$work"
for shared in OFF ON; do
  here=$work/shared-$shared
  cmake -S "$root" -B "$here/build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DBUILD_SHARED_LIBS=$shared -DCMAKE_INSTALL_LIBDIR=lib \
    -DLUMRMISC_BUILD_TOOL=OFF -DLUMRMISC_BUILD_TESTS=OFF -DLUMRMISC_BUILD_BENCH=OFF \
    -DLUMRMISC_WERROR=ON ${CMAKE_CXX_COMPILER_LAUNCHER:+-DCMAKE_CXX_COMPILER_LAUNCHER="$CMAKE_CXX_COMPILER_LAUNCHER"}
  cmake --build "$here/build"
  cmake --install "$here/build" --prefix "$here/prefix"  # as the README does

  cmake -S "$root/examples/consumer" -B "$here/consumer" -G Ninja -DCMAKE_PREFIX_PATH="$here/prefix"
  cmake --build "$here/consumer"
  check "find_package, shared $shared" "$here/consumer/subject"

  export PKG_CONFIG_PATH=$here/prefix/lib/pkgconfig
  # shellcheck disable=SC2046 # a list of flags
  ${CXX:-c++} -std=c++20 "$root/examples/consumer/subject.cpp" -o "$here/subject" \
    $(pkg-config --cflags --libs lumrmisc)
  export LD_LIBRARY_PATH=$here/prefix/lib
  check "pkg-config, shared $shared" "$here/subject"
  unset LD_LIBRARY_PATH
done
