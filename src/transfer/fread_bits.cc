// fread of bit fields.
#include "fread_bits.h"

#include <algorithm>
#include <cstring>

#include "twhost/kx_data.h"

namespace Tarnwicks::FileIO {

namespace {

// Bytes one run of fields reads at most: large calls, still cache-resident.
constexpr size_t kRunBytes = 131072;

}  // namespace

void FreadBitConvert::keepBits(CarryByte& carry, uint8_t byte, int keep) {
  carry.bitCount = keep;
  if (keep == 0) {
    carry.bits = 0;
  } else if (carry.byteOrder == 1) {
    // The high bits are taken first: the low ones wait.
    carry.bits = static_cast<uint8_t>(byte & ((1u << keep) - 1));
  } else {
    carry.bits = static_cast<uint8_t>(byte & ~((1u << (8 - keep)) - 1));
  }
}

bool FreadBitConvert::fillCarry(CarryByte& carry) {
  uint8_t byte = 0;
  if (input_.read(1, &byte, 1) != 1) {
    carry.bits = 0;
    carry.bitCount = 0;
    status_ = input_.errorOr(StreamError::NoHelp);
    return false;
  }
  carry.bits = byte;
  carry.bitCount = 8;
  return true;
}

size_t FreadBitConvert::readRun(CarryByte& carry, size_t n, const BitLayout& layout) {
  const uint64_t held = static_cast<uint64_t>(carry.bitCount);
  const uint64_t needBits = n * layout.step();
  const size_t needBytes = needBits > held ? static_cast<size_t>((needBits - held + 7) / 8) : 0;
  // Byte 0 is the carry's byte; the stream starts at its first bit held.
  bytes_.resize(1 + needBytes + kBitReadSlack);
  bytes_[0] = carry.bits;
  size_t got = needBytes != 0 ? input_.read(needBytes, bytes_.data() + 1, 1) : 0;
  std::memset(bytes_.data() + 1 + got, 0, kBitReadSlack + (needBytes - got));
  const uint64_t start = 8 - held;
  const uint64_t end = 8 + 8 * static_cast<uint64_t>(got);

  size_t produced = 0;
  uint64_t pos = start;
  // Room is asked for only while a field can still start: a run that finds
  // the end of the file must not leave an empty block behind.
  while (produced < n && pos + layout.valueOffset() < end) {
    size_t granted = 0;
    void* p = room_.room(n - produced, granted);
    size_t made = unpackFields(request_.outputClass(), p, bytes_.data(), pos, end, granted, layout);
    room_.used(made);
    produced += made;
    pos += made * layout.step();
    if (made < granted) break;
  }

  if (got < needBytes) {
    // The file ended inside the run: what came counts, the carry is empty.
    status_ = input_.errorOr(StreamError::NoHelp);
    carry.bits = 0;
    carry.bitCount = 0;
    return produced;
  }
  const uint64_t consumed = start + needBits;
  keepBits(carry, bytes_[(end - 1) / 8], static_cast<int>(end - consumed));
  return produced;
}

bool FreadBitConvert::skipBits(bool bySeek, CarryByte& carry, int64_t wanted,
                               const FreadSetup& setup) {
  if (wanted < 1) return true;
  if (carry.bitCount == 0 && !fillCarry(carry)) return false;
  const int64_t held = carry.bitCount;
  if (wanted < held) {
    keepBits(carry, carry.bits, static_cast<int>(held - wanted));
    return true;
  }
  carry.bits = 0;
  carry.bitCount = 0;
  if (wanted == held) return true;
  const int64_t rest = wanted - held;
  const int64_t need = bytesCoveringBits(rest);
  uint8_t last = 0;
  if (bySeek) {
    int64_t position = 0;
    if (input_.getPosition(position) != 0) {
      status_ = input_.errorOr(StreamError::NoHelp);
      return false;
    }
    int64_t target = std::min(positionPlus(position, need - 1), setup.fileSize);
    if (input_.setPosition(target) != 0 || input_.read(1, &last, 1) != 1) {
      status_ = input_.errorOr(StreamError::NoHelp);
      return false;
    }
  } else {
    int64_t left = need;
    while (left > 0) {
      size_t n = static_cast<size_t>(std::min<int64_t>(left, 8192));
      if (skipScratch_.size() < n) skipScratch_.resize(n);
      if (input_.read(n, skipScratch_.data(), 1) != n) {
        status_ = input_.errorOr(StreamError::NoHelp);
        return false;
      }
      last = skipScratch_[n - 1];
      left -= static_cast<int64_t>(n);
    }
  }
  const int used = static_cast<int>(rest % 8);
  keepBits(carry, last, used == 0 ? 0 : 8 - used);
  return true;
}

void FreadBitConvert::transfer(const FreadSetup& setup) {
  CarryByte local(&input_, nullptr);
  CarryByte* found = input_.carryByte();
  if (found == nullptr) local.restart(true, utGetDataEndianType(request_.format()));
  CarryByte& carry = found != nullptr ? *found : local;
  carry.active = true;

  BitLayout layout;
  layout.bitCount = request_.bitCount();
  layout.extra = request_.precision().sizeValue != 0
                     ? request_.precision().sizeValue - request_.bitCount()
                     : 0;
  layout.msbFirst = carry.byteOrder == 1;
  layout.isSigned = utDconvertSign(request_.precision().inputCode);

  const size_t repeat = static_cast<size_t>(request_.repeat());
  const size_t runLimit = std::max<size_t>(1024, kRunBytes * 8 / layout.step());
  size_t block = request_.skip() > 0 ? setup.firstBlock : std::max(setup.blockSize, runLimit);

  if (request_.skip() == 0) {
    // One block for all the fields the file can still give.
    const int saved = input_.errorCode;
    int64_t size = 0, position = 0;
    if (input_.getFileSize(size) && input_.getPosition(position) == 0 && size >= position) {
      uint64_t bits = 8 * static_cast<uint64_t>(size - position) + carry.bitCount;
      uint64_t fields = (bits + layout.step() - 1) / layout.step();
      if (!stop_.readsAll()) fields = std::min<uint64_t>(fields, stop_.wanted());
      room_.presize(static_cast<size_t>(fields));
    }
    input_.errorCode = saved;
  }

  size_t total = 0;
  while (stop_.wantsMore(total)) {
    block = stop_.nextBlock(block, total);
    size_t got = 0;
    bool failed = false;
    while (got < block) {
      size_t run = std::min(block - got, runLimit);
      size_t came = readRun(carry, run, layout);
      got += came;
      if (came < run || status_ != 0) {
        failed = true;
        break;
      }
    }
    total += got;
    if (failed) break;
    if (request_.skip() < 1) continue;
    if (got < repeat) break;
    if (!skipBits(setup.useSeek, carry, request_.skip(), setup)) break;
  }
}

}  // namespace Tarnwicks::FileIO
