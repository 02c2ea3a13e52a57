#!/usr/bin/env bash
# Installs the build into a fresh prefix and runs the installed dispatch-bench on the
# installed example from an unrelated folder: it must find the extension and the engine
# by itself, and the scenario its series and strategies.
# Usage: install_test.sh BUILD_DIR WORK_DIR
set -euo pipefail
build=$1
work=$2
rm -rf "$work"
mkdir -p "$work/elsewhere"
prefix=$work/prefix

cmake --install "$build" --prefix "$prefix" >/dev/null

bench=$prefix/bin/dispatch-bench
scenario=$prefix/share/tamlo_matlab_dispatch/examples/hybrid_load_following.json
for f in "$bench" "$scenario"; do
  [ -e "$f" ] || { echo "install_test: $f was not installed" >&2; exit 1; }
done

# Installed programs and libraries name no build folder in their run paths.
while IFS= read -r -d '' f; do
  if readelf -d "$f" 2>/dev/null | grep -E 'R(UN)?PATH' | grep -q -- "$build/\(lib\|bin\)"; then
    echo "install_test: $f keeps a run path into the build folder" >&2
    exit 1
  fi
done < <(find "$prefix/bin" "$prefix/lib" -type f -print0)

# No library path, no source or build folder in sight.
cd "$work/elsewhere"
env -u LD_LIBRARY_PATH "$bench" run "$scenario" --steps 6 --out results.csv >run.log 2>&1 || {
  echo "install_test: the installed dispatch-bench failed:" >&2
  cat run.log >&2
  exit 1
}
rows=$(($(wc -l <results.csv) - 1))
if [ "$rows" -ne 6 ]; then
  echo "install_test: results.csv holds $rows steps, expected 6" >&2
  cat run.log >&2
  exit 1
fi
# Nothing of the build's own programs and libraries was named.
if grep -q -- "$build/\(lib\|bin\)/" run.log; then
  echo "install_test: the run used something from the build folder:" >&2
  cat run.log >&2
  exit 1
fi
echo "install_test: installed dispatch-bench ran 6 steps from $PWD"
