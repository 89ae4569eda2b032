// The reader family of fread: the common run, whole-element transfers, the
// skip between groups.
#include "fread_readers.h"

#include <algorithm>
#include <cstring>

#include "byte_counts.h"
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

FreadReader::FreadReader(stream& input, const FreadRequest& request)
    : input_(input),
      request_(request),
      stop_(request.stopRule()),
      buffer_(request.outputClass(), 1024, 64, 8388608),
      room_(buffer_) {
  if (request.inputClass() == kxCHAR_CLASS) text_ = input.textLayer();
}

FreadReader::~FreadReader() = default;

size_t FreadReader::fileElementBytes() const {
  if (request_.noConvert()) return 1;
  return precisionBytes(request_.precision().inputCode);
}

bool FreadReader::prepareCarry() {
  CarryByte* carry = input_.carryByte();
  if (carry == nullptr || carry->prepare(request_.bitCount(), request_.format(), true)) return true;
  status_ = input_.errorOr(StreamError::WriteCarryByteFailed);
  return false;
}

void FreadReader::run() {
  if (!prepareCarry()) return;
  FreadSetup setup;
  setup.elementBytes = fileElementBytes();
  status_ = 0;
  const int64_t skipBytes = skipLength();
  if (skipBytes != 0) {
    input_.getPosition(setup.position);
    setup.useSeek = skipBytes > kLongestReadSkip;
    if (!input_.getFileSize(setup.fileSize)) {
      status_ = input_.errorOr(StreamError::InternalError);
      setup.useSeek = false;
      setup.fileSize = 0;
    }
  }
  if (status_ != 0) return;
  if (!setup.useSeek && skipBytes > 0) {
    setup.chunk = static_cast<size_t>(std::min(skipBytes, kLongestReadSkip));
    setup.blocks =
        (skipBytes + static_cast<int64_t>(setup.chunk) - 1) / static_cast<int64_t>(setup.chunk);
    skipScratch_.resize(setup.chunk);
  }
  setup.blockSize = stop_.blockSize();
  setup.firstBlock = request_.skip() > 0 ? static_cast<size_t>(request_.repeat()) : setup.blockSize;
  transfer(setup);
}

size_t FreadReader::elementsLeftInFile(size_t elementBytes, size_t repeat, int64_t skipBytes) {
  // Asking must not leave a trace in the stream's error.
  const int saved = input_.errorCode;
  int64_t size = 0, position = 0;
  bool known = input_.getFileSize(size) && input_.getPosition(position) == 0;
  input_.errorCode = saved;
  if (!known || size <= position || elementBytes == 0) return 0;
  const uint64_t left = static_cast<uint64_t>(size - position);
  if (skipBytes <= 0 || repeat == 0) return left / elementBytes;
  const uint64_t group = repeat * elementBytes + static_cast<uint64_t>(skipBytes);
  const uint64_t tail = left % group;
  return (left / group) * repeat + std::min<uint64_t>(repeat, tail / elementBytes);
}

void FreadReader::presizeResult(size_t elementBytes, size_t repeat, int64_t skipBytes) {
  size_t expected = elementsLeftInFile(elementBytes, repeat, skipBytes);
  if (!stop_.readsAll()) expected = std::min<size_t>(expected, stop_.wanted());
  room_.presize(expected);
}

size_t FreadReader::readIntoResult(size_t n, size_t elementBytes, bool swap) {
  size_t got = 0;
  while (got < n) {
    size_t granted = 0;
    if (room_.available() == 0 && elementBytes <= 8) {
      // The known room is full: look for one more element before making a
      // block, so that a read which ends here leaves no empty block behind
      // and the result can adopt a single block without a join.
      unsigned char probe[8];
      if (input_.read(1, probe, elementBytes) == 0) break;
      void* p = room_.room(1, granted);
      std::memcpy(p, probe, elementBytes);
      if (swap) swapBytesInPlace(p, 1, elementBytes);
      room_.used(1);
      ++got;
      continue;
    }
    size_t want = std::min(n - got, room_.available() != 0 ? room_.available() : size_t{65536});
    // A reversal keeps to pieces that stay in cache between read and swap.
    if (swap) want = std::min(want, kSwapPieceBytes / elementBytes);
    void* p = room_.room(want, granted);
    size_t came = input_.read(granted, p, elementBytes);
    // Reversed while the data just read is still in cache.
    if (swap) swapBytesInPlace(p, came, elementBytes);
    room_.used(came);
    got += came;
    if (came < granted) break;
  }
  return got;
}

bool FreadReader::readBlock(OutputBuffer& target, size_t& got, size_t n, size_t elementBytes,
                            bool all) {
  const size_t before = target.totalElements();
  if (request_.inputClass() == kxCHAR_CLASS && text_ != nullptr) {
    if (all) {
      text_->readCharsToEnd(target);
    } else {
      text_->readCharsCount(target, n);
    }
  } else if (&target == &buffer_) {
    readIntoResult(all ? SIZE_MAX : n, elementBytes, false);
  } else if (all) {
    input_.readToEnd(target, elementBytes);
  } else {
    input_.readCount(n, target, elementBytes);
  }
  got = target.totalElements() - before;
  status_ = input_.errorCode;
  if (got != n && status_ == 0) status_ = code(StreamError::NoHelp);
  return got != n;
}

bool FreadReader::skipBetween(const FreadSetup& setup) {
  const int64_t bytes = skipLength();
  if (bytes <= 0) return false;
  if (setup.useSeek) {
    int64_t position = 0;
    if (input_.getPosition(position) != 0) {
      status_ = input_.errorOr(StreamError::InternalError);
      return true;
    }
    if (setup.fileSize < positionPlus(position, bytes)) {
      // Never seek beyond the end: stand at it, and let a read raise the
      // end-of-file state.
      input_.setPosition(setup.fileSize);
      unsigned char byte;
      input_.read(1, &byte, 1);
      status_ = input_.errorOr(StreamError::InternalError);
      return true;
    }
    if (input_.setPosition(position + bytes) != 0) {
      status_ = input_.errorOr(StreamError::InternalError);
      return true;
    }
    return false;
  }
  int64_t left = bytes;
  for (int64_t b = 0; b < setup.blocks && left > 0; ++b) {
    size_t n = static_cast<size_t>(std::min<int64_t>(left, static_cast<int64_t>(setup.chunk)));
    if (input_.read(n, skipScratch_.data(), 1) < n) {
      status_ = input_.errorOr(StreamError::NoHelp);
      return true;
    }
    left -= static_cast<int64_t>(n);
  }
  return false;
}

// ---- FreadSameNoSkip --------------------------------------------------------------

void FreadSameNoSkip::run() {
  if (!prepareCarry()) return;
  status_ = 0;
  const size_t bytes = fileElementBytes();
  if (request_.inputClass() != kxCHAR_CLASS) presizeResult(bytes, 1, 0);
  size_t got = 0;
  readBlock(buffer_, got, stop_.wanted(), bytes, stop_.readsAll());
}

// ---- FreadSameWithSkip ------------------------------------------------------------

void FreadSameWithSkip::transfer(const FreadSetup& setup) {
  const size_t repeat = static_cast<size_t>(request_.repeat());
  if (request_.inputClass() != kxCHAR_CLASS)
    presizeResult(setup.elementBytes, repeat, skipLength());
  size_t total = 0;
  size_t block = setup.firstBlock;
  while (stop_.wantsMore(total)) {
    block = stop_.nextBlock(block, total);
    size_t got = 0;
    bool isShort = readBlock(buffer_, got, block, setup.elementBytes, false);
    total += got;
    if (isShort || got < repeat) break;
    if (skipBetween(setup)) return;
  }
}

// ---- FreadDifferent, FreadConvert --------------------------------------------------

void FreadDifferent::transfer(const FreadSetup& setup) {
  const size_t bytes = setup.elementBytes;
  const bool swap = needsByteSwap(request_.inputClass(), request_.format());
  const size_t repeat = static_cast<size_t>(request_.repeat());
  const bool isChar = request_.inputClass() == kxCHAR_CLASS;
  // Text goes through the decoder in the blocks of the stop rule; numbers in
  // larger pieces, since piece boundaries change nothing but the cost.
  const size_t pieceLimit =
      isChar ? setup.blockSize : freadPieceElements(bytes, buffer_.getElementSize());
  size_t block = request_.skip() > 0
                     ? setup.firstBlock
                     : (isChar ? setup.blockSize : std::max(setup.blockSize, pieceLimit));
  if (!isChar) {
    presizeResult(bytes, repeat, skipLength());
    if (request_.inputClass() != request_.outputClass()) scratch_.resize(pieceLimit * bytes);
  }
  size_t total = 0;
  while (stop_.wantsMore(total)) {
    block = stop_.nextBlock(block, total);
    size_t got = 0;
    bool shortPiece = false;
    while (got < block) {
      size_t piece = std::min(block - got, pieceLimit);
      size_t came = isChar ? readCharPiece(piece) : readPiece(piece, bytes, swap);
      if (came == 0) return;
      got += came;
      if (came < piece) {
        shortPiece = true;
        break;
      }
    }
    total += got;
    if (got < repeat || shortPiece) break;
    if (skipBetween(setup)) return;
  }
}

size_t FreadDifferent::readPiece(size_t n, size_t elementBytes, bool swap) {
  size_t came = 0;
  if (request_.inputClass() == request_.outputClass()) {
    // Only the byte order changes: read in place, reversed as it comes.
    came = readIntoResult(n, elementBytes, swap);
  } else {
    came = input_.read(n, scratch_.data(), elementBytes);
    if (swap) swapBytesInPlace(scratch_.data(), came, elementBytes);
    const unsigned char* from = scratch_.data();
    size_t left = came;
    while (left > 0) {
      size_t granted = 0;
      void* p = room_.room(left, granted);
      if (!widenElements(request_.outputClass(), p, request_.inputClass(), from, granted)) {
        AssignToVoidBuffer(request_.outputClass(), p, request_.inputClass(), from, granted);
      }
      room_.used(granted);
      from += granted * elementBytes;
      left -= granted;
    }
  }
  status_ = input_.errorCode;
  if (came != n && status_ == 0) status_ = code(StreamError::NoHelp);
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
    void* p = room_.room(left, granted);
    AssignToVoidBuffer(request_.outputClass(), p, kxCHAR_CLASS, from, granted);
    room_.used(granted);
    from += granted;
    left -= granted;
  }
  kxFreeEx(data);
  return got;
}

size_t FreadConvert::fileElementBytes() const {
  if (request_.precision().sizeValue != 0)
    return static_cast<size_t>(request_.precision().sizeValue);
  return static_cast<size_t>(utDconvertSize(request_.format(), request_.precision().inputCode));
}

}  // namespace Tarnwicks::FileIO
