#include "zvdelim/delimiter.hpp"

#include <algorithm>
#include <utility>

namespace textio {

Delimiter::Delimiter(std::vector<::ustring> strings) : strings_(std::move(strings)) {
  order_.reserve(strings_.size());
  for (std::size_t i = 0; i < strings_.size(); ++i) {
    if (!strings_[i].empty()) order_.push_back(i);
  }
  std::stable_sort(order_.begin(), order_.end(), [this](std::size_t a, std::size_t b) {
    const ::ustring& sa = strings_[a];
    const ::ustring& sb = strings_[b];
    if (sa[0] != sb[0]) return sa[0] < sb[0];
    return sa.size() > sb.size();  // stable: equal lengths keep list order
  });
  for (std::size_t pos = 0; pos < order_.size(); ++pos) {
    const char16_t first = strings_[order_[pos]][0];
    if (groups_.empty() || groups_.back().first != first) groups_.push_back({first, pos, pos});
    groups_.back().end = pos + 1;
    longest_ = std::max(longest_, strings_[order_[pos]].size());
  }
}

const Delimiter::group* Delimiter::find_group(char16_t unit) const noexcept {
  const auto it =
      std::lower_bound(groups_.begin(), groups_.end(), unit, [](const group& g, char16_t u) { return g.first < u; });
  if (it == groups_.end() || it->first != unit) return nullptr;
  return &*it;
}

bool Delimiter::may_start_with(char16_t unit) const noexcept { return find_group(unit) != nullptr; }

std::optional<Delimiter::match> Delimiter::match_at(std::u16string_view text, std::size_t position) const noexcept {
  if (position >= text.size()) return std::nullopt;
  const group* g = find_group(text[position]);
  if (g == nullptr) return std::nullopt;
  const std::u16string_view rest = text.substr(position);
  for (std::size_t k = g->begin; k < g->end; ++k) {
    const ::ustring& candidate = strings_[order_[k]];
    if (rest.starts_with(candidate)) return match{order_[k], candidate.size()};
  }
  return std::nullopt;
}

}  // namespace textio
