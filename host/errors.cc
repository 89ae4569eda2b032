// The exception family, the thrower, numbered messages and warnings.
#include "twhost/errors.h"

#include <cstdio>

#include "twhost/catalog.h"

namespace fl::except {

IException::~IException() = default;
IUserException::~IUserException() = default;

IMsgIDException::IMsgIDException(resource_core::BaseMsgID id)
    : id_(std::move(id)), idText_(id_.id()) {}
IMsgIDException::~IMsgIDException() = default;

std::string IMsgIDException::get_message() const {
  return kxMessageText(id_);
}

void bad_alloc() {
  kxThrowId("KORVAN", "nomem");
}

}  // namespace fl::except

namespace matrix::detail {

// Our host reports errors where they are caught, so there is nothing to do
// before the throw.
void do_legacy_kx_error(const fl::except::IUserException&) {}

void error_minrhs() {
  kxThrowId("KORVAN", "minrhs");
}
void error_maxrhs() {
  kxThrowId("KORVAN", "maxrhs");
}
void error_maxlhs() {
  kxThrowId("KORVAN", "maxlhs");
}

}  // namespace matrix::detail

void kxThrow(const resource_core::BaseMsgID& id) {
  fl::except::IMsgIDException e(id);
  matrix::detail::do_legacy_kx_error(e);
  throw e;
}

std::exception_ptr kxMakeError(const resource_core::BaseMsgID& id) {
  return std::make_exception_ptr(fl::except::IMsgIDException(id));
}

void kxReThrowException(std::exception_ptr e) {
  std::rethrow_exception(e);
}

void kxErrMsg(int n) {
  kxThrowId("KORVAN:legacy", std::to_string(n).c_str());
}

namespace {

void defaultWarningHandler(const std::string&, const std::string& message) {
  std::fflush(stdout);
  std::fprintf(stderr, "Warning: %s\n", message.c_str());
}

kxWarningHandler g_warningHandler = defaultWarningHandler;

}  // namespace

void kxWarningMsgId(const resource_core::BaseMsgID& id) {
  g_warningHandler(id.id(), kxMessageText(id));
}

kxWarningHandler kxSetWarningHandler(kxWarningHandler h) {
  kxWarningHandler old = g_warningHandler;
  g_warningHandler = h ? h : defaultWarningHandler;
  return old;
}

kxErrorReport kxDescribeException(std::exception_ptr e) {
  try {
    std::rethrow_exception(e);
  } catch (const fl::except::IUserException& u) {
    return {u.get_error_id(), u.get_message()};
  } catch (const std::bad_alloc&) {
    return {"KORVAN:nomem", kxMessageText({"KORVAN", "nomem"})};
  } catch (const std::exception& x) {
    return {"KORVAN:internal", kxMessageText(kxMsg("KORVAN", "internal", std::string(x.what())))};
  } catch (...) {
    return {"KORVAN:internal", kxMessageText(kxMsg("KORVAN", "internal", std::string("?")))};
  }
}
