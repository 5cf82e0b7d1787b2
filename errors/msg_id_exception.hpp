// The exception thrown for every message of the library, and the one way to
// throw it.
#pragma once

#include <exception>
#include <string>

#include <zvtextparser/errors/export.hpp>
#include "zvarray/matrix.hpp"
#include "zvcore/exceptions.hpp"

namespace foundation::core::except {

// One exception type per tag. Catchable as itself, IMsgIDException,
// IUserException, IException, clone_base, boost::exception or std::exception;
// never as the tag. Default visibility keeps its type information matchable
// by catch clauses in other shared objects.
template <class Tag, class StdBase = std::exception, class Reserved = void>
class ZVTEXTPARSER_API Exception : public IMsgIDException, public StdBase {
 public:
  // NOLINTNEXTLINE(modernize-pass-by-value): the tag stays its caller's; this is a copy
  explicit Exception(const Tag& tag) : IMsgIDException(), StdBase(), msg_id_(tag), error_id_(get_error_id(msg_id_)) {}

  // A copy keeps the identifier it was built with; get_error_id is not asked again.
  Exception(const Exception& other)
      : IMsgIDException(other), StdBase(other), msg_id_(other.msg_id_), error_id_(other.error_id_) {}

  Exception& operator=(const Exception&) = delete;
  ~Exception() noexcept override = default;

  const boost::exception_detail::clone_base* clone() const override { return new Exception(*this); }
  void rethrow() const override { throw Exception(*this); }
  const char* what() const noexcept override { return IException::what(); }
  std::string GetMsgIDText() const override { return error_id_; }
  const resource_core::BaseMsgID& GetBaseMsgID() const override { return msg_id_; }

 private:
  Tag msg_id_;
  std::string error_id_;
};

}  // namespace foundation::core::except

namespace textio {

// Builds the exception, hands it to the host once, then throws a copy.
template <class Tag>
[[noreturn]] void throw_msg_id_exception(const Tag& tag) {
  using exception_type = foundation::core::except::Exception<Tag, std::exception, void>;
  const exception_type local(tag);
  matrix::detail::do_legacy_hv_error(local);
  throw exception_type(local);
}

}  // namespace textio
