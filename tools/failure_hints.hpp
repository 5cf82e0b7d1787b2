// What the tool adds to a refusal of the library for the person reading it:
// which NAME VALUE pair failed, a near key for an unknown name, and a hint
// when a value was read as JSON where text was needed or has the wrong
// length. The library's error itself (identifier, arguments, text) is kept.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "tools/message_failure.hpp"
#include "zvarray/value.hpp"

namespace zvtool {

// Fills failure.option and failure.hint for a refused call with the NAME
// VALUE arguments `texts` (as written) and their host `values`, which were
// applied in one call to a default record. Finds the pair by applying the
// pairs one at a time to a scratch record.
void explain_failure(message_failure& failure, std::span<const std::string> texts, std::span<const hv::Value> values);

// The option key nearest to `name` (case ignored): within two edits, or the
// only key that `name` begins; nullopt when none is near.
std::optional<std::string_view> near_key(std::string_view name);

// What an unknown "--word" most likely meant: a familiar flag of other data
// tools (--sep, --header, --nrows, ...) or an option key written as a flag
// (--num-header-lines), as the form that works ("`Delimiter ';'`",
// "`--rows N`"); none when nothing is near.
std::optional<std::string> flag_hint(std::string_view flag);

}  // namespace zvtool
