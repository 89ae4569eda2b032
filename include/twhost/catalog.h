// The message catalogue: a text for every identifier the library and the
// host raise, and for every numbered legacy message. Texts hold {0}, {1} ...
// where the arguments go.
#pragma once

#include <string>
#include <vector>

#include "twhost/errors.h"
#include "twhost/export.h"

// The message of an identifier with its arguments put in place (UTF-8). An
// identifier without an entry gives a text that says so and names it.
TW_HOST std::string kxMessageText(const resource_core::BaseMsgID& id);
TW_HOST bool kxHasMessage(const std::string& identifier);
// Adds or replaces a text; programs built on the host (the shell) add their
// own identifiers this way.
TW_HOST void kxRegisterMessage(const std::string& identifier, const std::string& text);
// Every identifier in the catalogue, numbered messages included.
TW_HOST std::vector<std::string> kxCatalogIdentifiers();

// The key in "KORVAN:FileIO" of a stream error code -1 to -45; null otherwise.
TW_HOST const char* kxStreamErrorKey(int code);
// Text of a stream error number: 0 gives "", -1 to -45 the catalogue text,
// anything else strerror(number).
TW_HOST ustring kxStreamErrorText(int code);
