#include "import/reading/parallel_reading.hpp"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "import/input/stream_spool.hpp"
#include "import/reading/table_reader.hpp"

namespace textio::import {
namespace {

constexpr std::size_t probe_bytes = std::size_t{1} << 16;
// The first part, read before the workers start: short, so that they start soon.
constexpr std::uint64_t first_part_bytes = std::uint64_t{1} << 20;

// Where the parts are read from: the file's descriptor, with positional
// reads, or the spool of a decompressed file.
struct part_source {
  int fd = -1;
  stream_spool* spool = nullptr;
  std::string name;

  // The bytes at `offset`; short at the end of the input.
  std::size_t read_at(char* into, std::size_t size, std::uint64_t offset) const {
    std::size_t got = 0;
    while (got < size) {
      if (spool) {
        const std::size_t n = spool->read_at(offset + got, into + got, size - got);
        if (n == 0) break;
        got += n;
        continue;
      }
      const ssize_t n = ::pread(fd, into + got, size - got, static_cast<off_t>(offset + got));
      if (n < 0 && errno == EINTR) continue;
      if (n <= 0) break;  // a failure shows again when the part is read
      got += static_cast<std::size_t>(n);
    }
    return got;
  }
  // An input reading on from `offset`; with `alone`, reading on to the end
  // alone (a spool then lets go of the bytes as they are read).
  std::unique_ptr<utf8_input> open(std::uint64_t offset, bool alone) const {
    if (spool) return std::make_unique<utf8_input>(*spool, name, offset, alone);
    return std::make_unique<utf8_input>(fd, name, offset);
  }
};

// The guessed start of the first record at or after `from`: the byte after
// the first line ending that ends at or after it (a CR LF as one ending), or
// `size` when none does.
std::uint64_t guess_record_start(const part_source& source, std::uint64_t from, std::uint64_t size) {
  std::string block(probe_bytes + 1, '\0');
  for (std::uint64_t at = from - 1; at < size;) {
    const std::size_t got = source.read_at(block.data(), probe_bytes + 1, at);
    if (got == 0) break;
    const std::size_t scan = std::min(got, probe_bytes);
    for (std::size_t i = 0; i < scan; ++i) {
      if (block[i] == '\n') return at + i + 1;
      if (block[i] == '\r') return at + i + (i + 1 < got && block[i + 1] == '\n' ? 2 : 1);
    }
    at += scan;
  }
  return size;
}

// One part after the first: [begin, end) by the guesses. Its lines are
// numbered from the first part's end line; an error in it is read again
// from its proved start, which numbers the lines right.
struct part_result {
  std::uint64_t begin = 0;
  std::uint64_t end = 0;
  bool last = false;  // reads to the end of the file
  bool done = false;
  bool failed = false;  // abandoned, or a reading error
  std::unique_ptr<record_sink> sink;
  std::optional<part_state> stopped_at;         // none: it read to the end
  std::vector<unconverted_values> unconverted;  // lines numbered from the base line
};

class part_readers {
 public:
  part_readers(const read_path& path, const part_source& source, std::uint64_t size, record_sink& sink,
               const text_format& format, std::span<const variable_typing> types, const part_state& first_end)
      : path_(path),
        source_(source),
        size_(size),
        sink_(sink),
        format_(format),
        types_(types),
        first_end_(first_end),
        part_(std::max<std::uint64_t>(format.part_bytes, 1)),
        window_(2 * std::size_t{format.threads}) {}

  part_readers(const part_readers&) = delete;
  part_readers& operator=(const part_readers&) = delete;
  ~part_readers() { stop_workers(); }

  // Starts the workers; false when not one thread could be started.
  bool start() {
    for (unsigned i = 0; i < format_.threads; ++i) {
      try {
        workers_.emplace_back([this] { work(); });
      } catch (const std::system_error&) {
        break;
      }
    }
    return !workers_.empty();
  }

  // Waits for part `k` (from 1) and takes it out; none after the last part
  // or when a worker broke down (broken()).
  std::unique_ptr<part_result> take(std::size_t k) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock,
                  [&] { return (parts_.contains(k) && parts_[k]->done) || (no_more_ && k >= no_more_at_) || broken_; });
    if (!parts_.contains(k)) return nullptr;
    std::unique_ptr<part_result> r = std::move(parts_[k]);
    parts_.erase(k);
    taken_ = k;
    changed_.notify_all();
    return r;
  }

  // A part sink whose records were handed on (and only such a one: it is
  // empty) collects another part, with the memory it has.
  void reuse(std::unique_ptr<record_sink> sink) {
    const std::lock_guard lock(mutex_);
    spare_sinks_.push_back(std::move(sink));
  }

  // The line the workers number a part's first line with, and the variable
  // count they start with.
  std::uint64_t base_line() const noexcept { return first_end_.line; }
  const std::optional<std::size_t>& base_variables() const noexcept { return first_end_.variables; }

  // Where part k (from 2) is cut at the earliest: its start is guessed
  // from here on.
  std::uint64_t nominal_begin(std::size_t k) const noexcept { return first_end_.offset + (k - 1) * part_; }

  // A worker failed outside reading a part (out of memory, say); the rest
  // of the file is then read on the calling thread.
  bool broken() {
    const std::lock_guard lock(mutex_);
    return broken_;
  }

  void stop_workers() {
    {
      const std::lock_guard lock(mutex_);
      cancelled_ = true;
    }
    changed_.notify_all();
    for (std::thread& t : workers_) t.join();
    workers_.clear();
  }

 private:
  // Part k begins at the first part's end (k = 1) or at the guess after
  // first_end + (k - 1) * part.
  std::uint64_t begin_of(std::size_t k) const {
    if (k == 1) return first_end_.offset;
    const std::uint64_t nominal = nominal_begin(k);
    return nominal >= size_ ? size_ : guess_record_start(source_, nominal, size_);
  }

  void work() {
    try {
      work_on_parts();
    } catch (...) {
      {
        const std::lock_guard lock(mutex_);
        broken_ = true;
      }
      changed_.notify_all();
    }
  }

  void work_on_parts() {
    for (;;) {
      std::size_t k = 0;
      std::unique_ptr<record_sink> sink;
      {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return cancelled_ || no_more_ || next_ <= taken_ + window_; });
        if (cancelled_ || no_more_) return;
        k = next_++;
        if (!spare_sinks_.empty()) {
          sink = std::move(spare_sinks_.back());
          spare_sinks_.pop_back();
        }
      }
      auto r = std::make_unique<part_result>();
      r->begin = begin_of(k);
      r->end = r->begin >= size_ ? size_ : begin_of(k + 1);
      r->last = r->end >= size_;
      if (r->begin < size_) read_part(*r, std::move(sink));
      {
        const std::lock_guard lock(mutex_);
        if (r->begin >= size_) {
          // No such part: the one before reads to the end.
          no_more_ = true;
          no_more_at_ = std::min(no_more_at_, k);
        } else {
          r->done = true;
          parts_[k] = std::move(r);
        }
      }
      changed_.notify_all();
    }
  }

  void read_part(part_result& r, std::unique_ptr<record_sink> sink) {
    part_plan plan;
    plan.start = part_state{r.begin, first_end_.line, first_end_.variables};
    plan.stop = r.last ? std::numeric_limits<std::uint64_t>::max() : r.end;
    plan.worker = true;
    try {
      r.sink = sink ? std::move(sink) : sink_.part_sink();
      const std::unique_ptr<utf8_input> input = source_.open(r.begin, false);
      // (The reader keeps references to its callbacks.)
      const progress_callback no_progress;
      const stray_quote_callback no_stray_quote;
      table_reader<char> reader(path_, *input, *r.sink, no_progress, format_, no_stray_quote, types_, &plan);
      const reader_run run = reader.run();
      r.failed = run.end == run_end::abandoned;
      r.unconverted = run.summary.unconverted;
      r.stopped_at = reader.stopped_at();
    } catch (...) {
      r.failed = true;
    }
  }

  const read_path& path_;
  const part_source& source_;
  std::uint64_t size_;  // the most there can be: a spool's end is not known
  record_sink& sink_;
  const text_format& format_;
  std::span<const variable_typing> types_;
  part_state first_end_;
  std::uint64_t part_;
  std::size_t window_;  // parts read ahead of the one taken

  std::mutex mutex_;
  std::condition_variable changed_;
  std::map<std::size_t, std::unique_ptr<part_result>> parts_;
  std::vector<std::unique_ptr<record_sink>> spare_sinks_;
  std::size_t next_ = 1;
  std::size_t taken_ = 0;
  bool no_more_ = false;
  std::size_t no_more_at_ = std::numeric_limits<std::size_t>::max();
  bool cancelled_ = false;
  bool broken_ = false;
  std::vector<std::thread> workers_;
};

}  // namespace

read_summary read_in_parts(const read_path& path, utf8_input& input, record_sink& sink, const text_format& format,
                           std::span<const variable_typing> types, const progress_callback& progress,
                           const stray_quote_callback& stray_quote) {
  const std::uint64_t part = std::max<std::uint64_t>(format.part_bytes, 1);
  // A compressed file is decompressed ahead into a spool, a few parts more
  // than the workers read at once.
  input.spool_ahead((2 * std::uint64_t{format.threads} + 3) * part, false);
  const part_source source{input.descriptor(), input.spool(), input.name()};
  const std::uint64_t size = source.spool ? std::numeric_limits<std::uint64_t>::max() : input.size();
  table_reader<char> first(path, input, sink, progress, format, stray_quote, types);
  // The first part reads on alone to the end when the file ends in it, when
  // quotes turn to text in it or when it is all header.
  first.stop_at(std::min<std::uint64_t>(part, first_part_bytes), true);
  const reader_run first_run = first.run();
  if (first_run.end != run_end::stopped) return first_run.summary;
  read_summary summary = first_run.summary;

  part_state expected = *first.stopped_at();
  part_readers readers(path, source, size, sink, format, types, expected);
  // Reads from `expected` on this thread, up to `stop`; false when that
  // read to the end of the file (also when quotes turned to text, after
  // which the rest is read alone).
  const auto read_here = [&](std::uint64_t stop) {
    const std::unique_ptr<utf8_input> rest =
        source.open(expected.offset, stop == std::numeric_limits<std::uint64_t>::max());
    part_plan plan;
    plan.start = expected;
    plan.stop = stop;
    plan.stop_while_in_parts = true;
    table_reader<char> reader(path, *rest, sink, progress, format, stray_quote, types, &plan);
    const reader_run read = reader.run();
    add_unconverted(summary.unconverted, read.summary.unconverted, 0);
    if (read.end != run_end::stopped) return false;
    expected = *reader.stopped_at();
    return true;
  };
  if (!readers.start()) {
    read_here(std::numeric_limits<std::uint64_t>::max());
    return summary;
  }
  for (std::size_t k = 1;; ++k) {
    std::unique_ptr<part_result> r = readers.take(k);
    if (!r && readers.broken()) break;
    if (!r) return summary;  // the part before read to the end
    // From here on the spool's bytes are read from `expected` on, and
    // parts after this one look for their start from their nominal one.
    if (source.spool) source.spool->release_before(std::min(expected.offset, readers.nominal_begin(k + 1) - 1));
    // After the variable count grew, every later part was read with the
    // old one: read the rest alone.
    if (expected.variables != readers.base_variables()) break;
    if (r->begin == expected.offset && !r->failed) {
      // The part started where the one before ended, with the same
      // variable count: its records are the ones reading on gives.
      if (r->stopped_at && r->stopped_at->offset == r->begin) continue;  // an empty part
      sink.take_part(*r->sink);
      ++summary.parts_on_threads;
      add_unconverted(summary.unconverted, r->unconverted, expected.line - readers.base_line());
      readers.reuse(std::move(r->sink));
      if (progress && input.size() != 0) progress(r->end, input.size());
      if (!r->stopped_at) return summary;
      expected = part_state{r->stopped_at->offset, expected.line + (r->stopped_at->line - readers.base_line()),
                            r->stopped_at->variables};
      continue;
    }
    // A guess that did not hold (inside a quoted field, say) or a part that
    // could not be read alone (or failed: the failure shows here again,
    // with its line): this part is read here, from where the one before
    // ended; a part that the one before read past is left out.
    if (!r->last && expected.offset >= r->end) continue;
    if (!read_here(r->last ? std::numeric_limits<std::uint64_t>::max() : r->end)) return summary;
  }
  readers.stop_workers();
  read_here(std::numeric_limits<std::uint64_t>::max());
  return summary;
}

}  // namespace textio::import
