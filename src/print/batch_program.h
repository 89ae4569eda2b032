// BatchProgram: a format of literals and number conversions without stars,
// run over a stretch of one array in a single loop.
//
// The pieces decide value by value through virtual calls on the argument
// source; for a format like "%.6f\n" over ten million doubles that cost would
// outweigh the formatting. When a whole number of passes fits in what is
// left of the current array, the runner hands those passes to this loop,
// which reads the array's elements directly. It makes each value's
// decision (own conversion, Inf and NaN words, replacement %e) through the
// same classifyElement as the pieces.
#pragma once

#include <cstdint>
#include <vector>

#include "format_parser.h"
#include "print_sink.h"

namespace Tarnwicks::FileIO {

class BatchProgram {
 public:
  // True when every piece is a literal or a number conversion whose width
  // and precision are written in the format, and the format has no fault.
  static bool eligible(const PrintFormatParser& parser);
  // `mergeText`: the sink takes ASCII text inline, so a short literal after
  // a conversion may be written together with it.
  BatchProgram(const PrintFormatParser& parser, bool mergeText);

  uint64_t valuesPerPass() const { return valuesPerPass_; }
  // Prints `passes` passes over the elements of an array of class `cls`,
  // starting at element `start`.
  void run(kxClassID cls, const void* data, uint64_t start, uint64_t passes, PrintSink& sink) const;

 private:
  struct Op {
    PieceKind kind;
    const char16_t* text;
    size_t textLength;
    NumberSpec spec;
    NumberSpec specE;
    uint32_t flags;
    bool alwaysSigned;
    uint64_t width;
    // %d or %i without flags, width or precision.
    bool plainInteger;
    // A short ASCII literal that follows this conversion, written with it;
    // the literal's own op is then skipped.
    char suffix[8];
    size_t suffixLength;
    bool merged;
  };
  template <class T>
  void runTyped(const T* values, uint64_t passes, PrintSink& sink) const;

  std::vector<Op> ops_;
  uint64_t valuesPerPass_ = 0;
};

}  // namespace Tarnwicks::FileIO
