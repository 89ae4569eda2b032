// Open files: twAbsFile and its two kinds, twFile for files opened by fopen
// and twSystemFile for the three standard files.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <new>

#include "fileio/attributes.h"
#include "fileio/file_stream.h"
#include "twhost/kx_array.h"
#include "twhost/kx_memory.h"

namespace Tarnwicks::FileIO {

class twAbsFile {
 public:
  twAbsFile(const ustring& name, const FilePermission& permission,
            const MachineFormat& machineFormat, const EncodingAttribute& encoding);
  virtual ~twAbsFile();
  twAbsFile(const twAbsFile&) = delete;
  twAbsFile& operator=(const twAbsFile&) = delete;

  // File objects live in host blocks.
  static void* operator new(size_t n) { return utMallocWithCheck(n); }
  static void operator delete(void* p) { utFree(p); }

  // True when the file is open and has its stream; false with lastError set.
  virtual bool open() { return false; }
  // True when the file closed cleanly; false with lastError set.
  virtual bool close() { return false; }
  // The close of a file still open when the process ends: what the stream
  // holds is written and the file closed, telling no one else (the host
  // may be gone). True when nothing was lost; false with lastError set.
  virtual bool closeAtExit() { return true; }

  // The file's stream: null only before open() succeeded. Every screen and
  // file stream is a fileStream, so all of stream, TcodnStream and the carry
  // are reachable through it.
  fileStream* getStream() const { return stream_.get(); }
  FILE* getFile() const { return file; }

  // The last step of fwrite and fprintf: with automatic flushing (the
  // permission's default, off for "W" and "A") and a file behind the stream,
  // flush. A failed flush sets lastError to the stream's error, or FlushError, and
  // the result is false.
  bool endOfWrite();

  ustring name;
  FilePermission permission;
  MachineFormat machineFormat;
  EncodingAttribute encoding;
  int64_t fileSize = 0;
  // 0, a positive errno, or a StreamError code: what ferror reports.
  int lastError = 0;

 protected:
  std::unique_ptr<fileStream> stream_;
  FILE* file = nullptr;  // not closed by the destructor
};

class twFile : public twAbsFile {
 public:
  using twAbsFile::twAbsFile;
  // A file still open is closed first: its stream may own the C buffer.
  ~twFile() override;
  // Reading modes search the full path, the current folder, then the host's
  // search path, and keep the name found. Writing modes open the name as
  // given (mode 0666 less the umask). A failing open returns false with
  // lastError an errno or CannotOpenFile; a bad encoding raises after
  // closing the file.
  bool open() override;
  // Flushes the carry, closes the C file and, for files written, tells the
  // host's path manager that the file changed.
  bool close() override;
  bool closeAtExit() override;

 private:
  // Writes out what the carry and the encoder hold, then closes the C file.
  // False with lastError set when the close failed.
  bool closeCFile();
};

// A standard file: its stream is made at construction and it is never
// opened or closed. S is screenStreamBase, outputScreenStream or stdErrStream.
template <class S>
class twSystemFile : public twAbsFile {
 public:
  twSystemFile(const ustring& name, const FilePermission& permission, FILE* cFile)
      : twAbsFile(name, permission, MachineFormat(), EncodingAttribute()) {
    file = cFile;
    stream_ = std::make_unique<S>(cFile, &this->permission);
  }
};

}  // namespace Tarnwicks::FileIO
