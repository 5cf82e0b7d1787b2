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

std::string spell_char(char c) {
  if (c == '\t') return "tab";
  if (c == '\0') return "none";
  return std::string(1, c);
}

std::string encoding_family(std::string e) {
  for (char& c : e) c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 32 : c);
  if (e == "WINDOWS-1252" || e == "ISO-8859-1" || e == "ISO-8859-15" || e == "CP1252") return "LATIN1";
  return e;
}

std::vector<std::size_t> widths(const std::string& answer) {
  std::vector<std::size_t> out;
  std::stringstream ss(answer.substr(6));
  std::string w;
  while (std::getline(ss, w, ',')) out.push_back(std::stoul(w));
  return out;
}

// Every line cut at the widths (bytes; the fixed-width files are ASCII), each
// field trimmed of blanks.
std::vector<std::string> cut_lines(const std::string& text, const std::vector<std::size_t>& ws) {
  std::vector<std::string> cells;
  std::stringstream ss(text);
  std::string line;
  while (std::getline(ss, line)) {
    std::size_t at = 0;
    for (const std::size_t w : ws) {
      std::string f = at < line.size() ? line.substr(at, w) : "";
      f.erase(0, f.find_first_not_of(" \r"));
      f.erase(f.find_last_not_of(" \r") + 1);
      cells.push_back(f);
      at += w;
    }
    cells.push_back(at < line.size() ? line.substr(at) : "");
  }
  return cells;
}

}  // namespace

std::vector<entry> load_manifest(const std::string& dir) {
  std::ifstream in(dir + "/MANIFEST.tsv");
  std::vector<entry> out;
  std::string line;
  std::vector<std::string> header;
  while (std::getline(in, line)) {
    if (line.empty() || line[0] == '#') continue;
    std::vector<std::string> cols;
    std::stringstream ss(line);
    std::string col;
    while (std::getline(ss, col, '\t')) cols.push_back(col);
    if (header.empty()) {
      header = cols;
      continue;
    }
    entry e;
    for (std::size_t i = 0; i < cols.size() && i < header.size(); ++i) {
      if (header[i] == "file") e.file = cols[i];
      e.expected[header[i]] = cols[i];
    }
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
    std::string w = "fixed:";
    for (std::size_t i = 0; i < o.field_widths().size(); ++i) {
      if (i > 0) w += ',';
      w += std::to_string(o.field_widths()[i]);
    }
    got["delimiter"] = w;
  } else if (o.parser_type() == ParserType::Tabular) {
    got["delimiter"] = "blanks";
  } else if (o.delimiter().empty()) {
    got["delimiter"] = "none";
  } else {
    const std::string d = narrow(o.delimiter().front());
    got["delimiter"] = d == "\t" ? "tab" : d;
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
  std::string types;
  for (const std::string& t : r.report.variable_types) {
    types += t == "double" ? 'd' : t == "logical" ? 'l' : t == "datetime" ? 't' : t == "duration" ? 'u' : 's';
  }
  got["types"] = types;
  return got;
}

bool same_answer(const std::string& field, const std::string& expected, const std::string& got,
                 const std::string& sample) {
  if (field == "encoding") return encoding_family(expected) == encoding_family(got);
  if (expected == "*") return true;  // any answer reads the file right
  if (field == "delimiter" && expected.rfind("fixed:", 0) == 0 && got.rfind("fixed:", 0) == 0) {
    return cut_lines(sample, widths(expected)) == cut_lines(sample, widths(got));
  }
  return expected == got;
}

}  // namespace detection_corpus
