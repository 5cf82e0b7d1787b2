// The eleven messages of the catalog "ZORVEK:textio:textio". Each tag carries
// the catalog, its own name as key, and at most one argument.
#pragma once

#include <string>

#include <zvtextparser/errors/export.hpp>
#include "zvcore/base_msg_id.hpp"
#include "zvcore/ustring.hpp"

namespace ZORVEK::textio::textio {

inline constexpr const char* catalog_name = "ZORVEK:textio:textio";

// Declares a tag with no argument.
#define ZVTP_TAG_NO_ARGUMENT(Name)                            \
  struct ZVTEXTPARSER_API Name : resource_core::BaseMsgID {   \
    Name() : resource_core::BaseMsgID(catalog_name, #Name) {} \
  }

// Declares a tag whose one argument is an option name (8-bit text).
#define ZVTP_TAG_OPTION_NAME(Name)                                                           \
  struct ZVTEXTPARSER_API Name : resource_core::BaseMsgID {                                  \
    explicit Name(const char* option_name) : resource_core::BaseMsgID(catalog_name, #Name) { \
      args.emplace_back(std::in_place_index<1>, option_name);                                \
    }                                                                                        \
  }

// A text flag matched none of the option's flags; argument: the flag list.
struct ZVTEXTPARSER_API BadTextFlag : resource_core::BaseMsgID {
  explicit BadTextFlag(const std::string& flag_list) : resource_core::BaseMsgID(catalog_name, "BadTextFlag") {
    args.emplace_back(std::in_place_index<1>, flag_list);
  }
};

// CommentStyle was given more than two entries.
ZVTP_TAG_NO_ARGUMENT(CommentStyleSize);
// Delimiter was neither a text nor a list of texts.
ZVTP_TAG_NO_ARGUMENT(DelimiterType);
// A count or line number was not a non-negative integer double scalar.
ZVTP_TAG_NO_ARGUMENT(ExpectedNonNegativeScalarInt);
// DataLine was not a positive integer double scalar.
ZVTP_TAG_NO_ARGUMENT(ExpectedPositiveScalarInt);
// MultipleDelimsAsOne or TrimNonNumeric was not a logical scalar.
ZVTP_TAG_NO_ARGUMENT(ExpectedScalarLogical);
// A decoded option held an unknown backslash sequence; argument: the option.
ZVTP_TAG_OPTION_NAME(InvalidEscapeSequence);
// A list option was neither a text nor a list of texts; argument: the option.
ZVTP_TAG_OPTION_NAME(InvalidStringOrCellStringProperty);
// A text option was not a text (or not one character); argument: the option.
ZVTP_TAG_OPTION_NAME(InvalidStringProperty);
// The name-value list had an odd number of entries.
ZVTP_TAG_NO_ARGUMENT(OddNumberNVPairs);

// A name of the name-value list is no option; argument: the name as written.
struct ZVTEXTPARSER_API UnknownParameter : resource_core::BaseMsgID {
  explicit UnknownParameter(const ::ustring& name) : resource_core::BaseMsgID(catalog_name, "UnknownParameter") {
    args.emplace_back(std::in_place_index<2>, name);
  }
};

#undef ZVTP_TAG_NO_ARGUMENT
#undef ZVTP_TAG_OPTION_NAME

}  // namespace ZORVEK::textio::textio
