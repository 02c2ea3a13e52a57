#!/usr/bin/env bash
# Lays our libmx/libeng and headers out as a MATLAB installation is laid out, configures a
# second build against it with TAMLO_MATLAB_ROOT, builds the extension and the end-to-end
# tests there, and runs them.
# Usage: matlab_tree_test.sh SOURCE_DIR BUILD_DIR WORK_DIR [COMPILER_LAUNCHER]
set -euo pipefail
source_dir=$1
build=$2
work=$3
launcher=${4:-}
jobs=$(nproc 2>/dev/null || echo 2)

# MATLAB's layout: headers in extern/include, libraries in bin/glnxa64. Our libeng starts
# the engine program found beside itself.
tree=$work/matlab
rm -rf "$tree"
mkdir -p "$tree/extern/include" "$tree/bin/glnxa64"
cp "$source_dir/platform/include/matrix.h" "$source_dir/platform/include/engine.h" "$tree/extern/include/"
cp "$build/lib/libmx.so" "$build/lib/libeng.so" "$build/bin/octave-engine" "$tree/bin/glnxa64/"

# The whole project configures (tests, bench); only what the check needs is built.
options=(-DCMAKE_BUILD_TYPE=Debug -DTAMLO_MATLAB_ROOT="$tree")
if [ -n "$launcher" ]; then options+=(-DCMAKE_CXX_COMPILER_LAUNCHER="$launcher"); fi
cmake -S "$source_dir" -B "$work/build" "${options[@]}" >/dev/null
# Nothing of platform/ may be built in this configuration.
if grep -q "octave-engine\|tamlo_wire" <(cmake --build "$work/build" --target help); then
  echo "matlab_tree_test: the build against a MATLAB tree still makes platform targets" >&2
  exit 1
fi
cmake --build "$work/build" -j "$jobs" --target tamlo_matlab_dispatch tamlo_e2e_tests

# The extension links the tree's libraries, and finds them without LD_LIBRARY_PATH.
extension=$work/build/lib/libtamlo_matlab_dispatch.so
resolved=$(env -u LD_LIBRARY_PATH ldd "$extension")
for lib in libmx.so libeng.so; do
  if ! grep -q "$lib => $tree/bin/glnxa64/$lib" <<<"$resolved"; then
    echo "matlab_tree_test: $lib does not resolve into $tree/bin/glnxa64:" >&2
    echo "$resolved" >&2
    exit 1
  fi
done

# The end-to-end tests, through CTest as the main build runs them (only that folder's).
cd "$work/build/tests/e2e"
env -u LD_LIBRARY_PATH ctest --output-on-failure -j "$jobs" --no-tests=error
