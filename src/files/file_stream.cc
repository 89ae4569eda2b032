// fileStream: bytes, positions and lines of a C buffered file.
#include "fileio/file_stream.h"

#include <fcntl.h>
#include <stdio_ext.h>
#include <sys/stat.h>
#include <unicode/ucnv.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>

#include "c_file_buffer.h"
#include "encoding_support.h"
#include "fileio/attributes.h"
#include "fileio/output_buffer.h"
#include "twhost/errors.h"
#include "twhost/kx_memory.h"

namespace Tarnwicks::FileIO {

namespace {
// The C library moves at most this much in one call.
constexpr size_t kChunkBytes = 1048576;
}  // namespace

fileStream::fileStream(FILE* f, const char* encoding, const FilePermission* perm)
    : TcodnStream(encoding), file(f), permission(perm) {
  if (encoding != nullptr && *encoding != '\0' && f != stdin && f != stdout && f != stderr) {
    checkEncoding();
  }
  carry = std::make_unique<CarryByte>(this, perm);
}

fileStream::~fileStream() = default;

void fileStream::recordState() {
  if (errno != 0) {
    errorCode = errno;
  } else if (file != nullptr && ferror(file)) {
    setError(StreamError::NoHelp);
  } else {
    errorCode = 0;
  }
}

void fileStream::recordReadState() {
  recordState();
  if (errorCode > 0) readFailed = true;
}

size_t fileStream::read(size_t count, void* buffer, size_t size) {
  if (count == 0 || size == 0) return 0;
  auto* bytes = static_cast<unsigned char*>(buffer);
  // A stale errno from an unrelated call must not turn an end of file into
  // an error.
  errno = 0;
  if (count == 1 && size == 1) {
    int c = getc_unlocked(file);
    if (c == EOF) {
      recordReadState();
      return 0;
    }
    bytes[0] = static_cast<unsigned char>(c);
    lastByte = static_cast<uint8_t>(c);
    return 1;
  }
  const size_t chunk = std::max<size_t>(kChunkBytes / size, 1);
  size_t got = 0;
  bool shortRead = false;
  while (count - got > chunk && !shortRead) {
    size_t n = fread_unlocked(bytes + got * size, size, chunk, file);
    got += n;
    if (n < chunk) shortRead = true;
  }
  if (!shortRead) {
    size_t rest = count - got;
    size_t n = fread_unlocked(bytes + got * size, size, rest, file);
    got += n;
    if (n < rest) shortRead = true;
  }
  if (shortRead) recordReadState();
  // The byte at index got - 1: what unread(1) gives back after a byte read.
  if (got) lastByte = bytes[got - 1];
  return got;
}

size_t fileStream::write(size_t count, const void* buffer, size_t size) {
  if (count == 0 || size == 0) return 0;
  // Bytes that bypass the converter come after what it still holds.
  if (textPending) finishText();
  const auto* bytes = static_cast<const unsigned char*>(buffer);
  const size_t chunk = std::max<size_t>(kChunkBytes / size, 1);
  errno = 0;
  size_t done = 0;
  while (done < count) {
    size_t want = std::min(chunk, count - done);
    size_t n = fwrite_unlocked(bytes + done * size, size, want, file);
    done += n;
    if (n < want) {
      recordState();
      if (errorCode == 0) setError(StreamError::NoHelp);
      return done;
    }
  }
  bytesWritten += size * count;
  return done;
}

int fileStream::vformat(const char* format, va_list* args) {
  errno = 0;
  int n = vfprintf(file, format, *args);
  if (n < 0) {
    errorCode = errnoOr(StreamError::NoHelp);
  } else {
    bytesWritten += static_cast<uint64_t>(n);
  }
  return n;
}

bool fileStream::atEnd() {
  return file != nullptr && (feof(file) || readFailed);
}

bool fileStream::unread(int64_t n) {
  errno = 0;
  bool ok;
  if (n == 1 && lastByte != 0 && lastByte != 255) {
    ok = ungetc(lastByte, file) != EOF;
  } else if (n == 1) {
    ok = fseeko(file, -1, SEEK_CUR) == 0;
  } else {
    if (n == INT64_MIN) {
      ok = fseeko(file, INT64_MAX, SEEK_CUR) == 0;
      n += INT64_MAX;
    }
    ok = fseeko(file, -n, SEEK_CUR) == 0;
  }
  lastByte = 0;
  if (!ok) recordState();
  return ok;
}

int fileStream::getPosition(int64_t& pos) {
  errno = 0;
  off_t p = ftello(file);
  if (p < 0) {
    recordState();
    if (errorCode == 0) setError(StreamError::NoHelp);
    return -1;
  }
  pos = p;
  return 0;
}

int fileStream::setPosition(int64_t pos) {
  errno = 0;
  noteSeek();
  // A partial character held by the decoder belongs to the old position.
  ucnv_resetToUnicode(converter);
  inBytes.length = inUsed = 0;
  if (fseeko(file, pos, SEEK_SET) != 0) {
    recordState();
    if (errorCode == 0) setError(StreamError::NoHelp);
    return -1;
  }
  return 0;
}

bool fileStream::getFileSize(int64_t& size) {
  // Bytes still in the C buffer belong to the file as the user sees it.
  if (__fpending(file) > 0) fflush(file);
  struct stat st;
  if (fstat(fileno(file), &st) != 0) return false;
  size = st.st_size;
  return true;
}

stream::MoveResult fileStream::moveBeyondEnd(int64_t target) {
  struct stat st;
  if (fstat(fileno(file), &st) != 0 || !S_ISREG(st.st_mode)) return kCannotMove;
  errno = 0;
  noteSeek();
  if (fflush(file) != 0) {
    recordState();
    return kMoveFailed;
  }
  const bool appending = permission != nullptr && permission->append;
  if (target > st.st_size && appending && ftruncate(fileno(file), target) != 0) {
    errorCode = errno == EINVAL ? EFBIG : errnoOr(StreamError::FseekFailedSkip);
    return kMoveFailed;
  }
  if (fseeko(file, target, SEEK_SET) != 0) {
    // A position the file system can't give a file is a file too large.
    errorCode = errno == EINVAL ? EFBIG : errnoOr(StreamError::FseekFailedSkip);
    return kMoveFailed;
  }
  return kMoved;
}

void fileStream::reserveSpace(uint64_t bytes) {
  // Below a mebibyte the file system keeps up on its own.
  constexpr uint64_t kReserveFrom = 1048576;
  if (bytes < kReserveFrom || file == nullptr || isConsole()) return;
  const int saved = errorCode;
  int64_t at = 0;
  bool known = permission != nullptr && permission->append ? getFileSize(at) : getPosition(at) == 0;
  errorCode = saved;
  if (known) fallocate(fileno(file), FALLOC_FL_KEEP_SIZE, at, static_cast<off_t>(bytes));
}

int fileStream::flush() {
  errno = 0;
  if (fflush(file) != 0) {
    recordState();
    if (errorCode == 0) setError(StreamError::NoHelp);
    return -1;
  }
  return 0;
}

void fileStream::clearError() {
  if (file) clearerr(file);
  errorCode = 0;
  readFailed = false;
}

void fileStream::checkEncoding() {
  const std::string name = encodingName();
  std::string standard = standardEncodingName(name.c_str());
  if (!isSupportedEncoding(name.c_str()) && standard != "macintosh") {
    kxWarningMsgId(kxMsg("KORVAN:iofun", "UnsupportedEncoding", standard));
  }
}

void fileStream::peek() {
  if (BufferedBytes in{file}; in.begin() == in.end()) beforeRefill();
  int c = getc_unlocked(file);
  if (c != EOF) ungetc(c, file);
}

void fileStream::FreeBlock::operator()(char* p) const {
  utFree(p);
}

void fileStream::beforeRefill() {
  if (!mayGrowBuffer || ++refillsInARow < kRefillsBeforeGrowing) return;
  // Only an empty buffer with nothing waiting to be written can be
  // swapped without moving the file: the C library then has nothing to
  // give back or write out.
  BufferedBytes in{file};
  if (!kHaveBufferAccess || in.begin() != in.end() || in.inPutBackArea() || __fpending(file) > 0) {
    return;
  }
  mayGrowBuffer = false;
  std::unique_ptr<char, FreeBlock> grown(static_cast<char*>(utMalloc(kGrownBufferSize)));
  if (grown && setvbuf(file, grown.get(), _IOFBF, kGrownBufferSize) == 0) {
    grownBuffer = std::move(grown);
  }
}

}  // namespace Tarnwicks::FileIO
