#!/usr/bin/env bash
# Installs every Debian package the project needs, when missing. Quick when all is there.
set -euo pipefail

packages=(
  g++ cmake make pkg-config
  libgtest-dev libgmock-dev googletest libbenchmark-dev
  octave liboctave-dev libjemalloc-dev
  nlohmann-json3-dev libcli11-dev gnuplot-nox
  valgrind
  lintian dpkg-dev g++-mingw-w64-x86-64 binutils-mingw-w64-x86-64
  clang-14 libfuzzer-14-dev
  slurm-wlm munge
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -gt 0 ]; then
  echo "setup: installing ${missing[*]}"
  sudo_cmd=""
  if [ "$(id -u)" -ne 0 ]; then sudo_cmd="sudo"; fi
  export DEBIAN_FRONTEND=noninteractive
  $sudo_cmd apt-get update -qq
  $sudo_cmd apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
