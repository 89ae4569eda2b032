// PrintFormatParser: a print format, parsed once into its pieces.
//
// A bad conversion does not spoil what stands before it: the pieces made
// ahead of it stay usable, and the fault (InvalidFormat) is thrown only when
// iteration runs past them, so the text before a bad conversion still prints.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "conversion_matcher.h"
#include "pieces.h"
#include "print_kinds.h"
#include "twhost/kx_array.h"

namespace Tarnwicks::FileIO {

class PrintFormatParser {
 public:
  enum NumberingStyle { kUndecided = 0, kSequential = 1, kNumbered = 2 };

  // `alwaysSigned` (sprintfc's complex parts) forces a "+" on every
  // conversion and drops its width.
  PrintFormatParser(const ustring& format, bool alwaysSigned);
  virtual ~PrintFormatParser();
  PrintFormatParser(const PrintFormatParser&) = delete;
  PrintFormatParser& operator=(const PrintFormatParser&) = delete;

  // The next piece, or null after the last; past the last, a format fault is
  // thrown instead.
  foutFormatPiece* nextPiece();
  // Back to the first piece for another pass; null for a numbered format,
  // which runs once.
  foutFormatPiece* restartPieces();

  NumberingStyle numberingStyle() const { return numberingStyle_; }
  uint64_t argumentsPerPass() const { return argumentsPerPass_; }
  bool hasStringConversion() const { return hasStringConversion_; }
  int formatError() const { return formatError_; }
  const std::vector<std::unique_ptr<foutFormatPiece>>& pieces() const { return pieces_; }
  // True when the last conversion is left-justified and nothing but
  // breakable spaces follows it.
  bool endsLeftJustifiedWithSpaces() const;

 private:
  void parse();
  bool checkConversion(const ConversionMatch& m);
  void takeNumber(const ConversionMatch& m);
  void takeFlags(const ConversionMatch& m);
  void takeWidth(const ConversionMatch& m);
  void takePrecision(const ConversionMatch& m);
  void takeLength(const ConversionMatch& m);
  void takeConversion(const ConversionMatch& m);
  // Every fault of a format is InvalidFormat.
  void markInvalid();
  bool setStyle(NumberingStyle style);
  int32_t numberAt(CaptureSpan span) const;
  void append(CaptureSpan span);
  void flushPiece();

  ustring formatText_;
  bool alwaysSigned_;
  uint64_t argumentsPerPass_ = 0;
  bool hasStringConversion_ = false;
  bool lastConversionLeftJustified_ = false;
  const char16_t* trailingText_ = nullptr;

  // The conversion being gathered.
  int32_t argNumber_ = 0;
  uint32_t flags_ = 0;
  int32_t widthValue_ = 0;
  fieldKind widthKind_ = kFieldAbsent;
  int32_t precisionValue_ = 0;
  fieldKind precisionKind_ = kFieldAbsent;
  LengthKind lengthKind_ = LengthKind::None;
  ConversionKind conversionKind_ = ConversionKind::Literal;
  std::u16string pieceText_;

  NumberingStyle numberingStyle_ = kUndecided;
  std::vector<std::unique_ptr<foutFormatPiece>> pieces_;
  size_t pieceIndex_ = 0;
  int formatError_ = 0;
};

}  // namespace Tarnwicks::FileIO
