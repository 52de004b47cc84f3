#!/usr/bin/env bash
# Builds KZCommon from scratch and runs what is asked:
#   ./build.sh demo      schedule the bundled project with kzschedule, then the small demo
#   ./build.sh test      build and run the test suite
#   ./build.sh sanitize  build and run the test suite under ASan + UBSan
#   ./build.sh clang     build and run the test suite with clang
#   ./build.sh bench     build and run the benchmarks
# Installs missing Debian packages first (needs root or sudo).
set -euo pipefail
cd "$(dirname "$0")"

deps() {
  local pkgs=(cmake ninja-build g++ libgtest-dev libgmock-dev)
  [ "${1:-}" = bench ] && pkgs+=(libbenchmark-dev libboost-dev time)
  [ "${1:-}" = clang ] && pkgs+=(clang)
  local missing=()
  for p in "${pkgs[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
  done
  if [ ${#missing[@]} -gt 0 ]; then
    local sudo=""
    [ "$(id -u)" -ne 0 ] && sudo=sudo
    $sudo apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq "${missing[@]}"
  fi
}

case "${1:-test}" in
  demo)
    deps
    cmake --preset default >/dev/null
    cmake --build --preset default --target kzschedule kz_demo
    echo "== kzschedule examples/data/project.csv"
    ./build/default/tools/kzschedule/kzschedule --svg build/default/project-gantt.svg examples/data/project.csv
    echo "Gantt chart written to build/default/project-gantt.svg"
    echo "== kz_demo examples/data"
    ./build/default/examples/kz_demo examples/data
    ;;
  test)
    deps
    cmake --workflow --preset default
    ;;
  sanitize)
    deps
    cmake --workflow --preset sanitize
    ;;
  clang)
    deps clang
    cmake --workflow --preset clang
    ;;
  bench)
    deps bench
    cmake --preset bench >/dev/null
    cmake --build --preset bench
    for b in build/bench/bench/kz_bench_*; do "$b" --benchmark_min_time=0.2; done
    ;;
  *)
    echo "usage: $0 demo|test|sanitize|bench" >&2
    exit 2
    ;;
esac
