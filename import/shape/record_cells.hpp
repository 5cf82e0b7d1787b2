// The cells of a record between shaping and values: the scanned record's own
// fields, plus external ones for text that is not in the window (cut
// fixed-width fields, wrapped extra fields), whose place is known already.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "import/scan/record_scanner.hpp"
#include "import/input/utf8_text.hpp"

namespace textio::import {

// A place in the input as errors report it: physical line, and column in
// UTF-16 units from 1.
struct source_position {
  std::uint64_t line = 0;
  std::uint64_t column = 0;
};

// The source position of a place in the window.
template <class CharT>
source_position resolve(std::basic_string_view<CharT> window, const window_position& at) {
  std::uint64_t column = at.pos - at.line_start;
  if constexpr (sizeof(CharT) == 1) column = utf16_length(window.substr(at.line_start, at.pos - at.line_start));
  return {at.line, column + 1};
}

template <class CharT>
class record_cells {
 public:
  using view = std::basic_string_view<CharT>;

  explicit record_cells(const scanned_record<CharT>& scanned) : scanned_(scanned) {}

  field_list cells;
  bool in_window = true;  // false for fields still waiting at the end

  view text_of(view window, const raw_field& c) const {
    return c.external ? external_[c.begin].text : scanned_.text(window, c);
  }
  source_position where(view window, const raw_field& c) const {
    return c.external ? external_[c.begin].where : resolve(window, scanned_.position(c.start));
  }
  // Whether a cell is known to be missing already (a filled partial field).
  bool known_missing(const raw_field& c) const { return c.external && external_[c.begin].missing; }
  // Where the record ends: the place of the fields it lacks (none for a
  // record made of waiting fields).
  source_position end(view window) const {
    if (!in_window) return {};
    return resolve(window, scanned_.position(static_cast<std::uint32_t>(scanned_.end.pos)));
  }

  // A cell of text outside the window, whose place is known already; the
  // text must stay valid until the cells are cleared.
  raw_field external_cell(view text, source_position where, bool missing = false) {
    raw_field c;
    c.external = 1;
    c.begin = static_cast<std::uint32_t>(external_.size());
    external_.push_back({text, where, missing});
    return c;
  }

  void clear() {
    cells.clear();
    external_.clear();
  }

 private:
  struct external_text {
    view text;
    source_position where;
    bool missing = false;
  };
  const scanned_record<CharT>& scanned_;
  std::vector<external_text> external_;
};

}  // namespace textio::import
