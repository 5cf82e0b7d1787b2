// The writers' escaping against byte-at-a-time references on random texts
// drawn from the bytes that matter (quotes, delimiters, controls, UTF-8
// sequences whole, cut and malformed, stray high bytes), at every length
// around the eight-byte steps of the scan.
#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "tools/json_writer.hpp"
#include "tools/record_writers.hpp"
#include "zvcore/utf8.hpp"

namespace {

// Whole UTF-8 sequences as they are; a lone byte escaped by its short form
// or as \u00XX when it is a control or no sequence of its own.
std::string reference_json(std::string_view bytes) {
  std::string out = "\"";
  for (std::size_t i = 0, length = 0; i < bytes.size(); i += std::max<std::size_t>(length, 1)) {
    length = foundation::core::unicode::utf8_sequence_at(bytes.substr(i)).length;
    const auto byte = static_cast<unsigned char>(bytes[i]);
    const std::size_t short_form = std::string_view("\"\\\b\f\n\r\t").find(bytes[i]);
    char hex[8];
    if (length > 1) {
      out.append(bytes.substr(i, length));
    } else if (length == 1 && short_form != std::string_view::npos) {
      out += std::string("\\") + "\"\\bfnrt"[short_form];
    } else if (length == 1 && byte >= 0x20) {
      out += bytes[i];
    } else {
      out.append(hex, static_cast<std::size_t>(std::snprintf(hex, sizeof hex, "\\u%04x", byte)));
    }
  }
  return out + '"';
}

std::string reference_csv(std::string_view text) {
  const auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\b'; };
  const bool quoted = text.empty() || text.starts_with("\xEF\xBB\xBF") || blank(text.front()) || blank(text.back()) ||
                      text.find_first_of(",\"\r\n") != std::string_view::npos;
  if (!quoted) return std::string(text);
  std::string out = "\"";
  for (const char c : text) {
    if (c == '"') out += '"';
    out += c;
  }
  return out + '"';
}

std::string random_text(std::mt19937& rng) {
  // The pieces split at '|'; the first three are plain, and most picks are
  // those, so that long runs cross the eight-byte steps.
  static const std::vector<std::string> pieces = [] {
    std::istringstream all(
        "a|Z|0| |,|\"|\\|\r|\n|\t|\x01|\x1f|\x7f|\xC3\xA9|\xE2\x82\xAC|\xF0\x9F\x98\x80|\xC3|\xE2\x82|\xFF|\x80|"
        "\xEF\xBB\xBF|\xC0\x80|\xED\xA0\x80|\xF4\x90\x80\x80|plain text");
    std::vector<std::string> list;
    for (std::string piece; std::getline(all, piece, '|');) list.push_back(piece);
    return list;
  }();
  std::string text;
  const std::size_t count = rng() % 24;
  for (std::size_t i = 0; i < count; ++i) {
    text += rng() % 3 != 0 ? pieces[rng() % 3] : pieces[rng() % pieces.size()];
  }
  return text;
}

TEST(RecordEscaping, MatchesByteAtATimeReferences) {
  std::mt19937 rng(12);
  for (int round = 0; round < 20000; ++round) {
    const std::string text = random_text(rng);
    ASSERT_EQ(zvtool::json_quote_bytes(text), reference_json(text)) << testing::PrintToString(text);

    std::ostringstream csv_out;
    {
      zvtool::csv_writer csv(csv_out);
      textio::import::output_value value;
      value.kind = textio::import::value_kind::text;
      value.bytes = text;
      csv.record(std::span(&value, 1));
      csv.flush();
    }
    ASSERT_EQ(csv_out.str(), reference_csv(text) + "\r\n") << testing::PrintToString(text);
  }
}

// Numbers: the whole-number shortcut against the general shortest form, near
// the lengths where the exponent form gets shorter and at the edges of 2^53.
TEST(RecordEscaping, NumbersMatchTheShortestRoundTrip) {
  std::mt19937_64 rng(5);
  std::vector<double> values = {-0.0, 0.5, 1e300, 9007199254740991.0, 9007199254740992.0, -9007199254740993.0};
  for (int i = 0; i < 20000; ++i) {
    const double mantissa = static_cast<double>(rng() % 1000);
    const double scale = std::pow(10.0, static_cast<double>(rng() % 17));
    values.push_back((rng() % 2 != 0 ? -1 : 1) * mantissa * scale);
    values.push_back(static_cast<double>(static_cast<std::int64_t>(rng() >> (rng() % 64))));
  }
  for (const double v : values) {
    char digits[64];
    const std::string expected(digits, std::to_chars(digits, digits + sizeof digits, v).ptr);
    ASSERT_EQ(zvtool::number_text(v), expected) << v;
  }
}

}  // namespace
