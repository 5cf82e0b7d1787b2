#include <stdexcept>

#include "zvarray/matrix.hpp"

namespace matrix::detail {
namespace {

thread_local char_exception_mode mode = char_exception_mode::rethrow;
thread_local std::uint64_t dispatch_count = 0;
thread_local legacy_hv_error_hook hook;
thread_local std::uint64_t error_count = 0;

}  // namespace

void char_exception_dispatcher() {
  ++dispatch_count;
  switch (mode) {
    case char_exception_mode::rethrow:
      throw;
    case char_exception_mode::throw_another:
      throw std::runtime_error("character outside the supported range");
    case char_exception_mode::return_normally:
      return;
  }
}

void set_char_exception_mode(char_exception_mode m) noexcept { mode = m; }
char_exception_mode get_char_exception_mode() noexcept { return mode; }
std::uint64_t char_exception_dispatch_count() noexcept { return dispatch_count; }

void do_legacy_hv_error(const foundation::core::except::IUserException& error) {
  ++error_count;
  if (hook) hook(error);
}

legacy_hv_error_hook set_legacy_hv_error_hook(legacy_hv_error_hook new_hook) {
  auto old = std::move(hook);
  hook = std::move(new_hook);
  return old;
}

std::uint64_t legacy_hv_error_count() noexcept { return error_count; }

}  // namespace matrix::detail
