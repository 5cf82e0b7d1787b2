#include "zvcore/base_msg_id.hpp"

#include <utility>

namespace resource_core {

BaseMsgID::BaseMsgID(std::string catalog_text, std::string key_text)
    : catalog(std::move(catalog_text)), key(std::move(key_text)) {}

}  // namespace resource_core
