#!/usr/bin/env bash
# Static checks: clang-format on every C++ source, clang-tidy on the library's
# own code (parser/, name_value/; errors/ is headers, checked through them).
# clang-tidy reads the g++ build's flags, some of which clang does not know.
set -euo pipefail
cd "$(dirname "$0")/.."
need=()
command -v clang-format >/dev/null || need+=(clang-format)
command -v clang-tidy >/dev/null || need+=(clang-tidy)
if [ ${#need[@]} -gt 0 ]; then
  sudo=""; [ "$(id -u)" -ne 0 ] && sudo=sudo
  $sudo apt-get update -qq && $sudo apt-get install -y -qq "${need[@]}"
fi

echo "--- clang-format"
git ls-files '*.cpp' '*.hpp' | xargs clang-format --dry-run --Werror
echo "formatting: clean"

echo "--- clang-tidy"
[ -f build/release/compile_commands.json ] || cmake --preset release >/dev/null
git ls-files 'parser/*.cpp' 'name_value/*.cpp' | xargs clang-tidy -p build/release --quiet --extra-arg=-Wno-unknown-warning-option
echo "clang-tidy: clean"
