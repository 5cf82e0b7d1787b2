#!/usr/bin/env bash
# Installs what is missing, then configures, builds and runs the whole test
# suite for each preset given (default: release).
#   scripts/run-tests.sh [PRESET ...]      e.g. scripts/run-tests.sh release asan
# ZVTP_WERROR=ON turns warnings into errors.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh
presets=("$@")
[ ${#presets[@]} -eq 0 ] && presets=(release)
for preset in "${presets[@]}"; do
  echo "=== preset: $preset"
  cmake --preset "$preset" -DZVTP_WARNINGS_AS_ERRORS="${ZVTP_WERROR:-OFF}"
  cmake --build --preset "$preset"
  ctest --preset "$preset"
done
