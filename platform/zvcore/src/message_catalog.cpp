#include "zvcore/message_catalog.hpp"

#include <map>
#include <mutex>
#include <stdexcept>

#include <nlohmann/json.hpp>

namespace foundation::core::catalog {
namespace detail {
const std::vector<std::string_view>& builtin_catalog_texts();
}

namespace {

using Messages = std::map<std::string, std::string, std::less<>>;
using Catalogs = std::map<std::string, Messages, std::less<>>;

struct Registry {
  std::mutex mutex;
  Catalogs catalogs;
  bool loaded = false;
};

Registry& registry() {
  static Registry instance;
  return instance;
}

std::pair<std::string, Messages> parse_catalog(std::string_view json_text) {
  const auto doc = nlohmann::json::parse(json_text, nullptr, /*allow_exceptions=*/false);
  if (!doc.is_object() || !doc.contains("catalog") || !doc["catalog"].is_string() || !doc.contains("messages") ||
      !doc["messages"].is_object()) {
    throw std::runtime_error("message catalog: expected {\"catalog\": ..., \"messages\": {...}}");
  }
  Messages messages;
  for (const auto& [key, text] : doc["messages"].items()) {
    if (!text.is_string()) throw std::runtime_error("message catalog: entry '" + key + "' is no string");
    messages.emplace(key, text.get<std::string>());
  }
  return {doc["catalog"].get<std::string>(), std::move(messages)};
}

void load_builtins(Registry& r) {
  r.catalogs.clear();
  for (const auto text : detail::builtin_catalog_texts()) {
    auto [name, messages] = parse_catalog(text);
    r.catalogs[name] = std::move(messages);
  }
  r.loaded = true;
}

// Locks the registry, loading the compiled-in catalogs on first use.
std::unique_lock<std::mutex> lock_loaded(Registry& r) {
  std::unique_lock lock(r.mutex);
  if (!r.loaded) load_builtins(r);
  return lock;
}

::ustring argument_text(const resource_core::MsgArg& arg) {
  struct Visitor {
    ::ustring operator()(std::uint64_t v) const { return unicode::to_utf16(std::to_string(v)); }
    ::ustring operator()(const std::string& s) const { return unicode::to_utf16(s); }
    ::ustring operator()(const ::ustring& s) const { return s; }
  };
  return std::visit(Visitor{}, arg);
}

}  // namespace

std::optional<std::string> find_message(std::string_view catalog, std::string_view key) {
  auto& r = registry();
  const auto lock = lock_loaded(r);
  const auto c = r.catalogs.find(catalog);
  if (c == r.catalogs.end()) return std::nullopt;
  const auto m = c->second.find(key);
  if (m == c->second.end()) return std::nullopt;
  return m->second;
}

std::optional<::ustring> format_message(const resource_core::BaseMsgID& id) {
  const auto entry = find_message(id.catalog, id.key);
  if (!entry) return std::nullopt;
  const ::ustring pattern = unicode::to_utf16(*entry);
  ::ustring out;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    const char16_t c = pattern[i];
    if ((c == u'{' || c == u'}') && i + 1 < pattern.size() && pattern[i + 1] == c) {
      out.push_back(c);
      ++i;
      continue;
    }
    if (c == u'{') {
      std::size_t j = i + 1;
      std::size_t index = 0;
      while (j < pattern.size() && pattern[j] >= u'0' && pattern[j] <= u'9' && j - i <= 4) {
        index = index * 10 + static_cast<std::size_t>(pattern[j] - u'0');
        ++j;
      }
      if (j > i + 1 && j < pattern.size() && pattern[j] == u'}') {
        if (index < id.args.size()) out += argument_text(id.args[index]);
        i = j;
        continue;
      }
    }
    out.push_back(c);
  }
  return out;
}

void register_catalog(std::string_view json_text) {
  auto [name, messages] = parse_catalog(json_text);
  auto& r = registry();
  const auto lock = lock_loaded(r);
  r.catalogs[name] = std::move(messages);
}

void unregister_catalog(std::string_view catalog) {
  auto& r = registry();
  const auto lock = lock_loaded(r);
  if (const auto it = r.catalogs.find(catalog); it != r.catalogs.end()) r.catalogs.erase(it);
}

void reset_catalogs() {
  auto& r = registry();
  std::lock_guard lock(r.mutex);
  load_builtins(r);
}

std::vector<std::string> catalog_names() {
  auto& r = registry();
  const auto lock = lock_loaded(r);
  std::vector<std::string> names;
  for (const auto& entry : r.catalogs) names.push_back(entry.first);
  return names;
}

}  // namespace foundation::core::catalog
