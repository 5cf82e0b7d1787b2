// Reading a large file on several threads. The first part (header and the
// first records) is read on the calling thread; the rest of the file is cut
// into parts at guessed record starts (the byte after a line ending), and
// each part is read on a worker thread from a guessed start state into a
// part sink. The parts are handed to the sink in order, each only after its
// guessed start state proved equal to where the part before it ended (so a
// guess inside a quoted field, or a variable count that grew, never shows);
// from the first part that does not prove right, or that could not be read
// alone, the calling thread reads on alone. The output is the one-thread
// output, byte for byte.
#pragma once

#include <span>

#include "import/output.hpp"
#include "import/reading/read_path.hpp"
#include "import/text_format.hpp"
#include "import/read_events.hpp"
#include "import/input/utf8_input.hpp"
#include "import/values/value_conversion.hpp"

namespace textio::import {

// read_typed_table for a path on threads (read_path::on_threads), with
// format.threads threads.
read_summary read_in_parts(const read_path& path, utf8_input& input, record_sink& sink, const text_format& format,
                           std::span<const variable_typing> types, const progress_callback& progress,
                           const stray_quote_callback& stray_quote);

}  // namespace textio::import
