#include "import/detect/cell_types.hpp"

#include <array>
#include <cctype>
#include <string>

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

void vote_number_format(std::string_view s, number_votes& v) {
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
  if (seps.empty()) return;
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
    return;
  }
  if (!mixed) {
    // 1.234.567 / 1,234,567 / 1 234 567
    if (!groups_of_three(0, nruns)) return;
    if (last == '.') ++v.thousands_dot;
    if (last == ',') ++v.thousands_comma;
    if (last == ' ') ++v.thousands_space;
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
    last == ',' ? ++v.decimal_comma : ++v.decimal_point;
  }
}

}  // namespace textio::import
