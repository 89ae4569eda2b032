#include "format_parser.h"

#include "fileio/escapes.h"
#include "twhost/stream_errors.h"
#include "twhost/text.h"

namespace Tarnwicks::FileIO {

namespace {

// The matcher has let through only the characters of "diouxXeEfgGsc" here.
ConversionKind conversionKindOf(char16_t c) {
  switch (c) {
    case u'd':
      return ConversionKind::D;
    case u'i':
      return ConversionKind::I;
    case u'o':
      return ConversionKind::O;
    case u'u':
      return ConversionKind::U;
    case u'x':
    case u'X':
      return ConversionKind::X;
    case u'e':
    case u'E':
      return ConversionKind::E;
    case u'f':
      return ConversionKind::F;
    case u'g':
    case u'G':
      return ConversionKind::G;
    case u's':
      return ConversionKind::S;
    default:
      return ConversionKind::C;
  }
}

// And only those of "hlbt" here.
LengthKind lengthKindOf(char16_t c) {
  switch (c) {
    case u'h':
      return LengthKind::H;
    case u'l':
      return LengthKind::L;
    case u't':
      return LengthKind::T;
    default:
      return LengthKind::B;
  }
}

uint32_t flagBit(char16_t c) {
  switch (c) {
    case u'-':
      return kFlagLeft;
    case u'+':
      return kFlagPlus;
    case u' ':
      return kFlagSpace;
    case u'#':
      return kFlagAlternate;
    default:
      return kFlagZero;
  }
}

}  // namespace

PrintFormatParser::PrintFormatParser(const ustring& format, bool alwaysSigned)
    : formatText_(format), alwaysSigned_(alwaysSigned) {
  parse();
}

PrintFormatParser::~PrintFormatParser() = default;

void PrintFormatParser::parse() {
  const char16_t* text = formatText_.c_str();
  size_t n = formatText_.size();
  if (n == 0) {
    markInvalid();
    return;
  }
  size_t position = 0;
  do {
    ConversionMatch m;
    if (!findConversion(text, n, position, m)) {
      trailingText_ = text + position;
      pieceText_.append(text + position, n - position);
      flushPiece();
      return;
    }
    if (m.start > position) {
      pieceText_.append(text + position, m.start - position);
      flushPiece();
    }
    pieceText_.push_back(u'%');
    if (checkConversion(m)) {
      takeNumber(m);
      takeFlags(m);
      takeWidth(m);
      takePrecision(m);
      takeLength(m);
      takeConversion(m);
      ++argumentsPerPass_;
    }
    position = m.start + m.length;
    if (formatError_ != 0) return;
    flushPiece();
  } while (position < n);
}

// False for a fault and for "%%", whose piece is the "%" already gathered.
bool PrintFormatParser::checkConversion(const ConversionMatch& m) {
  if (m.conversion.empty()) {
    markInvalid();
    return false;
  }
  if (formatText_[m.conversion.start] == u'%') {
    if (m.conversion.start != m.start + 1) markInvalid();
    return false;
  }
  return true;
}

void PrintFormatParser::markInvalid() {
  formatError_ = code(StreamError::InvalidFormat);
}

bool PrintFormatParser::setStyle(NumberingStyle style) {
  if (numberingStyle_ != kUndecided && numberingStyle_ != style) {
    markInvalid();
    return false;
  }
  numberingStyle_ = style;
  return true;
}

int32_t PrintFormatParser::numberAt(CaptureSpan span) const {
  const char16_t* begin = formatText_.c_str() + span.start;
  const char16_t* stop = begin;
  return parseWideInteger(begin, begin + span.length, stop, 10);
}

void PrintFormatParser::append(CaptureSpan span) {
  pieceText_.append(formatText_, span.start, span.length);
}

void PrintFormatParser::takeNumber(const ConversionMatch& m) {
  if (m.number.empty()) {
    setStyle(kSequential);
    return;
  }
  if (setStyle(kNumbered)) argNumber_ = numberAt(m.number);
}

void PrintFormatParser::takeFlags(const ConversionMatch& m) {
  for (uint32_t i = 0; i < m.flags.length; ++i) {
    uint32_t bit = flagBit(formatText_[m.flags.start + i]);
    if (flags_ & bit) {
      markInvalid();
      return;
    }
    flags_ |= bit;
  }
  lastConversionLeftJustified_ = (flags_ & kFlagLeft) != 0;
  if (alwaysSigned_ && !(flags_ & kFlagPlus)) {
    pieceText_.push_back(u'+');
    flags_ |= kFlagPlus;
  }
  if (alwaysSigned_ || flags_ != 0) append(m.flags);
}

void PrintFormatParser::takeWidth(const ConversionMatch& m) {
  if (alwaysSigned_ || m.width.empty()) {
    widthKind_ = kFieldAbsent;
    return;
  }
  if (formatText_[m.width.start] != u'*') {
    widthValue_ = numberAt(m.width);
    widthKind_ = kFieldNumber;
    append(m.width);
  } else if (m.widthNumber.empty()) {
    setStyle(kSequential);
    ++argumentsPerPass_;
    widthKind_ = kFieldStar;
    pieceText_.push_back(u'*');
  } else {
    widthValue_ = numberAt(m.widthNumber);
    setStyle(kNumbered);
    widthKind_ = kFieldNumberedStar;
    pieceText_.push_back(u'*');
  }
}

void PrintFormatParser::takePrecision(const ConversionMatch& m) {
  if (m.precision.empty()) {
    precisionKind_ = kFieldAbsent;
    return;
  }
  if (m.precision.length > 1 && formatText_[m.precision.start + 1] == u'*') {
    if (m.precisionNumber.empty()) {
      setStyle(kSequential);
      ++argumentsPerPass_;
      precisionKind_ = kFieldStar;
    } else {
      precisionValue_ = numberAt(m.precisionNumber);
      setStyle(kNumbered);
      precisionKind_ = kFieldNumberedStar;
    }
    pieceText_.append(u".*");
    return;
  }
  int32_t value = numberAt({m.precision.start + 1, m.precision.length - 1});
  if (value >= 0) {
    precisionValue_ = value;
    precisionKind_ = kFieldNumber;
    append(m.precision);
  } else {
    // A written negative precision counts as none.
    precisionKind_ = kFieldAbsent;
    precisionValue_ = 0;
  }
}

void PrintFormatParser::takeLength(const ConversionMatch& m) {
  if (!m.lengthModifier.empty()) lengthKind_ = lengthKindOf(formatText_[m.lengthModifier.start]);
}

void PrintFormatParser::takeConversion(const ConversionMatch& m) {
  char16_t c = formatText_[m.conversion.start];
  conversionKind_ = conversionKindOf(c);
  switch (conversionKind_) {
    case ConversionKind::D:
    case ConversionKind::I:
      // Bit patterns are for the unsigned conversions only.
      if (lengthKind_ == LengthKind::T || lengthKind_ == LengthKind::B) {
        markInvalid();
        return;
      }
      // Every integer is printed as a long one.
      pieceText_.push_back(u'l');
      break;
    case ConversionKind::O:
    case ConversionKind::U:
    case ConversionKind::X:
      pieceText_.push_back(u'l');
      break;
    case ConversionKind::S:
      hasStringConversion_ = true;
      [[fallthrough]];
    default:
      if (conversionKind_ == ConversionKind::C && precisionKind_ != kFieldAbsent) {
        markInvalid();
        return;
      }
      if (lengthKind_ != LengthKind::None) {
        markInvalid();
        return;
      }
      break;
  }
  if (formatError_ == 0) pieceText_.push_back(c);
}

void PrintFormatParser::flushPiece() {
  PieceSetup setup;
  setup.argNumber = static_cast<uint64_t>(argNumber_);
  setup.flags = flags_;
  setup.alwaysSigned = alwaysSigned_;
  setup.widthKind = widthKind_;
  setup.widthValue = widthValue_;
  setup.precisionKind = precisionKind_;
  setup.precisionValue = precisionValue_;
  if (conversionKind_ != ConversionKind::Literal) {
    // A conversion's text is ASCII by the grammar.
    setup.narrowFormat.reserve(pieceText_.size());
    for (char16_t c : pieceText_) setup.narrowFormat.push_back(static_cast<char>(c));
  }
  pieces_.push_back(makePiece(conversionKind_, lengthKind_, setup, pieceText_));

  argNumber_ = 0;
  flags_ = 0;
  widthValue_ = 0;
  widthKind_ = kFieldAbsent;
  precisionKind_ = kFieldAbsent;
  precisionValue_ = 0;
  lengthKind_ = LengthKind::None;
  conversionKind_ = ConversionKind::Literal;
  pieceText_.clear();
}

foutFormatPiece* PrintFormatParser::nextPiece() {
  if (pieceIndex_ < pieces_.size()) return pieces_[pieceIndex_++].get();
  if (formatError_ != 0) throw formatError_;
  return nullptr;
}

foutFormatPiece* PrintFormatParser::restartPieces() {
  if (numberingStyle_ == kNumbered) return nullptr;
  pieceIndex_ = 0;
  return nextPiece();
}

bool PrintFormatParser::endsLeftJustifiedWithSpaces() const {
  if (!lastConversionLeftJustified_) return false;
  if (trailingText_ == nullptr) return true;
  for (const char16_t* p = trailingText_; *p != 0; ++p) {
    if (!twu_isbreakablespace(*p)) return false;
  }
  return true;
}

}  // namespace Tarnwicks::FileIO
