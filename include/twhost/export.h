// Symbols of the host runtime (libtwhost) that the library and the shell use.
// The library itself is built with hidden visibility, so the host's symbols
// are marked here for both sides.
#pragma once

#define TW_HOST __attribute__((visibility("default")))
