// The reader family of fread: the common run, whole-element transfers, the
// skip between groups.
#include "fread_readers.h"

#include <algorithm>
#include <cstring>

#include "byte_swap.h"
#include "fileio/tcodn_stream.h"
#include "twhost/kx_data.h"
#include "twhost/kx_memory.h"
#include "widening.h"

namespace Tarnwicks::FileIO {

namespace {

// Skips up to this many bytes are read past; longer ones are sought past.
constexpr int64_t kLongestReadSkip = 8192;
// Bytes a piece of a converting transfer aims at.
constexpr size_t kPieceBytes = 262144;
// Bytes read at a time before their order is reversed in place: one call of
// the C library's largest size, still resident in cache when reversed.
constexpr size_t kSwapPieceBytes = 1048576;

}  // namespace

size_t freadPieceElements(size_t inBytes, size_t outBytes) {
  size_t widest = std::max<size_t>({inBytes, outBytes, 1});
  return std::max<size_t>(1024, kPieceBytes / widest);
}

FreadClass::FreadClass(FileIO::stream* s, const FreadRequest& r)
    : stream(s),
      count(r.count),
      format(r.format),
      bitCount(r.bitCount),
      precision(r.precision),
      outputClass(r.outputClass),
      inputClass(r.inputClass),
      skip(r.skip),
      buffer(r.outputClass, 1024, 64, 8388608),
      helper(r.unbounded ? std::unique_ptr<AllBase>(new AllHelperClass)
                         : std::unique_ptr<AllBase>(new NHelperClass(r.count))),
      room(buffer) {
  if (inputClass == kxCHAR_CLASS) text = dynamic_cast<TcodnStream*>(s);
}

FreadClass::~FreadClass() = default;

size_t FreadClass::fileElementBytes() const {
  if (precision->inputCode == kPrecNoConvert) return 1;
  return precisionBytes(precision->inputCode);
}

bool FreadClass::prepareCarry() {
  CarryByte* carry = stream->carryByte();
  if (carry == nullptr || carry->prepare(bitCount, format, true)) return true;
  status = stream->errorOr(StreamError::WriteCarryByteFailed);
  return false;
}

void FreadClass::run() {
  if (!prepareCarry()) {
    count = 0;
    return;
  }
  FreadSetup setup;
  setup.elementBytes = fileElementBytes();
  status = 0;
  const int64_t skipBytes = skipLength();
  if (skipBytes != 0) {
    stream->getPosition(setup.position);
    setup.useSeek = skipBytes > kLongestReadSkip;
    if (!stream->getFileSize(setup.fileSize)) {
      status = stream->errorOr(StreamError::InternalError);
      setup.useSeek = false;
      setup.fileSize = 0;
    }
  }
  if (status != 0) {
    count = 0;
    return;
  }
  if (!setup.useSeek && skipBytes > 0) {
    setup.chunk = static_cast<size_t>(std::min(skipBytes, kLongestReadSkip));
    setup.blocks =
        (skipBytes + static_cast<int64_t>(setup.chunk) - 1) / static_cast<int64_t>(setup.chunk);
    skipScratch.resize(setup.chunk);
  }
  setup.blockSize = helper->blockSize();
  setup.firstBlock = skip > 0 ? static_cast<size_t>(precision->repeat) : setup.blockSize;
  transfer(setup);
}

size_t FreadClass::elementsLeftInFile(size_t elementBytes, size_t repeat, int64_t skipBytes) {
  // Asking must not leave a trace in the stream's error.
  const int saved = stream->errorCode;
  int64_t size = 0, position = 0;
  bool known = stream->getFileSize(size) && stream->getPosition(position) == 0;
  stream->errorCode = saved;
  if (!known || size <= position || elementBytes == 0) return 0;
  const uint64_t left = static_cast<uint64_t>(size - position);
  if (skipBytes <= 0 || repeat == 0) return left / elementBytes;
  const uint64_t group = repeat * elementBytes + static_cast<uint64_t>(skipBytes);
  const uint64_t tail = left % group;
  return (left / group) * repeat + std::min<uint64_t>(repeat, tail / elementBytes);
}

void FreadClass::presizeResult(size_t elementBytes, size_t repeat, int64_t skipBytes) {
  size_t expected = elementsLeftInFile(elementBytes, repeat, skipBytes);
  if (!helper->readsAll()) expected = std::min<size_t>(expected, count);
  room.presize(expected);
}

size_t FreadClass::readIntoResult(size_t n, size_t elementBytes, bool swap) {
  size_t got = 0;
  while (got < n) {
    size_t granted = 0;
    if (room.available() == 0 && elementBytes <= 8) {
      // The known room is full: look for one more element before making a
      // block, so that a read which ends here leaves no empty block behind
      // and the result can adopt a single block without a join.
      unsigned char probe[8];
      if (stream->read(1, probe, elementBytes) == 0) break;
      void* p = room.room(1, granted);
      std::memcpy(p, probe, elementBytes);
      if (swap) swapBytesInPlace(p, 1, elementBytes);
      room.used(1);
      ++got;
      continue;
    }
    size_t want = std::min(n - got, room.available() != 0 ? room.available() : size_t{65536});
    // A reversal keeps to pieces that stay in cache between read and swap.
    if (swap) want = std::min(want, kSwapPieceBytes / elementBytes);
    void* p = room.room(want, granted);
    size_t came = stream->read(granted, p, elementBytes);
    // Reversed while the data just read is still in cache.
    if (swap) swapBytesInPlace(p, came, elementBytes);
    room.used(came);
    got += came;
    if (came < granted) break;
  }
  return got;
}

bool FreadClass::readBlock(OutputBuffer& target, size_t& got, size_t n, size_t elementBytes,
                           bool all) {
  const size_t before = target.totalElements();
  if (inputClass == kxCHAR_CLASS && text != nullptr) {
    if (all) {
      text->readCharsToEnd(target);
    } else {
      text->readCharsCount(target, n);
    }
  } else if (&target == &buffer) {
    readIntoResult(all ? SIZE_MAX : n, elementBytes, false);
  } else if (all) {
    stream->readToEnd(target, elementBytes);
  } else {
    stream->readCount(n, target, elementBytes);
  }
  got = target.totalElements() - before;
  status = stream->errorCode;
  if (got != n && status == 0) status = code(StreamError::NoHelp);
  return got != n;
}

bool FreadClass::skipBetween(const FreadSetup& setup, size_t total) {
  const int64_t bytes = skipLength();
  if (bytes <= 0) return false;
  if (setup.useSeek) {
    int64_t position = 0;
    if (stream->getPosition(position) != 0) {
      count = total;
      status = stream->errorOr(StreamError::InternalError);
      return true;
    }
    if (setup.fileSize < position + bytes) {
      // Never seek beyond the end: stand at it, and let a read raise the
      // end-of-file state.
      stream->setPosition(setup.fileSize);
      unsigned char byte;
      stream->read(1, &byte, 1);
      count = total;
      status = stream->errorOr(StreamError::InternalError);
      return true;
    }
    if (stream->setPosition(position + bytes) != 0) {
      count = total;
      status = stream->errorOr(StreamError::InternalError);
      return true;
    }
    return false;
  }
  int64_t left = bytes;
  for (int64_t b = 0; b < setup.blocks && left > 0; ++b) {
    size_t n = static_cast<size_t>(std::min<int64_t>(left, static_cast<int64_t>(setup.chunk)));
    if (stream->read(n, skipScratch.data(), 1) < n) {
      status = stream->errorOr(StreamError::NoHelp);
      count = total;
      return true;
    }
    left -= static_cast<int64_t>(n);
  }
  return false;
}

// ---- FreadSameNoSkip --------------------------------------------------------------

void FreadSameNoSkip::run() {
  if (!prepareCarry()) {
    count = 0;
    return;
  }
  status = 0;
  const size_t bytes = fileElementBytes();
  if (inputClass != kxCHAR_CLASS) presizeResult(bytes, 1, 0);
  size_t got = 0;
  readBlock(buffer, got, count, bytes, helper->readsAll());
  count = got;
}

// ---- FreadSameWithSkip ------------------------------------------------------------

void FreadSameWithSkip::transfer(const FreadSetup& setup) {
  const size_t repeat = static_cast<size_t>(precision->repeat);
  if (inputClass != kxCHAR_CLASS) presizeResult(setup.elementBytes, repeat, skipLength());
  size_t total = 0;
  size_t block = setup.firstBlock;
  while (helper->wantsMore(total)) {
    block = helper->nextBlock(block, total);
    size_t got = 0;
    bool isShort = readBlock(buffer, got, block, setup.elementBytes, false);
    total += got;
    if (isShort || got < repeat) break;
    if (skipBetween(setup, total)) return;
  }
  count = total;
}

// ---- FreadDifferent, FreadConvert --------------------------------------------------

void FreadDifferent::transfer(const FreadSetup& setup) {
  const size_t bytes = setup.elementBytes;
  const bool swap = needsByteSwap(inputClass, format);
  const size_t repeat = static_cast<size_t>(precision->repeat);
  const bool isChar = inputClass == kxCHAR_CLASS;
  // Text goes through the decoder in the blocks of the stop rule; numbers in
  // larger pieces, since piece boundaries change nothing but the cost.
  const size_t pieceLimit =
      isChar ? setup.blockSize : freadPieceElements(bytes, buffer.getElementSize());
  size_t block = skip > 0 ? setup.firstBlock
                          : (isChar ? setup.blockSize : std::max(setup.blockSize, pieceLimit));
  if (!isChar) {
    presizeResult(bytes, repeat, skipLength());
    if (inputClass != outputClass) scratch.resize(pieceLimit * bytes);
  }
  size_t total = 0;
  while (helper->wantsMore(total)) {
    block = helper->nextBlock(block, total);
    size_t got = 0;
    bool shortPiece = false;
    while (got < block) {
      size_t piece = std::min(block - got, pieceLimit);
      size_t came = isChar ? readCharPiece(piece) : readPiece(piece, bytes, swap);
      if (came == 0) {
        count = total + got;
        return;
      }
      got += came;
      if (came < piece) {
        shortPiece = true;
        break;
      }
    }
    total += got;
    if (got < repeat || shortPiece) break;
    if (skipBetween(setup, total)) return;
  }
  count = total;
}

size_t FreadDifferent::readPiece(size_t n, size_t elementBytes, bool swap) {
  size_t came = 0;
  if (inputClass == outputClass) {
    // Only the byte order changes: read in place, reversed as it comes.
    came = readIntoResult(n, elementBytes, swap);
  } else {
    came = stream->read(n, scratch.data(), elementBytes);
    if (swap) swapBytesInPlace(scratch.data(), came, elementBytes);
    const unsigned char* from = scratch.data();
    size_t left = came;
    while (left > 0) {
      size_t granted = 0;
      void* p = room.room(left, granted);
      if (!widenElements(outputClass, p, inputClass, from, granted)) {
        AssignToVoidBuffer(outputClass, p, inputClass, from, granted);
      }
      room.used(granted);
      from += granted * elementBytes;
      left -= granted;
    }
  }
  status = stream->errorCode;
  if (came != n && status == 0) status = code(StreamError::NoHelp);
  return came;
}

size_t FreadDifferent::readCharPiece(size_t n) {
  OutputBuffer piece(kxCHAR_CLASS, 1024, 64, 8388608);
  size_t got = 0;
  readBlock(piece, got, n, 1, false);
  size_t joined = 0;
  void* data = piece.takeJoined(joined);
  const auto* from = static_cast<const char16_t*>(data);
  size_t left = joined;
  while (left > 0) {
    size_t granted = 0;
    void* p = room.room(left, granted);
    AssignToVoidBuffer(outputClass, p, kxCHAR_CLASS, from, granted);
    room.used(granted);
    from += granted;
    left -= granted;
  }
  kxFreeEx(data);
  return got;
}

size_t FreadConvert::fileElementBytes() const {
  if (precision->sizeValue != 0) return static_cast<size_t>(precision->sizeValue);
  return static_cast<size_t>(utDconvertSize(format, precision->inputCode));
}

}  // namespace Tarnwicks::FileIO
