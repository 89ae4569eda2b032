// libFuzzer target for the number grammar of textscan's numeric fields:
// random text, exponent letters, widths and precisions.
//
// Beyond the sanitizers it checks the lexer's contracts:
// - the byte form and the UTF-16 form agree on ASCII text;
// - a result that did not look past the end of a shortened text is the
//   result on the whole text (what a reader decoding in pieces relies on);
// - the parts are in order, inside the field, and no wider than the width;
// - each digit part, its exponent letter written as "e", is read whole by
//   the C library's strtod, and with no width, precision or imaginary form
//   strtod and the lexer end a number at the same place.
//
// Input: byte 0 flags, byte 1 width, byte 2 precision, then the text; the
// exponent letters are "eEdD" or, with flag 1, "x".
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "textscan/number_lexer.h"

namespace {

using namespace textscan;

const char kAlphabet[] = "0123456789+-.eEdDiIjnNaAfFx ,";

[[noreturn]] void fault(const char* what, const std::string& text) {
  fprintf(stderr, "textscan_number_fuzz: %s on \"%s\"\n", what, text.c_str());
  std::abort();
}

bool samePart(const NumberPart& a, const NumberPart& b) {
  return a.begin == b.begin && a.end == b.end && a.negative == b.negative && a.word == b.word &&
         a.hasSign == b.hasSign && a.hasPoint == b.hasPoint && a.integerEnd == b.integerEnd &&
         a.fractionEnd == b.fractionEnd;
}

bool sameResult(const LexedNumber& a, const LexedNumber& b) {
  return a.form == b.form && a.length == b.length && a.unitAt == b.unitAt &&
         samePart(a.real, b.real) && samePart(a.imaginary, b.imaginary);
}

void checkPart(const NumberPart& p, const std::string& text, const NumberSyntax& syntax) {
  if (!(p.begin <= p.integerBegin() && p.integerBegin() <= p.integerEnd &&
        p.integerEnd <= p.fractionBegin() && p.fractionBegin() <= p.fractionEnd &&
        p.fractionEnd <= p.exponentBegin() && p.exponentBegin() <= p.exponentEnd() &&
        p.exponentEnd() == p.end && p.end <= text.size())) {
    fault("parts out of order", text);
  }
  if (syntax.hasPrecision() && p.fractionEnd - p.fractionBegin() > syntax.precision()) {
    fault("more digits than the precision", text);
  }
  if (p.word != NumberWord::None) return;
  std::string part = text.substr(p.begin, p.end - p.begin);
  if (p.exponentEnd() > p.exponentBegin()) part[p.exponentBegin() - p.begin] = 'e';
  char* stop = nullptr;
  std::strtod(part.c_str(), &stop);
  if (static_cast<size_t>(stop - part.c_str()) != part.size()) {
    fault("strtod does not read the part whole", text);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 3) return 0;
  uint8_t flags = data[0];
  int width = (flags & 2) ? data[1] % 12 : -1;
  int precision = (flags & 4) ? data[2] % 6 : -1;
  std::u16string expChars = (flags & 1) ? u"x" : u"eEdD";
  NumberSyntax syntax(expChars, width, precision);
  std::string text;
  for (size_t i = 3; i < size && text.size() < 64; ++i) {
    text.push_back(kAlphabet[data[i] % (sizeof kAlphabet - 1)]);
  }
  std::u16string wide(text.begin(), text.end());

  LexedNumber bytes = lexNumber(std::string_view(text), syntax);
  LexedNumber units = lexNumber(std::u16string_view(wide), syntax);
  if (!sameResult(bytes, units) || bytes.reachedEnd != units.reachedEnd) {
    fault("byte and unit forms differ", text);
  }
  if ((bytes.form == NumberForm::None) != (bytes.length == 0)) fault("empty number", text);

  for (size_t cut = 0; cut < text.size(); ++cut) {
    LexedNumber partial = lexNumber(std::string_view(text).substr(0, cut), syntax);
    if (!partial.reachedEnd && !sameResult(partial, bytes)) {
      fault("a shortened text gave another number without asking for more", text);
    }
  }

  if (bytes.form == NumberForm::Real || bytes.form == NumberForm::Complex) {
    checkPart(bytes.real, text, syntax);
    if (syntax.hasWidth() && bytes.real.end - bytes.real.begin > syntax.width()) {
      fault("wider than the width", text);
    }
  }
  if (bytes.form == NumberForm::Imaginary || bytes.form == NumberForm::Complex) {
    checkPart(bytes.imaginary, text, syntax);
    if (bytes.unitAt != bytes.length - 1) fault("the unit is not last", text);
    if (syntax.hasWidth() && bytes.imaginary.end - bytes.imaginary.begin > syntax.width()) {
      fault("an imaginary part wider than the width", text);
    }
  }

  // With no limits and only real numbers, the C library ends where we do.
  bool plain = !syntax.hasWidth() && !syntax.hasPrecision() && !(flags & 1);
  // (strtod passes leading blanks, which end a field here.)
  bool realOnly = text.find_first_of("dDiIjnNaAfFx") == std::string::npos;
  if (plain && realOnly && (text.empty() || text[0] != ' ')) {
    char* stop = nullptr;
    std::strtod(text.c_str(), &stop);
    if (static_cast<size_t>(stop - text.c_str()) != bytes.length) {
      fault("strtod ends a number elsewhere", text);
    }
  }
  return 0;
}
