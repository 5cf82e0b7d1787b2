// Reads a file named on the command line and the same bytes from memory
// through the installed reader, with no options, and checks what detection
// and typing made of them; then hands the table on as an Arrow stream.
#include <zvtextparser/import/table/arrow_export.hpp>
#include <zvtextparser/read.hpp>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

namespace ti = textio::import;

namespace {

// The table every source gives: name (text), price (decimal comma), day.
bool expected(const ti::arrow_table& t) {
  if (t.fields.size() != 3 || t.fields[1].name != "price" || t.rows() != 2) return false;
  if (t.type(0) != ti::arrow_type::utf8 || t.type(1) != ti::arrow_type::float64 ||
      t.type(2) != ti::arrow_type::timestamp) {
    return false;
  }
  const ti::arrow_batch& b = t.batches.front();
  return b.columns[0].text_at(1) == "y" && b.columns[1].values.at<double>(0) == 1.5 && !b.columns[1].is_valid(1) &&
         b.columns[2].values.at<std::int64_t>(0) == 1517097600000000;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  std::ifstream in(argv[1], std::ios::binary);
  std::stringstream bytes;
  bytes << in.rdbuf();
  const std::string text = bytes.str();
  try {
    for (const auto& source : {ti::read_source::file(argv[1]), ti::read_source::memory(text)}) {
      ti::table_read got = ti::read_table(source);
      if (!expected(got.table)) {
        std::printf("unexpected table from %s\n", source.name.c_str());
        return 1;
      }
      ArrowArrayStream stream;
      ti::export_to_arrow(std::move(got.table), &stream);
      ArrowArray batch;
      stream.get_next(&stream, &batch);
      const long long rows = batch.length;
      batch.release(&batch);
      stream.release(&stream);
      if (rows != 2) return 1;
    }
    ti::read_table(ti::read_source::memory(std::string_view("\x01\x02 not text", 11)));
  } catch (const foundation::core::except::IMsgIDException& e) {
    std::printf("caught %s\n", e.GetMsgIDText().c_str());
    return 0;
  }
  std::puts("nothing thrown");
  return 1;
}
