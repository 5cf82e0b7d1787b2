#!/usr/bin/env bash
# Prints the peak resident memory of `zvtextparser read` on four inputs that
# stress it: one line of ten million fields, NumVariables 1e7 on a tiny file,
# OmitVar on a 256 MiB file and a plain 256 MiB stream. The inputs are made
# once under DIR (default /tmp/zvtp-memory).
#   bench/memory_figures.sh [TOOL] [DIR]    TOOL: build/release/tools/zvtextparser
set -euo pipefail
cd "$(dirname "$0")/.."
tool=${1:-build/release/tools/zvtextparser}
dir=${2:-/tmp/zvtp-memory}
mkdir -p "$dir"
[ -x /usr/bin/time ] || { echo "needs /usr/bin/time (Debian package time)" >&2; exit 1; }

[ -s "$dir/wide.csv" ] || python3 -c "import sys; sys.stdout.write(','.join(['1'] * 10_000_000) + '\n')" >"$dir/wide.csv"
[ -s "$dir/tiny.csv" ] || printf 'a,b\n' >"$dir/tiny.csv"
[ -s "$dir/big.csv" ] || python3 bench/generate_csv.py "$dir/big.csv" 256
# Every twentieth field missing, so that OmitVar has variables to drop.
[ -s "$dir/holes.csv" ] || sed 's/,plain,/,,/' "$dir/big.csv" >"$dir/holes.csv"

measure() {
  local label=$1
  shift
  local log status
  log=$(mktemp)
  status=0
  /usr/bin/time -v "$tool" read "$@" >/dev/null 2>"$log" || status=$?
  local kib seconds
  kib=$(awk -F': ' '/Maximum resident set size/ {print $2}' "$log")
  seconds=$(awk -F': ' '/Elapsed \(wall clock\)/ {print $2}' "$log")
  printf '| %-40s | %10s MiB | %8s | %6s |\n' "$label" "$((kib / 1024))" "$seconds" "$status"
  rm -f "$log"
}

printf '| %-40s | %14s | %8s | %6s |\n' input "peak memory" time status
printf '|%s|%s|%s|%s|\n' "$(printf -- '-%.0s' {1..42})" "$(printf -- '-%.0s' {1..16})" "----------" "--------"
measure "one line of 10^7 fields (20 MB)" "$dir/wide.csv"
measure "NumVariables 1e7 on a 4-byte file" "$dir/tiny.csv" NumVariables 10000000
measure "MissingRule OmitVar, 256 MiB" "$dir/holes.csv" MissingRule omitvar
measure "plain stream, 256 MiB" "$dir/big.csv"
