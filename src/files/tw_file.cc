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
  // A file starts with the C library's own buffer, of the file system's
  // block size (4 KiB here), and its stream grows it to 64 KiB once the
  // file is read on and on without seeks (fileStream::beforeRefill).
  // bench/file_buffer_bench, 50 MB, cpu seconds, for 4 KiB held, 64 KiB
  // from the start, and this: fgets of 80-character lines 0.066, 0.057,
  // 0.057; a seek then a 3-byte fread at random places 0.67, 3.04, 0.72
  // (each seek refills the whole buffer); fread of 3 bytes a call 2.22,
  // 2.31, 2.25; fwrite of 3 bytes in 'W' 0.35, 0.26, 0.28 and fprintf of
  // short lines in 'W' 1.68, 1.54, 1.58, within the noise of the machine.
  // A buffer of 64 KiB from the start would cost reading in place four
  // times over for a few percent on small pieces.
  // Only the encoding can fail, and then the C file must not stay open.
  std::unique_ptr<FILE, int (*)(FILE*)> closeOnFailure(f, fclose);
  stream_ = std::make_unique<fileStream>(f, encoding.value.c_str(), &permission);
  closeOnFailure.release();
  file = f;
  // The stream may give the file a buffer it owns: the file is closed
  // before the stream goes, by close() or by the destructor.
  stream_->allowBufferGrowth();
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

twFile::~twFile() {
  if (file != nullptr) closeCFile();
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
