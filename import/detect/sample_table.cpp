#include "import/detect/sample_table.hpp"

#include "import/detect/blanks.hpp"

namespace textio::import {
namespace {

// Builds one record field by field.
class record_builder {
 public:
  explicit record_builder(sample_record& r) : r_(r) {}
  void add(std::string&& field, bool quoted) {
    ++r_.field_count;
    if (r_.fields.size() < max_kept_fields) {
      if (field.size() > max_kept_bytes) field.resize(max_kept_bytes);  // kinds and names need only the start
      r_.fields.push_back(std::move(field));
      r_.quoted.push_back(quoted);
    }
  }

 private:
  sample_record& r_;
};

}  // namespace

std::vector<sample_line> split_lines(std::string_view text, std::size_t max_lines) {
  std::vector<sample_line> lines;
  std::size_t start = 0;
  const std::size_t n = text.size();
  while (start < n && lines.size() < max_lines) {
    std::size_t i = start;
    while (i < n && text[i] != '\n' && text[i] != '\r') ++i;
    lines.push_back({text.substr(start, i - start), start});
    if (i < n && text[i] == '\r' && i + 1 < n && text[i + 1] == '\n') ++i;
    start = i + 1;
  }
  return lines;
}

sample_table split_records(const std::vector<sample_line>& lines, const dialect& d, std::string_view comment_marker,
                           std::size_t max_records) {
  sample_table table;
  std::size_t li = 0;
  const char q = d.quote;
  while (li < lines.size() && table.records.size() < max_records) {
    sample_record rec;
    rec.first_line = li + 1;
    const std::string_view first = lines[li].text;
    const std::string_view trimmed = trim_blanks(first);
    if (trimmed.empty() || (!comment_marker.empty() && trimmed.substr(0, comment_marker.size()) == comment_marker)) {
      rec.blank = trimmed.empty();
      rec.comment = !rec.blank;
      rec.last_line = li + 1;
      if (rec.comment) {
        rec.fields.emplace_back(first);
        rec.quoted.push_back(false);
        rec.field_count = 1;
      }
      table.records.push_back(std::move(rec));
      ++li;
      continue;
    }
    record_builder out(rec);
    std::string field;
    bool quoted = false;         // the current field began with a quote
    bool in_quote = false;       // inside its quotes now
    bool field_started = false;  // a non-blank unit seen in this field
    bool closed = false;         // saw the closing quote
    bool after_quote = false;    // text followed the closing quote
    auto finish_field = [&](bool trim) {
      std::string f = std::move(field);
      if (trim && !quoted) {
        const std::string_view t = trim_blanks(f);
        f = std::string(t);
      }
      out.add(std::move(f), quoted);
      table.quoted_fields += quoted;
      field.clear();
      quoted = in_quote = field_started = closed = after_quote = false;
    };
    bool done = false;
    while (!done) {
      const std::string_view line = lines[li].text;
      std::size_t i = 0;
      if (d.blanks && !in_quote) {
        while (i < line.size() && is_blank(line[i])) ++i;  // indentation
      }
      for (; i < line.size(); ++i) {
        const char c = line[i];
        if (in_quote) {
          if (d.escape == escape_style::backslash && c == '\\' && i + 1 < line.size()) {
            field += line[++i];
          } else if (c == q) {
            if (d.escape == escape_style::doubled && i + 1 < line.size() && line[i + 1] == q) {
              field += q;
              ++i;
            } else {
              in_quote = false;
              closed = true;
            }
          } else {
            field += c;
          }
          continue;
        }
        // A comment runs to the line's end, as the reader takes it.
        if (!comment_marker.empty() && line.substr(i, comment_marker.size()) == comment_marker) {
          break;
        }
        const bool at_delim = d.blanks ? is_blank(c) : c == d.delimiter;
        if (at_delim) {
          if (d.blanks) {
            while (i + 1 < line.size() && is_blank(line[i + 1])) ++i;
            if (i + 1 == line.size()) break;  // line-end blanks
          }
          finish_field(true);
          continue;
        }
        if (q != '\0' && c == q && !field_started) {
          quoted = in_quote = field_started = true;
          field.clear();
          continue;
        }
        if (!is_blank(c)) {
          field_started = true;
          if (closed && !after_quote) {
            after_quote = true;
            ++table.text_after_quote;
          }
        }
        if (!closed || !is_blank(c)) field += c;
      }
      if (in_quote && li + 1 < lines.size()) {
        field += '\n';
        ++li;
        continue;
      }
      if (in_quote) table.unclosed_quote = true;
      done = true;
    }
    finish_field(true);
    // Blanks before a comment at a line's end are no field.
    if (d.blanks && rec.field_count > 1 && rec.fields.size() == rec.field_count && rec.fields.back().empty() &&
        !rec.quoted.back()) {
      rec.fields.pop_back();
      rec.quoted.pop_back();
      --rec.field_count;
    }
    rec.last_line = li + 1;
    table.records.push_back(std::move(rec));
    ++li;
  }
  table.cut = li < lines.size();
  return table;
}

}  // namespace textio::import
