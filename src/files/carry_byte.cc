// CarryByte: the part-byte between bit transfers.
#include "fileio/carry_byte.h"

#include "fileio/attributes.h"
#include "fileio/stream.h"
#include "twhost/kx_data.h"

namespace Tarnwicks::FileIO {

namespace {
// The first cause of a failure is the one kept.
void setError(stream* s, StreamError e) {
  if (s->errorCode == 0) s->setError(e);
}
}  // namespace

void CarryByte::restart(bool isRead, int order) {
  bits = 0;
  bitCount = 0;
  mode = isRead ? 0 : 1;
  byteOrder = order;
}

bool CarryByte::finish() {
  if (active && !flushBits()) return false;
  active = false;
  return true;
}

bool CarryByte::finishOnClose() {
  const bool appendOnly = permission != nullptr && permission->append && !permission->update;
  if (active && mode == 1 && bitCount != 0 && appendOnly) {
    if (owner->write(1, &bits, 1) != 1) return false;
    bits = 0;
    bitCount = 0;
    active = false;
    return true;
  }
  return finish();
}

bool CarryByte::flushBits() {
  if (mode != 1 || bitCount == 0) return true;
  uint8_t merged = bits;
  if (bitCount != 8) {
    // Keep the bits of the file's byte that the carry doesn't cover.
    uint8_t byte = 0;
    if (!fetchByte(byte)) return false;
    uint8_t mask = byteOrder == 1 ? uint8_t(~(~0u << (8 - bitCount))) : uint8_t(~0u << bitCount);
    merged = uint8_t((byte & mask) | bits);
  }
  if (owner->write(1, &merged, 1) != 1) return false;
  bits = 0;
  bitCount = 0;
  return true;
}

bool CarryByte::fetchByte(uint8_t& byte) {
  byte = 0;
  if (permission == nullptr || (permission->write && !permission->update)) return true;
  if (!permission->update) {
    // Append without update: the byte can't be read back.
    setError(owner, StreamError::IsOpenWrite);
    return false;
  }
  int64_t pos = 0;
  if (owner->getPosition(pos) != 0 || owner->setPosition(pos) != 0) {
    setError(owner, StreamError::FseekFailed);
    return false;
  }
  if (owner->read(1, &byte, 1) != 1) {
    if (owner->errorCode != 0) return false;
    if (!owner->atEnd()) {
      setError(owner, StreamError::ReadFailed);
      return false;
    }
    // Past the end of the file there is nothing to keep: the byte is 0.
    byte = 0;
    owner->clearError();
  }
  if (owner->setPosition(pos) != 0) {
    setError(owner, StreamError::FseekFailedNegOne);
    return false;
  }
  return true;
}

bool CarryByte::prepare(int bitTransferCount, int format, bool isRead) {
  if (bitTransferCount == 0) {
    if (!active) return true;
    bool ok = flushBits();
    active = !ok;
    return ok;
  }
  int order = utGetDataEndianType(format);
  int wantMode = isRead ? 0 : 1;
  if (active && mode == wantMode && byteOrder == order) return true;
  if (active && mode == 0 && wantMode == 1 && byteOrder == order) {
    restart(isRead, order);
    return true;
  }
  if (active && !flushBits()) return false;
  restart(isRead, order);
  return true;
}

bool CarryByte::beforeSeek() {
  if (!(active && mode == 1 && bitCount != 0)) {
    bitCount = 0;
    return true;
  }
  if (!flushBits()) return false;
  bits = 0;
  bitCount = 0;
  int64_t pos = 0;
  if (owner->getPosition(pos) != 0) return false;
  // Step back onto the part-byte just written so that it can be completed.
  if (pos >= 1 && owner->setPosition(pos - 1) != 0) return false;
  return true;
}

void CarryByte::beforeEofTest() {
  if (active && bitCount != 0 && owner->atEnd()) owner->clearError();
}

}  // namespace Tarnwicks::FileIO
