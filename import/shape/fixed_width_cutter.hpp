// Cuts the text of a fixed-width record into fields of the given widths,
// counted in UTF-16 units, each trimmed of whitespace.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace textio::import {

struct cut_field {
  std::size_t offset = 0;  // where the field's width starts in the text
  std::size_t begin = 0;   // first unit after trimming
  std::size_t length = 0;  // units after trimming
};

struct fixed_width_cut {
  // One per width that the text reaches, the last possibly partial.
  std::vector<cut_field> fields;
  // The text ends before the record width; `incomplete` is the index of the
  // first field it does not fill (partial or not reached at all).
  bool short_record = false;
  std::size_t incomplete = 0;
  // Units beyond the record width start here.
  bool has_extra = false;
  std::size_t extra_begin = 0;
};

fixed_width_cut cut_fixed_width(std::u16string_view text, std::span<const std::uint64_t> widths,
                                std::u16string_view whitespace);

}  // namespace textio::import
