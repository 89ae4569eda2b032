// ByteSource: a stream's input as a window of bytes that a reader can look
// at before it takes them. The number readers of fscanf and sscanf
// (number_readers.h) read through it; so can any reader that wants the bytes
// of a stream without a call per byte.
//
// The window [next, end) holds bytes the stream has ready: for a file, those
// already in the C library's buffer; for a string, the whole rest of the
// text. A reader looks at *next and takes a byte by moving `next` forward,
// an inline compare and increment. Only when the window is used up does it
// call refill(), once per buffer of the medium. Bytes taken can be given
// back with putBack(), across a refill too, so that a reader can try a
// prefix ("0x", "in") and let it go.
//
// A read goes: begin(), any number of looks, takes, refills and put-backs,
// then commit(), which makes the byte at `next` the stream's position. The
// window is valid only between begin() and commit(): any other operation on
// the stream in between leaves it stale.
#pragma once

#include <cstddef>
#include <cstdio>

namespace Tarnwicks::FileIO {

class ByteSource {
 public:
  // How numbers are read from this source, the rules of the C library on
  // the medium at hand.
  enum class NumberRules {
    // As its scanner reads a FILE (fscanf): white space, sign and digits
    // are taken as they come, and a number ends at the first byte that
    // can't continue it. The input may be longer than any window.
    Scanner,
    // As its conversions read a text in place (strtoll, strtod; sscanf):
    // the window holds all of the rest of the input, and refill() never
    // adds to it.
    InPlace,
  };

  // `errorCode` is the stream's: readers set it when they fail, as the
  // stream's own operations do.
  ByteSource(NumberRules rules, int& errorCode) : rules(rules), errorCode(errorCode) {}
  virtual ~ByteSource() = default;
  ByteSource(const ByteSource&) = delete;
  ByteSource& operator=(const ByteSource&) = delete;

  // Starts a read: the window becomes what the stream has ready, possibly
  // nothing.
  virtual void begin() = 0;
  // Called when next == end. Takes the window for good and makes more
  // bytes ready; false at the end of input or on a failure of the medium,
  // with the window empty. Cost: one call into the medium.
  virtual bool refill() = 0;
  // Puts bytes[0..n) back in front of the window, to be read next in that
  // order. A Scanner source takes any bytes, as the C library's push-back
  // does (a failed double gives back its sign after the bytes the scanner
  // consumed); an InPlace source only the last `n` it gave, which are its
  // text's own.
  virtual void putBack(const unsigned char* bytes, size_t n) = 0;
  // Ends a read: the stream's position becomes the byte at `next`.
  virtual void commit() = 0;
  // Why the last refill found no byte: errno, or NoHelp when the medium
  // has its error flag, else 0 (the input just ended).
  virtual int failureCode() const = 0;

  // The byte at `next` without taking it, refilling as needed; kEnd at the
  // end of input.
  int peek() {
    if (next == end && !refill()) return kEnd;
    return *next;
  }
  // The byte at `next`, taken; kEnd at the end of input.
  int get() {
    int c = peek();
    if (c != kEnd) ++next;
    return c;
  }

  // What peek() and get() give at the end of input, as the C library's getc.
  static constexpr int kEnd = EOF;

  const unsigned char* next = nullptr;
  const unsigned char* end = nullptr;
  const NumberRules rules;
  int& errorCode;
};

}  // namespace Tarnwicks::FileIO
