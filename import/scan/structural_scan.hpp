// A structural scanner for UTF-8 text that reads 64 bytes a step. Each block
// of 64 bytes becomes bit masks (delimiters, line endings, quotes, comment
// markers, whitespace); quoted regions come from a prefix-XOR of the quote
// mask, and records and fields are walked with bit tricks.
//
// It covers the record scanner's rules for the common settings only: one-byte
// ASCII delimiters, a one-byte quote escaped by doubling, line endings among
// LF, CR and CR LF, at most one one-byte line-comment marker, whitespace of
// one byte. Within those rules it hands a record to the exact scanner
// (stop::exact) whenever the bytes leave the regular shape: a quote that
// does not open a field (after whitespace, inside unquoted text or after
// the text that follows a closing quote), a quote still open at the end of
// the input. So its records are the exact scanner's records.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>
#include <vector>

#include "import/scan/record_scanner.hpp"

namespace textio::import {

// The bytes that matter to the structural scan.
struct structural_classes {
  static constexpr std::size_t max_set = 4;
  std::array<char, max_set> delimiters{};
  std::size_t delimiter_count = 0;
  std::array<char, max_set> whitespace{};
  std::size_t whitespace_count = 0;
  char quote = '"';
  char comment = 0;
  bool has_comment = false;
  bool lf = false;    // "\n" ends a line
  bool cr = false;    // "\r" ends a line
  bool crlf = false;  // "\r\n" ends a line (as one ending)

  // The classes for a record scanner's rules, or nothing when the rules need
  // the exact scanner (no quotes, a delimiter, ending or comment marker
  // longer than covered, a block comment, bytes shared between classes,
  // more than max_set delimiters or whitespace bytes). A rule added to the
  // record scanner later (another escape, say) must be refused here too.
  static std::optional<structural_classes> for_rules(const scan_rules<char>& rules);
};

// What one block of 64 bytes holds; bit i is byte i of the block.
// (No initializers: arrays of them are filled by the kernels.)
struct block_marks {
  std::uint64_t fields;     // delimiters outside quotes and comments
  std::uint64_t records;    // line endings outside quotes (first byte)
  std::uint64_t lines;      // every line ending (first byte)
  std::uint64_t wide;       // line endings of two bytes (CR LF)
  std::uint64_t content;    // bytes that are neither whitespace nor comment
  std::uint64_t comments;   // comment markers outside quotes
  std::uint64_t irregular;  // quotes the exact scanner must settle
};

// The state carried from one block to the next.
struct block_carry {
  std::uint64_t quote = 0;     // all ones inside a quoted field
  std::uint64_t may_open = 1;  // the byte before may precede an opening quote
  std::uint64_t skip_lf = 0;   // the byte before began a CR LF
  bool in_comment = false;
};

// Marks the blocks of `text` (the last one may be short): `next` is the byte
// after it, or -1. Writes (text.size() + 63) / 64 entries to `out`. Runs the
// best kernel the CPU supports.
void mark_blocks(const structural_classes& classes, std::string_view text, int next, block_carry& carry,
                 block_marks* out);

// The kernels compiled into this binary that the CPU supports (as Highway
// target bits), and a run of one of them; tests and the fuzz target compare
// them.
std::vector<std::int64_t> structural_targets();
const char* structural_target_name(std::int64_t target);
void mark_blocks_with(std::int64_t target, const structural_classes& classes, std::string_view text, int next,
                      block_carry& carry, block_marks* out);

// One record as the structural scan found it.
struct structural_record {
  std::size_t begin = 0;  // first byte
  std::size_t end = 0;    // byte after its text (its line ending starts here)
  std::size_t next = 0;   // first byte of the next record
  std::uint64_t line = 0;
  std::uint64_t next_line = 0;
  std::size_t fields = 0;  // delimiters + 1
  bool empty = false;      // no byte but whitespace and comments
  bool had_comment = false;
  // With field collection on: the delimiters that end each field but the
  // last (which ends at `end`), fields - 1 positions.
  const std::size_t* delimiters = nullptr;
};

// Field i of a record found with field collection: its bytes (quotes and
// surrounding whitespace included) and whether it is quoted. On this path a
// field is quoted exactly when its first byte is the quote (any other quote
// hands the record to the exact scanner); its text then runs to the
// closing quote, and needs unescaping only when it holds a doubled quote.
struct structural_field {
  std::size_t begin = 0;
  std::size_t end = 0;
  bool quoted = false;
};
inline structural_field field_of(std::string_view text, const structural_record& r, std::size_t i, char quote) {
  structural_field f;
  f.begin = i == 0 ? r.begin : r.delimiters[i - 1] + 1;
  f.end = i + 1 < r.fields ? r.delimiters[i] : r.end;
  f.quoted = f.begin < f.end && text[f.begin] == quote;
  return f;
}

enum class structural_stop {
  need_more,     // the window ends inside a record; append and scan again
  end_of_input,  // every record was handed on
  exact,         // the record at `consumed` needs the exact scanner, or the sink refused it
  full,          // (a batch only) it holds as many records as it may
};

// Which records a caller that only counts takes in bulk: those with content
// (a comment after it is no concern), of at most `max_fields` fields, that
// start before byte `stop` of the text and on a line before `line_limit`.
// One that covers none (max_fields 0, the count not known yet) ends each
// batch after its first record, which may settle it.
struct structural_tally {
  std::size_t max_fields = 0;
  std::size_t stop = std::numeric_limits<std::size_t>::max();
  std::uint64_t line_limit = std::numeric_limits<std::uint64_t>::max();
};

// The records of one step of the scan.
struct structural_batch {
  static constexpr std::size_t capacity = 128;  // a few KiB: stays in the first-level cache
  // With collection, a record of more fields goes to the exact scanner,
  // whose 16-byte fields cost less than a delimiter position here plus them.
  static constexpr std::size_t max_collected_fields = std::size_t{1} << 16;
  std::vector<structural_record> records;
  std::vector<std::size_t> delimiters;  // with collection: each record's from first_delimiter
  std::vector<std::size_t> first_delimiter;
  structural_stop what = structural_stop::need_more;
  // With a tally: the records counted before `records`, the byte after the
  // last of them and the line it starts.
  std::uint64_t tallied = 0;
  std::size_t tally_end = 0;
  std::uint64_t tally_line = 0;
};

// Walks the records of text[from..] (the first on line `line`) into `batch`,
// with the kernel `target` (0: the best one). With a tally (and no
// collection), the records it covers before the first other one are only
// counted (batch.tallied), and the batch ends before the next such record.
void walk_records(const structural_classes& classes, std::string_view text, std::size_t from, bool at_end,
                  std::uint64_t line, bool collect, std::int64_t target, structural_batch& batch,
                  const structural_tally* tally = nullptr);

class structural_scanner {
 public:
  using stop = structural_stop;
  struct outcome {
    std::size_t consumed = 0;  // bytes of the records handed on
    std::uint64_t next_line = 0;
    stop what = stop::end_of_input;
  };

  // `collect`: hand on each field's delimiter positions (else only counts).
  // `target`: a kernel from structural_targets(), 0 for the best one.
  explicit structural_scanner(const structural_classes& classes, bool collect = false, std::int64_t target = 0)
      : classes_(classes), collect_(collect), target_(target) {}

  // Hands each record at the start of `text` (whose first byte is on line
  // `line`) to `sink(const structural_record&) -> bool` until the window
  // ends, the text leaves the covered shape, or the sink returns false
  // (that record is then not consumed).
  template <class Sink>
  outcome scan(std::string_view text, bool at_end, std::uint64_t line, Sink&& sink) {
    const auto no_tally = [] { return structural_tally{}; };
    const auto none_counted = [](std::uint64_t) {};
    return walk<false>(text, at_end, line, no_tally, none_counted, sink);
  }

  // Like scan, for a caller that only counts: the records `tally` covers go
  // to `counted(std::uint64_t records)` in bulk, the others one by one to
  // `sink`; `tally_for()` gives the tally at each step, as the sink's
  // records may change it.
  template <class TallyFor, class Counted, class Sink>
  outcome count(std::string_view text, bool at_end, std::uint64_t line, TallyFor&& tally_for, Counted&& counted,
                Sink&& sink) {
    return walk<true>(text, at_end, line, tally_for, counted, sink);
  }

 private:
  // scan and count: batch by batch, counted records first.
  template <bool Counting, class TallyFor, class Counted, class Sink>
  outcome walk(std::string_view text, bool at_end, std::uint64_t line, TallyFor&& tally_for, Counted&& counted,
               Sink&& sink) {
    outcome out{0, line, stop::end_of_input};
    for (;;) {
      if constexpr (Counting) {
        const structural_tally tally = tally_for();
        walk_records(classes_, text, out.consumed, at_end, out.next_line, false, target_, batch_, &tally);
        if (batch_.tallied != 0) {
          counted(batch_.tallied);
          out.consumed = batch_.tally_end;
          out.next_line = batch_.tally_line;
        }
      } else {
        walk_records(classes_, text, out.consumed, at_end, out.next_line, collect_, target_, batch_);
      }
      for (std::size_t i = 0; i < batch_.records.size(); ++i) {
        structural_record& r = batch_.records[i];
        if (!Counting && collect_) r.delimiters = batch_.delimiters.data() + batch_.first_delimiter[i];
        if (!sink(static_cast<const structural_record&>(r))) {
          out.what = stop::exact;
          return out;
        }
        out.consumed = r.next;
        out.next_line = r.next_line;
      }
      if (batch_.what != stop::full) {
        out.what = batch_.what;
        return out;
      }
    }
  }

  structural_classes classes_;
  bool collect_ = false;
  std::int64_t target_ = 0;
  structural_batch batch_;
};

}  // namespace textio::import
