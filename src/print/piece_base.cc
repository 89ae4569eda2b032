// The shared half of every piece: star fields, the choice among the four
// outcomes, the replacement %e, and the words Inf and NaN.
#include <cerrno>
#include <climits>
#include <cmath>

#include "element_values.h"
#include "pieces.h"
#include "print_decision.h"
#include "twhost/errors.h"
#include "twhost/stream_errors.h"

namespace Tarnwicks::FileIO {

// ---- validators ---------------------------------------------------------------

FieldValidator::~FieldValidator() = default;

template <StreamError NaN, StreamError Inf, StreamError NegInf, StreamError NonInteger,
          StreamError Empty>
int32_t FieldValidatorT<NaN, Inf, NegInf, NonInteger, Empty>::validate(double value) const {
  if (std::isnan(value)) throw code(NaN);
  if (std::isinf(value)) throw code(std::signbit(value) ? NegInf : Inf);
  // Beyond an int: the code named for non-integers, which covers only this.
  if (value > 2147483647.0 || value < -2147483648.0) throw code(NonInteger);
  // A fractional width is cut, not refused.
  return static_cast<int32_t>(value);
}

const FieldValidator& widthValidator() {
  static const FieldValidatorT<StreamError::BadWidthNaN, StreamError::BadWidthInf,
                               StreamError::BadWidthNegInf, StreamError::BadWidthInt,
                               StreamError::BadWidthEmptyArg>
      instance;
  return instance;
}

const FieldValidator& precisionValidator() {
  static const FieldValidatorT<StreamError::BadPrecisionNaN, StreamError::BadPrecisionInf,
                               StreamError::BadPrecisionNegInf, StreamError::BadPrecisionInt,
                               StreamError::BadPrecisionEmptyArg>
      instance;
  return instance;
}

// ---- construction ---------------------------------------------------------------

namespace {

FieldState makeField(const FieldValidator& validator, fieldKind kind, int32_t value) {
  FieldState f;
  f.validator = &validator;
  f.kind = kind;
  f.value = static_cast<uint64_t>(value);
  if (kind == kFieldNumber || kind == kFieldAbsent) f.resolved = f.value;
  return f;
}

// The settled form of a narrow format. A precision written as "." and "-"
// with no digit is read by the C library in a way of its own; such formats
// are passed to it as they stand.
NumberSpec specOf(const std::string& format, const PieceSetup& s, bool withPrecision) {
  NumberSpec spec;
  spec.flags = s.flags;
  spec.conversion = format.empty() ? 'd' : format.back();
  spec.width = s.widthKind == kFieldNumber ? s.widthValue : kNoField;
  spec.precision = withPrecision && s.precisionKind == kFieldNumber ? s.precisionValue : kNoField;
  if (format.find(".-") != std::string::npos) {
    spec.verbatim = format.c_str();
    spec.verbatimWidthStar = isStar(s.widthKind);
    spec.verbatimPrecisionStar = withPrecision && isStar(s.precisionKind);
  }
  return spec;
}

// "%5.2ld" -> "%5.2e": the conversion and length letters give way to "e".
std::string asExponentFormat(const std::string& format) {
  size_t end = format.find_last_not_of("hlbtdiouxXeEfgGsc");
  return format.substr(0, end + 1) + "e";
}

std::string withoutStarPrecision(const std::string& format) {
  std::string text = format;
  size_t at = text.rfind(".*");
  if (at != std::string::npos) text.erase(at, 2);
  return text;
}

}  // namespace

foutFormatPiece::foutFormatPiece(PieceKind kind, const PieceSetup& setup)
    : kind_(kind),
      argNumber_(setup.argNumber),
      flags_(setup.flags),
      alwaysSigned_(setup.alwaysSigned),
      widthField_(makeField(widthValidator(), setup.widthKind, setup.widthValue)),
      precisionField_(makeField(precisionValidator(), setup.precisionKind, setup.precisionValue)) {
  formats_[kAsParsed] = setup.narrowFormat;
  specs_[kAsParsed] = specOf(formats_[kAsParsed], setup, true);
}

foutFormatPiece::~foutFormatPiece() = default;

uint64_t foutFormatPiece::sizeHint() const {
  return widthField_.resolved + precisionField_.resolved + 20;
}

void foutFormatPiece::ensureFormat(FormatForm form) {
  if (made_[form]) return;
  PieceSetup setup;
  setup.flags = flags_;
  setup.widthKind = widthField_.kind;
  setup.widthValue = static_cast<int32_t>(widthField_.value);
  setup.precisionKind = precisionField_.kind;
  setup.precisionValue = static_cast<int32_t>(precisionField_.value);
  switch (form) {
    case kAsE:
      formats_[form] = asExponentFormat(formats_[kAsParsed]);
      specs_[form] = specOf(formats_[form], setup, true);
      break;
    case kWithoutStarPrecision:
      formats_[form] = withoutStarPrecision(formats_[kAsParsed]);
      specs_[form] = specOf(formats_[form], setup, false);
      break;
    default:  // kWithoutStarPrecisionAsE; the parsed form is made at construction
      ensureFormat(kWithoutStarPrecision);
      formats_[form] = asExponentFormat(formats_[kWithoutStarPrecision]);
      specs_[form] = specOf(formats_[form], setup, false);
      break;
  }
  made_[form] = true;
}

const NumberSpec& foutFormatPiece::specForE() {
  ensureFormat(kAsE);
  return specs_[kAsE];
}

// ---- one value ----------------------------------------------------------------------

void foutFormatPiece::resolve(FieldState& field, printfArgumentSource& source) {
  field.negative = false;
  if (!isStar(field.kind)) return;
  source.selectArgument(field.value);
  try {
    source.requireValue(false);
  } catch (int fault) {
    // An empty array as the star's value is reported as the field's own
    // fault; anything else, NotEnoughArgs included, passes unchanged.
    if (fault == code(StreamError::EmptyArg)) throw field.validator->emptyArgumentCode();
    throw;
  }
  int32_t v = field.validator->validate(source.readDouble());
  field.negative = v < 0;
  field.resolved =
      field.negative ? static_cast<uint64_t>(-static_cast<int64_t>(v)) : static_cast<uint64_t>(v);
}

void foutFormatPiece::output(PrintSink& sink, printfArgumentSource& source) {
  resolve(widthField_, source);
  resolve(precisionField_, source);
  formatIndex_ = kAsParsed;
  if (precisionField_.negative) {
    // A negative star precision means no precision at all.
    ensureFormat(kWithoutStarPrecision);
    formatIndex_ = kWithoutStarPrecision;
  }
  source.selectArgument(argNumber_);
  switch (classify(source)) {
    case ValueClass::Own:
      print(sink, source);
      break;
    case ValueClass::NotFinite:
      printWords(sink, source);
      break;
    case ValueClass::ThroughE:
      printThroughE(sink, source);
      break;
    case ValueClass::Empty:
      // Passes the empty argument by; with no argument left at all, this
      // ends the output as any conversion would.
      source.requireValue(true);
      break;
  }
}

ValueClass foutFormatPiece::classify(printfArgumentSource& source) const {
  if (kind_ == PieceKind::Literal || kind_ == PieceKind::Bits) return ValueClass::Own;
  if (source.isEmptyCurrent()) {
    // An empty array still meets %s, which pads it to the width.
    return kind_ == PieceKind::String && source.hasCurrent() ? ValueClass::Own : ValueClass::Empty;
  }
  // Nothing current (a matrix row walked to its end): the conversion's own
  // print finds no value and ends the output.
  if (!source.hasCurrent()) return ValueClass::Own;
  return visitElementType(source.currentClass(), [&]<class E>() {
    return classifyElement(kind_,
                           static_cast<const E*>(source.currentElements())[source.currentIndex()]);
  });
}

NumberSpec foutFormatPiece::specInForce(PrintSink& sink) {
  NumberSpec spec = specs_[formatIndex_];
  if (isStar(widthField_.kind)) {
    // The C library takes the width as an int; 2^31, the magnitude of the
    // most negative star width, is beyond it and the write fails as printf's
    // would.
    if (widthField_.resolved > INT_MAX) {
      sink.flush();
      sink.target().errorCode = EOVERFLOW;
      throw static_cast<int>(EOVERFLOW);
    }
    spec.width = static_cast<int32_t>(widthField_.resolved);
  }
  if (isStar(precisionField_.kind) && !precisionField_.negative) {
    spec.precision = static_cast<int32_t>(precisionField_.resolved);
  }
  return spec;
}

void foutFormatPiece::printDouble(PrintSink& sink, printfArgumentSource& source) {
  if (!source.requireValue(true)) return;
  double value = source.readDouble();
  FormattedNumber number;
  formatDouble(specInForce(sink), value, scratch_, number);
  sink.putNumber(number);
}

void foutFormatPiece::printThroughE(PrintSink& sink, printfArgumentSource& source) {
  formatIndex_ = formatIndex_ == kAsParsed ? kAsE : kWithoutStarPrecisionAsE;
  ensureFormat(formatIndex_);
  printDouble(sink, source);
}

void foutFormatPiece::printWords(PrintSink& sink, printfArgumentSource& source) {
  double value = source.readDouble();
  // A negative star width asks for everything at once: left, plus and space.
  uint32_t flags = flags_;
  if (widthField_.negative) flags |= kFlagLeft | kFlagPlus | kFlagSpace;
  if (widthField_.resolved > INT_MAX) kxThrowId("KORVAN", "numericOverflow");
  FormattedNumber number;
  formatWord(value, flags, alwaysSigned_, widthField_.resolved, number);
  sink.putNumber(number);
}

void foutFormatPiece::padText(PrintSink& sink, uint64_t written) {
  uint64_t width = widthField_.resolved;
  if (width > written) sink.putRepeatedText((flags_ & kFlagZero) ? u'0' : u' ', width - written);
}

}  // namespace Tarnwicks::FileIO
