#!/usr/bin/env bash
# Counts the records of a generated CSV with `zvtextparser read --count` and,
# on the same file in the same run, times wc -l, Python's csv module and mlr
# (when installed). Usage: bench/read_comparison.sh [BUILD_DIR] [SIZE_MIB]
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/release}
size=${2:-256}
file=$(mktemp --suffix=.csv)
trap 'rm -f "$file"' EXIT
python3 bench/generate_csv.py "$file" "$size"
bytes=$(stat -c %s "$file")
cat "$file" > /dev/null  # into the page cache

# Best of three wall-clock seconds of a command.
best() {
  local best_time=""
  for _ in 1 2 3; do
    local start end t
    start=$(date +%s.%N)
    "$@" > /dev/null
    end=$(date +%s.%N)
    t=$(echo "$end - $start" | bc -l)
    if [[ -z $best_time ]] || (($(echo "$t < $best_time" | bc -l))); then best_time=$t; fi
  done
  echo "$best_time"
}

count_py='import csv, sys
n = 0
with open(sys.argv[1], newline="") as f:
    for row in csv.reader(f):
        n += 1
print(n)'

echo "file: $bytes bytes"
echo "records: zvtextparser $("$build/tools/zvtextparser" read "$file" --count) / python csv $(python3 -c "$count_py" "$file") / wc -l $(wc -l < "$file")"
t_zv=$(best "$build/tools/zvtextparser" read "$file" --count)
t_wc=$(best wc -l "$file")
t_py=$(best python3 -c "$count_py" "$file")
printf '| %-34s | %9s | %9s | %22s |\n' "command" "seconds" "MB/s" "zvtextparser speed-up"
printf '|%s|%s|%s|%s|\n' "------------------------------------" "-----------" "-----------" "------------------------"
row() { printf '| %-34s | %9.3f | %9.0f | %22.2f |\n' "$1" "$2" "$(echo "$bytes / $2 / 1000000" | bc -l)" "$(echo "$2 / $t_zv" | bc -l)"; }
row "zvtextparser read FILE --count" "$t_zv"
row "wc -l FILE" "$t_wc"
row "python3 csv.reader (count rows)" "$t_py"
if command -v mlr > /dev/null; then
  t_mlr=$(best mlr --icsv --ojson count "$file")
  row "mlr --icsv --ojson count FILE" "$t_mlr"
fi
