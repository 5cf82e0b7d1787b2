// Visibility of the library's exported declarations. The shared library is
// built with hidden visibility; a linker version script trims the rest.
#pragma once

#define ZVTEXTPARSER_API __attribute__((visibility("default")))
