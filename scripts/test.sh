#!/usr/bin/env bash
# The whole test suite: installs what is missing, builds, runs every test with CTest, then the
# same suite under AddressSanitizer + UndefinedBehaviorSanitizer.
# OX_SKIP_SANITIZERS=1 skips the sanitizer pass (quicker local runs).
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/setup.sh

jobs=$(nproc)
run_preset() {
  local preset=$1
  echo "=== ${preset}: configure and build"
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset" -j "$jobs"
  echo "=== ${preset}: test"
  ctest --preset "$preset" -j "$jobs"
}

# Mesa keeps a few process-lifetime allocations; those are not ours to report.
export LSAN_OPTIONS="suppressions=$PWD/tests/lsan.supp:print_suppressions=0"
export UBSAN_OPTIONS="print_stacktrace=1"

run_preset default
if [ "${OX_SKIP_SANITIZERS:-0}" != "1" ]; then
  run_preset asan
fi
