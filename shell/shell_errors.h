// Errors raised by the shell itself: its language errors ("KORVAN:shell:..."),
// whose texts it adds to the host's catalogue, and the errors a script raises
// with error(), which carry their own identifier and text.
#pragma once

#include <string>
#include <utility>

#include "twhost/catalog.h"
#include "twhost/errors.h"

namespace tw {

// Adds the texts of the shell's identifiers to the host's catalogue.
void registerShellMessages();

// Throws "KORVAN:shell:<key>" with its arguments.
template <class... A>
[[noreturn]] void shellError(const char* key, A&&... args) {
  kxThrowId("KORVAN:shell", key, std::forward<A>(args)...);
}

// The text of "KORVAN:shell:<key>" with its arguments, for warnings.
template <class... A>
std::string shellMessageText(const char* key, A&&... args) {
  return kxMessageText(kxMsg("KORVAN:shell", key, std::forward<A>(args)...));
}

// An error whose identifier and text are given as they stand: error() in a
// script, and errors rethrown from a caught err struct.
class UserError : public fl::except::IUserException {
 public:
  UserError(std::string identifier, std::string message)
      : identifier_(std::move(identifier)), message_(std::move(message)) {}
  std::string get_error_id() const override { return identifier_; }
  std::string get_message() const override { return message_; }
  const char* what() const noexcept override { return message_.c_str(); }

 private:
  std::string identifier_;
  std::string message_;
};

}  // namespace tw
