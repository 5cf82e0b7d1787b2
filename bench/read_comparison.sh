#!/usr/bin/env bash
# The race: on one generated CSV, in one run, times whole processes of
# zvtextparser (count, CSV and JSONL conversion to /dev/null and the
# in-memory table, each typed as by default and as text cells) and of the
# peers that are installed: wc -l, data.table's fread (one
# thread and all threads) and fread + fwrite, DuckDB through its Node package
# (into a table, COPY to CSV and to JSON), pandas read_csv and Python's csv
# module, Polars through its Node package. Each command runs once a round, rounds interleaved; the table gives
# the median of the rounds and our speed-up over each peer against our
# command that does the same job (count, conversion to CSV or JSON, reading
# into memory).
#
# Usage: bench/read_comparison.sh [BUILD_DIR] [SIZE_MIB] [ROUNDS]
#   DUCKDB_NODE_MODULES: a node_modules folder holding @duckdb/node-api
#   POLARS_NODE_MODULES: one holding nodejs-polars (with its linux-x64-gnu binary)
#   RACE_FILE: an existing file to use instead of a generated one
#   RACE_GZIP: the same file compressed with gzip, for the compressed-input rows
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/release}
size=${2:-256}
rounds=${3:-3}
tool=$build/tools/zvtextparser
table=$build/bench/zvtextimport_table
py=/usr/bin/python3
[[ -x $py ]] || py=python3

if [[ -n ${RACE_FILE:-} ]]; then
  file=$RACE_FILE
else
  file=$(mktemp --suffix=.csv)
  trap 'rm -f "$file"' EXIT
  "$py" bench/generate_csv.py "$file" "$size"
fi
bytes=$(stat -c %s "$file")
cat "$file" > /dev/null  # into the page cache
threads=$(nproc)
# The settings spelled out and detection off (the in-memory table does not
# detect), so that every command reads the same: comma delimited, one line of
# names, every value text as read (the cell output takes no types).
read_options=(Delimiter , NumHeaderLines 1 VariableNamesLine 1 OutputBuilderType cell)

labels=()
commands=()
jobs=()  # what the command does: count, csv, json or memory
add() { labels+=("$1"); jobs+=("$2"); commands+=("$3"); }

q=$(printf '%q' "$file")
opts=$(printf '%q ' "${read_options[@]}")
add "wc -l" count "wc -l $q"
add "zvtextparser read --count" count "$tool read $q --count --no-detect $opts"
# The peers type their columns: our typed rows (the defaults, with detection)
# come first in each job and are the ones compared; the text-cell rows
# beside them show what typing costs.
add "zvtextparser read --format csv (typed)" csv "$tool read $q --format csv"
add "zvtextparser read --format csv (typed), 1 thread" csv1 "$tool read $q --format csv --threads 1"
add "zvtextparser read --format jsonl (typed)" json "$tool read $q --format jsonl"
add "zvtextparser typed table" memory "$table $q --typed"
add "zvtextparser typed table, 1 thread" memory1 "$table $q --typed --threads 1"
add "zvtextparser read --format csv (text)" csv-text "$tool read $q --format csv --no-detect $opts"
add "zvtextparser read --format csv (text), 1 thread" csv1-text "$tool read $q --format csv --threads 1 --no-detect $opts"
add "zvtextparser read --format jsonl (text)" json-text "$tool read $q --format jsonl --no-detect $opts"
add "zvtextparser text-cell table" memory-text "$table $q $opts"
# Compressed input: read as it is, against a separate decompressor in a pipe.
if [[ -n ${RACE_GZIP:-} ]] && command -v zcat > /dev/null; then
  gz=$(printf '%q' "$RACE_GZIP")
  add "zvtextparser read FILE.gz --format csv" gzip "$tool read $gz --format csv"
  add "zvtextparser read FILE.gz --format csv, 1 thread" gzip1 "$tool read $gz --format csv --threads 1"
  add "zcat FILE.gz | zvtextparser read - --format csv" gzip "zcat $gz | $tool read - --format csv"
fi

if command -v Rscript > /dev/null && Rscript -e 'library(data.table)' > /dev/null 2>&1; then
  r="suppressMessages(library(data.table))"
  add "fread, 1 thread" memory1 "Rscript -e '$r; setDTthreads(1); d <- fread(\"$file\")'"
  add "fread, $threads threads" memory "Rscript -e '$r; setDTthreads($threads); d <- fread(\"$file\")'"
  add "fread + fwrite CSV, $threads threads" csv \
    "Rscript -e '$r; setDTthreads($threads); fwrite(fread(\"$file\"), \"/dev/null\")'"
fi

if command -v node > /dev/null && NODE_PATH=${DUCKDB_NODE_MODULES:-} node -e "require('@duckdb/node-api')" 2> /dev/null; then
  duck() {
    local js="const {DuckDBInstance} = require('@duckdb/node-api');
(async () => { const c = await (await DuckDBInstance.create(':memory:', {threads: '$threads'})).connect();
await c.run(\`$1\`); })();"
    echo "NODE_PATH=${DUCKDB_NODE_MODULES:-} node -e $(printf '%q' "$js")"
  }
  add "DuckDB read_csv into a table" memory "$(duck "CREATE TABLE t AS SELECT * FROM read_csv('$file')")"
  add "DuckDB COPY to CSV" csv "$(duck "COPY (SELECT * FROM read_csv('$file')) TO '/dev/null' (FORMAT csv)")"
  add "DuckDB COPY to JSON" json "$(duck "COPY (SELECT * FROM read_csv('$file')) TO '/dev/null' (FORMAT json)")"
fi

if command -v node > /dev/null && NODE_PATH=${POLARS_NODE_MODULES:-} node -e "require('nodejs-polars')" 2> /dev/null; then
  add "Polars readCSV" memory \
    "NODE_PATH=${POLARS_NODE_MODULES:-} node -e $(printf '%q' "require('nodejs-polars').readCSV('$file')")"
fi

if "$py" -c 'import pandas' 2> /dev/null; then
  add "pandas read_csv (C engine)" memory "$py -c 'import pandas, sys; pandas.read_csv(sys.argv[1])' $q"
fi
add "python3 csv module (parse every row)" memory "$py -c 'import csv, sys; sum(1 for _ in csv.reader(open(sys.argv[1], newline=\"\")))' $q"

declare -A times
for ((round = 0; round < rounds; ++round)); do
  for i in "${!commands[@]}"; do
    start=$(date +%s.%N)
    bash -c "${commands[$i]}" > /dev/null
    end=$(date +%s.%N)
    times[$i]+="$(echo "$end - $start" | bc -l) "
  done
done

median() { tr ' ' '\n' | grep -v '^$' | sort -g | awk '{a[NR] = $1} END {print a[int((NR + 1) / 2)]}'; }
declare -A ours
for i in "${!commands[@]}"; do
  m=$(echo "${times[$i]}" | median)
  medians[$i]=$m
  [[ ${labels[$i]} == zvtextparser* && -z ${ours[${jobs[$i]}]:-} ]] && ours[${jobs[$i]}]=$m
done

echo "file: $bytes bytes, $(wc -l < "$file") lines; $threads cores; median of $rounds interleaved rounds; load average after: $(cut -d' ' -f1-3 /proc/loadavg)"
printf '| %-40s | %7s | %7s | %12s |\n' "command" "seconds" "MB/s" "our speed-up"
printf '|%s|%s|%s|%s|\n' "------------------------------------------" "---------" "---------" "--------------"
for i in "${!commands[@]}"; do
  m=${medians[$i]}
  mbs=$(echo "$bytes / $m / 1000000" | bc -l)
  if [[ ${labels[$i]} == zvtextparser* ]]; then
    speedup="-"
  else
    speedup=$(printf '%.2fx' "$(echo "$m / ${ours[${jobs[$i]}]}" | bc -l)")
  fi
  printf '| %-40s | %7.3f | %7.0f | %12s |\n' "${labels[$i]}" "$m" "$mbs" "$speedup"
done
echo "(our speed-up: the peer's seconds over ours for the same job — count, CSV, JSON or into memory)"
