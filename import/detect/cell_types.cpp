#include "import/detect/cell_types.hpp"

#include <array>
#include <cctype>
#include <string>
#include <vector>

#include "import/detect/blanks.hpp"

namespace textio::import {
namespace {

bool digit(char c) { return c >= '0' && c <= '9'; }

char lower_ascii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

std::string lower(std::string_view s) {
  std::string out(s);
  for (char& c : out) c = lower_ascii(c);
  return out;
}

// Whether `s` holds `word` (lower case), ignoring case.
bool contains_word(std::string_view s, std::string_view word) {
  for (std::size_t i = 0; i + word.size() <= s.size(); ++i) {
    std::size_t k = 0;
    while (k < word.size() && lower_ascii(s[i + k]) == word[k]) ++k;
    if (k == word.size()) return true;
  }
  return false;
}

bool is_missing_marker(std::string_view s) {
  if (s.size() > 7) return false;
  static constexpr std::array<std::string_view, 12> markers = {"na", "n/a", "nan", "null", "none", "-",
                                                               "?",  ".",   "--",  "#n/a", "nil",  "missing"};
  const std::string l = lower(s);
  for (const auto m : markers) {
    if (l == m) return true;
  }
  return false;
}

// A number: sign, digits with optional grouping, fraction, exponent, an
// optional trailing percent sign; also inf and nan spellings.
bool is_number(std::string_view s, const number_separators& f) {
  std::size_t i = 0;
  const std::size_t n = s.size();
  if (i < n && (s[i] == '+' || s[i] == '-')) ++i;
  if (i < n && s[i] == '$') ++i;
  if (i < n && (s[i] == 'i' || s[i] == 'I')) {
    const std::string rest = lower(s.substr(i));
    return rest == "inf" || rest == "infinity";
  }
  std::size_t int_digits = 0;
  std::size_t group = 0;
  bool grouped = false;
  while (i < n) {
    if (digit(s[i])) {
      ++int_digits;
      ++group;
    } else if (f.thousands != '\0' && s[i] == f.thousands && int_digits > 0 && i + 1 < n && digit(s[i + 1])) {
      if ((grouped && group != 3) || (!grouped && group > 3)) return false;
      grouped = true;
      group = 0;
    } else {
      break;
    }
    ++i;
  }
  if (grouped && group != 3) return false;
  std::size_t frac_digits = 0;
  if (i < n && s[i] == f.decimal) {
    ++i;
    while (i < n && digit(s[i])) {
      ++frac_digits;
      ++i;
    }
  }
  if (int_digits + frac_digits == 0) return false;
  if (i < n && (s[i] == 'e' || s[i] == 'E' || s[i] == 'd' || s[i] == 'D')) {
    std::size_t j = i + 1;
    if (j < n && (s[j] == '+' || s[j] == '-')) ++j;
    std::size_t exp_digits = 0;
    while (j < n && digit(s[j])) {
      ++exp_digits;
      ++j;
    }
    if (exp_digits == 0) return false;
    i = j;
  }
  if (i < n && s[i] == '%') ++i;
  return i == n;
}

bool is_logical(std::string_view s) {
  if (s.size() > 5) return false;
  const std::string l = lower(s);
  return l == "true" || l == "false" || l == "t" || l == "f" || l == "yes" || l == "no";
}

// Dates and times: digits separated by - / . : with a T or blank between a
// date and a time, an optional zone, and month names (12-Jan-2020, Jan 5 2020).
bool is_datetime(std::string_view s) {
  if (s.size() < 4 || s.size() > 40) return false;
  std::size_t digits = 0;
  std::size_t seps = 0;
  std::size_t letters = 0;
  bool colon = false;
  bool date_sep = false;
  for (const char c : s) {
    if (digit(c)) {
      ++digits;
    } else if (c == '-' || c == '/' || c == '.') {
      ++seps;
      date_sep = true;
    } else if (c == ':') {
      ++seps;
      colon = true;
    } else if (std::isalpha(static_cast<unsigned char>(c))) {
      ++letters;
    } else if (c == ' ' || c == 'T' || c == '+' || c == 'Z' || c == ',') {
      continue;
    } else {
      return false;
    }
  }
  if (digits < 2) return false;
  if (letters > 0) {
    static constexpr std::array<std::string_view, 12> months = {"jan", "feb", "mar", "apr", "may", "jun",
                                                                "jul", "aug", "sep", "oct", "nov", "dec"};
    bool month = false;
    for (const auto m : months) month = month || contains_word(s, m);
    const bool clock = contains_word(s, "am") || contains_word(s, "pm") || contains_word(s, "t");
    if (!month && !(clock && colon)) return false;
    return letters <= 9 && digits >= 3;
  }
  if (colon) return seps >= 1 && digits >= 3;
  // Date separators: two of the same kind, e.g. 2020-01-05, 5/1/2020, 05.01.2020.
  if (!date_sep || seps != 2) return false;
  const char sep = s[s.find_first_of("-/.")];
  std::size_t same = 0;
  for (const char c : s) same += c == sep;
  return same == 2 && digits >= 4;
}

}  // namespace

cell_type classify(std::string_view field, const number_separators& format) {
  field = trim_blanks(field);
  if (field.empty()) return cell_type::empty;
  // Numbers, dates and markers are short; a long field is text.
  if (field.size() > 64) return cell_type::text;
  if (is_missing_marker(field)) return cell_type::empty;
  if (is_number(field, format)) return cell_type::number;
  if (is_logical(field)) return cell_type::logical;
  if (is_datetime(field)) return cell_type::datetime;
  return cell_type::text;
}

namespace {

// The votes of one field, without the evidence against grouping.
void vote_shape(std::string_view s, number_votes& v) {
  if (!s.empty() && (s.front() == '-' || s.front() == '+')) s.remove_prefix(1);
  if (s.empty() || !digit(s.front())) return;
  // Shape: runs of digits separated by single '.', ',' or ' '.
  std::string seps;
  std::array<std::size_t, 16> runs{};
  std::size_t nruns = 0;
  std::size_t run = 0;
  for (std::size_t i = 0; i < s.size(); ++i) {
    const char c = s[i];
    if (digit(c)) {
      ++run;
      continue;
    }
    if ((c == '.' || c == ',' || c == ' ') && run > 0 && nruns + 1 < runs.size()) {
      seps += c;
      runs[nruns++] = run;
      run = 0;
      continue;
    }
    return;
  }
  if (run == 0) return;
  runs[nruns++] = run;
  if (seps.empty()) {
    v.long_ungrouped += run > 3;
    return;
  }
  auto groups_of_three = [&](std::size_t from, std::size_t to) {
    if (runs[from] > 3) return false;
    for (std::size_t k = from + 1; k < to; ++k) {
      if (runs[k] != 3) return false;
    }
    return true;
  };
  const char last = seps.back();
  const bool mixed = seps.find_first_not_of(seps.front()) != std::string::npos;
  if (seps.size() == 1) {
    if (last == '.') ++v.decimal_point;
    if (last == ',' && runs[1] != 3) ++v.decimal_comma;
    if (last == ',' && runs[1] == 3 && runs[0] > 3) ++v.decimal_comma;
    // 1,234 and 1.234 say nothing alone; 1 234 groups.
    if (last == ' ' && groups_of_three(0, 2)) {
      ++v.thousands_space;
      v.thousands_space_clear += runs[0] < 3;
    }
    if (last != ' ' && runs[0] > 3) ++v.long_ungrouped;
    return;
  }
  if (!mixed) {
    // 1.234.567 / 1,234,567 / 1 234 567
    if (!groups_of_three(0, nruns)) return;
    if (last == '.') ++v.thousands_dot;
    if (last == ',') ++v.thousands_comma;
    if (last == ' ') {
      ++v.thousands_space;
      v.thousands_space_clear += runs[0] < 3;
    }
    return;
  }
  // A grouping separator then one decimal separator.
  const char group = seps.front();
  if (seps.find(last) != seps.size() - 1) return;
  if (!groups_of_three(0, nruns - 1)) return;
  if (group == '.' && last == ',') {
    ++v.thousands_dot;
    ++v.decimal_comma;
  } else if (group == ',' && last == '.') {
    ++v.thousands_comma;
    ++v.decimal_point;
  } else if (group == ' ') {
    ++v.thousands_space;
    ++v.thousands_space_clear;
    last == ',' ? ++v.decimal_comma : ++v.decimal_point;
  }
}

// 1,234 or 1.234: a grouping or a decimal separator, undecided.
bool lone_group(std::string_view s) {
  const std::size_t at = s.find_first_of(".,");
  if (at == std::string_view::npos || at == 0 || at > 3 || s.size() != at + 4) return false;
  for (std::size_t i = 0; i < s.size(); ++i) {
    if (i != at && !digit(s[i])) return false;
  }
  return true;
}

}  // namespace

void vote_number_format(std::string_view s, number_votes& v) {
  s = trim_blanks(s);
  number_votes w;
  vote_shape(s, w);
  std::string_view unsigned_part = s;
  if (!unsigned_part.empty() && (unsigned_part.front() == '-' || unsigned_part.front() == '+')) {
    unsigned_part.remove_prefix(1);
  }
  if (!unsigned_part.empty() && digit(unsigned_part.front())) {
    // A separator that is neither grouping nor decimal separator here; a
    // lone 1,234 or 1.234 says nothing either way.
    const bool lone_three = lone_group(unsigned_part);
    const bool has_dot = s.find('.') != std::string_view::npos;
    const bool has_comma = s.find(',') != std::string_view::npos;
    const bool has_space = s.find(' ') != std::string_view::npos;
    v.broken_dot += has_dot && !lone_three && w.thousands_dot == 0 && w.decimal_point == 0;
    v.broken_comma += has_comma && !lone_three && w.thousands_comma == 0 && w.decimal_comma == 0;
    v.broken_space += has_space && w.thousands_space == 0;
  }
  v.decimal_point += w.decimal_point;
  v.decimal_comma += w.decimal_comma;
  v.thousands_dot += w.thousands_dot;
  v.thousands_comma += w.thousands_comma;
  v.thousands_space += w.thousands_space;
  v.thousands_space_clear += w.thousands_space_clear;
  v.long_ungrouped += w.long_ungrouped;
}

number_separators guess_number_format(const sample_table& table, const dialect& d) {
  // Votes column by column: grouping counts only from columns that group
  // every number the same way.
  std::vector<number_votes> columns;
  std::size_t seen = 0;
  for (std::size_t r = 1; r < table.records.size() && seen < 20000; ++r) {
    const sample_record& rec = table.records[r];
    if (rec.blank || rec.comment) continue;
    if (columns.size() < rec.fields.size()) columns.resize(rec.fields.size());
    for (std::size_t j = 0; j < rec.fields.size(); ++j, ++seen) vote_number_format(rec.fields[j], columns[j]);
  }
  number_votes v;
  for (const number_votes& c : columns) {
    v.decimal_point += c.decimal_point;
    v.decimal_comma += c.decimal_comma;
    if (c.long_ungrouped > 0) continue;
    if (c.broken_dot == 0) v.thousands_dot += c.thousands_dot;
    if (c.broken_comma == 0) v.thousands_comma += c.thousands_comma;
    if (c.broken_space == 0 && c.thousands_space_clear > 0) v.thousands_space += c.thousands_space;
  }
  number_separators f;
  const bool comma_free = d.delimiter != ',' || d.blanks;
  if (comma_free && v.decimal_comma >= 1 && v.decimal_comma > v.decimal_point) f.decimal = ',';
  if (f.decimal == ',' && v.thousands_dot >= 1 && v.thousands_dot >= v.thousands_comma) f.thousands = '.';
  if (f.decimal == '.' && v.thousands_comma >= 1 && (comma_free || v.thousands_comma * 2 > seen / 4)) {
    f.thousands = ',';
  }
  // A blank only groups digits where blanks and tabs do not part fields, nor
  // does a comma (1 234,5 would be two fields).
  const bool blank_free = !d.blanks && d.delimiter != '\t' && d.delimiter != ',';
  if (f.thousands == '\0' && v.thousands_space >= 1 && blank_free) f.thousands = ' ';
  // A comma splits the fields: a grouping comma can only be inside quotes.
  if (f.thousands == ',' && !comma_free) f.thousands = '\0';
  return f;
}

}  // namespace textio::import
