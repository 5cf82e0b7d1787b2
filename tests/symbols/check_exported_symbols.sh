#!/usr/bin/env bash
# Fails when the shared library exports a symbol outside its public families,
# or when one of the families is missing.
#   check_exported_symbols.sh LIBRARY [REQUIRED_PATTERN ...]
set -euo pipefail
lib=$1
shift

# The public families, as demangled names (extended regular expressions).
allowed=(
  '^textio::options::set_parser_options\(hvArray_tag const\* const\*, int, textio::parser::options&\)$'
  '^textio::parser::options::'
  '^textio::parser::(Line|Delimited|FixedWidth)RecordReader::~?(Line|Delimited|FixedWidth)RecordReader\('
  '^typeinfo (name )?for foundation::core::except::Exception<ZORVEK::textio::textio::[A-Za-z]+, std::exception, void>$'
  '^typeinfo (name )?for ZORVEK::textio::textio::[A-Za-z]+$'
)

symbols=$(nm -D --defined-only "$lib" | awk '{print $3}' | grep -v '^$' | c++filt | sort -u)
status=0
while IFS= read -r symbol; do
  ok=0
  for pattern in "${allowed[@]}"; do
    if [[ $symbol =~ $pattern ]]; then ok=1; break; fi
  done
  if [ $ok -eq 0 ]; then
    echo "exported but not public: $symbol"
    status=1
  fi
done <<< "$symbols"

for required in "$@"; do
  if ! grep -Eq -- "$required" <<< "$symbols"; then
    echo "missing from the exports: $required"
    status=1
  fi
done

[ $status -eq 0 ] && echo "exports: $(wc -l <<< "$symbols") symbols, all public"
exit $status
