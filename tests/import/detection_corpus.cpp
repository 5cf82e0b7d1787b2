#include "import/detection_corpus.hpp"

#include <fstream>
#include <iterator>
#include <sstream>

namespace detection_corpus {
namespace {

std::string narrow(const std::u16string& s) {
  std::string out;
  for (const char16_t c : s) out += c < 0x80 ? static_cast<char>(c) : '?';
  return out;
}

std::string spell_char(char c) { return c == '\t' ? "tab" : c == '\0' ? "none" : std::string(1, c); }

std::string encoding_family(std::string e) {
  for (char& c : e) c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 32 : c);
  if (e == "WINDOWS-1252" || e == "ISO-8859-1" || e == "ISO-8859-15" || e == "CP1252") return "LATIN1";
  return e;
}

std::vector<std::string> split(const std::string& text, char at) {
  std::vector<std::string> out;
  std::stringstream ss(text);
  for (std::string part; std::getline(ss, part, at);) out.push_back(part);
  return out;
}

// Every line cut at the widths of a "fixed:W,W,..." answer (bytes; the
// fixed-width files are ASCII), each field trimmed of blanks.
std::vector<std::string> cut_lines(const std::string& text, const std::string& answer) {
  std::vector<std::string> cells;
  for (const std::string& line : split(text, '\n')) {
    std::size_t at = 0;
    for (const std::string& w : split(answer.substr(6), ',')) {
      std::string f = at < line.size() ? line.substr(at, std::stoul(w)) : "";
      f.erase(0, f.find_first_not_of(" \r"));
      f.erase(f.find_last_not_of(" \r") + 1);
      cells.push_back(f);
      at += std::stoul(w);
    }
    cells.push_back(at < line.size() ? line.substr(at) : "");
  }
  return cells;
}

}  // namespace

std::vector<entry> load_manifest(const std::string& dir) {
  std::ifstream in(dir + "/MANIFEST.tsv");
  std::vector<entry> out;
  std::vector<std::string> header;
  for (std::string line; std::getline(in, line);) {
    if (line.empty() || line[0] == '#') continue;
    const std::vector<std::string> cols = split(line, '\t');
    if (header.empty()) {
      header = cols;
      continue;
    }
    entry e;
    for (std::size_t i = 0; i < cols.size() && i < header.size(); ++i) e.expected[header[i]] = cols[i];
    e.file = e.expected["file"];
    out.push_back(std::move(e));
  }
  return out;
}

std::string read_sample(const std::string& path, bool& whole) {
  std::ifstream in(path, std::ios::binary);
  std::string data((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  whole = true;
  if (data.size() > textio::import::detection_sample_bytes) {
    const std::size_t end = data.find('\n', textio::import::detection_sample_bytes);
    if (end != std::string::npos && end + 1 < data.size()) {
      data.resize(end + 1);
      whole = false;
    }
  }
  return data;
}

std::map<std::string, std::string> detect_fields(const std::string& sample, bool whole) {
  return fields_of(textio::import::detect(sample, whole, {}, {}));
}

std::map<std::string, std::string> fields_of(const textio::import::detection_result& r) {
  using textio::enums::ParserType;
  const auto& o = r.options;
  std::map<std::string, std::string> got;
  got["encoding"] = r.format.encoding;
  if (o.parser_type() == ParserType::FixedWidth) {
    std::string widths;
    for (const auto w : o.field_widths()) widths += (widths.empty() ? "" : ",") + std::to_string(w);
    got["delimiter"] = "fixed:" + widths;
  } else if (o.parser_type() == ParserType::Tabular) {
    got["delimiter"] = "blanks";
  } else {
    got["delimiter"] = o.delimiter().empty() ? "none" : narrow(o.delimiter().front());
    if (got["delimiter"] == "\t") got["delimiter"] = "tab";
  }
  got["quote"] = spell_char(r.format.quote);
  got["escape"] = r.format.escape == textio::import::escape_style::doubled ? "double" : "backslash";
  got["header_lines"] = std::to_string(o.num_header_lines());
  got["names_line"] = std::to_string(o.variable_names_line());
  got["num_variables"] = std::to_string(o.num_variables());
  got["decimal"] = spell_char(static_cast<char>(o.decimal_separator()));
  got["thousands"] = o.thousands_separator().empty() ? "-" : narrow(o.thousands_separator());
  got["comment"] = o.comment_style().empty() ? "-" : narrow(o.comment_style().front());
  got["table_end"] = r.format.table_end_line ? std::to_string(*r.format.table_end_line) : "-";
  std::string& types = got["types"];
  for (const std::string& t : r.report.variable_types) {
    types += t == "double" ? 'd' : t == "logical" ? 'l' : t == "datetime" ? 't' : t == "duration" ? 'u' : 's';
  }
  return got;
}

bool same_answer(const std::string& field, const std::string& expected, const std::string& got,
                 const std::string& sample) {
  if (field == "encoding") return encoding_family(expected) == encoding_family(got);
  if (expected == "*") return true;  // any answer reads the file right
  if (field == "delimiter" && expected.starts_with("fixed:") && got.starts_with("fixed:")) {
    return cut_lines(sample, expected) == cut_lines(sample, got);
  }
  return expected == got;
}

}  // namespace detection_corpus
