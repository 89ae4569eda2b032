#include "batch_program.h"

#include <cmath>

#include "element_values.h"

namespace Tarnwicks::FileIO {

namespace {

bool numberPiece(PieceKind kind) {
  return kind == PieceKind::Double || kind == PieceKind::SignedInteger ||
         kind == PieceKind::UnsignedInteger;
}

bool writtenField(const FieldState& f) {
  return f.kind == kFieldNumber || f.kind == kFieldAbsent;
}

// The words of a piece without a star width; see foutFormatPiece::printWords.
const char* wordFor(double value, uint32_t flags, bool alwaysSigned) {
  if (std::isnan(value)) return alwaysSigned ? "+NaN" : "NaN";
  if (value < 0) return "-Inf";
  if (flags & kFlagPlus) return "+Inf";
  if (flags & kFlagSpace) return " Inf";
  return "Inf";
}

}  // namespace

bool BatchProgram::eligible(const PrintFormatParser& parser) {
  if (parser.formatError() != 0 || parser.numberingStyle() != PrintFormatParser::kSequential) {
    return false;
  }
  for (const auto& piece : parser.pieces()) {
    if (piece->kind() == PieceKind::Literal) continue;
    if (!numberPiece(piece->kind())) return false;
    if (!writtenField(piece->widthField()) || !writtenField(piece->precisionField())) return false;
  }
  return true;
}

BatchProgram::BatchProgram(const PrintFormatParser& parser, bool mergeText) {
  for (const auto& piece : parser.pieces()) {
    Op op{};
    op.kind = piece->kind();
    if (op.kind == PieceKind::Literal) {
      const auto& text = static_cast<const foutFormatPieceForLiterals&>(*piece).text();
      op.text = text.data();
      op.textLength = text.size();
    } else {
      op.spec = piece->spec();
      op.specE = piece->specForE();
      op.flags = piece->flags();
      op.alwaysSigned = piece->alwaysSigned();
      op.width = piece->widthField().resolved;
      op.plainInteger = op.kind == PieceKind::SignedInteger && op.flags == 0 && op.spec.width < 0 &&
                        op.spec.precision < 0 && op.spec.verbatim == nullptr;
      ++valuesPerPass_;
    }
    ops_.push_back(op);
  }
  for (size_t i = 0; mergeText && i + 1 < ops_.size(); ++i) {
    Op& conversion = ops_[i];
    Op& literal = ops_[i + 1];
    if (!conversion.plainInteger || literal.kind != PieceKind::Literal ||
        literal.textLength > sizeof conversion.suffix) {
      continue;
    }
    bool ascii = true;
    for (size_t k = 0; k < literal.textLength; ++k) ascii = ascii && literal.text[k] < 0x80;
    if (!ascii) continue;
    for (size_t k = 0; k < literal.textLength; ++k) {
      conversion.suffix[k] = static_cast<char>(literal.text[k]);
    }
    conversion.suffixLength = literal.textLength;
    literal.merged = true;
  }
}

template <class T>
void BatchProgram::runTyped(const T* values, uint64_t passes, PrintSink& sink) const {
  NumberScratch scratch;
  FormattedNumber number;
  for (uint64_t pass = 0; pass < passes; ++pass) {
    for (const Op& op : ops_) {
      if (op.kind == PieceKind::Literal) {
        if (!op.merged) sink.putText(op.text, op.textLength);
        continue;
      }
      T v = *values++;
      if (op.plainInteger) {
        // A whole value within int64 is printed as it stands; NaN and the
        // infinities fail the range test and go the general way.
        if constexpr (kIsFloating<T>) {
          double x = v;
          if (x >= -9223372036854775808.0 && x < 9223372036854775808.0) {
            int64_t whole = static_cast<int64_t>(x);
            if (static_cast<double>(whole) == x) {
              sink.putPlainInteger(whole, op.suffix, op.suffixLength);
              continue;
            }
          }
        } else if (fitsSigned64(v)) {
          sink.putPlainInteger(elementToInt64(v), op.suffix, op.suffixLength);
          continue;
        }
      }
      if (!elementIsFinite(v)) {
        const char* word = wordFor(elementToDouble(v), op.flags, op.alwaysSigned);
        formatPadded(word, std::char_traits<char>::length(word), op.width,
                     (op.flags & kFlagLeft) != 0, number);
      } else if (op.kind == PieceKind::Double) {
        formatDouble(op.spec, elementToDouble(v), scratch, number);
      } else if (op.kind == PieceKind::SignedInteger) {
        if (fitsSigned64(v)) {
          formatSigned(op.spec, elementToInt64(v), scratch, number);
        } else {
          formatDouble(op.specE, elementToDouble(v), scratch, number);
        }
      } else {
        if (fitsUnsigned64(v)) {
          formatUnsigned(op.spec, elementToUInt64(v), scratch, number);
        } else {
          formatDouble(op.specE, elementToDouble(v), scratch, number);
        }
      }
      sink.putNumber(number);
      if (op.suffixLength != 0) {
        char16_t suffix[sizeof op.suffix];
        for (size_t k = 0; k < op.suffixLength; ++k)
          suffix[k] = static_cast<unsigned char>(op.suffix[k]);
        sink.putText(suffix, op.suffixLength);
      }
    }
  }
}

void BatchProgram::run(kxClassID cls, const void* data, uint64_t start, uint64_t passes,
                       PrintSink& sink) const {
  visitElementType(cls,
                   [&]<class T>() { runTyped(static_cast<const T*>(data) + start, passes, sink); });
}

}  // namespace Tarnwicks::FileIO
