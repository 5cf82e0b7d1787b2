// The message catalog: texts keyed by catalog name and key. Catalog files are
// JSON objects {"catalog": "A:B:C", "messages": {"Key": "text with {0}"}}.
// The catalogs of the build are compiled in; more can be registered at run
// time.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "zvcore/base_msg_id.hpp"
#include "zvcore/ustring.hpp"

namespace foundation::core::catalog {

// The raw entry text, if the catalog and the key exist.
std::optional<std::string> find_message(std::string_view catalog, std::string_view key);

// The entry with each "{N}" replaced by argument N (UTF-16), or nullopt when
// there is no such entry. "{{" and "}}" stand for literal braces.
std::optional<::ustring> format_message(const resource_core::BaseMsgID& id);

// Registers (or replaces) a catalog from JSON text. Throws std::runtime_error
// on text that is not a catalog.
void register_catalog(std::string_view json_text);

// Removes a catalog; later lookups in it find nothing. For tests.
void unregister_catalog(std::string_view catalog);

// Restores the compiled-in catalogs. For tests.
void reset_catalogs();

// Names of the catalogs currently registered, sorted.
std::vector<std::string> catalog_names();

}  // namespace foundation::core::catalog
