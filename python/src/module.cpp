// _zvtextparser: the reader's one call for Python. Options are applied as the
// tool applies its NAME VALUE arguments; a table comes back as a Table that
// hands out its columns as NumPy arrays (the reader's buffers themselves
// where the layout allows) and itself to Arrow consumers through PyCapsules.
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "import/read.hpp"
#include "import/table/arrow_export.hpp"
#include "name_value/option_vocabulary.hpp"
#include "python/src/part_reading.hpp"
#include "tools/apply_options.hpp"
#include "tools/detect_command.hpp"
#include "tools/exit_status.hpp"
#include "tools/failure_hints.hpp"
#include "tools/json_writer.hpp"
#include "tools/message_failure.hpp"
#include "tools/reading_choices.hpp"
#include "tools/record_json.hpp"
#include "tools/usage_error.hpp"
#include "zvcore/exceptions.hpp"

namespace py = pybind11;
namespace ti = textio::import;

namespace {

using table_ptr = std::shared_ptr<const ti::arrow_table>;

// A refusal of the library or the reader, raised as the package's exception
// (zvtextparser._errors.make chooses the class).
[[noreturn]] void raise_failure(const zvtool::message_failure& failure) {
  py::list arguments;
  for (const auto& argument : failure.id.args) {
    if (const auto* bytes = std::get_if<std::string>(&argument)) {
      arguments.append(py::reinterpret_steal<py::object>(
          PyUnicode_DecodeUTF8(bytes->data(), static_cast<Py_ssize_t>(bytes->size()), "surrogateescape")));
    } else if (const auto* units = std::get_if<ustring>(&argument)) {
      arguments.append(py::str(foundation::core::unicode::to_utf8(*units)));
    } else {
      arguments.append(py::int_(std::get<std::uint64_t>(argument)));
    }
  }
  std::string kind = "data";
  if (failure.identifier.starts_with("ZORVEK:textio:textio:")) {
    kind = "option";
  } else if (zvtool::reading_failure_status(failure) == zvtool::exit_io_failure) {
    kind = "input";
  }
  const std::string message = foundation::core::unicode::to_utf8(failure.message);
  py::object error = py::module_::import("zvtextparser._errors")
                         .attr("make")(kind, failure.identifier, arguments,
                                       py::reinterpret_steal<py::object>(PyUnicode_DecodeUTF8(
                                           message.data(), static_cast<Py_ssize_t>(message.size()), "replace")),
                                       failure.option, failure.hint);
  PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(error.ptr())), error.ptr());
  throw py::error_already_set();
}

// The bytes of a buffer object, held while a read looks at them.
class held_buffer {
 public:
  explicit held_buffer(const py::object& object) {
    if (PyObject_GetBuffer(object.ptr(), &view_, PyBUF_SIMPLE) != 0) throw py::error_already_set();
  }
  held_buffer(const held_buffer&) = delete;
  held_buffer& operator=(const held_buffer&) = delete;
  ~held_buffer() { PyBuffer_Release(&view_); }
  std::string_view bytes() const { return {static_cast<const char*>(view_.buf), static_cast<std::size_t>(view_.len)}; }

 private:
  Py_buffer view_{};
};

// Everything one call takes, as the Python layer hands it over.
struct call {
  textio::parser::options options;
  ti::read_settings settings;
  std::optional<held_buffer> buffer;
  ti::read_source source;
};

ti::value_type type_named(const std::string& name) {
  const auto type = ti::type_from_name(name);
  if (!type) {
    throw py::value_error("unknown type '" + name +
                          "'; the types are double, single, int8 to int64, uint8 to uint64, logical, datetime, "
                          "duration and string");
  }
  return *type;
}

// `source`: a str path, an int descriptor, or a buffer object (memory).
std::unique_ptr<call> prepare(const py::object& source, const std::string& name,
                              const std::vector<std::string>& option_pairs, bool detect,
                              const std::optional<unsigned>& threads, const std::optional<std::string>& encoding,
                              const std::optional<std::string>& quote, const std::optional<std::string>& escape,
                              const std::optional<std::uint64_t>& table_end, bool all_lines,
                              const std::vector<std::string>& variable_names, const py::object& types) {
  auto c = std::make_unique<call>();
  std::optional<zvtool::message_failure> failure;
  try {
    failure = zvtool::apply_option_arguments(std::nullopt, option_pairs, c->options);
  } catch (const zvtool::usage_error& error) {
    throw py::value_error(error.what());  // a value with no host value, such as a malformed typed value
  }
  if (failure) {
    // A snake_case name that is no key: suggest the key it is near.
    if (failure->hint.empty() && failure->id.key == "UnknownParameter" && !failure->id.args.empty()) {
      std::string wanted;
      if (const auto* bytes = std::get_if<std::string>(&failure->id.args[0])) wanted = *bytes;
      if (const auto* units = std::get_if<ustring>(&failure->id.args[0])) {
        wanted = foundation::core::unicode::to_utf8(*units);
      }
      std::erase(wanted, '_');
      if (const auto key = zvtool::near_key(wanted)) failure->hint = "Did you mean '" + std::string(*key) + "'?";
    }
    // The tool's hint says how to quote a VALUE argument; here a str is text.
    if (failure->hint.ends_with("to give it as text.")) {
      failure->hint = "Pass a str to give it as text.";
    }
    raise_failure(*failure);
  }
  zvtool::parsed_arguments args;
  args.option_arguments = option_pairs;
  if (encoding) args.options.emplace("--encoding", *encoding);
  if (quote) args.options.emplace("--quote", *quote);
  if (escape) args.options.emplace("--escape", *escape);
  try {
    c->settings.given = zvtool::user_choices_of(args);
  } catch (const zvtool::usage_error& error) {
    throw py::value_error(std::string(error.what()).replace(0, 2, ""));
  }
  c->settings.detect = detect;
  if (threads) {
    if (*threads == 0 || *threads > 1024) throw py::value_error("threads takes a count from 1 to 1024");
    c->settings.threads = *threads;
  }
  if (table_end) {
    if (*table_end == 0) throw py::value_error("table_end takes a line number from 1");
    c->settings.table_end_line = *table_end;
  }
  c->settings.all_lines = all_lines;
  c->settings.variable_names = variable_names;
  if (py::isinstance<py::dict>(types)) {
    for (const auto& [key, value] : types.cast<py::dict>()) {
      c->settings.types.by_name.emplace_back(key.cast<std::string>(), type_named(value.cast<std::string>()));
    }
  } else if (!types.is_none()) {
    for (const auto& value : types) {
      c->settings.types.by_position.push_back(value.is_none() ? std::nullopt
                                                              : std::optional(type_named(value.cast<std::string>())));
    }
  }
  if (py::isinstance<py::str>(source)) {
    c->source = ti::read_source::file(source.cast<std::string>());
  } else if (py::isinstance<py::int_>(source)) {
    c->source = ti::read_source::descriptor(source.cast<int>(), name);
  } else {
    c->buffer.emplace(source);
    c->source = ti::read_source::memory(c->buffer->bytes(), name);
  }
  return c;
}

// Runs `f` with the GIL released, turning the library's messages into the
// package's exceptions.
template <class F>
auto guarded(F&& f) {
  std::optional<zvtool::message_failure> failure;
  try {
    py::gil_scoped_release release;
    return f();
  } catch (const foundation::core::except::IMsgIDException& error) {
    failure = zvtool::capture_message(error);
  }
  raise_failure(*failure);
}

// ---- columns as NumPy arrays ------------------------------------------------

py::capsule owner_of(const table_ptr& table) {
  return py::capsule(new table_ptr(table), [](void* p) { delete static_cast<table_ptr*>(p); });
}

std::int64_t null_count(const ti::arrow_table& table, std::size_t column) {
  std::int64_t n = 0;
  for (const auto& batch : table.batches) n += batch.columns[column].null_count;
  return n;
}

// True where the value is missing; None when none is.
py::object mask_of(const ti::arrow_table& table, std::size_t column) {
  if (null_count(table, column) == 0) return py::none();
  py::array_t<bool> mask(table.rows());
  bool* out = mask.mutable_data();
  for (const auto& batch : table.batches) {
    const ti::arrow_column& c = batch.columns[column];
    for (std::int64_t r = 0; r < batch.rows; ++r) *out++ = !c.is_valid(r);
  }
  return mask;
}

template <class T>
py::array numbers(const table_ptr& table, std::size_t column) {
  const auto& batches = table->batches;
  if (batches.size() == 1 && batches[0].rows > 0 && batches[0].columns[column].null_count == 0) {
    // The reader's own buffer, kept alive by the array.
    const auto* data = reinterpret_cast<const T*>(batches[0].columns[column].values.data());
    py::array_t<T> shared({batches[0].rows}, {static_cast<py::ssize_t>(sizeof(T))}, data, owner_of(table));
    py::detail::array_proxy(shared.ptr())->flags &= ~py::detail::npy_api::NPY_ARRAY_WRITEABLE_;
    return shared;
  }
  py::array_t<T> out(table->rows());
  T* to = out.mutable_data();
  for (const auto& batch : batches) {
    const ti::arrow_column& c = batch.columns[column];
    if (batch.rows > 0) std::memcpy(to, c.values.data(), static_cast<std::size_t>(batch.rows) * sizeof(T));
    if constexpr (std::is_floating_point_v<T>) {
      for (std::int64_t r = 0; c.null_count > 0 && r < batch.rows; ++r) {
        if (!c.is_valid(r)) to[r] = std::numeric_limits<T>::quiet_NaN();
      }
    }
    to += batch.rows;
  }
  return out;
}

py::array logicals(const ti::arrow_table& table, std::size_t column) {
  py::array_t<bool> out(table.rows());
  bool* to = out.mutable_data();
  for (const auto& batch : table.batches) {
    const std::uint8_t* bits = batch.columns[column].values.data();
    for (std::int64_t r = 0; r < batch.rows; ++r) *to++ = ((bits[r >> 3] >> (r & 7)) & 1) != 0;
  }
  return out;
}

// Microseconds as nanoseconds, NaT where missing; a value past the range of
// nanoseconds is refused rather than wrapped.
py::array nanoseconds(const ti::arrow_table& table, std::size_t column, const char* dtype) {
  py::array_t<std::int64_t> out(table.rows());
  std::int64_t* to = out.mutable_data();
  std::int64_t row = 0;
  for (const auto& batch : table.batches) {
    const ti::arrow_column& c = batch.columns[column];
    for (std::int64_t r = 0; r < batch.rows; ++r, ++row) {
      std::int64_t ns = std::numeric_limits<std::int64_t>::min();
      if (c.is_valid(r) && (__builtin_mul_overflow(c.values.at<std::int64_t>(static_cast<std::size_t>(r)), 1000, &ns) ||
                            ns == std::numeric_limits<std::int64_t>::min())) {
        throw py::value_error("the value of '" + table.fields[column].name + "' in row " + std::to_string(row + 1) +
                              " is outside the range of " + dtype + " (years 1678 to 2261)");
      }
      *to++ = ns;
    }
  }
  return out.attr("view")(dtype);
}

py::array texts(const ti::arrow_table& table, std::size_t column) {
  py::array out = py::module_::import("numpy").attr("empty")(table.rows(), "object");
  auto** slots = static_cast<PyObject**>(out.mutable_data());
  for (const auto& batch : table.batches) {
    const ti::arrow_column& c = batch.columns[column];
    for (std::int64_t r = 0; r < batch.rows; ++r, ++slots) {
      if (!c.is_valid(r) || c.type == ti::arrow_type::null) continue;  // stays None
      const std::string_view text = c.text_at(r);
      PyObject* s = PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "surrogateescape");
      if (s == nullptr) throw py::error_already_set();
      Py_XDECREF(*slots);
      *slots = s;
    }
  }
  return out;
}

const char* kind_of(ti::arrow_type type) {
  switch (type) {
    case ti::arrow_type::null:
      return "null";
    case ti::arrow_type::boolean:
      return "bool";
    case ti::arrow_type::int8:
      return "int8";
    case ti::arrow_type::int16:
      return "int16";
    case ti::arrow_type::int32:
      return "int32";
    case ti::arrow_type::int64:
      return "int64";
    case ti::arrow_type::uint8:
      return "uint8";
    case ti::arrow_type::uint16:
      return "uint16";
    case ti::arrow_type::uint32:
      return "uint32";
    case ti::arrow_type::uint64:
      return "uint64";
    case ti::arrow_type::float32:
      return "float32";
    case ti::arrow_type::float64:
      return "float64";
    case ti::arrow_type::timestamp:
      return "datetime";
    case ti::arrow_type::duration:
      return "duration";
    case ti::arrow_type::utf8:
    case ti::arrow_type::large_utf8:
      return "string";
  }
  return "string";
}

py::array values_of(const table_ptr& table, std::size_t column) {
  for (const auto& batch : table->batches) {
    if (batch.columns[column].type != table->type(column)) {
      throw std::logic_error("a column changed its type between batches");
    }
  }
  switch (table->type(column)) {
    case ti::arrow_type::boolean:
      return logicals(*table, column);
    case ti::arrow_type::int8:
      return numbers<std::int8_t>(table, column);
    case ti::arrow_type::int16:
      return numbers<std::int16_t>(table, column);
    case ti::arrow_type::int32:
      return numbers<std::int32_t>(table, column);
    case ti::arrow_type::int64:
      return numbers<std::int64_t>(table, column);
    case ti::arrow_type::uint8:
      return numbers<std::uint8_t>(table, column);
    case ti::arrow_type::uint16:
      return numbers<std::uint16_t>(table, column);
    case ti::arrow_type::uint32:
      return numbers<std::uint32_t>(table, column);
    case ti::arrow_type::uint64:
      return numbers<std::uint64_t>(table, column);
    case ti::arrow_type::float32:
      return numbers<float>(table, column);
    case ti::arrow_type::float64:
      return numbers<double>(table, column);
    case ti::arrow_type::timestamp:
      return nanoseconds(*table, column, "datetime64[ns]");
    case ti::arrow_type::duration:
      return nanoseconds(*table, column, "timedelta64[ns]");
    case ti::arrow_type::null:
    case ti::arrow_type::utf8:
    case ti::arrow_type::large_utf8:
      return texts(*table, column);
  }
  return texts(*table, column);
}

// ---- Arrow PyCapsules ---------------------------------------------------------

void release_schema_capsule(PyObject* capsule) {
  auto* schema = static_cast<ArrowSchema*>(PyCapsule_GetPointer(capsule, "arrow_schema"));
  if (schema == nullptr) return;
  if (schema->release != nullptr) schema->release(schema);
  delete schema;
}

void release_stream_capsule(PyObject* capsule) {
  auto* stream = static_cast<ArrowArrayStream*>(PyCapsule_GetPointer(capsule, "arrow_array_stream"));
  if (stream == nullptr) return;
  if (stream->release != nullptr) stream->release(stream);
  delete stream;
}

// A stream over a table that others may hold too: each batch exported keeps
// the table alive.
struct table_stream {
  table_ptr table;
  std::size_t next = 0;
  std::string error;

  static table_stream& of(ArrowArrayStream* s) { return *static_cast<table_stream*>(s->private_data); }
  static int get_schema(ArrowArrayStream* s, ArrowSchema* out) {
    try {
      ti::export_schema(*of(s).table, out);
      return 0;
    } catch (const std::exception& e) {
      of(s).error = e.what();
      return ENOMEM;
    }
  }
  static int get_next(ArrowArrayStream* s, ArrowArray* out) {
    table_stream& self = of(s);
    if (self.next >= self.table->batches.size()) {
      std::memset(out, 0, sizeof *out);  // the end: release == NULL
      return 0;
    }
    try {
      ti::export_batch(self.table, self.next, out);
      ++self.next;
      return 0;
    } catch (const std::exception& e) {
      self.error = e.what();
      return ENOMEM;
    }
  }
  static const char* get_last_error(ArrowArrayStream* s) { return of(s).error.empty() ? nullptr : of(s).error.c_str(); }
  static void release(ArrowArrayStream* s) {
    delete static_cast<table_stream*>(s->private_data);
    s->release = nullptr;
  }
};

// ---- the Table ----------------------------------------------------------------

struct native_table {
  table_ptr table;
  std::vector<std::string> types;  // the type each variable was read as
  std::vector<std::size_t> date_order_unsettled;
  std::uint64_t lines_left_unread = 0;

  std::int64_t num_rows() const { return table->rows(); }
  std::vector<std::string> column_names() const {
    std::vector<std::string> names;
    for (const auto& f : table->fields) names.push_back(f.name);
    return names;
  }
  std::size_t checked(std::size_t column) const {
    if (column >= table->fields.size()) throw py::index_error("no column " + std::to_string(column));
    return column;
  }
  // (kind, values, mask, timezone)
  py::tuple column(std::size_t i) const {
    checked(i);
    py::array values = values_of(table, i);
    return py::make_tuple(kind_of(table->type(i)), values, mask_of(*table, i), table->fields[i].timezone);
  }
  py::object schema_capsule() const {
    auto schema = std::make_unique<ArrowSchema>();
    ti::export_schema(*table, schema.get());
    PyObject* capsule = PyCapsule_New(schema.get(), "arrow_schema", release_schema_capsule);
    if (capsule == nullptr) {
      schema->release(schema.get());
      throw py::error_already_set();
    }
    schema.release();
    return py::reinterpret_steal<py::object>(capsule);
  }
  py::object stream_capsule(const py::object& /*requested_schema*/) const {
    // The table's own schema is given whatever is asked: the consumer casts.
    auto stream = std::make_unique<ArrowArrayStream>();
    stream->get_schema = table_stream::get_schema;
    stream->get_next = table_stream::get_next;
    stream->get_last_error = table_stream::get_last_error;
    stream->release = table_stream::release;
    stream->private_data = new table_stream{table, 0, {}};
    PyObject* capsule = PyCapsule_New(stream.get(), "arrow_array_stream", release_stream_capsule);
    if (capsule == nullptr) {
      stream->release(stream.get());
      throw py::error_already_set();
    }
    stream.release();
    return py::reinterpret_steal<py::object>(capsule);
  }
};

native_table table_of(ti::table_read&& got) {
  native_table t;
  t.table = std::make_shared<const ti::arrow_table>(std::move(got.table));
  for (const auto& typing : got.outcome.types) t.types.emplace_back(ti::type_name(typing.type));
  t.date_order_unsettled = got.outcome.date_order_unsettled;
  t.lines_left_unread = got.outcome.summary.lines_left_unread;
  return t;
}

// A plan as plain Python values, so that it pickles.
py::tuple plan_state(const zvpy::read_plan& plan) {
  py::list types;
  for (const auto& t : plan.types) {
    types.append(py::make_tuple(std::string(ti::type_name(t.type)), static_cast<int>(t.dates), t.missing_markers));
  }
  const auto& f = plan.format;
  return py::make_tuple(plan.option_pairs, f.encoding, static_cast<int>(static_cast<unsigned char>(f.quote)),
                        static_cast<int>(f.escape), f.quote_detected, f.table_end_line, f.variable_names, plan.names,
                        types);
}

zvpy::read_plan plan_of(const py::tuple& state) {
  if (state.size() != 9) throw py::value_error("not a read plan");
  zvpy::read_plan plan;
  plan.option_pairs = state[0].cast<std::vector<std::string>>();
  plan.format.encoding = state[1].cast<std::string>();
  plan.format.quote = static_cast<char>(state[2].cast<int>());
  plan.format.escape = static_cast<ti::escape_style>(state[3].cast<int>());
  plan.format.quote_detected = state[4].cast<bool>();
  plan.format.table_end_line = state[5].cast<std::optional<std::uint64_t>>();
  plan.format.variable_names = state[6].cast<std::vector<std::string>>();
  plan.names = state[7].cast<std::vector<std::string>>();
  for (const auto& t : state[8]) {
    const auto typing = t.cast<py::tuple>();
    plan.types.push_back(ti::variable_typing{type_named(typing[0].cast<std::string>()),
                                             static_cast<ti::date_order>(typing[1].cast<int>()),
                                             typing[2].cast<std::vector<std::string>>()});
  }
  return plan;
}

std::vector<std::string> option_keys() {
  std::vector<std::string> keys;
  for (const auto& option : textio::options::option_descriptions) keys.emplace_back(option.key);
  return keys;
}

#define ZVTP_CALL_ARGS                                                                                                \
  py::arg("source"), py::arg("name"), py::arg("options"), py::arg("detect"), py::arg("threads"), py::arg("encoding"), \
      py::arg("quote"), py::arg("escape"), py::arg("table_end"), py::arg("all_lines"), py::arg("variable_names"),     \
      py::arg("types")

}  // namespace

PYBIND11_MODULE(_zvtextparser, m) {
  m.doc() = "The reader of zvtextparser: text tables into typed columns.";

  py::class_<native_table>(m, "NativeTable")
      .def_property_readonly("num_rows", &native_table::num_rows)
      .def_property_readonly("column_names", &native_table::column_names)
      .def_readonly("types", &native_table::types)
      .def_readonly("date_order_unsettled", &native_table::date_order_unsettled)
      .def_readonly("lines_left_unread", &native_table::lines_left_unread)
      .def("column", &native_table::column, py::arg("index"))
      .def("__arrow_c_schema__", &native_table::schema_capsule)
      .def("__arrow_c_stream__", &native_table::stream_capsule, py::arg("requested_schema") = py::none());

  m.def("option_keys", &option_keys, "The option keys in the option table's order.");

  m.def(
      "read",
      [](const py::object& source, const std::string& name, const std::vector<std::string>& options, bool detect,
         std::optional<unsigned> threads, std::optional<std::string> encoding, std::optional<std::string> quote,
         std::optional<std::string> escape, std::optional<std::uint64_t> table_end, bool all_lines,
         const std::vector<std::string>& variable_names, const py::object& types) {
        auto c = prepare(source, name, options, detect, threads, encoding, quote, escape, table_end, all_lines,
                         variable_names, types);
        return table_of(guarded([&] { return ti::read_table(c->source, c->options, c->settings); }));
      },
      ZVTP_CALL_ARGS);

  m.def(
      "detect",
      [](const py::object& source, const std::string& name, const std::vector<std::string>& options, bool detect,
         std::optional<unsigned> threads, std::optional<std::string> encoding, std::optional<std::string> quote,
         std::optional<std::string> escape, std::optional<std::uint64_t> table_end, bool all_lines,
         const std::vector<std::string>& variable_names, const py::object& types) {
        auto c = prepare(source, name, options, detect, threads, encoding, quote, escape, table_end, all_lines,
                         variable_names, types);
        const ti::detection_result detected = guarded([&] { return ti::detect(c->source, c->options, c->settings); });
        // The same object as `zvtextparser detect` prints, as JSON text.
        zvtool::json_writer out;
        out.begin_object();
        out.key("options");
        zvtool::write_options_record(out, detected.options);
        out.key("detected");
        zvtool::write_detected(out, detected);
        out.key("arguments");
        out.begin_array();
        for (const auto& a : zvtool::reproducing_arguments(detected.options, detected.format)) out.bytes_value(a);
        out.end_array();
        out.end_object();
        return py::bytes(out.text());
      },
      ZVTP_CALL_ARGS);

  py::class_<zvpy::read_plan>(m, "ReadPlan")
      .def_readonly("names", &zvpy::read_plan::names)
      .def_property_readonly("types",
                             [](const zvpy::read_plan& p) {
                               std::vector<std::string> names;
                               for (const auto& t : p.types) names.emplace_back(ti::type_name(t.type));
                               return names;
                             })
      .def(py::pickle(&plan_state, &plan_of));

  m.def(
      "plan_read",
      [](const std::string& path, const std::vector<std::string>& options, bool detect,
         std::optional<std::string> encoding, std::optional<std::string> quote, std::optional<std::string> escape,
         std::optional<std::uint64_t> table_end, bool all_lines, const std::vector<std::string>& variable_names,
         std::optional<std::string> types_json) {
        auto c = prepare(py::str(path), path, options, detect, std::nullopt, encoding, quote, escape, table_end,
                         all_lines, variable_names, py::none());
        try {
          return guarded([&] { return zvpy::plan_read(path, c->options, c->settings, types_json); });
        } catch (const zvtool::usage_error& error) {
          throw py::value_error(error.what());
        }
      },
      py::arg("path"), py::arg("options"), py::arg("detect"), py::arg("encoding"), py::arg("quote"), py::arg("escape"),
      py::arg("table_end"), py::arg("all_lines"), py::arg("variable_names"), py::arg("types_json"));

  m.def(
      "part_starts",
      [](const std::string& path, const zvpy::read_plan& plan, std::uint64_t block_bytes) {
        py::list starts;
        for (const auto& s : guarded([&] { return zvpy::part_starts(path, plan, block_bytes); })) {
          starts.append(py::make_tuple(s.offset, s.line, s.variables));
        }
        return starts;
      },
      py::arg("path"), py::arg("plan"), py::arg("block_bytes"));

  m.def(
      "read_part",
      [](const std::string& path, const zvpy::read_plan& plan, const py::tuple& start,
         std::optional<std::uint64_t> stop) {
        const ti::part_state state{start[0].cast<std::uint64_t>(), start[1].cast<std::uint64_t>(),
                                   start[2].cast<std::optional<std::size_t>>()};
        native_table t;
        t.table =
            std::make_shared<const ti::arrow_table>(guarded([&] { return zvpy::read_part(path, plan, state, stop); }));
        for (const auto& typing : plan.types) t.types.emplace_back(ti::type_name(typing.type));
        return t;
      },
      py::arg("path"), py::arg("plan"), py::arg("start"), py::arg("stop"));
}
