#!/usr/bin/env bash
# Installs the build tree into a scratch prefix, then builds and runs the
# consumer projects against it twice: with find_package and with pkg-config.
# The reader's consumer reads a small table from a file and from memory.
#   run_install_test.sh BUILD_DIR SOURCE_DIR SCRATCH_DIR CXX "CXXFLAGS" "LDFLAGS"
set -euo pipefail
build_dir=$1 source_dir=$2 scratch=$3 cxx=$4 cxxflags=${5:-} ldflags=${6:-}
rm -rf "$scratch"
prefix=$scratch/prefix
cmake --install "$build_dir" --prefix "$prefix" >/dev/null

echo "--- installed headers"
# Only the public headers, under the project-named root (the platform's own
# headers sit apart under zvtextparser/platform).
installed=$(cd "$prefix/include/zvtextparser" && find . -path ./platform -prune -o -name '*.hpp' -print | sort | tr '\n' ' ')
expected="./errors/export.hpp ./errors/msg_id_exception.hpp ./errors/tags.hpp ./import/detect/detection.hpp \
./import/export.hpp ./import/output.hpp ./import/read_events.hpp ./import/reader_errors.hpp \
./import/table/arrow_export.hpp ./import/table/arrow_table.hpp ./import/text_format.hpp ./import/value_types.hpp \
./name_value/set_parser_options.hpp ./parser/enums.hpp ./parser/options.hpp ./parser/record_readers.hpp \
./parser/stop_characters.hpp ./read.hpp "
if [ "$installed" != "$expected" ]; then
  echo "installed headers: $installed"
  echo "expected:          $expected"
  exit 1
fi

echo "--- find_package"
cmake -S "$source_dir/tests/install/consumer" -B "$scratch/consumer" -G Ninja \
  -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_CXX_FLAGS="$cxxflags" -DCMAKE_EXE_LINKER_FLAGS="$ldflags" >/dev/null
cmake --build "$scratch/consumer" >/dev/null
"$scratch/consumer/consumer"

echo "--- pkg-config"
export PKG_CONFIG_PATH=$prefix/lib/pkgconfig
libdir=$(pkg-config --variable=libdir zvtextparser)
# shellcheck disable=SC2046,SC2086
"$cxx" $cxxflags -I"$source_dir/tests/install/consumer" "$source_dir/tests/install/consumer/main.cpp" -o "$scratch/consumer_pc" \
  $(pkg-config --cflags --libs zvtextparser) $ldflags
LD_LIBRARY_PATH=$libdir "$scratch/consumer_pc"

echo "--- reader: find_package"
table=$scratch/prices.csv
printf 'name;price;day\nx;1,5;28/01/2018\ny;;29/01/2018\n' > "$table"
cmake -S "$source_dir/tests/install/reader_consumer" -B "$scratch/reader_consumer" -G Ninja \
  -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_CXX_FLAGS="$cxxflags" -DCMAKE_EXE_LINKER_FLAGS="$ldflags" >/dev/null
cmake --build "$scratch/reader_consumer" >/dev/null
"$scratch/reader_consumer/reader_consumer" "$table"

echo "--- reader: pkg-config"
# shellcheck disable=SC2046,SC2086
"$cxx" $cxxflags "$source_dir/tests/install/reader_consumer/main.cpp" -o "$scratch/reader_consumer_pc" \
  $(pkg-config --cflags --libs zvtextimport) $ldflags
LD_LIBRARY_PATH=$libdir "$scratch/reader_consumer_pc" "$table"
