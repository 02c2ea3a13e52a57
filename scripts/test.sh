#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test: once in a normal build and once
# with AddressSanitizer and UndefinedBehaviorSanitizer; then fuzzes the readers of untrusted
# bytes for a bounded time (about a minute of fuzzing, all fuzzers side by side).
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/setup.sh

jobs=$(nproc 2>/dev/null || echo 2)

echo "== build (RelWithDebInfo)"
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j "$jobs"
echo "== tests (RelWithDebInfo)"
ctest --test-dir build --output-on-failure -j "$jobs"

echo "== build (ASan + UBSan)"
cmake -S . -B build-asan -DCMAKE_BUILD_TYPE=Debug -DTAMLO_SANITIZE=ON -DTAMLO_BUILD_BENCH=OFF >/dev/null
cmake --build build-asan -j "$jobs"
echo "== tests (ASan + UBSan)"
ASAN_OPTIONS=detect_leaks=1:abort_on_error=1:halt_on_error=1 \
UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
  ctest --test-dir build-asan --output-on-failure -j "$jobs"

echo "== fuzzing (bounded)"
bash scripts/fuzz.sh 50
