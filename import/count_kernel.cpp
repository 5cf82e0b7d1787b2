#include "import/count_kernel.hpp"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace textio::import {

std::optional<count_kernel> count_kernel::for_options(const textio::parser::options& o) {
  using namespace textio::enums;
  if (o.parser_type() != ParserType::Delimited || !o.comment_style().empty() ||
      o.leading_delim_rule() != LeadingDelimiterRule::Keep || o.trailing_delim_rule() != TrailingDelimiterRule::Keep ||
      o.consecutive_delim_rule() != ConsecutiveDelimitersRule::Split)
    return std::nullopt;
  count_kernel k;
  for (const auto& d : o.delimiter()) {
    if (d.empty()) continue;
    if (d.size() != 1 || d[0] >= 0x80 || d[0] == u'"' || d[0] == u'\r' || d[0] == u'\n') return std::nullopt;
    k.table_[d[0]] |= delimiter;
  }
  for (const auto& e : o.line_ending()) {
    if (e == u"\r\n") {
      k.crlf_ = true;
    } else if (e == u"\n") {
      k.lf_ = true;
    } else if (e == u"\r") {
      k.cr_ = true;
    } else if (!e.empty()) {
      return std::nullopt;
    }
  }
  if (k.crlf_ || k.cr_) k.table_['\r'] |= line_byte;
  if (k.lf_) k.table_['\n'] |= line_byte;
  for (const char16_t u : o.whitespace()) {
    if (u >= 0x80) return std::nullopt;
    if ((k.table_[u] & (delimiter | line_byte)) != 0 || u == u'"') return std::nullopt;
    k.table_[u] |= blank;
  }
  for (std::size_t b = 0; b < 256; ++b) {
    if ((k.table_[b] & (delimiter | line_byte)) == 0) continue;
    if (k.stop_count_ == k.stops_.size()) {
      k.stop_count_ = 0;
      break;
    }
    k.stops_[k.stop_count_++] = static_cast<char>(b);
  }
  return k;
}

std::size_t count_kernel::find_stop(std::string_view text, std::size_t pos) const noexcept {
  const std::size_t n = text.size();
  const auto* p = reinterpret_cast<const unsigned char*>(text.data());
#if defined(__SSE2__)
  if (stop_count_ > 0) {
    __m128i wanted[4];
    for (std::size_t i = 0; i < 4; ++i) wanted[i] = _mm_set1_epi8(stops_[i < stop_count_ ? i : 0]);
    while (pos + 16 <= n) {
      const __m128i chunk = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + pos));
      __m128i hits = _mm_cmpeq_epi8(chunk, wanted[0]);
      hits = _mm_or_si128(hits, _mm_cmpeq_epi8(chunk, wanted[1]));
      hits = _mm_or_si128(hits, _mm_cmpeq_epi8(chunk, wanted[2]));
      hits = _mm_or_si128(hits, _mm_cmpeq_epi8(chunk, wanted[3]));
      const int mask = _mm_movemask_epi8(hits);
      if (mask != 0) return pos + static_cast<std::size_t>(__builtin_ctz(static_cast<unsigned>(mask)));
      pos += 16;
    }
  }
#endif
  while (pos < n && (table_[p[pos]] & (delimiter | line_byte)) == 0) ++pos;
  return pos;
}

count_kernel::result count_kernel::scan(std::string_view text, bool at_end, std::uint64_t line) const noexcept {
  const std::size_t n = text.size();
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  result r;
  if (n == 0) {
    r.what = at_end ? status::end_of_input : status::need_more;
    return r;
  }
  const auto need_more = [&r] {
    r.what = status::need_more;
    return r;
  };
  // Length of the line ending at `pos` (0: none), or nothing when the window
  // ends too early to tell.
  const auto ending_at = [&](std::size_t pos) -> std::optional<std::size_t> {
    if (text[pos] == '\n') return lf_ ? 1 : 0;
    if (crlf_) {
      if (pos + 1 == n && !at_end) return std::nullopt;
      if (pos + 1 < n && text[pos + 1] == '\n') return 2;
    }
    return cr_ ? 1 : 0;
  };
  std::size_t pos = 0;
  std::size_t fields = 1;
  bool quoted = false;
#if defined(__SSE2__)
  __m128i wanted[4];
  for (std::size_t i = 0; i < 4; ++i) wanted[i] = _mm_set1_epi8(stops_[i < stop_count_ ? i : 0]);
#endif
  for (;;) {
    // Field start: whitespace, then perhaps a quote.
    std::size_t q = pos;
    while (q < n && (table_[byte(q)] & blank) != 0) ++q;
    if (q == n && !at_end) return need_more();
    if (q < n && text[q] == quote_) {
      quoted = true;
      pos = q + 1;
      for (;;) {
        while (pos < n && text[pos] != quote_ && (table_[byte(pos)] & line_byte) == 0) ++pos;
        if (pos == n) {
          if (!at_end) return need_more();
          return r;  // still open: the full scanner reports it
        }
        if (text[pos] == quote_) {
          if (pos + 1 == n && !at_end) return need_more();
          if (pos + 1 < n && text[pos + 1] == quote_) {
            pos += 2;
            continue;
          }
          ++pos;
          break;
        }
        const auto ending = ending_at(pos);
        if (!ending) return need_more();
        if (*ending != 0) {
          pos += *ending;
          ++line;
        } else {
          ++pos;
        }
      }
    }
    // The rest of the field, up to a delimiter or a line ending.
    bool next_field = false;
    for (;;) {
#if defined(__SSE2__)
      // Sixteen bytes at a time: the delimiters in a chunk are counted here,
      // unless the field after one starts with whitespace or a quote.
      while (stop_count_ > 0 && pos + 16 <= n) {
        const __m128i chunk = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text.data() + pos));
        __m128i hits = _mm_cmpeq_epi8(chunk, wanted[0]);
        hits = _mm_or_si128(hits, _mm_cmpeq_epi8(chunk, wanted[1]));
        hits = _mm_or_si128(hits, _mm_cmpeq_epi8(chunk, wanted[2]));
        hits = _mm_or_si128(hits, _mm_cmpeq_epi8(chunk, wanted[3]));
        auto mask = static_cast<unsigned>(_mm_movemask_epi8(hits));
        bool leave = false;
        while (mask != 0) {
          const std::size_t at = pos + static_cast<std::size_t>(__builtin_ctz(mask));
          if ((table_[byte(at)] & delimiter) == 0) {
            pos = at;  // a line-ending byte: handled below
            leave = true;
            break;
          }
          ++fields;
          const std::size_t next = at + 1;
          if (next == n || (table_[byte(next)] & blank) != 0 || text[next] == quote_) {
            pos = next;
            next_field = leave = true;
            break;
          }
          mask &= mask - 1;
        }
        if (leave) break;
        pos += 16;
      }
      if (next_field) break;
#endif
      pos = find_stop(text, pos);
      if (pos == n) {
        if (!at_end) return need_more();
        r.what = status::record;
        r.consumed = n;
        r.next_line = line;
        r.fields = fields;
        r.empty = fields == 1 && !quoted;
        for (std::size_t i = 0; r.empty && i < n; ++i) r.empty = (table_[byte(i)] & blank) != 0;
        return r;
      }
      if ((table_[byte(pos)] & delimiter) != 0) {
        ++fields;
        ++pos;
        break;
      }
      const auto ending = ending_at(pos);
      if (!ending) return need_more();
      if (*ending == 0) {
        ++pos;
        continue;
      }
      r.what = status::record;
      r.consumed = pos + *ending;
      r.next_line = line + 1;
      r.fields = fields;
      r.empty = fields == 1 && !quoted;
      for (std::size_t i = 0; r.empty && i < pos; ++i) r.empty = (table_[byte(i)] & blank) != 0;
      return r;
    }
  }
}

}  // namespace textio::import
