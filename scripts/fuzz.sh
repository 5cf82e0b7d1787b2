#!/usr/bin/env bash
# Builds the libFuzzer targets (clang 14, ASan + UBSan) and runs each for a
# bounded time on a scratch copy of its committed corpus. A finding stops the
# run with a non-zero status and leaves the crashing input in build/fuzz/findings.
#   scripts/fuzz.sh [SECONDS_PER_TARGET]     (default 60)
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
sudo=""; [ "$(id -u)" -ne 0 ] && sudo=sudo
dpkg-query -W -f='${Status}' libclang-rt-14-dev 2>/dev/null | grep -q "install ok installed" \
  || { $sudo apt-get update -qq; $sudo apt-get install -y -qq clang-14 libclang-rt-14-dev; }

cmake --preset fuzz -DZVTP_WARNINGS_AS_ERRORS="${ZVTP_WERROR:-OFF}" >/dev/null
cmake --build --preset fuzz
mkdir -p build/fuzz/findings
for target_dir in fuzz/corpus/*/; do
  target=$(basename "$target_dir")
  work=build/fuzz/work/$target
  rm -rf "$work" && mkdir -p "$work" && cp "$target_dir"* "$work"/
  echo "=== $target (${seconds}s)"
  log=build/fuzz/$target.log
  if ! build/fuzz/fuzz/"$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
      -artifact_prefix=build/fuzz/findings/ -print_final_stats=1 "$work" >"$log" 2>&1; then
    tail -n 60 "$log"
    echo "fuzz target $target found a problem; input saved under build/fuzz/findings/"
    exit 1
  fi
  grep -E "^stat::number_of_executed_units|^Done" "$log" || true
done
