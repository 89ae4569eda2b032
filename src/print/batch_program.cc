#include "batch_program.h"

#include "element_values.h"
#include "print_decision.h"

namespace Tarnwicks::FileIO {

namespace {

bool numberPiece(PieceKind kind) {
  return kind == PieceKind::Double || kind == PieceKind::SignedInteger ||
         kind == PieceKind::UnsignedInteger;
}

bool writtenField(const FieldState& f) {
  return f.kind == kFieldNumber || f.kind == kFieldAbsent;
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
      // The commonest conversion, %d alone, decides with its kind known
      // here, so that the test folds to a range check.
      if (op.plainInteger && classifyElement(PieceKind::SignedInteger, v) == ValueClass::Own) {
        sink.putPlainInteger(fittedToInt64(v), op.suffix, op.suffixLength);
        continue;
      }
      switch (classifyElement(op.kind, v)) {
        case ValueClass::Own:
          if (op.kind == PieceKind::Double) {
            formatDouble(op.spec, elementToDouble(v), scratch, number);
          } else if (op.kind == PieceKind::SignedInteger) {
            formatSigned(op.spec, elementToInt64(v), scratch, number);
          } else {
            formatUnsigned(op.spec, elementToUInt64(v), scratch, number);
          }
          break;
        case ValueClass::NotFinite:
          // No star width here, so the flags stand as written.
          formatWord(elementToDouble(v), op.flags, op.alwaysSigned, op.width, number);
          break;
        case ValueClass::ThroughE:
        case ValueClass::Empty:  // an element is never an empty argument
          formatDouble(op.specE, elementToDouble(v), scratch, number);
          break;
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
