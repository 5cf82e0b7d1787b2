#include "import/table/arrow_export.hpp"

#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace textio::import {
namespace {

using shared_table = std::shared_ptr<const arrow_table>;

// What an exported schema owns: its texts and its children.
struct schema_data {
  std::string format;
  std::string name;
  std::string metadata;
  std::vector<ArrowSchema> children;
  std::vector<ArrowSchema*> child_pointers;
};

void release_schema(ArrowSchema* schema) {
  auto* data = static_cast<schema_data*>(schema->private_data);
  for (ArrowSchema& child : data->children) {
    if (child.release != nullptr) child.release(&child);
  }
  delete data;
  schema->release = nullptr;
}

void append_int32(std::string& out, std::int32_t n) { out.append(reinterpret_cast<const char*>(&n), sizeof n); }

// Key-value metadata in the interface's binary form: a count, then each
// key and value with its length (native byte order).
std::string metadata_of(const arrow_field& field) {
  std::vector<std::pair<std::string_view, std::string_view>> pairs;
  if (!field.unit.empty()) pairs.emplace_back("unit", field.unit);
  if (!field.description.empty()) pairs.emplace_back("description", field.description);
  if (pairs.empty()) return {};
  std::string out;
  append_int32(out, static_cast<std::int32_t>(pairs.size()));
  for (const auto& [key, value] : pairs) {
    append_int32(out, static_cast<std::int32_t>(key.size()));
    out += key;
    append_int32(out, static_cast<std::int32_t>(value.size()));
    out += value;
  }
  return out;
}

void fill_schema(ArrowSchema* out, schema_data* data, std::int64_t flags) {
  *out = ArrowSchema{};
  out->format = data->format.c_str();
  out->name = data->name.c_str();
  out->metadata = data->metadata.empty() ? nullptr : data->metadata.data();
  out->flags = flags;
  out->n_children = static_cast<std::int64_t>(data->children.size());
  for (ArrowSchema& child : data->children) data->child_pointers.push_back(&child);
  out->children = data->child_pointers.empty() ? nullptr : data->child_pointers.data();
  out->release = release_schema;
  out->private_data = data;
}

// What an exported array owns: a hold on the table, its buffer pointers and
// its children.
struct array_data {
  shared_table table;
  std::vector<const void*> buffers;
  std::vector<ArrowArray> children;
  std::vector<ArrowArray*> child_pointers;
};

void release_array(ArrowArray* array) {
  auto* data = static_cast<array_data*>(array->private_data);
  for (ArrowArray& child : data->children) {
    if (child.release != nullptr) child.release(&child);
  }
  delete data;
  array->release = nullptr;
}

void fill_array(ArrowArray* out, array_data* data, std::int64_t length, std::int64_t null_count) {
  *out = ArrowArray{};
  out->length = length;
  out->null_count = null_count;
  out->n_buffers = static_cast<std::int64_t>(data->buffers.size());
  out->buffers = data->buffers.data();
  out->n_children = static_cast<std::int64_t>(data->children.size());
  for (ArrowArray& child : data->children) data->child_pointers.push_back(&child);
  out->children = data->child_pointers.empty() ? nullptr : data->child_pointers.data();
  out->release = release_array;
  out->private_data = data;
}

// Consumers may not take a null pointer for a buffer that is empty.
const void* buffer_of(const arrow_buffer& buffer) {
  static constexpr std::uint64_t empty = 0;
  return buffer.data() != nullptr ? static_cast<const void*>(buffer.data()) : &empty;
}

void export_column(const arrow_column& column, const shared_table& table, ArrowArray* out) {
  auto* data = new array_data{table, {}, {}, {}};
  const void* validity = column.null_count == 0 ? nullptr : column.validity.data();
  if (column.type == arrow_type::null) {
    data->buffers = {};
  } else if (column.type == arrow_type::utf8 || column.type == arrow_type::large_utf8) {
    data->buffers = {validity, buffer_of(column.values), buffer_of(column.text)};
  } else {
    data->buffers = {validity, buffer_of(column.values)};
  }
  fill_array(out, data, column.length, column.null_count);
}

void export_struct(const arrow_batch& batch, const shared_table& table, ArrowArray* out) {
  auto* data = new array_data{table, {nullptr}, std::vector<ArrowArray>(batch.columns.size()), {}};
  for (std::size_t i = 0; i < batch.columns.size(); ++i) export_column(batch.columns[i], table, &data->children[i]);
  fill_array(out, data, batch.rows, 0);
}

struct stream_data {
  shared_table table;
  std::size_t next = 0;
};

int stream_schema(ArrowArrayStream* stream, ArrowSchema* out) {
  export_schema(*static_cast<stream_data*>(stream->private_data)->table, out);
  return 0;
}

int stream_next(ArrowArrayStream* stream, ArrowArray* out) {
  auto* data = static_cast<stream_data*>(stream->private_data);
  if (data->next == data->table->batches.size()) {
    *out = ArrowArray{};  // the end: a released array
    return 0;
  }
  export_struct(data->table->batches[data->next++], data->table, out);
  return 0;
}

const char* stream_error(ArrowArrayStream*) { return nullptr; }

void release_stream(ArrowArrayStream* stream) {
  delete static_cast<stream_data*>(stream->private_data);
  stream->release = nullptr;
}

}  // namespace

std::string arrow_format(arrow_type type, const std::string& timezone) {
  switch (type) {
    case arrow_type::null:
      return "n";
    case arrow_type::boolean:
      return "b";
    case arrow_type::int8:
      return "c";
    case arrow_type::int16:
      return "s";
    case arrow_type::int32:
      return "i";
    case arrow_type::int64:
      return "l";
    case arrow_type::uint8:
      return "C";
    case arrow_type::uint16:
      return "S";
    case arrow_type::uint32:
      return "I";
    case arrow_type::uint64:
      return "L";
    case arrow_type::float32:
      return "f";
    case arrow_type::float64:
      return "g";
    case arrow_type::timestamp:
      return "tsu:" + timezone;
    case arrow_type::duration:
      return "tDu";
    case arrow_type::utf8:
      return "u";
    case arrow_type::large_utf8:
      return "U";
  }
  return "u";
}

void export_schema(const std::vector<arrow_field>& fields, const std::vector<arrow_type>& types, ArrowSchema* out) {
  auto* data = new schema_data{"+s", "", "", std::vector<ArrowSchema>(fields.size()), {}};
  for (std::size_t i = 0; i < fields.size(); ++i) {
    const arrow_field& field = fields[i];
    const arrow_type type = i < types.size() ? types[i] : arrow_type::utf8;
    auto* child = new schema_data{arrow_format(type, field.timezone), field.name, metadata_of(field), {}, {}};
    fill_schema(&data->children[i], child, ARROW_FLAG_NULLABLE);
  }
  fill_schema(out, data, 0);
}

void export_schema(const arrow_table& table, ArrowSchema* out) {
  std::vector<arrow_type> types;
  for (std::size_t i = 0; i < table.fields.size(); ++i) types.push_back(table.type(i));
  export_schema(table.fields, types, out);
}

void export_batch(std::shared_ptr<const arrow_table> table, std::size_t batch, ArrowArray* out) {
  export_struct(table->batches[batch], table, out);
}

void export_to_arrow(arrow_table table, ArrowArrayStream* out) {
  auto* data = new stream_data{std::make_shared<const arrow_table>(std::move(table)), 0};
  *out = ArrowArrayStream{};
  out->get_schema = stream_schema;
  out->get_next = stream_next;
  out->get_last_error = stream_error;
  out->release = release_stream;
  out->private_data = data;
}

}  // namespace textio::import
