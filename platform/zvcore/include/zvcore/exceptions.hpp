// The environment's exception bases. Every message exception derives from
// IMsgIDException; the text comes from the message catalog, filled in with
// the identifier's arguments.
#pragma once

#include <string>

#include <boost/exception/exception.hpp>

#include "zvcore/base_msg_id.hpp"
#include "zvcore/ustring.hpp"

namespace foundation::core::except {

class IException : public boost::exception_detail::clone_base, public boost::exception {
 public:
  IException() = default;
  IException(const IException& other);
  IException& operator=(const IException&) = delete;
  ~IException() noexcept override;

  // 8-bit (UTF-8) text of the message; it lives as long as the exception.
  virtual const char* what() const noexcept;

 private:
  mutable std::string what_text_;
};

class IUserException : public IException {
 public:
  IUserException() = default;
  IUserException(const IUserException&) = default;
  ~IUserException() noexcept override;

 protected:
  virtual ::ustring convert_str(const std::string& text) const;
  virtual std::string convert_str(const ::ustring& text) const;

 private:
  friend class IException;
  virtual ::ustring ToUstringImpl() const;
};

class IMsgIDException : public IUserException {
 public:
  IMsgIDException() = default;
  IMsgIDException(const IMsgIDException&) = default;
  ~IMsgIDException() noexcept override;

  virtual std::string GetMsgIDText() const = 0;
  // The catalog's entry for GetBaseMsgID() with its arguments filled in; the
  // identifier itself when the catalog or the entry is missing.
  virtual ::ustring GetUnicodeMessageTxt() const;
  virtual const resource_core::BaseMsgID& GetBaseMsgID() const = 0;

 protected:
  // "CATALOG:KEY", e.g. "ZORVEK:textio:textio:BadTextFlag".
  std::string get_error_id(const resource_core::BaseMsgID& id) const;

 private:
  ::ustring ToUstringImpl() const override;
};

}  // namespace foundation::core::except
