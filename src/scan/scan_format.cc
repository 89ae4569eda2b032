// The scan format parser, hand-written over the UTF-16 format.
#include "scan_format.h"

#include "fileio/escapes.h"
#include "twhost/stream_errors.h"

namespace Tarnwicks::FileIO {

namespace {

constexpr int kInvalidFormat = code(StreamError::InvalidFormat);
constexpr int kInternalError = code(StreamError::InternalError);
constexpr int kNoWidth = -1;
constexpr int kLengthNone = 0;
constexpr int kLengthShort = 1;
constexpr int kLengthLong = 2;

// The piece of an integer conversion by its length: int, short ("h") or
// long long ("l").
template <template <class> class Functor, class Short, class Int, class Long>
std::unique_ptr<finFormatPiece> integerPiece(int length, ustring text, int width, bool skipped) {
  switch (length) {
    case kLengthShort:
      return std::make_unique<finFormatPieceT<Functor<Short>>>(std::move(text), width, skipped);
    case kLengthLong:
      return std::make_unique<finFormatPieceT<Functor<Long>>>(std::move(text), width, skipped);
    default:
      return std::make_unique<finFormatPieceT<Functor<Int>>>(std::move(text), width, skipped);
  }
}

std::unique_ptr<finFormatPiece> numberPiece(ReaderKind reader, int length, ustring text, int width,
                                            bool skipped) {
  switch (reader) {
    case ReaderKind::Signed:
      return integerPiece<IntegerReadingFunctor, short, int, long long>(length, std::move(text),
                                                                        width, skipped);
    case ReaderKind::AnyBase:
      return integerPiece<IntegerCouldBeHexReadingFunctor, short, int, long long>(
          length, std::move(text), width, skipped);
    case ReaderKind::Unsigned:
      return integerPiece<UnsignedIntegerReadingFunctor, unsigned short, unsigned int,
                          unsigned long long>(length, std::move(text), width, skipped);
    case ReaderKind::Hex:
      return integerPiece<HexReadingFunctor, unsigned short, unsigned int, unsigned long long>(
          length, std::move(text), width, skipped);
    case ReaderKind::Octal:
      return integerPiece<OctalReadingFunctor, unsigned short, unsigned int, unsigned long long>(
          length, std::move(text), width, skipped);
    case ReaderKind::Float:
      break;
  }
  if (length == kLengthShort) {
    return std::make_unique<finFormatPieceT<FloatReadingFunctor<float>>>(std::move(text), width,
                                                                         skipped);
  }
  return std::make_unique<finFormatPieceT<FloatReadingFunctor<double>>>(std::move(text), width,
                                                                        skipped);
}

// The reader of a numeric conversion character; false for any other.
bool readerOf(char16_t c, ReaderKind& reader) {
  switch (c) {
    case u'd':
      reader = ReaderKind::Signed;
      return true;
    case u'i':
      reader = ReaderKind::AnyBase;
      return true;
    case u'u':
      reader = ReaderKind::Unsigned;
      return true;
    case u'x':
    case u'X':
      reader = ReaderKind::Hex;
      return true;
    case u'o':
      reader = ReaderKind::Octal;
      return true;
    case u'e':
    case u'E':
    case u'f':
    case u'g':
    case u'G':
      reader = ReaderKind::Float;
      return true;
    default:
      return false;
  }
}

}  // namespace

scanFormatParser::scanFormatParser(const ustring& format) : format_(format) {
  // The format is a C text to the parser: it ends at its first NUL.
  size_t nul = format_.find(u'\0');
  if (nul != ustring::npos) format_.resize(nul);
}

void scanFormatParser::parseFormat() {
  pieces_.clear();
  shapes_.clear();
  resultClass_ = kxCHAR_CLASS;
  size_t pos = 0;
  do {
    int code = 0;
    PieceShape shape;
    std::unique_ptr<finFormatPiece> piece = parsePiece(pos, code, shape);
    if (!piece) {
      pieces_.push_back(std::make_unique<finFormatPieceError>(code));
      shapes_.push_back({PieceShape::Error});
      break;
    }
    if (resultClass_ == kxCHAR_CLASS) {
      resultClass_ = piece->resultClass();
    } else if (!piece->isLiteral() && piece->resultClass() != resultClass_) {
      resultClass_ = kxDOUBLE_CLASS;
    }
    pieces_.push_back(std::move(piece));
    shapes_.push_back(shape);
  } while (pos < format_.size());
  next_ = 0;
  wrapped_ = false;
}

std::unique_ptr<finFormatPiece> scanFormatParser::parsePiece(size_t& pos, int& code,
                                                             PieceShape& shape) {
  const size_t n = format_.size();
  if (pos >= n) {
    // An empty format has nothing to read.
    code = kInvalidFormat;
    return nullptr;
  }
  if (format_[pos] == u'%' && (pos + 1 >= n || format_[pos + 1] != u'%')) {
    return parseConversion(pos, code, shape);
  }
  // Literal text, "%%" included, up to a "%" that begins a conversion.
  const size_t start = pos;
  while (pos < n) {
    if (format_[pos] == u'%') {
      if (pos + 1 < n && format_[pos + 1] == u'%') {
        pos += 2;
        continue;
      }
      break;
    }
    ++pos;
  }
  shape.kind = PieceShape::Literal;
  return std::make_unique<finFormatPieceLiteral>(format_.substr(start, pos - start));
}

std::unique_ptr<finFormatPiece> scanFormatParser::parseConversion(size_t& pos, int& code,
                                                                  PieceShape& shape) {
  const size_t n = format_.size();
  ++pos;  // the "%"
  code = kInvalidFormat;
  if (pos >= n) return nullptr;
  bool skipped = false;
  if (format_[pos] == u'*') {
    skipped = true;
    if (++pos >= n) return nullptr;
  }
  const size_t widthStart = pos;
  const char16_t* begin = format_.data() + pos;
  const char16_t* stop = begin;
  int width = parseWideInteger(begin, format_.data() + n, stop, 10);
  if (stop == begin) {
    width = kNoWidth;
  } else if (width < 1) {
    return nullptr;
  }
  pos += static_cast<size_t>(stop - begin);
  if (pos >= n) return nullptr;

  // The piece's own text: the conversion without its star.
  auto pieceText = [&] { return u"%" + format_.substr(widthStart, pos - widthStart); };
  if (format_[pos] == u'[') {
    const size_t setStart = ++pos;
    if (pos < n && format_[pos] == u'^') ++pos;
    if (pos < n && format_[pos] == u']') ++pos;
    while (pos < n && format_[pos] != u']') ++pos;
    if (pos >= n) return nullptr;
    const ustring set = format_.substr(setStart, pos - setStart);
    ++pos;
    shape.kind = PieceShape::Text;
    return std::make_unique<finFormatPieceCMATCH>(pieceText(), width, skipped, set);
  }

  int length = kLengthNone;
  if (format_[pos] == u'h' || format_[pos] == u'l') {
    length = format_[pos] == u'h' ? kLengthShort : kLengthLong;
    if (++pos >= n) return nullptr;
  }
  const char16_t conversion = format_[pos++];
  ReaderKind reader;
  if (readerOf(conversion, reader)) {
    shape = {PieceShape::Number, reader, length};
    return numberPiece(reader, length, pieceText(), width, skipped);
  }
  if ((conversion == u's' || conversion == u'c') && length == kLengthNone) {
    shape.kind = PieceShape::Text;
    if (conversion == u's') return std::make_unique<finFormatPieceS>(pieceText(), width, skipped);
    return std::make_unique<finFormatPieceC>(pieceText(), width, skipped);
  }
  return nullptr;
}

finFormatPiece* scanFormatParser::nextScanPiece(int& code) {
  if (pieces_.empty()) {
    code = kInternalError;
    return nullptr;
  }
  if (next_ >= pieces_.size()) {
    next_ = 0;
    wrapped_ = true;
  }
  finFormatPiece* piece = pieces_[next_++].get();
  piece->restoreWidth();
  return piece;
}

finFormatPiece* scanFormatParser::pieceAt(size_t index, int& code) {
  if (index >= pieces_.size()) {
    code = kInternalError;
    return nullptr;
  }
  pieces_[index]->restoreWidth();
  return pieces_[index].get();
}

}  // namespace Tarnwicks::FileIO
