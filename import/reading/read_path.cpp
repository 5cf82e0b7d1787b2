#include "import/reading/read_path.hpp"

#include <algorithm>
#include <limits>

#include "import/reading/reader_settings.hpp"
#include "import/scan/scan_setup.hpp"
#include "import/shape/delimiter_rules.hpp"
#include "import/values/value_stage.hpp"

namespace textio::import {
namespace {

using namespace textio::enums;

// The structural scan, for plain delimited UTF-8 records under `counting`
// or not: it knows doubled quotes only, and counting takes the field count
// as it stands. A detected quote that turns into text part-way is no
// concern: the scan hands a quote still open at the end to the exact
// scanner, which then turns quoting off, and the scan with it.
void choose_structural(read_path& p, const text_format& format) {
  const textio::parser::options& o = p.opts;
  const bool covered = !p.counts || (o.leading_delim_rule() == LeadingDelimiterRule::Keep &&
                                     o.trailing_delim_rule() == TrailingDelimiterRule::Keep &&
                                     o.consecutive_delim_rule() == ConsecutiveDelimitersRule::Split);
  if (!format.structural_scan || !covered || o.parser_type() != ParserType::Delimited) return;
  const scan_rules<char> data = scan_rules_for<char>(o, format).data;
  if (data.backslash_escape || !data.trim) return;
  const std::uint64_t last_special = std::max(
      {o.num_header_lines(), o.variable_names_line(), o.variable_units_line(), o.variable_descriptions_line()});
  if (last_special == std::numeric_limits<std::uint64_t>::max()) return;
  p.structural = structural_classes::for_rules(data);
  p.first_structural_line = last_special + 1;
}

}  // namespace

read_path choose_read_path(const textio::parser::options& given, const utf8_input& input, const record_sink& sink,
                           const text_format& format, std::span<const variable_typing> types) {
  read_path p;
  p.opts = effective_options(given);
  p.utf8_bytes = scans_utf8_bytes(p.opts);
  const textio::parser::options& o = p.opts;
  const value_needs values = value_stage<char>::needs(o, types);
  const bool adds_or_ignores =
      o.extra_columns_rule() == ExtraColumnsRule::AddVars || o.extra_columns_rule() == ExtraColumnsRule::Ignore;

  p.keeps_table = o.missing_rule() == BadDataRule::OmitVar ||
                  (values.converts && o.import_error_rule() == BadDataRule::OmitVar) ||
                  (o.parser_type() == ParserType::FixedWidth && o.partial_field_rule() == PartialFieldRule::OmitVar);
  // Counting needs no values when no rule looks at them.
  p.counts = sink.counts_only() && !p.keeps_table && o.missing_rule() == BadDataRule::Fill &&
             (!values.converts || o.import_error_rule() == BadDataRule::Fill) && !values.strict && adds_or_ignores &&
             o.parser_type() != ParserType::FixedWidth;
  p.decompress_ahead = format.threads > 1 && input.compressed();
  p.values_in_parts = sink.takes_parts() && !p.keeps_table;
  p.rules_may_drop = o.missing_rule() != BadDataRule::Fill ||
                     (values.converts && o.import_error_rule() != BadDataRule::Fill) || values.strict;
  if (!p.utf8_bytes) return p;

  choose_structural(p, format);
  if (!p.structural) return p;
  p.plain = !p.counts && !p.keeps_table && values.in_place && adds_or_ignores &&
            keeps_every_field(
                delimiter_rule_set{o.leading_delim_rule(), o.trailing_delim_rule(), o.consecutive_delim_rule()});
  p.parts_readable = !p.keeps_table && !format.table_end_line && o.extra_columns_rule() != ExtraColumnsRule::Wrap;
  // A compressed file's size is not known before it is read: it is read in
  // parts whatever its size (a short one ends in the first part).
  const bool large = input.size() / 2 >= std::max<std::uint64_t>(format.part_bytes, 1);
  p.on_threads = p.parts_readable && format.threads > 1 && !input.converts() && sink.takes_part_sinks() &&
                 ((input.is_whole_regular_file() && large) || input.can_spool());
  return p;
}

}  // namespace textio::import
