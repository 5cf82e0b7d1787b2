// The messages of the reference text reader, catalog "ZORVEK:textio:reader".
// A reading error names where it happened: the physical line and column
// (both 1-based, the column in UTF-16 units) or, for input that is no UTF-8,
// the byte offset. Thrown with the same exception template as the library's
// own messages.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include <zvtextparser/errors/msg_id_exception.hpp>
#include "zvcore/base_msg_id.hpp"

namespace ZORVEK::textio::reader {

inline constexpr const char* catalog_name = "ZORVEK:textio:reader";

// Declares a tag whose arguments are a physical line and a column.
#define ZVTI_POSITION_TAG(Name)                                                                      \
  struct Name : resource_core::BaseMsgID {                                                           \
    Name(std::uint64_t line, std::uint64_t column) : resource_core::BaseMsgID(catalog_name, #Name) { \
      args.emplace_back(std::in_place_index<0>, line);                                               \
      args.emplace_back(std::in_place_index<0>, column);                                             \
    }                                                                                                \
  }

// Two field delimiters in a row under ConsecutiveDelimitersRule "error".
ZVTI_POSITION_TAG(ConsecutiveDelimiters);
// A delimiter at the start of a record under LeadingDelimitersRule "error".
ZVTI_POSITION_TAG(LeadingDelimiter);
// A delimiter at the end of a record under TrailingDelimitersRule "error".
ZVTI_POSITION_TAG(TrailingDelimiter);
// An empty line under EmptyLineRule "error".
ZVTI_POSITION_TAG(EmptyLine);
// A fixed-width record shorter than the record width under PartialFieldRule "error".
ZVTI_POSITION_TAG(PartialField);
// More fields (or units) than the record takes under ExtraColumnsRule "error".
ZVTI_POSITION_TAG(ExtraColumns);
// A missing value under MissingRule "error".
ZVTI_POSITION_TAG(MissingValue);
// A field that is no number under ImportErrorRule "error".
ZVTI_POSITION_TAG(ImportError);
// A quoted field that is still open at the end of the input.
ZVTI_POSITION_TAG(UnterminatedQuote);

#undef ZVTI_POSITION_TAG

// A field that does not convert to its variable's type when reading is
// strict; arguments: line, column and the type's name.
struct NotConverted : resource_core::BaseMsgID {
  NotConverted(std::uint64_t line, std::uint64_t column, const std::string& type)
      : resource_core::BaseMsgID(catalog_name, "NotConverted") {
    args.emplace_back(std::in_place_index<0>, line);
    args.emplace_back(std::in_place_index<0>, column);
    args.emplace_back(std::in_place_index<1>, type);
  }
};

// A byte sequence that is no UTF-8; argument: its byte offset from the start
// of the input (0-based, the byte-order mark included).
struct InvalidUtf8 : resource_core::BaseMsgID {
  explicit InvalidUtf8(std::uint64_t offset) : resource_core::BaseMsgID(catalog_name, "InvalidUtf8") {
    args.emplace_back(std::in_place_index<0>, offset);
  }
};

// A byte sequence that is invalid in the input's encoding (not UTF-8);
// arguments: the encoding's name and the byte offset of the sequence from
// the start of the input (0-based, the byte-order mark included).
struct InvalidEncoding : resource_core::BaseMsgID {
  InvalidEncoding(const std::string& encoding, std::uint64_t offset)
      : resource_core::BaseMsgID(catalog_name, "InvalidEncoding") {
    args.emplace_back(std::in_place_index<1>, encoding);
    args.emplace_back(std::in_place_index<0>, offset);
  }
};

// Bytes that no text encoding explains (binary or compressed data), found
// while detecting the encoding; argument: the byte offset (0-based) of the
// first byte that shows it.
struct NotText : resource_core::BaseMsgID {
  explicit NotText(std::uint64_t offset) : resource_core::BaseMsgID(catalog_name, "NotText") {
    args.emplace_back(std::in_place_index<0>, offset);
  }
};

// Compressed input that is corrupt or cut short; arguments: the input's
// name, the compression ("gzip", "bzip2", ...) and how many compressed bytes
// were read when it showed.
struct CorruptInput : resource_core::BaseMsgID {
  CorruptInput(const std::string& name, const std::string& format, std::uint64_t offset)
      : resource_core::BaseMsgID(catalog_name, "CorruptInput") {
    args.emplace_back(std::in_place_index<1>, name);
    args.emplace_back(std::in_place_index<1>, format);
    args.emplace_back(std::in_place_index<0>, offset);
  }
};

// A type asked for by a variable name that the table does not have;
// argument: the name.
struct UnknownVariable : resource_core::BaseMsgID {
  explicit UnknownVariable(const std::string& name) : resource_core::BaseMsgID(catalog_name, "UnknownVariable") {
    args.emplace_back(std::in_place_index<1>, name);
  }
};

// More types asked for by position than the table has variables; arguments:
// the two counts.
struct TooManyTypes : resource_core::BaseMsgID {
  TooManyTypes(std::uint64_t types, std::uint64_t variables) : resource_core::BaseMsgID(catalog_name, "TooManyTypes") {
    args.emplace_back(std::in_place_index<0>, types);
    args.emplace_back(std::in_place_index<0>, variables);
  }
};

// An encoding name that the converter does not know; argument: the name.
struct UnknownEncoding : resource_core::BaseMsgID {
  explicit UnknownEncoding(const std::string& encoding) : resource_core::BaseMsgID(catalog_name, "UnknownEncoding") {
    args.emplace_back(std::in_place_index<1>, encoding);
  }
};

// The input could not be opened or read; arguments: its name as given and
// the system's reason ("No such file or directory", "Is a directory", ...).
struct CannotReadFile : resource_core::BaseMsgID {
  CannotReadFile(const std::string& path, const std::string& reason)
      : resource_core::BaseMsgID(catalog_name, "CannotReadFile") {
    args.emplace_back(std::in_place_index<1>, path);
    args.emplace_back(std::in_place_index<1>, reason);
  }
};

// A record longer than the reader takes; arguments: the physical line where
// it starts and the most units (bytes of UTF-8, or UTF-16 units) a record
// may have.
struct RecordTooLong : resource_core::BaseMsgID {
  RecordTooLong(std::uint64_t line, std::uint64_t limit) : resource_core::BaseMsgID(catalog_name, "RecordTooLong") {
    args.emplace_back(std::in_place_index<0>, line);
    args.emplace_back(std::in_place_index<0>, limit);
  }
};

// Memory ran out (or reached the tool's limit) while reading; arguments: the
// physical line where the record starts, and what asked for the memory (a
// setting such as "NumVariables 1000000000", or the record's own size).
struct OutOfMemory : resource_core::BaseMsgID {
  OutOfMemory(std::uint64_t line, const std::string& cause) : resource_core::BaseMsgID(catalog_name, "OutOfMemory") {
    args.emplace_back(std::in_place_index<0>, line);
    args.emplace_back(std::in_place_index<1>, cause);
  }
};

}  // namespace ZORVEK::textio::reader
