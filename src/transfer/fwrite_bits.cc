// fwrite of bit fields: the bit loop and the skip of a bit write.
#include <algorithm>

#include "fwrite_transfer.h"
#include "twhost/kx_data.h"

namespace Tarnwicks::FileIO {

namespace {

uint8_t lowBits(int n) {
  return n >= 8 ? 0xff : static_cast<uint8_t>((1u << n) - 1);
}

}  // namespace

bool FwriteTransfer::bitLoop(int bitCount, uint64_t repeat, int sizeValue) {
  if (!skipSetup()) return true;
  CarryByte local(stream, nullptr);
  CarryByte* found = stream->carryByte();
  if (found == nullptr) local.restart(false, utGetDataEndianType(format));
  CarryByte& carry = found != nullptr ? *found : local;
  carry.active = true;

  BitLayout layout;
  layout.bitCount = bitCount;
  layout.extra = sizeValue != 0 ? sizeValue - bitCount : 0;
  layout.msbFirst = carry.byteOrder == 1;
  layout.isSigned = utDconvertSign(outputCode);

  const size_t limit = static_cast<size_t>(std::min<uint64_t>(count, 1024));
  const size_t sourceBytes = kxClassElementSize(sourceClass);
  uint64_t done = 0;
  bool needSkip = false;
  while (size_t block = nextWriteBlock(limit, done, repeat, needSkip)) {
    if (needSkip && skip > 0 && !skipBits(carry, skip)) {
      count = done;
      return true;
    }
    size_t written = 0;
    if (!writeFields(carry, block, layout, written)) {
      count = done + written;
      return true;
    }
    done += block;
    source += block * sourceBytes;
  }
  if (found == nullptr && !local.flushBits())
    status = stream->errorOr(StreamError::WriteCarryByteFailed);
  count = done;
  return false;
}

bool FwriteTransfer::writeFields(CarryByte& carry, size_t n, const BitLayout& layout,
                                 size_t& written) {
  const int held = carry.bitCount;
  scratch.resize((n * layout.step() + held) / 8 + 2);
  BitPacker packer(layout.msbFirst, carry.bits, held, scratch.data());
  packFields(packer, sourceClass, source, n, layout);
  const size_t whole = packer.bytes();
  const size_t out = whole != 0 ? stream->write(whole, scratch.data(), 1) : 0;
  if (out < whole) {
    status = stream->errorOr(StreamError::NoHelp);
    // The fields whose whole bytes all went out.
    const uint64_t bitsOut = 8 * (static_cast<uint64_t>(out) + 1);
    const uint64_t fit = bitsOut > static_cast<uint64_t>(held)
                             ? (bitsOut - held + layout.step() - 1) / layout.step()
                             : 0;
    written = static_cast<size_t>(std::min<uint64_t>(n, fit > 0 ? fit - 1 : 0));
    carry.bits = 0;
    carry.bitCount = 0;
    return false;
  }
  carry.bits = packer.pendingBits();
  carry.bitCount = packer.pendingCount();
  written = n;
  return true;
}

bool FwriteTransfer::skipBits(CarryByte& carry, int64_t bits) {
  const bool msb = carry.byteOrder == 1;
  const int held = carry.bitCount;
  if (bits <= 8 - held) {
    // The gap stays within the carry's byte: it keeps what the file holds.
    uint8_t byte = 0;
    if (!carry.fetchByte(byte)) {
      status = stream->errorOr(StreamError::ReadFailed);
      return false;
    }
    const int b = static_cast<int>(bits);
    const uint8_t mask = msb ? static_cast<uint8_t>(lowBits(8 - held) & ~lowBits(8 - held - b))
                             : static_cast<uint8_t>(lowBits(held + b) & ~lowBits(held));
    carry.bits = static_cast<uint8_t>(carry.bits | (byte & mask));
    carry.bitCount = held + b;
    return true;
  }
  int64_t rest = bits;
  if (held > 0) {
    if (!carry.flushBits()) {
      status = stream->errorOr(StreamError::WriteCarryByteFailed);
      return false;
    }
    rest -= 8 - held;
  }
  carry.bits = 0;
  carry.bitCount = 0;
  const int64_t wholeBytes = rest / 8;
  const int leftBits = static_cast<int>(rest % 8);
  if (wholeBytes > 0 &&
      !skipBeforeBlock(wholeBytes, StreamError::FseekFailedSkip, StreamError::FseekFailedSkip))
    return false;
  if (leftBits > 0) {
    uint8_t byte = 0;
    if (!carry.fetchByte(byte)) {
      status = stream->errorOr(StreamError::ReadFailed);
      return false;
    }
    carry.bits = static_cast<uint8_t>(byte & (msb ? ~lowBits(8 - leftBits) : lowBits(leftBits)));
    carry.bitCount = leftBits;
  }
  return true;
}

}  // namespace Tarnwicks::FileIO
