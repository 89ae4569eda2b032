// fwrite's whole-element loops: the dispatch, the direct and converting
// loops, and the skips between groups.
#include "fwrite_transfer.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "byte_swap.h"
#include "fileio/attributes.h"
#include "fileio/file_stream.h"
#include "twhost/kx_data.h"

namespace Tarnwicks::FileIO {

namespace {

// Elements a converting loop moves at a time.
constexpr uint64_t kWriteBlock = 1024;
// The largest zero block a skip writes at once.
constexpr int64_t kZeroBlock = 8192;

}  // namespace

FwriteTransfer::FwriteTransfer(FileIO::stream* s, const void* src, kxClassID srcClass, int fmt,
                               int code, uint64_t n, int64_t skipCount)
    : stream(s),
      skip(skipCount),
      source(static_cast<const unsigned char*>(src)),
      sourceClass(srcClass),
      format(fmt),
      outputCode(code),
      count(n) {}

bool FwriteTransfer::write(int bitCount, int64_t repeat, int sizeValue) {
  fileClass = precisionClass(outputCode);
  size_t elementBytes = precisionBytes(outputCode);
  if (outputCode == kPrecNoConvert) {
    // The data's own bytes, as they stand, in native order.
    fileClass = kxUINT8_CLASS;
    sourceClass = kxUINT8_CLASS;
    elementBytes = 1;
    format = utGetDataSizeType();
    bitCount = 0;
  }
  CarryByte* carry = stream->carryByte();
  if (carry != nullptr && !carry->prepare(bitCount, format, false)) {
    count = 0;
    status = stream->errorOr(StreamError::WriteCarryByteFailed);
    return true;
  }
  const uint64_t groups = repeat > 0 ? static_cast<uint64_t>(repeat) : 1;
  if (format == utGetDataSizeType() && bitCount == 0) {
    if (fileClass == sourceClass) {
      if (skip != 0) return directLoop(elementBytes, groups);
      if (fileClass != kxCHAR_CLASS) stream->reserveSpace(count * elementBytes);
      size_t written = 0;
      bool ok = writeBlock(source, elementBytes, count, written);
      count = written;
      return !ok;
    }
    if (skip == 0 && fileClass != kxCHAR_CLASS) stream->reserveSpace(count * elementBytes);
    return convertingLoop(elementBytes, groups, false);
  }
  if (outputCode == kPrecSingle || outputCode == kPrecChar || outputCode == kPrecDouble ||
      bitCount == 0) {
    size_t size = sizeValue != 0 ? static_cast<size_t>(sizeValue)
                                 : static_cast<size_t>(utDconvertSize(format, outputCode));
    if (skip == 0 && fileClass != kxCHAR_CLASS) stream->reserveSpace(count * size);
    return convertingLoop(size, groups, needsByteSwap(fileClass, format));
  }
  return bitLoop(bitCount, groups, sizeValue);
}

bool FwriteTransfer::writeBlock(const void* data, size_t elementBytes, size_t n, size_t& written) {
  errno = 0;
  if (fileClass == kxCHAR_CLASS) {
    written = stream->writeChars(n, static_cast<const char16_t*>(data));
  } else {
    written = stream->write(n, data, elementBytes);
  }
  status = stream->errorCode;
  if (written < n && status == 0) status = code(StreamError::NoHelp);
  return written == n;
}

bool FwriteTransfer::writeConverted(size_t elementBytes, size_t n, bool swap, size_t& written) {
  AssignToVoidBuffer(fileClass, scratch.data(), sourceClass, source, n);
  if (swap) swapBytesInPlace(scratch.data(), n, elementBytes);
  return writeBlock(scratch.data(), elementBytes, n, written);
}

bool FwriteTransfer::skipSetup() {
  if (skip == 0) return true;
  if (!stream->getFileSize(fileSize)) {
    status = stream->errorOr(StreamError::InternalError);
    count = 0;
    return false;
  }
  int64_t position = 0;
  stream->getPosition(position);
  seekAllowed = position != fileSize;
  return true;
}

size_t FwriteTransfer::nextWriteBlock(size_t limit, uint64_t done, uint64_t repeat,
                                      bool& needSkip) const {
  needSkip = false;
  if (done >= count) return 0;
  uint64_t block;
  if (skip == 0) {
    block = count - done;
  } else {
    if (repeat + done >= count) {
      const uint64_t r = count % repeat;
      block = (r != 0 && done < count - r) ? count - r - done : count - done;
    } else {
      block = limit == 0 ? repeat : repeat - (repeat + done) % repeat;
    }
    needSkip = limit == 0 || done % repeat == 0;
  }
  if (limit != 0) block = std::min<uint64_t>(block, limit);
  return static_cast<size_t>(block);
}

bool FwriteTransfer::skipBeforeBlock(int64_t bytes, StreamError seekCause, StreamError writeCause) {
  int64_t left = bytes;
  if (seekAllowed) {
    int64_t position = 0;
    if (stream->getPosition(position) != 0) {
      status = stream->errorOr(seekCause);
      return false;
    }
    int64_t target = 0;
    if (__builtin_add_overflow(position, bytes, &target)) {
      status = EFBIG;  // no file reaches that far
      return false;
    }
    if (fileSize > target) {
      if (stream->setPosition(target) != 0) {
        status = stream->errorOr(seekCause);
        return false;
      }
      left = 0;
    } else {
      // The end is nearer: stand at it and fill the rest.
      int64_t end = 0;
      if (!stream->getFileSize(end) || stream->setPosition(end) != 0) {
        status = stream->errorOr(seekCause);
        return false;
      }
      left = target - end;
      seekAllowed = false;
    }
  }
  return left <= 0 || fillPastEnd(left, writeCause);
}

bool FwriteTransfer::fillPastEnd(int64_t bytes, StreamError writeCause) {
  // Past the end a seek makes the zeros: a hole, whatever its size.
  int64_t position = 0;
  if (stream->getPosition(position) == 0) {
    int64_t target = 0;
    if (__builtin_add_overflow(position, bytes, &target)) {
      status = EFBIG;
      return false;
    }
    switch (stream->moveBeyondEnd(target)) {
      case FileIO::stream::kMoved:
        return true;
      case FileIO::stream::kMoveFailed:
        status = stream->errorOr(writeCause);
        return false;
      case FileIO::stream::kCannotMove:
        break;
    }
  }
  // A pipe or a device: the zeros themselves.
  stream->errorCode = 0;
  if (zeros.empty()) {
    zeros.assign(static_cast<size_t>(std::clamp<int64_t>(std::max(skip, bytes), 1, kZeroBlock)), 0);
  }
  for (int64_t left = bytes; left > 0;) {
    size_t n = static_cast<size_t>(std::min<int64_t>(left, static_cast<int64_t>(zeros.size())));
    if (stream->write(n, zeros.data(), 1) != n) {
      status = stream->errorOr(writeCause);
      return false;
    }
    left -= static_cast<int64_t>(n);
  }
  return true;
}

bool FwriteTransfer::directLoop(size_t elementBytes, uint64_t repeat) {
  if (!skipSetup()) return true;
  uint64_t done = 0;
  bool needSkip = false;
  while (size_t block = nextWriteBlock(0, done, repeat, needSkip)) {
    if (needSkip && !skipBeforeBlock(skip)) {
      count = done;
      return true;
    }
    size_t written = 0;
    bool ok = writeBlock(source, elementBytes, block, written);
    done += written;
    if (!ok) {
      count = done;
      return true;
    }
    source += block * elementBytes;
  }
  count = done;
  return false;
}

bool FwriteTransfer::convertingLoop(size_t elementBytes, uint64_t repeat, bool swap) {
  if (!skipSetup()) return true;
  const size_t limit = static_cast<size_t>(std::min(count, kWriteBlock));
  const size_t sourceBytes = kxClassElementSize(sourceClass);
  scratch.resize(limit * std::max(elementBytes, kxClassElementSize(fileClass)));
  uint64_t done = 0;
  bool needSkip = false;
  while (size_t block = nextWriteBlock(limit, done, repeat, needSkip)) {
    if (needSkip && skip != 0 && !skipBeforeBlock(skip)) {
      count = done;
      return true;
    }
    size_t written = 0;
    bool ok = writeConverted(elementBytes, block, swap, written);
    done += written;
    if (!ok) {
      count = done;
      return true;
    }
    source += block * sourceBytes;
  }
  count = done;
  return false;
}

}  // namespace Tarnwicks::FileIO
