#include "tools/variable_types.hpp"

#include <algorithm>

#include "import/detect/sample_types.hpp"
#include "import/text_reader.hpp"
#include "import/input/utf8_input.hpp"
#include "tools/host_values.hpp"
#include "tools/usage_error.hpp"
#include "zvcore/exceptions.hpp"
#include "zvcore/ustring.hpp"

namespace zvtool {
namespace {

using textio::import::output_value;
using textio::import::value_kind;

std::string utf8_of(const output_value& v) {
  if (v.kind != value_kind::text) return {};
  return v.utf16 ? foundation::core::unicode::to_utf8(v.units) : std::string(v.bytes);
}

struct sample_full {};

// Keeps names and records as text; stops the reader when it has enough.
class sample_sink : public textio::import::record_sink {
 public:
  sample_sink(text_sample& sample, std::size_t limit) : sample_(sample), limit_(limit) {}
  void header(const textio::import::table_header& h) override {
    for (const auto& n : h.names) sample_.names.push_back(utf8_of(n));
  }
  void record(std::span<const output_value> values) override {
    auto& row = sample_.rows.emplace_back();
    for (const auto& v : values) row.push_back(utf8_of(v));
    sample_.variables = std::max(sample_.variables, row.size());
    if (sample_.rows.size() >= limit_) throw sample_full{};
  }

 private:
  text_sample& sample_;
  std::size_t limit_;
};

textio::import::value_type type_named(const std::string& name) {
  if (name == "auto") return textio::import::value_type::string;  // not asked for
  const auto type = textio::import::type_from_name(name);
  if (!type) {
    throw usage_error("unknown type '" + name +
                      "' in --types; the types are double, single, int8, int16, int32, int64, uint8, uint16, uint32, "
                      "uint64, logical, datetime, duration, string, char, categorical and auto");
  }
  return *type;
}

}  // namespace

text_sample read_text_sample(const textio::parser::options& record, const std::string& path,
                             const textio::import::text_format& format, std::size_t records) {
  text_sample sample;
  textio::parser::options as_text = record;
  as_text.output_type(textio::enums::OutputBuilderType::Cell);
  sample_sink sink(sample, records);
  try {
    textio::import::utf8_input input(path);
    textio::import::read_table(as_text, input, sink, format);
  } catch (const sample_full&) {
  } catch (const foundation::core::except::IMsgIDException&) {
  }
  sample.variables = std::max(sample.variables, sample.names.size());
  return sample;
}

std::vector<textio::import::detected_type> detected_types_of(const textio::import::detection_report& report) {
  const auto typings = textio::import::variable_typings(report);
  std::vector<textio::import::detected_type> out(typings.size());
  for (std::size_t i = 0; i < out.size(); ++i) {
    out[i].typing = typings[i];
    out[i].date_order_unsettled = report.date_order_unsettled[i];
  }
  return out;
}

std::vector<textio::import::detected_type> detect_sample_types(const textio::parser::options& record,
                                                               const text_sample& sample) {
  const auto settings = textio::import::type_detection_settings_of(record);
  return textio::import::detect_types(sample.rows, sample.variables, settings);
}

std::vector<textio::import::variable_typing> apply_type_argument(const std::optional<std::string>& json,
                                                                 std::vector<textio::import::detected_type> detected,
                                                                 const std::vector<std::string>& names) {
  std::vector<textio::import::variable_typing> out;
  for (auto& d : detected) out.push_back(std::move(d.typing));
  if (!json) return out;
  std::string error;
  const auto parsed = parse_json(*json, &error);
  if (!parsed) throw usage_error("--types is no JSON: " + error);
  const auto set = [&](std::size_t i, const nlohmann::ordered_json& name) {
    if (!name.is_string()) throw usage_error("--types: a type is a string such as \"double\"");
    const std::string n = name.get<std::string>();
    const auto type = type_named(n);
    if (n == "auto") return;
    if (out.size() <= i) out.resize(i + 1);
    out[i] = textio::import::variable_typing{type, out[i].dates, {}};
  };
  if (parsed->is_array()) {
    const std::size_t variables = std::max(names.size(), detected.size());
    if (parsed->size() > variables && variables > 0) {
      throw usage_error("--types names " + std::to_string(parsed->size()) + " types but the file has " +
                        std::to_string(variables) + " variables");
    }
    for (std::size_t i = 0; i < parsed->size(); ++i) set(i, (*parsed)[i]);
  } else if (parsed->is_object()) {
    for (const auto& [key, value] : parsed->items()) {
      const auto at = std::find(names.begin(), names.end(), key);
      if (at == names.end()) throw usage_error("--types: the file has no variable '" + key + "'");
      set(static_cast<std::size_t>(at - names.begin()), value);
    }
  } else {
    throw usage_error("--types takes a list of type names or an object of names and types");
  }
  return out;
}

}  // namespace zvtool
