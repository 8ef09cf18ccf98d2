#!/usr/bin/env bash
# Builds oxview if needed and renders its built-in sample scene headless.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
cmake --preset default >/dev/null
cmake --build --preset default --target oxview -j "$(nproc)"
exec build/default/bin/oxview "$@"
