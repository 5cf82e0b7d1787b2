#include "import/shape/fixed_width_cutter.hpp"

namespace textio::import {

fixed_width_cut cut_fixed_width(std::u16string_view text, std::span<const std::uint64_t> widths,
                                std::u16string_view whitespace) {
  fixed_width_cut cut;
  const auto blank = [whitespace](char16_t u) { return whitespace.find(u) != std::u16string_view::npos; };
  std::size_t pos = 0;
  for (std::size_t i = 0; i < widths.size(); ++i) {
    const std::size_t left = text.size() - pos;
    if (widths[i] > left || (left == 0 && widths[i] > 0)) {
      if (!cut.short_record) {
        cut.short_record = true;
        cut.incomplete = i;
      }
      if (left == 0) break;
    }
    const std::size_t width = widths[i] < left ? static_cast<std::size_t>(widths[i]) : left;
    std::size_t b = pos;
    std::size_t e = pos + width;
    while (b < e && blank(text[b])) ++b;
    while (e > b && blank(text[e - 1])) --e;
    cut.fields.push_back({pos, b, e - b});
    pos += width;
  }
  if (pos < text.size()) {
    cut.has_extra = true;
    cut.extra_begin = pos;
  }
  return cut;
}

}  // namespace textio::import
