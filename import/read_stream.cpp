// The reader as an Arrow stream that its consumer pulls from: read_batches
// runs on a thread of its own and hands batches over through a short queue.
#include <cerrno>
#include <condition_variable>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>

#include "import/read.hpp"
#include "import/table/arrow_export.hpp"

namespace textio::import {
namespace {

// Batches read ahead of the consumer at most.
constexpr std::size_t read_ahead = 2;

// Thrown from the batch callback to end a read whose stream was released.
struct stream_released {};

struct stream_state {
  std::mutex mutex;
  std::condition_variable changed;
  std::deque<arrow_batch> batches;
  std::vector<arrow_field> fields;
  std::optional<std::vector<arrow_type>> types;  // the schema's, fixed by the first batch
  bool done = false;
  bool released = false;
  int error = 0;
  std::string message;
  std::thread reader;

  // Waits for a batch or the end; true when there is a batch.
  bool wait(std::unique_lock<std::mutex>& lock) {
    changed.wait(lock, [this] { return !batches.empty() || done; });
    return !batches.empty();
  }
  void fix_types(const arrow_batch& batch) {
    if (types) return;
    types.emplace();
    for (const arrow_column& c : batch.columns) types->push_back(c.type);
  }
  void fail(int code, std::string text) {
    error = code;
    message = std::move(text);
  }
};

stream_state& state_of(ArrowArrayStream* stream) { return *static_cast<stream_state*>(stream->private_data); }

int get_schema(ArrowArrayStream* stream, ArrowSchema* out) {
  stream_state& s = state_of(stream);
  std::unique_lock lock(s.mutex);
  if (s.wait(lock)) s.fix_types(s.batches.front());
  if (s.error != 0 && !s.types) return s.error;
  export_schema(s.fields, s.types.value_or(std::vector<arrow_type>(s.fields.size(), arrow_type::utf8)), out);
  return 0;
}

int get_next(ArrowArrayStream* stream, ArrowArray* out) {
  stream_state& s = state_of(stream);
  std::unique_lock lock(s.mutex);
  if (!s.wait(lock)) {
    if (s.error != 0) return s.error;
    *out = ArrowArray{};  // the end
    return 0;
  }
  auto table = std::make_shared<arrow_table>();
  table->batches.push_back(std::move(s.batches.front()));
  s.batches.pop_front();
  s.changed.notify_all();
  s.fix_types(table->batches.front());
  const std::vector<arrow_column>& columns = table->batches.front().columns;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (i >= s.types->size() || columns[i].type != (*s.types)[i]) {
      s.fail(EINVAL, "variable " + std::to_string(i + 1) +
                         " holds a value its detected type cannot hold; give the types to read it as a stream");
      return s.error;
    }
  }
  lock.unlock();
  export_batch(std::move(table), 0, out);
  return 0;
}

const char* get_last_error(ArrowArrayStream* stream) {
  stream_state& s = state_of(stream);
  std::lock_guard lock(s.mutex);
  return s.error != 0 ? s.message.c_str() : nullptr;
}

void release(ArrowArrayStream* stream) {
  auto* s = static_cast<stream_state*>(stream->private_data);
  {
    std::lock_guard lock(s->mutex);
    s->released = true;
  }
  s->changed.notify_all();
  s->reader.join();
  delete s;
  stream->release = nullptr;
}

}  // namespace

void stream_to_arrow(const read_source& source, const textio::parser::options& options, const read_settings& settings,
                     batch_limits limits, ArrowArrayStream* out) {
  auto* s = new stream_state;
  s->reader = std::thread([s, source, options, settings, limits] {
    const auto hand_over = [s](arrow_batch&& batch, const std::vector<arrow_field>& fields) {
      std::unique_lock lock(s->mutex);
      s->changed.wait(lock, [s] { return s->batches.size() < read_ahead || s->released; });
      if (s->released) throw stream_released{};
      s->fields = fields;
      s->batches.push_back(std::move(batch));
      s->changed.notify_all();
    };
    std::string failure;
    try {
      const read_outcome outcome = read_batches(source, options, settings, limits, hand_over);
      std::lock_guard lock(s->mutex);
      if (s->fields.empty()) {
        for (const std::string& name : outcome.report ? outcome.report->variable_names : std::vector<std::string>{}) {
          s->fields.push_back(arrow_field{name, {}, {}, {}});
        }
      }
    } catch (const stream_released&) {
    } catch (const std::exception& e) {
      failure = e.what();
      if (failure.empty()) failure = "the read failed";
    }
    std::lock_guard lock(s->mutex);
    if (!failure.empty()) s->fail(EIO, failure);
    s->done = true;
    s->changed.notify_all();
  });
  *out = ArrowArrayStream{};
  out->get_schema = get_schema;
  out->get_next = get_next;
  out->get_last_error = get_last_error;
  out->release = release;
  out->private_data = s;
}

}  // namespace textio::import
