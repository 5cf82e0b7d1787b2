#include "import/detect/sample_preamble.hpp"

#include <string_view>

#include "import/detect/blanks.hpp"

namespace textio::import {

std::string find_comment_marker(const std::vector<sample_line>& lines) {
  static constexpr std::string_view markers[] = {"#", "%", "//"};
  std::size_t non_blank = 0;
  std::size_t best = 0;
  std::string marker;
  std::size_t counts[3] = {};
  for (const sample_line& l : lines) {
    const std::string_view t = trim_leading_blanks(l.text);
    if (t.empty()) continue;
    ++non_blank;
    for (std::size_t m = 0; m < 3; ++m) counts[m] += t.substr(0, markers[m].size()) == markers[m];
  }
  for (std::size_t m = 0; m < 3; ++m) {
    if (counts[m] > best) {
      best = counts[m];
      marker = markers[m];
    }
  }
  if (best == 0 || best * 10 >= non_blank * 9) return {};
  return marker;
}

front_matter take_front_matter(std::vector<sample_line>& lines) {
  front_matter out;
  if (lines.empty() || trim_blanks(lines[0].text) != "---") return out;
  std::size_t end = 0;
  for (std::size_t i = 1; i < lines.size() && i < 200 && end == 0; ++i) {
    const std::string_view t = trim_blanks(lines[i].text);
    if (t == "---" || t == "...") end = i + 1;
  }
  if (end == 0) return out;
  for (std::size_t i = 1; i + 1 < end; ++i) {
    const std::string_view t = trim_blanks(lines[i].text);
    for (const std::string_view key : {"sep:", "delimiter:"}) {
      if (!t.starts_with(key)) continue;
      std::string_view v = trim_blanks(t.substr(key.size()));
      if (v.size() >= 2 && (v.front() == '"' || v.front() == '\'') && v.back() == v.front())
        v = v.substr(1, v.size() - 2);
      if (v == "\\t" || v == "\t" || v == "tab") {
        out.delimiter = '\t';
      } else if (v.size() == 1 && v[0] != ' ') {
        out.delimiter = v[0];
      }
    }
  }
  out.text_end = end < lines.size() ? lines[end].offset : lines.back().offset + lines.back().text.size();
  for (std::size_t i = 0; i < end; ++i) lines[i].text = lines[i].text.substr(0, 0);
  return out;
}

}  // namespace textio::import
