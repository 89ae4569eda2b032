// Errors and warnings of the host.
//
// Every error names an identifier, "catalog:key", and carries typed
// arguments; its text comes from the message catalogue (catalog.h) only when
// somebody asks for it. One exception type serves all identifiers; the tag
// template lets a thrower give an identifier a type of its own when a catch
// needs to tell it apart.
#pragma once

#include <exception>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "twhost/export.h"

using ustring = std::u16string;

namespace resource_core {

using MsgArg = std::variant<long, std::string, std::u16string>;

struct BaseMsgID {
  std::string catalog;  // "KORVAN:FileIO"
  std::string key;      // "InvalidFid"
  std::vector<MsgArg> args;

  BaseMsgID() = default;
  BaseMsgID(std::string c, std::string k, std::vector<MsgArg> a = {})
      : catalog(std::move(c)), key(std::move(k)), args(std::move(a)) {}
  // "KORVAN:FileIO:InvalidFid"
  std::string id() const { return catalog + ":" + key; }
};

}  // namespace resource_core

namespace fl::except {

class TW_HOST IException : public std::exception {
 public:
  ~IException() override;
};

class TW_HOST IUserException : public IException {
 public:
  ~IUserException() override;
  virtual std::string get_error_id() const = 0;
  // The text from the catalogue, arguments in place (UTF-8).
  virtual std::string get_message() const = 0;
};

class TW_HOST IMsgIDException : public IUserException {
 public:
  explicit IMsgIDException(resource_core::BaseMsgID id);
  ~IMsgIDException() override;
  const resource_core::BaseMsgID& msgId() const { return id_; }
  std::string get_error_id() const override { return idText_; }
  std::string get_message() const override;
  const char* what() const noexcept override { return idText_.c_str(); }

 private:
  resource_core::BaseMsgID id_;
  std::string idText_;
};

// One type per tag, when a thrower wants one.
template <class Tag, class Base = std::exception, class = void>
class Exception : public IMsgIDException {
 public:
  using IMsgIDException::IMsgIDException;
};

// The host's out-of-memory error ("KORVAN:nomem").
[[noreturn]] TW_HOST void bad_alloc();

}  // namespace fl::except

namespace matrix::detail {
// The host's chance to report an error its own way before it is thrown.
TW_HOST void do_legacy_kx_error(const fl::except::IUserException& e);
[[noreturn]] TW_HOST void error_minrhs();
[[noreturn]] TW_HOST void error_maxrhs();
[[noreturn]] TW_HOST void error_maxlhs();
}  // namespace matrix::detail

// Builds an identifier with its arguments: kxMsg("KORVAN:iofun",
// "InvalidEncoding", name).
template <class... A>
resource_core::BaseMsgID kxMsg(const char* catalog, const char* key, A&&... args) {
  return resource_core::BaseMsgID(catalog, key, {resource_core::MsgArg(std::forward<A>(args))...});
}

// The thrower: report through do_legacy_kx_error, then throw.
[[noreturn]] TW_HOST void kxThrow(const resource_core::BaseMsgID& id);
template <class... A>
[[noreturn]] void kxThrowId(const char* catalog, const char* key, A&&... args) {
  kxThrow(kxMsg(catalog, key, std::forward<A>(args)...));
}
// The same error, stored for a later kxReThrowException.
TW_HOST std::exception_ptr kxMakeError(const resource_core::BaseMsgID& id);
[[noreturn]] TW_HOST void kxReThrowException(std::exception_ptr e);

// Numbered legacy messages: identifier "KORVAN:legacy:N".
[[noreturn]] TW_HOST void kxErrMsg(int n);

// Warnings go to the installed handler; the default writes
// "Warning: <message>" on stderr. Control returns to the caller.
TW_HOST void kxWarningMsgId(const resource_core::BaseMsgID& id);
using kxWarningHandler = void (*)(const std::string& identifier, const std::string& message);
TW_HOST kxWarningHandler kxSetWarningHandler(kxWarningHandler h);

// The identifier and message of any exception that reaches the host.
struct kxErrorReport {
  std::string identifier;
  std::string message;
};
TW_HOST kxErrorReport kxDescribeException(std::exception_ptr e);
