#!/usr/bin/env bash
# Fails when the shared reader library exports a symbol outside its own
# namespace, or lacks its one call.
#   check_reader_symbols.sh LIBRARY
set -euo pipefail
symbols=$(nm -D --defined-only "$1" | awk '{print $3}' | grep -v '^$' | c++filt | sort -u)
outside=$(grep -v -E '^((typeinfo (name )?|vtable )for )?textio::import::' <<< "$symbols" || true)
if [ -n "$outside" ]; then
  echo "exported outside textio::import:"
  echo "$outside"
  exit 1
fi
for call in 'textio::import::read_table\(' 'textio::import::read_into\(' 'textio::import::export_to_arrow\('; do
  grep -q -E "^$call" <<< "$symbols" || { echo "missing: $call"; exit 1; }
done
echo "$(wc -l <<< "$symbols") symbols, all in textio::import"
