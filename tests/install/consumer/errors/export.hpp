// A consumer's own header that happens to share a name with one of the
// library's; the library's headers must never pick it up.
#error "the consumer's errors/export.hpp was included in place of the library's"
