// Argument sources: the values that the pieces of a print format consume.
//
// The argument arrays are flattened into one sequence of elements, each
// array in its storage order, one after another. A source knows when an
// array is used up and when all are, which is what lets the runner reuse a
// format until the data run out. Faults are thrown as the int of their
// StreamError:
//   NotEnoughArgs         no argument is left for a conversion (the ordinary
//                         end of output),
//   EmptyArg              an empty array serves as a star width or precision
//                         (translated by the piece, never reported as such),
//   NonScalarNumbered     a numbered argument does not have exactly one
//                         element,
//   NumberedMoreThanArgc  a number beyond the arguments.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "twhost/kx_array.h"
#include "twhost/kx_data.h"

namespace Tarnwicks::FileIO {

// The text %s takes: a view of a char array, or units gathered from a
// numeric one into the source's own buffer. Valid until the next takeString.
struct TakenText {
  const char16_t* data = nullptr;
  size_t length = 0;
};

class printfArgumentSource {
 public:
  printfArgumentSource(kxArray* const* args, uint64_t count);
  virtual ~printfArgumentSource();
  printfArgumentSource(const printfArgumentSource&) = delete;
  printfArgumentSource& operator=(const printfArgumentSource&) = delete;

  virtual bool hasMoreData();
  virtual void selectArgument(uint64_t number);
  virtual bool hasCurrent();
  virtual bool moreArguments();
  virtual void advance();
  virtual void stepElement();
  virtual uint64_t remaining();
  virtual void nextArgument();
  virtual bool currentIsChar();

  void loadCurrent();
  // The gate of every consuming piece. Without a current argument: advance,
  // then throw NotEnoughArgs. An empty one: advance and return false when
  // allowEmpty, else advance and throw EmptyArg.
  bool requireValue(bool allowEmpty);
  bool isEmptyCurrent() const { return elementCount == 0; }
  TakenText takeString();

  double readDouble();
  float readSingle();
  char16_t readChar16();
  int64_t readInt64();
  uint64_t readUInt64();

  // The element at the read position, for the tests of the pieces.
  kxClassID currentClass() const { return currentClass_; }
  const void* currentElements() const { return currentElements_; }
  uint64_t currentIndex() const { return elementIndex; }

 protected:
  kxArray* const* args;
  uint64_t argCount;
  uint64_t argIndex = 0;
  uint64_t elementCount = 0;
  uint64_t elementIndex = 0;
  std::optional<KxData> currentData;

 private:
  template <class R>
  R readWith(R (*convert)(kxClassID, const void*, uint64_t));

  kxClassID currentClass_ = kxDOUBLE_CLASS;
  const void* currentElements_ = nullptr;
  std::u16string textBuffer_;
};

// Formats with "%d", "%*s" ...: each element once, in order.
class printfSequentialArgumentSource : public printfArgumentSource {
 public:
  printfSequentialArgumentSource(kxArray* const* args, uint64_t count);
  void nextArgument() override;
  // Moves on by `n` elements of the current argument, as n advances would;
  // n must not exceed remaining().
  void consume(uint64_t n);
};

// Formats with "%2$d": each conversion picks its argument, which must be a
// scalar. Nothing moves; a numbered format runs once.
class printfNumberedArgumentSource : public printfArgumentSource {
 public:
  printfNumberedArgumentSource(kxArray* const* args, uint64_t count);
  bool hasMoreData() override { return false; }
  void selectArgument(uint64_t number) override;
  void advance() override;
  void nextArgument() override {}
};

// sprintfc: one row of one matrix at a time.
class printfMatrixArgumentSource : public printfArgumentSource {
 public:
  explicit printfMatrixArgumentSource(kxArray* matrix);
  bool hasCurrent() override { return !exhausted; }
  bool moreArguments() override { return false; }
  void stepElement() override { elementIndex += rowStride; }
  uint64_t remaining() override;
  void nextArgument() override { exhausted = true; }
  bool currentIsChar() override { return false; }
  void restartRow(uint64_t row);

 private:
  kxArray* matrix_;
  bool exhausted = false;
  uint64_t rowStride = 0;
  uint64_t rowStart = 0;
};

}  // namespace Tarnwicks::FileIO
