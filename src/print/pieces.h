// foutFormatPiece: one run of literal text or one conversion of a print
// format, made by the parser and reused on every pass over the values.
//
// output() resolves the star fields, asks the source what value stands next,
// and then decides, value by value, among four outcomes: the piece's own
// conversion, the words Inf and NaN, a replacement %e conversion for values
// the conversion can't show (1.5 under %d), or nothing (an empty array).
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "argument_source.h"
#include "number_format.h"
#include "print_kinds.h"
#include "print_sink.h"
#include "twhost/stream_errors.h"

namespace Tarnwicks::FileIO {

// Checks a star value and cuts it to an int; an unusable value throws the
// code of its fault.
class FieldValidator {
 public:
  virtual int32_t validate(double value) const = 0;
  virtual int emptyArgumentCode() const = 0;
  virtual ~FieldValidator();
};

// The faults of one field: NaN, +Inf, -Inf, beyond an int, and an empty
// array as its value.
template <StreamError NaN, StreamError Inf, StreamError NegInf, StreamError NonInteger,
          StreamError Empty>
class FieldValidatorT final : public FieldValidator {
 public:
  int32_t validate(double value) const override;
  int emptyArgumentCode() const override { return code(Empty); }
};

const FieldValidator& widthValidator();
const FieldValidator& precisionValidator();

struct FieldState {
  const FieldValidator* validator = nullptr;
  fieldKind kind = kFieldAbsent;
  uint64_t value = 0;     // the written number, or the star's argument number
  uint64_t resolved = 0;  // the value in force
  bool negative = false;  // the star's value was negative
};

// What the parser settled for one piece.
struct PieceSetup {
  uint64_t argNumber = 0;
  uint32_t flags = 0;
  bool alwaysSigned = false;
  fieldKind widthKind = kFieldAbsent;
  int32_t widthValue = 0;
  fieldKind precisionKind = kFieldAbsent;
  int32_t precisionValue = 0;
  std::string narrowFormat;  // e.g. "%-+5.3ld"; empty for literals
};

class foutFormatPiece {
 public:
  foutFormatPiece(PieceKind kind, const PieceSetup& setup);
  virtual ~foutFormatPiece();
  foutFormatPiece(const foutFormatPiece&) = delete;
  foutFormatPiece& operator=(const foutFormatPiece&) = delete;

  virtual bool isConversion() const { return true; }
  virtual void print(PrintSink& sink, printfArgumentSource& source) = 0;
  virtual uint64_t sizeHint() const;
  // What this piece prints for the value that stands next in `source`; see
  // print_decision.h.
  ValueClass classify(printfArgumentSource& source) const;

  void output(PrintSink& sink, printfArgumentSource& source);

  PieceKind kind() const { return kind_; }
  uint32_t flags() const { return flags_; }
  bool alwaysSigned() const { return alwaysSigned_; }
  const FieldState& widthField() const { return widthField_; }
  const FieldState& precisionField() const { return precisionField_; }
  // The narrow format as parsed ("%5.2ld"), and its settled form.
  const std::string& narrowFormat() const { return formats_[kAsParsed]; }
  const NumberSpec& spec() const { return specs_[kAsParsed]; }
  // The replacement %e of a value the conversion can't show.
  const NumberSpec& specForE();

 protected:
  // The NumberSpec in force, with the star fields of this value in place.
  NumberSpec specInForce(PrintSink& sink);
  void printThroughE(PrintSink& sink, printfArgumentSource& source);
  void printWords(PrintSink& sink, printfArgumentSource& source);
  void printDouble(PrintSink& sink, printfArgumentSource& source);
  bool leftJustified() const { return (flags_ & kFlagLeft) || widthField_.negative; }
  // Pads text (%s, %c) out to the width, with "0" under the "0" flag.
  void padText(PrintSink& sink, uint64_t written);

  NumberScratch scratch_;

 private:
  // The forms of the narrow format. A value the conversion can't show is
  // printed through %e; a negative star precision means no precision.
  enum FormatForm : int32_t {
    kAsParsed,
    kAsE,                      // the conversion and length letters become "e"
    kWithoutStarPrecision,     // the last ".*" is dropped
    kWithoutStarPrecisionAsE,  // both
    kFormCount
  };

  void resolve(FieldState& field, printfArgumentSource& source);
  void ensureFormat(FormatForm form);

  PieceKind kind_;
  // Each form's text and settled spec, made on first need.
  std::string formats_[kFormCount];
  NumberSpec specs_[kFormCount];
  bool made_[kFormCount] = {true};  // the parsed form comes with the piece
  FormatForm formatIndex_ = kAsParsed;
  uint64_t argNumber_;
  uint32_t flags_;
  bool alwaysSigned_;
  FieldState widthField_;
  FieldState precisionField_;
};

class foutFormatPieceForLiterals final : public foutFormatPiece {
 public:
  explicit foutFormatPieceForLiterals(std::u16string text);
  bool isConversion() const override { return false; }
  void print(PrintSink& sink, printfArgumentSource& source) override;
  uint64_t sizeHint() const override { return text_.size(); }
  const std::u16string& text() const { return text_; }

 private:
  std::u16string text_;
};

class foutFormatPieceForDouble final : public foutFormatPiece {
 public:
  explicit foutFormatPieceForDouble(const PieceSetup& setup)
      : foutFormatPiece(PieceKind::Double, setup) {}
  void print(PrintSink& sink, printfArgumentSource& source) override;
};

template <class T>
class foutFormatPieceForInteger final : public foutFormatPiece {
 public:
  explicit foutFormatPieceForInteger(const PieceSetup& setup);
  void print(PrintSink& sink, printfArgumentSource& source) override;
};

class foutFormatPieceForS final : public foutFormatPiece {
 public:
  explicit foutFormatPieceForS(const PieceSetup& setup)
      : foutFormatPiece(PieceKind::String, setup) {}
  void print(PrintSink& sink, printfArgumentSource& source) override;
};

class foutFormatPieceForC final : public foutFormatPiece {
 public:
  explicit foutFormatPieceForC(const PieceSetup& setup) : foutFormatPiece(PieceKind::Char, setup) {}
  void print(PrintSink& sink, printfArgumentSource& source) override;
};

// The bit patterns of floating values: "b" reads a double (unsigned long
// patterns), "t" a single (unsigned int patterns).
template <class Bits, class Float>
class foutFormatPieceForOUXbt : public foutFormatPiece {
 public:
  explicit foutFormatPieceForOUXbt(const PieceSetup& setup)
      : foutFormatPiece(PieceKind::Bits, setup) {}
  void print(PrintSink& sink, printfArgumentSource& source) final;

 protected:
  // All digits of `bits`, leading zeros included; returns their count.
  virtual int formatDigits(char* buffer, Bits bits) = 0;
  // The size of the text for `length` digits; may change `length`.
  virtual uint64_t adjustLength(uint64_t& length, int digitCount, bool alternate) = 0;
  virtual void writePrefix(char*& cursor, bool alternate) = 0;
};

template <class Bits, class Float>
class foutFormatPieceForObt final : public foutFormatPieceForOUXbt<Bits, Float> {
 public:
  using foutFormatPieceForOUXbt<Bits, Float>::foutFormatPieceForOUXbt;

 protected:
  int formatDigits(char* buffer, Bits bits) override;
  uint64_t adjustLength(uint64_t& length, int digitCount, bool alternate) override;
  void writePrefix(char*&, bool) override {}
};

template <class Bits, class Float>
class foutFormatPieceForUbt final : public foutFormatPieceForOUXbt<Bits, Float> {
 public:
  using foutFormatPieceForOUXbt<Bits, Float>::foutFormatPieceForOUXbt;

 protected:
  int formatDigits(char* buffer, Bits bits) override;
  uint64_t adjustLength(uint64_t& length, int, bool) override { return length; }
  void writePrefix(char*&, bool) override {}
};

template <class Bits, class Float>
class foutFormatPieceForXbt final : public foutFormatPieceForOUXbt<Bits, Float> {
 public:
  explicit foutFormatPieceForXbt(const PieceSetup& setup);

 protected:
  int formatDigits(char* buffer, Bits bits) override;
  uint64_t adjustLength(uint64_t& length, int, bool alternate) override {
    return length + (alternate ? 2 : 0);
  }
  void writePrefix(char*& cursor, bool alternate) override;

 private:
  bool upperCase;
};

// The piece for one gathered conversion; a Literal kind makes a literal of
// `text`.
std::unique_ptr<foutFormatPiece> makePiece(ConversionKind conversion, LengthKind length,
                                           const PieceSetup& setup, const std::u16string& text);

}  // namespace Tarnwicks::FileIO
