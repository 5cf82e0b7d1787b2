// The closed choices of the options record. Each enumeration is one byte and
// runs from 0 without gaps; the numbers are a contract with the consumers of
// the record and equal the positions of the text flags that set them.
#pragma once

#include <cstdint>

namespace textio::enums {

enum class ConsecutiveDelimitersRule : std::uint8_t { Split, Join, Error };
enum class LeadingDelimiterRule : std::uint8_t { Keep, Ignore, Error };
enum class TrailingDelimiterRule : std::uint8_t { Keep, Ignore, Error };
enum class EmptyLineRule : std::uint8_t { Skip, Read, Error };
enum class ExtraColumnsRule : std::uint8_t { AddVars, Ignore, Wrap, Error };
enum class PartialFieldRule : std::uint8_t { Keep, OmitRow, OmitVar, Fill, Wrap, Error };
enum class BadDataRule : std::uint8_t { Fill, OmitRow, OmitVar, Error };
enum class FileType : std::uint8_t { Text, DelimitedText, FixedWidth };
enum class ParserType : std::uint8_t { Delimited, FixedWidth, Tabular, Line };
enum class OutputBuilderType : std::uint8_t { Table, Matrix, Cell };

}  // namespace textio::enums
