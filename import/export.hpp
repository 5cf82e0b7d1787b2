// Visibility of the reader's exported declarations. The shared reader
// library is built with hidden visibility; a linker version script keeps
// only its own namespace.
#pragma once

#define ZVTEXTIMPORT_API __attribute__((visibility("default")))
