// CarryByte: the part of a byte left over between two bit-field transfers
// ("ubit3", "bit12") of one file.
//
// A bit read may leave up to 7 bits of the last byte read; the next bit read
// with the same byte order takes them first. A bit write holds up to 7 bits
// that reach the file only when a later write completes the byte, or when the
// carry is flushed: by a byte transfer, by fseek, by fclose, by fprintf.
// Bits keep their places in the byte: for byte order 1 the bits in use are
// the high ones, for the other order the low ones.
#pragma once

#include <cstdint>

namespace Tarnwicks::FileIO {

class stream;
class FilePermission;

class CarryByte {
 public:
  CarryByte(stream* owner, const FilePermission* permission)
      : owner(owner), permission(permission) {}
  virtual ~CarryByte() = default;
  CarryByte(const CarryByte&) = delete;
  CarryByte& operator=(const CarryByte&) = delete;

  // Ends bit transfers: flushes a held part-byte. False when that failed.
  bool finish();
  // finish() when the file closes. In append mode without "+" the part-byte
  // stands at the end of the file, where there is nothing to keep, so it
  // goes out with zeros in the bits it lacks instead of failing.
  bool finishOnClose();
  // Writes a held part-byte (writing mode only), merged with the byte that
  // stands at that place in the file. False when the write failed.
  bool flushBits();
  // The byte at the file's position, the position left unchanged. A file
  // open for writing only gives 0; append without "+" fails with IsOpenWrite.
  // Failures set the owner's errorCode (FseekFailed, ReadFailed,
  // FseekFailedNegOne) unless it holds one already.
  bool fetchByte(uint8_t& byte);
  // Before each transfer. `bitCount` 0 is a byte transfer: a carry in use is
  // flushed. A bit transfer continues the carry when it runs the same way
  // with the same byte order (that of machine format `format`); a change from
  // reading to writing in the same order restarts it without a flush; any
  // other change flushes and restarts. False when a flush failed.
  bool prepare(int bitCount, int format, bool isRead);
  // Before a seek: a held written part-byte is flushed, and the position
  // steps back one byte so that a later bit write can complete it.
  bool beforeSeek();
  // Before an end-of-file test: a held part-byte means the file is not yet
  // at its end.
  void beforeEofTest();
  // Empties the carry and sets its direction and byte order.
  void restart(bool isRead, int order);

  bool active = false;
  uint8_t bits = 0;
  int bitCount = 0;   // bits held
  int mode = 0;       // 1 writing, 0 reading
  int byteOrder = 0;  // utGetDataEndianType: 1 big-endian
  stream* owner;
  const FilePermission* permission;
};

}  // namespace Tarnwicks::FileIO
