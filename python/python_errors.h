// The identifiers of the Python layer, "KORVAN:python:<key>", raised as
// twfileio::Error so that they reach Python as twfileio.Error like those of
// the built-ins.
#pragma once

#include <pybind11/pybind11.h>

#include <string>
#include <utility>

#include "twfileio/twfileio.h"
#include "twhost/catalog.h"
#include "twhost/errors.h"

namespace twpython {

// Adds the texts of the layer's identifiers to the host's catalogue.
void registerMessages();

// Sets `e` as the pending Python exception, an instance of `errorClass`
// (twfileio.Error) with .identifier and .message.
void setPythonError(pybind11::handle errorClass, const twfileio::Error& e);

template <class... A>
[[noreturn]] void raise(const char* key, A&&... args) {
  resource_core::BaseMsgID id = kxMsg("KORVAN:python", key, std::forward<A>(args)...);
  throw twfileio::Error(id.id(), kxMessageText(id));
}

}  // namespace twpython
