#!/usr/bin/env bash
# The whole test suite: installs what is missing, builds, runs every test with CTest; two build
# checks: everything with warnings as errors, and the libraries cross-compiled for Windows
# (MinGW-w64, with the WGL context); then the same suite under AddressSanitizer +
# UndefinedBehaviorSanitizer, a short fuzzing run of the mesh loader, and the threaded tests under
# ThreadSanitizer.
# OX_SKIP_SANITIZERS=1 skips the sanitizer and fuzzing passes, OX_SKIP_BUILD_CHECKS=1 the two
# build checks (quicker local runs).
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/setup.sh

jobs=$(nproc)
configure_and_build() {
  local preset=$1; shift
  echo "=== ${preset}: configure and build"
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset" -j "$jobs" "$@"
}

# Mesa keeps a few process-lifetime allocations, and its software rasteriser synchronises its own
# threads in ways the sanitizers cannot see; neither is ours to report.
export LSAN_OPTIONS="suppressions=$PWD/tests/lsan.supp:print_suppressions=0"
export TSAN_OPTIONS="suppressions=$PWD/tests/tsan.supp:halt_on_error=1"
export UBSAN_OPTIONS="print_stacktrace=1"

configure_and_build default
echo "=== default: test"
ctest --preset default -j "$jobs"

if [ "${OX_SKIP_BUILD_CHECKS:-0}" != "1" ]; then
  # Build only: the tests are the default build's.
  configure_and_build werror
  configure_and_build mingw
fi

if [ "${OX_SKIP_SANITIZERS:-0}" != "1" ]; then
  configure_and_build asan
  echo "=== asan: test"
  ctest --preset asan -j "$jobs"

  # The mesh loader against mutated files: a short, reproducible run (README: Fuzzing).
  configure_and_build fuzz
  echo "=== fuzz: short run"
  ctest --preset fuzz

  # Threads meet in the utilities and in the animated view transfer.
  configure_and_build tsan --target oxUtilsTests oxGraphicsTests
  echo "=== tsan: threaded tests"
  ctest --preset tsan -j "$jobs" -R 'thread|signalPool|jobsQueue|observable|refPtr|log|navigationTest'
fi
