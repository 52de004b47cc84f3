#!/usr/bin/env bash
# Builds KZCommon from scratch and runs what is asked:
#   ./build.sh demo             schedule the bundled project with kzschedule, then the small demo
#   ./build.sh test             build and run the test suite
#   ./build.sh sanitize         build and run the test suite under ASan + UBSan
#   ./build.sh clang            build and run the test suite with clang
#   ./build.sh tsan             build and run the threaded tests under ThreadSanitizer
#   ./build.sh bench            build and run the benchmarks
#   ./build.sh fuzz             build the libFuzzer targets (clang, ASan + UBSan) and run each
#                               for KZ_FUZZ_SECONDS (default 60) from its corpus in fuzz/corpus
#   ./build.sh install [PREFIX] build the library alone (no tests, no examples) and install it
#                               under PREFIX (default /usr/local)
# Installs missing Debian packages first (needs root or sudo).
set -euo pipefail
cd "$(dirname "$0")"

deps() {
  local pkgs=(cmake ninja-build g++)
  case "${1:-}" in
    install) ;;
    bench) pkgs+=(libbenchmark-dev libre2-dev pkg-config libboost-dev libabsl-dev time) ;;
    fuzz) pkgs+=(clang libclang-rt-14-dev) ;;
    clang) pkgs+=(clang libgtest-dev libgmock-dev pkg-config) ;;
    *) pkgs+=(libgtest-dev libgmock-dev pkg-config) ;;
  esac
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

# Runs every fuzz target for a bounded time on a copy of its corpus, so that nothing is
# written into the repository; a crash stops the run with the failing input kept under
# build/fuzz/artifacts/.
run_fuzzers() {
  local seconds="${KZ_FUZZ_SECONDS:-60}"
  local work artifacts
  work="$(mktemp -d)"
  artifacts="$PWD/build/fuzz/artifacts"
  mkdir -p "$artifacts"
  trap 'rm -rf "$work"' RETURN
  for src in fuzz/*.cpp; do
    local name
    name="$(basename "$src" .cpp)"
    mkdir -p "$work/$name"
    [ -d "fuzz/corpus/$name" ] && cp -r "fuzz/corpus/$name/." "$work/$name/"
    echo "== fuzz $name (${seconds}s)"
    ASAN_OPTIONS="detect_leaks=1:abort_on_error=1" UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1" \
      "build/fuzz/fuzz/kz_fuzz_$name" -max_total_time="$seconds" -timeout=25 -rss_limit_mb=2048 \
      -print_final_stats=1 -artifact_prefix="$artifacts/$name-" "$work/$name" 2>&1 | tail -n 25
    local rc=${PIPESTATUS[0]}
    if [ "$rc" -ne 0 ]; then
      echo "fuzz target $name failed (exit $rc); inputs in $artifacts" >&2
      return 1
    fi
  done
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
  tsan)
    deps
    cmake --workflow --preset tsan
    ;;
  bench)
    deps bench
    cmake --preset bench >/dev/null
    cmake --build --preset bench
    for b in build/bench/bench/kz_bench_*; do "$b" --benchmark_min_time=0.2; done
    ;;
  fuzz)
    deps fuzz
    cmake --preset fuzz >/dev/null
    cmake --build --preset fuzz
    run_fuzzers
    ;;
  install)
    deps install
    cmake --preset install >/dev/null
    cmake --build --preset install
    cmake --install build/install --prefix "${2:-/usr/local}"
    ;;
  *)
    # The targets are the ones the comment at the top of this file lists.
    echo "unknown target '$1'; the targets (default: test):" >&2
    sed -n '3,/^# Installs/{/^# Installs/d;s/^#  //p}' "$0" >&2
    exit 2
    ;;
esac
