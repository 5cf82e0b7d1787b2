// The tool's --max-memory: a ceiling on the process's address space, so that
// runaway growth ends in an allocation failure, which the reader reports as
// a reading error naming the record, instead of a process the system kills.
#pragma once

#include <cstdint>
#include <string>

namespace zvtool {

// SIZE as bytes: digits with an optional suffix K, M, G or T (powers of
// 1024, either case, an optional "iB" or "B" after it). Throws usage_error
// for anything else and for 0.
std::uint64_t parse_memory_size(const std::string& size);

// The default: half of the machine's physical memory.
std::uint64_t default_memory_limit();

// Limits the address space of this process to `bytes`. Does nothing in a
// build with AddressSanitizer, whose shadow memory needs more.
void apply_memory_limit(std::uint64_t bytes);

// "1.5 GiB" and the like, for messages.
std::string memory_size_text(std::uint64_t bytes);

}  // namespace zvtool
