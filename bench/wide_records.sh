#!/usr/bin/env bash
# Wide records: one line of FIELDS fields and one of ten times as many
# (bench/generate_wide.py), each read by whole processes into every output:
# csv and jsonl with and without detection, text cells, and the in-memory
# tables (typed and text cells). Prints seconds and peak memory per run, the
# bytes per field beyond the file's own size, and the time of the wide file
# against ten times that of the narrow one (linear: about 1, a cliff: far
# more).
#
# Usage: bench/wide_records.sh [BUILD_DIR] [FIELDS]
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/release}
fields=${2:-1000000}
tool=$build/tools/zvtextparser
table=$build/bench/zvtextimport_table
py=/usr/bin/python3
[[ -x $py ]] || py=python3

dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
small=$dir/wide1.csv
large=$dir/wide10.csv
"$py" bench/generate_wide.py "$small" "$fields"
"$py" bench/generate_wide.py "$large" $((fields * 10))

cell=(Delimiter , OutputBuilderType cell)
labels=()
commands=()
add() { labels+=("$1"); commands+=("$2"); }
add "read --format csv" "$tool read FILE --format csv"
add "read --format jsonl" "$tool read FILE --format jsonl"
add "read --format csv --no-detect" "$tool read FILE --format csv --no-detect"
add "read --format jsonl --no-detect" "$tool read FILE --format jsonl --no-detect"
add "read --format csv, text cells" "$tool read FILE --format csv --no-detect ${cell[*]}"
add "typed table" "$table FILE --typed"
add "text-cell table" "$table FILE ${cell[*]}"

# Seconds and peak KiB of one run.
measure() {
  local out
  out=$({ /usr/bin/time -f "%e %M" bash -c "${1//FILE/$2} > /dev/null 2> /dev/null"; } 2>&1 | tail -1)
  echo "$out"
}

printf '%-34s %10s %10s %10s %10s %12s %8s\n' "command" "s (1x)" "MiB (1x)" "s (10x)" "MiB (10x)" "B/field 10x" "10x/1x"
for i in "${!labels[@]}"; do
  read -r s1 k1 <<< "$(measure "${commands[$i]}" "$small")"
  read -r s10 k10 <<< "$(measure "${commands[$i]}" "$large")"
  bytes=$(stat -c %s "$large")
  "$py" - "${labels[$i]}" "$s1" "$k1" "$s10" "$k10" "$bytes" "$((fields * 10))" << 'PY'
import sys
label, s1, k1, s10, k10, size, n = sys.argv[1], *map(float, sys.argv[2:])
beyond = (k10 * 1024 - size) / n
ratio = s10 / (10 * s1) if s1 > 0 else float("inf")
print(f"{label:<34} {s1:10.2f} {k1 / 1024:10.1f} {s10:10.2f} {k10 / 1024:10.1f} {beyond:12.1f} {ratio:8.2f}")
PY
done
