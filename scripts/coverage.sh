#!/usr/bin/env bash
# Builds with coverage, runs the tests, and reports line and branch coverage
# of the library's own code (parser/, name_value/, errors/). Fails below the
# line-coverage floor.
#   scripts/coverage.sh [MIN_LINE_PERCENT]     (default 95)
set -euo pipefail
cd "$(dirname "$0")/.."
floor=${1:-95}
command -v gcovr >/dev/null || { sudo=""; [ "$(id -u)" -ne 0 ] && sudo=sudo; $sudo apt-get install -y -qq gcovr; }
rm -rf build/coverage
cmake --preset coverage -DZVTP_WARNINGS_AS_ERRORS="${ZVTP_WERROR:-OFF}" >/dev/null
cmake --build --preset coverage
ctest --preset coverage >/dev/null
filters=(--filter 'parser/' --filter 'name_value/' --filter 'errors/')
gcovr --root . --object-directory build/coverage "${filters[@]}" \
  --exclude-unreachable-branches --exclude-throw-branches \
  --txt build/coverage/coverage.txt --print-summary --fail-under-line "$floor"
