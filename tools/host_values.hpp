// How the tool's arguments become host values. A NAME is text. A VALUE is
// read as JSON when it parses as JSON, and as text otherwise. JSON maps onto
// the host classes (string: char, number: double, true/false: logical, null:
// no value, array: double row or cell row, object: 1-by-1 struct), and an
// object with the key "$class" spells out a typed value of any class and
// shape:
//   {"$class": "uint64", "$size": [1, 2], "$data": [4, 18446744073709551615]}
//   {"$class": "struct", "$size": [1, 2], "$fields": ["a"], "$data": [{"a": 1}, {}]}
// A malformed typed value is a usage error, not text.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "zvarray/value.hpp"

namespace zvtool {

// Values nested more levels deep than this (a top-level value is one level)
// are refused, so that no input can exhaust the stack.
inline constexpr std::size_t max_value_depth = 100;

// Parses JSON text, keeping the order of object members. A number written
// -0 stays negative zero (the parser would make it the integer 0). Gives
// nullopt for text that is no JSON, and then sets *error, if given, to the
// parser's description.
std::optional<nlohmann::ordered_json> parse_json(std::string_view text, std::string* error = nullptr);

// A 1-by-N char array of the UTF-16 units of UTF-8 text (a byte that is no
// UTF-8 becomes U+FFFD).
hv::Value text_value(std::string_view utf8);

// The host value of a JSON value. Throws usage_error for a malformed typed
// value; the message says where in the JSON the fault lies.
hv::Value host_value(const nlohmann::ordered_json& json);

// A VALUE argument: its JSON value if it parses as JSON, else its text.
hv::Value value_argument(std::string_view argument);

// The struct given with --struct: a JSON object, or a typed struct value.
hv::Value struct_argument(std::string_view json_text);

// The arguments of one set_parser_options call: the one struct of --struct,
// or every positional argument, names (even positions) as text and values
// (odd positions) as VALUE arguments. --struct together with positional
// arguments is a usage error.
std::vector<hv::Value> option_arguments(const std::optional<std::string>& struct_json,
                                        std::span<const std::string> positionals);

}  // namespace zvtool
