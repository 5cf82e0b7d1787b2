// Chooses the dialect (delimiter, quote, escape) that cuts the sample into
// the most consistent table. Each candidate is scored by how regular the
// table it produces is: how many rows share a field count (rows with more
// fields weigh more) times how many fields hold a recognisable kind of value
// and how uniform each column's kind is. Counting delimiter characters on a
// line says little; the table they produce says much.
#pragma once

#include <string_view>
#include <vector>

#include "import/detect/sample_table.hpp"

namespace textio::import {

struct dialect_score {
  dialect d;
  double score = 0;        // the larger the better, 0 when every row has one field
  double consistency = 0;  // share of rows with the dominant field count
  std::size_t dominant_fields = 0;
  bool unclosed_quote = false;
};

// Candidate delimiters: , ; tab | : and runs of blanks, plus punctuation the
// sample's lines hold the same number of times.
std::vector<char> candidate_delimiters(const std::vector<sample_line>& lines, std::string_view comment_marker);

dialect_score score_dialect(const std::vector<sample_line>& lines, const dialect& d, std::string_view comment_marker);

// All candidates scored, the best first. `delimiters` empty: the candidate
// delimiters; otherwise only these (the user's). `quotes` likewise.
std::vector<dialect_score> rank_dialects(const std::vector<sample_line>& lines, std::string_view text,
                                         std::string_view comment_marker, const std::vector<char>& delimiters,
                                         bool with_blanks, const std::vector<char>& quotes,
                                         const std::vector<escape_style>& escapes);

}  // namespace textio::import
