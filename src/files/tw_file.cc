// Open files: opening along the search path, closing, and the last step of
// every write.
#include "fileio/tw_file.h"

#include <cerrno>
#include <cstdio>

#include "twhost/paths.h"
#include "twhost/text.h"

namespace Tarnwicks::FileIO {

namespace {
// The size of the host's path buffer.
constexpr size_t kPathBufferSize = 4353;
constexpr size_t kFileBufferSize = 65536;
}  // namespace

twAbsFile::twAbsFile(const ustring& n, const FilePermission& perm, const MachineFormat& mf,
                     const EncodingAttribute& enc)
    : name(n), permission(perm), machineFormat(mf), encoding(enc) {}

twAbsFile::~twAbsFile() = default;

bool twAbsFile::endOfWrite() {
  if (stream_ == nullptr) return true;
  stream_->finishText();
  if (!stream_->hasFile() || !permission.autoFlush) return true;
  if (stream_->flush() != 0) {
    lastError = stream_->errorOr(StreamError::FlushError);
    return false;
  }
  return true;
}

bool twFile::open() {
  // An encoding that can't be had must fail before a writing mode empties
  // the file.
  TcodnStream::requireConverter(encoding.value.c_str());
  name = kpTildeExpansion(name);
  int err = 0;
  FILE* f = nullptr;
  if (permission.read) {
    ustring found;
    f = PathNameResolver::openFileThroughFullPathOrCWDThenKVPath(name, permission.cMode, found,
                                                                 err);
    if (f) name = found;
  } else {
    errno = 0;
    // A folder name can't be written to; the C library might not say so.
    if (name.empty() || name.back() != u'/') {
      ustring path = name;
      PathNameResolver::expandRootSymbols(path);
      PathNameResolver::relativeToAbsolute(path, false);
      PathNameResolver::fixDotsAndSlashes(path);
      f = fl::filesystem::fopen(path, permission.cMode);
      err = errno;
    }
  }
  if (f == nullptr) {
    // Without a reason from the system, the file just couldn't be opened.
    lastError = err != 0 ? err : code(StreamError::CannotOpenFile);
    return false;
  }
  // A larger C buffer than the default page: a tenth of the system calls
  // when a file is read or written from start to end, and nothing else
  // changes for the user.
  setvbuf(f, nullptr, _IOFBF, kFileBufferSize);
  // Only the encoding can fail, and then the C file must not stay open.
  std::unique_ptr<FILE, int (*)(FILE*)> closeOnFailure(f, fclose);
  stream_ = std::make_unique<fileStream>(f, encoding.value.c_str(), &permission);
  closeOnFailure.release();
  file = f;
  if (!stream_->getFileSize(fileSize)) fileSize = 0;
  lastError = err;
  return true;
}

bool twFile::closeCFile() {
  // What the carry and the encoder still hold goes into the C buffer, whose
  // flush by fclose reports any failure.
  if (stream_) {
    stream_->getCarry().finishOnClose();
    stream_->finishText();
  }
  if (file == nullptr) return false;
  errno = 0;
  int r = fclose(file);
  file = nullptr;
  if (r != 0) {
    lastError = errnoOr(StreamError::FlushError);
    return false;
  }
  return true;
}

bool twFile::closeAtExit() {
  return file == nullptr || closeCFile();
}

bool twFile::close() {
  if (!closeCFile()) return false;
  if (permission.read) return true;
  // Tell the path manager that a file it may know has changed.
  std::string narrow = fl::i18n::to_string(name);
  char buffer[kPathBufferSize];
  if (kpFullPath(buffer, narrow.c_str(), sizeof buffer) == 0) return true;
  kpSetFullnameChanged(kpGetCurrentPathname(), buffer);
  return true;
}

}  // namespace Tarnwicks::FileIO
