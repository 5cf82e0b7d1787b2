#include "zvcore/exceptions.hpp"

#include "zvcore/message_catalog.hpp"

namespace foundation::core::except {

// The cached text is not copied: each exception builds its own on demand.
IException::IException(const IException& other) : boost::exception_detail::clone_base(other), boost::exception(other) {}

IException::~IException() noexcept = default;

const char* IException::what() const noexcept {
  try {
    if (what_text_.empty()) {
      if (const auto* user = dynamic_cast<const IUserException*>(this)) {
        what_text_ = unicode::to_utf8(user->ToUstringImpl());
      } else {
        what_text_ = "Unknown exception.";
      }
    }
    return what_text_.c_str();
  } catch (...) {
    return "Unknown exception (its text could not be built).";
  }
}

IUserException::~IUserException() noexcept = default;

::ustring IUserException::convert_str(const std::string& text) const { return unicode::to_utf16(text); }

std::string IUserException::convert_str(const ::ustring& text) const { return unicode::to_utf8(text); }

::ustring IUserException::ToUstringImpl() const { return u"Unknown exception."; }

IMsgIDException::~IMsgIDException() noexcept = default;

::ustring IMsgIDException::GetUnicodeMessageTxt() const {
  const auto& id = GetBaseMsgID();
  if (auto text = catalog::format_message(id)) return std::move(*text);
  return convert_str(get_error_id(id));
}

std::string IMsgIDException::get_error_id(const resource_core::BaseMsgID& id) const {
  return id.catalog + ":" + id.key;
}

::ustring IMsgIDException::ToUstringImpl() const { return GetUnicodeMessageTxt(); }

}  // namespace foundation::core::except
