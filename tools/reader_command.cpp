#include "tools/reader_command.hpp"

#include "parser/record_readers.hpp"
#include "tools/reader_json.hpp"
#include "tools/usage_error.hpp"

namespace zvtool {
namespace {

// Each reader lives only while it is written: it points into the record.
template <class Reader, void (*write)(json_writer&, const Reader&)>
void build_and_write(json_writer& out, const textio::parser::options& record) {
  const Reader reader(record);
  out.key("reader");
  write(out, reader);
}

}  // namespace

const std::array<reader_kind, 3> reader_kinds{
    reader_kind{"line", &build_and_write<textio::parser::LineRecordReader, &write_line_reader>},
    reader_kind{"delimited", &build_and_write<textio::parser::DelimitedRecordReader, &write_delimited_reader>},
    reader_kind{"fixedwidth", &build_and_write<textio::parser::FixedWidthRecordReader, &write_fixed_width_reader>},
};

std::string reader_kind_names() {
  std::string names;
  for (const auto& kind : reader_kinds) {
    if (!names.empty()) names += ", ";
    names += kind.name;
  }
  return names;
}

tool_result run_reader_command(const parsed_arguments& args) {
  const std::string name = args.operand.value_or("");
  for (const auto& kind : reader_kinds) {
    if (kind.name == name) return report_options_call(args.value("--struct"), args.option_arguments, kind.write_reader);
  }
  throw usage_error("unknown reader kind '" + name + "'; the kinds are: " + reader_kind_names() +
                    " (see zvtextparser reader --help)");
}

}  // namespace zvtool
