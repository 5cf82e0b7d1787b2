// resource_core::BaseMsgID: a message identifier (catalog and key) with the
// message's arguments.
#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "zvcore/ustring.hpp"

namespace resource_core {

// One message argument. A fresh element holds the plain 8-byte value 0, which
// is why that alternative comes first.
using MsgArg = std::variant<std::uint64_t, std::string, ::ustring>;

class BaseMsgID {
 public:
  BaseMsgID() = default;
  BaseMsgID(std::string catalog_text, std::string key_text);

  std::vector<MsgArg> args;  ///< arguments, first argument first
  std::string catalog;       ///< e.g. "ZORVEK:textio:textio"
  std::string key;           ///< entry within the catalog
};

}  // namespace resource_core
