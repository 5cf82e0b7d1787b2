// The entry point of the delimiter library: shared handles to delimiter
// objects, one object per distinct list of strings. A caller that only passes
// handles along needs no more than this header; zvdelim/delimiter.hpp has the
// object's operations.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "zvcore/ustring.hpp"

namespace textio {

class Delimiter;

// A handle to the delimiter object for `strings`. Lists with equal contents,
// in the same order, get handles to one object for as long as any handle to
// it lives; a list in another order is another key. Safe to call from several
// threads at once.
//
// The cache holds weak references only: an object dies with its last handle,
// and entries whose object has died are swept out as the cache grows, so the
// cache never keeps more than about twice as many entries as there are live
// objects (plus a small floor).
std::shared_ptr<Delimiter> get_or_create_delim(const std::vector<::ustring>& strings);

// ---- Test controls of the stand-in ----
namespace detail {

// Called by get_or_create_delim on this thread with each list it is given,
// before the cache is searched. An observer that throws makes the call fail
// with that exception. Returns the observer that was installed before.
using delim_call_observer = std::function<void(const std::vector<::ustring>&)>;
delim_call_observer set_delim_call_observer(delim_call_observer observer);

// How often get_or_create_delim has been called on this thread.
std::uint64_t delim_call_count() noexcept;

// Entries the cache holds at the moment, live or not yet swept.
std::size_t delim_cache_entries();

}  // namespace detail
}  // namespace textio
