#!/usr/bin/env bash
# Builds the fuzzers in build-fuzz/ and runs each for a bounded time under ASan + UBSan:
# libFuzzer (clang) for libeng's frame reader and the bench's scenario reader, and a mutating
# driver (g++, as clang cannot compile Octave's headers) for octave-engine's decoder.
# Seeds are tests/fuzz/corpus/*; what a run finds lands in build-fuzz/findings/.
# Usage: scripts/fuzz.sh [SECONDS per fuzzer, default 50]
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${1:-50}
out=build-fuzz
mkdir -p "$out/obj" "$out/findings" "$out/corpus/frames" "$out/corpus/scenario"

launcher=""
if command -v ccache >/dev/null; then launcher=ccache; export CCACHE_BASEDIR=${CCACHE_BASEDIR:-$PWD}; fi
sanitizers=(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
common=(-std=c++20 -g -O1 -Wall -Wextra "${sanitizers[@]}")

# compile COMPILER TARGET FLAGS... -- SOURCES...: one object per source (so ccache helps), then link.
build() {
  local cxx=$1 target=$2; shift 2
  local flags=() sources=() objects=() libs=()
  while [ "$1" != "--" ]; do flags+=("$1"); shift; done; shift
  while [ $# -gt 0 ] && [ "$1" != "--libs" ]; do sources+=("$1"); shift; done
  if [ $# -gt 0 ]; then shift; libs=("$@"); fi
  for s in "${sources[@]}"; do
    local o="$out/obj/$target/${s//\//_}.o"
    mkdir -p "$out/obj/$target"
    $launcher "$cxx" "${common[@]}" "${flags[@]}" -c "$s" -o "$o"
    objects+=("$o")
  done
  "$cxx" "${common[@]}" "${flags[@]}" "${objects[@]}" "${libs[@]}" -o "$out/$target"
}

echo "== fuzz: build ($out)"
build clang++-14 frame_fuzz -fsanitize=fuzzer -Iplatform/include -Iplatform/wire -- \
  platform/wire/wire_codec.cc platform/wire/frame_io.cc platform/wire/mx_wire.cc platform/mx/mx_array.cc \
  tests/fuzz/frame_fuzz.cc &
frame_build=$!
build clang++-14 scenario_fuzz -fsanitize=fuzzer -Ihost -Ihost/scenario -Iinterface -- \
  host/scenario/*.cc host/message_text.cc host/numbers.cc tests/fuzz/scenario_fuzz.cc &
scenario_build=$!
wait "$frame_build"
wait "$scenario_build"
# Octave's headers are not ours to warn about; its libraries are found at run time by rpath.
read -r -a octave_flags <<<"$(pkg-config --cflags-only-I octinterp | sed 's/-I/-isystem /g')"
read -r -a octave_libs <<<"$(pkg-config --libs octinterp) $(pkg-config --libs-only-L octinterp | sed 's/-L/-Wl,-rpath,/g')"
build g++ octave_codec_fuzz "${octave_flags[@]}" -Iplatform/wire -Iplatform/server -- \
  platform/wire/wire_codec.cc platform/server/octave_codec.cc tests/fuzz/octave_codec_fuzz.cc --libs "${octave_libs[@]}"

echo "== fuzz: ${seconds}s each, side by side"
libfuzzer=(-max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1)
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
ASAN_OPTIONS=detect_leaks=1 "$out/frame_fuzz" "${libfuzzer[@]}" -max_len=4096 \
  -artifact_prefix="$out/findings/frames-" "$out/corpus/frames" tests/fuzz/corpus/frames >"$out/frame_fuzz.log" 2>&1 &
frames=$!
ASAN_OPTIONS=detect_leaks=1 "$out/scenario_fuzz" "${libfuzzer[@]}" -max_len=16384 \
  -artifact_prefix="$out/findings/scenario-" "$out/corpus/scenario" tests/fuzz/corpus/scenario >"$out/scenario_fuzz.log" 2>&1 &
scenario=$!
# Octave's own allocations are not ours to check for leaks.
ASAN_OPTIONS=detect_leaks=0 "$out/octave_codec_fuzz" "$seconds" tests/fuzz/corpus/octave_values "$out/findings" \
  >"$out/octave_codec_fuzz.log" 2>&1 &
octave=$!

status=0
for job in "frame_fuzz:$frames" "scenario_fuzz:$scenario" "octave_codec_fuzz:$octave"; do
  name=${job%%:*}
  if wait "${job##*:}"; then
    echo "fuzz: $name: $(grep -E '^(stat::number_of_executed_units|octave_codec_fuzz: seed)' "$out/$name.log" | tail -1)"
  else
    echo "fuzz: $name FAILED; its log, $out/$name.log, ends:"
    tail -n 40 "$out/$name.log"
    status=1
  fi
done
exit $status
