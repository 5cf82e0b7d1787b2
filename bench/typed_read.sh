#!/usr/bin/env bash
# Times `zvtextparser read` of a generated CSV (six of its ten columns
# numeric) as typed Table and as text (Cell), both writing JSON lines, and
# prints the ratio of their CPU seconds (user + system, best of five each,
# runs alternating). Usage: bench/typed_read.sh [BUILD_DIR] [SIZE_MIB]
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/release}
size=${2:-256}
file=$(mktemp --suffix=.csv)
trap 'rm -f "$file"' EXIT
python3 bench/generate_csv.py "$file" "$size"
cat "$file" > /dev/null  # into the page cache
tool="$build/tools/zvtextparser"

cpu_seconds() {
  local out
  out=$({ /usr/bin/time -f "%U %S" "$tool" read "$file" NumHeaderLines 1 VariableNamesLine 1 OutputBuilderType "$1" \
    > /dev/null; } 2>&1)
  echo "$out" | awk '{print $1 + $2}'
}

best_cell="" best_table=""
for _ in 1 2 3 4 5; do
  c=$(cpu_seconds cell)
  t=$(cpu_seconds table)
  if [[ -z $best_cell ]] || (($(echo "$c < $best_cell" | bc -l))); then best_cell=$c; fi
  if [[ -z $best_table ]] || (($(echo "$t < $best_table" | bc -l))); then best_table=$t; fi
done
echo "cell (text):  $best_cell s"
echo "table (typed): $best_table s"
echo "ratio: $(echo "scale=2; $best_table / $best_cell" | bc -l)"
