#!/usr/bin/env bash
# Cross-compiles the extension for 64-bit Windows (MinGW-w64) against import libraries of
# MATLAB's libmx.dll and libeng.dll, then checks the DLL's exports and imports with objdump.
# Usage: scripts/windows_check.sh [WORK_DIR]   (default build-mingw/)
set -euo pipefail
source_dir=$(cd "$(dirname "$0")/.." && pwd)
work=$(mkdir -p "${1:-$source_dir/build-mingw}" && cd "${1:-$source_dir/build-mingw}" && pwd)
triplet=x86_64-w64-mingw32
jobs=$(nproc 2>/dev/null || echo 2)

for tool in $triplet-g++ $triplet-dlltool $triplet-objdump; do
  command -v "$tool" >/dev/null || { echo "windows_check: $tool not found (bash scripts/setup.sh installs it)" >&2; exit 1; }
done

# The MATLAB names the extension imports: the same list the Linux build's nm test holds.
exports_test=$source_dir/tests/e2e/exports_test.cc
mapfile -t names < <(sed -n '/const std::set<std::string> expected = {/,/};/p' "$exports_test" |
  grep -o '"[A-Za-z0-9_]*"' | tr -d '"' | sort)
if [ ${#names[@]} -ne 25 ]; then
  echo "windows_check: expected 25 imported names in $exports_test, read ${#names[@]}" >&2
  exit 1
fi

# A MATLAB tree as the Windows build sees it: headers, and import libraries under
# extern/lib/win64/microsoft made from the names each DLL must provide.
tree=$work/matlab-win64
mkdir -p "$tree/extern/include" "$tree/extern/lib/win64/microsoft"
cp "$source_dir/platform/include/matrix.h" "$source_dir/platform/include/engine.h" "$tree/extern/include/"
for lib in mx eng; do
  def=$work/lib$lib.def
  { echo "LIBRARY lib$lib.dll"; echo "EXPORTS"; printf '%s\n' "${names[@]}" | grep "^$lib"; } >"$def"
  $triplet-dlltool --input-def "$def" --dllname "lib$lib.dll" \
    --output-lib "$tree/extern/lib/win64/microsoft/lib$lib.lib"
done

launcher=()
if [ -n "${TAMLO_COMPILER_LAUNCHER:-}" ]; then launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER="$TAMLO_COMPILER_LAUNCHER"); fi
cmake -S "$source_dir" -B "$work/build" \
  -DCMAKE_TOOLCHAIN_FILE="$source_dir/cmake/mingw-w64-x86_64.cmake" \
  -DCMAKE_BUILD_TYPE=Release -DTAMLO_MATLAB_ROOT="$tree" \
  -DTAMLO_BUILD_TESTS=OFF -DTAMLO_BUILD_BENCH=OFF "${launcher[@]}" >/dev/null
# Warnings count: the layers build warning-free with MinGW's GCC as with Linux's.
cmake --build "$work/build" -j "$jobs" --target tamlo_matlab_dispatch 2>&1 | tee "$work/build.log"
if grep -q "warning:" "$work/build.log"; then
  echo "windows_check: the cross-compile warned:" >&2
  grep -A3 "warning:" "$work/build.log" >&2
  exit 1
fi

dll=$work/build/bin/tamlo_matlab_dispatch.dll
[ -f "$dll" ] || { echo "windows_check: $dll was not built" >&2; exit 1; }
dump=$work/objdump.txt
$triplet-objdump -p "$dll" >"$dump"

# "DLL name" lines open each import table; its rows end with the imported name.
imports=$(awk '
  /^[[:space:]]*DLL Name:/ { dll = $3; next }
  /^[[:space:]]*$/ { dll = "" }
  dll != "" && NF >= 3 && $1 ~ /^[0-9a-f]+$/ && $2 ~ /^[0-9]+$/ { print dll, $3 }
' "$dump" | sort)
expected_imports=$(for n in "${names[@]}"; do
  case $n in mx*) echo "libmx.dll $n" ;; eng*) echo "libeng.dll $n" ;; esac
done | sort)
# Everything taken from MATLAB's DLLs, plus any MATLAB-like name taken from elsewhere.
matlab_imports=$(echo "$imports" | awk '$1 == "libmx.dll" || $1 == "libeng.dll" || $2 ~ /^(mx|eng)/' | sort)
exports=$(sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/p' "$dump" | awk 'NR > 1 && /^[[:space:]]*\[/ { print $NF }' | sort)

status=0
if [ "$matlab_imports" != "$expected_imports" ]; then
  echo "windows_check: imports from libmx.dll/libeng.dll differ (< expected, > found):" >&2
  diff <(echo "$expected_imports") <(echo "$matlab_imports") >&2 || true
  status=1
fi
if [ "$exports" != "create_engine_extension" ]; then
  echo "windows_check: exports are not exactly create_engine_extension:" >&2
  echo "$exports" >&2
  status=1
fi
echo "windows_check: $dll"
echo "  exports: $(echo "$exports" | tr '\n' ' ')"
echo "  imports $(echo "$matlab_imports" | grep -c .) names from libmx.dll and libeng.dll; other DLLs:" \
  "$(echo "$imports" | awk '$1 != "libmx.dll" && $1 != "libeng.dll" { print $1 }' | sort -u | tr '\n' ' ')"
exit $status
