// A message exception of the library, kept as plain data so that it can be
// reported after the handler has left: in the JSON output as the "error"
// object, and on standard error as one human line.
#pragma once

#include <string>

#include "tools/json_writer.hpp"
#include "zvcore/base_msg_id.hpp"
#include "zvcore/exceptions.hpp"
#include "zvcore/ustring.hpp"

namespace zvtool {

struct message_failure {
  std::string identifier;       ///< e.g. "ZORVEK:textio:textio:BadTextFlag"
  resource_core::BaseMsgID id;  ///< catalog, key and arguments
  ustring message;              ///< the catalog text with the arguments filled in
  std::string option = {};      ///< the NAME of the pair that failed, when the tool knows it
  std::string hint = {};        ///< what the tool can add for a person, or empty
};

message_failure capture_message(const foundation::core::except::IMsgIDException& error);

// {"identifier": ..., "key": ..., "arguments": [...], "message": ...} as one
// JSON object value. An 8-bit argument is written byte for byte, a UTF-16
// argument unit for unit.
void write_message_failure(json_writer& out, const message_failure& failure);

// "zvtextparser: <identifier>: [<option>: ]<message>[ <hint>]", the message's
// line breaks turned into spaces and the whole trimmed; ends in a line break.
std::string message_line(const message_failure& failure);

// The exit status of a failure to read an input: it cannot be read, or its
// data holds a reading error.
int reading_failure_status(const message_failure& failure);

}  // namespace zvtool
