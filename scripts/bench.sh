#!/usr/bin/env bash
# The main job: builds the project and runs dispatch-bench over the bundled example year.
# Extra arguments go to dispatch-bench (e.g. --steps 168 --plot week.png --week 26).
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/setup.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j "$(nproc 2>/dev/null || echo 2)" --target dispatch-bench tamlo_matlab_dispatch octave-engine

mkdir -p out
build/bin/dispatch-bench run examples/hybrid_load_following.json --out out/results.csv "$@"
