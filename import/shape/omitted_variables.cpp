#include "import/shape/omitted_variables.hpp"

namespace textio::import {

template <class CharT>
void omitted_variables<CharT>::send_rows(record_sink& sink) const {
  std::vector<output_value> out;
  table_.for_each_row([&](std::span<const output_value> row, std::size_t padding) {
    out.clear();
    for (std::size_t i = 0; i < row.size(); ++i) {
      if (i < marks_.size() && marks_[i]) continue;
      out.push_back(row[i]);
    }
    std::size_t kept_padding = 0;
    for (std::size_t i = row.size(); i < row.size() + padding; ++i) {
      if (i >= marks_.size() || !marks_[i]) ++kept_padding;
    }
    sink.padded_record(out, kept_padding);
  });
}

template class omitted_variables<char>;
template class omitted_variables<char16_t>;

}  // namespace textio::import
