#include "format_parser.h"

#include <cstdint>
#include <utility>
#include <vector>

#include "arguments.h"
#include "twhost/catalog.h"
#include "twhost/text.h"

namespace textscan {

namespace {

constexpr int32_t kWidthCeiling = INT32_MAX;

bool isSeparator(char16_t c) {
  return kDefaultWhitespace.find(c) != std::u16string_view::npos;
}

// The detail of a failed item, looked up now and passed on as text.
template <class... A>
ustring detailText(const char* key, A&&... args) {
  return fl::i18n::to_ustring(kxMessageText(kxMsg(kCatalog, key, std::forward<A>(args)...)));
}

// The letters that stand alone, with no suffix or text of their own.
constexpr std::pair<char16_t, SpecifierType> kPlainLetters[] = {
    {u'n', NumberField},           {u's', StringField},      {u'q', QuotedField},
    {u't', ApostropheQuotedField}, {u'C', CategoricalField}, {u'D', DatetimeField},
};

SpecifierType plainLetterType(char16_t letter) {
  for (const auto& [l, type] : kPlainLetters) {
    if (l == letter) return type;
  }
  return NoField;
}

class ConversionParser {
 public:
  explicit ConversionParser(FormatCursor& cursor) : c_(cursor), text_(cursor.text) {}

  FormatDescription parse() {
    c_.errorPosition = c_.position;
    ++c_.position;  // the "%"
    if (!c_.atEnd()) {
      if (peek() == u'*') {
        item_.skip = true;
        ++c_.position;
      }
      if (peek() == u'-') ++c_.position;  // left-justification means nothing here
    }
    item_.width = readDigits();
    if (peek() == u'.') {
      ++c_.position;
      item_.precision = readDigits();
    }
    if (c_.atEnd()) return fail();
    if (peek() == u'*') {
      item_.skip = true;
      ++c_.position;
    }
    if (c_.atEnd()) return fail();
    char16_t letter = text_[c_.position++];
    switch (letter) {
      case u'd':
        item_.type = integerType(Int8Field, Int16Field, Int32Field, Int64Field);
        break;
      case u'u':
        item_.type = integerType(UInt8Field, UInt16Field, UInt32Field, UInt64Field);
        break;
      case u'f':
        if (takeSuffix(u"32")) {
          item_.type = SingleField;
        } else {
          takeSuffix(u"64");
          item_.type = DoubleField;
        }
        break;
      case u'c':
        item_.type = CharacterField;
        if (item_.width == kNoWidth) item_.width = 1;
        break;
      case u'[':
        return parseSet();
      case u'{':
        return parseDatePattern();
      default:
        item_.type = plainLetterType(letter);
        if (item_.type == NoField) {
          c_.errorMessage = detailText("UnsupportedSpecifier", ustring(1, letter));
          return fail();
        }
    }
    return item_;
  }

 private:
  char16_t peek() const { return c_.atEnd() ? 0 : text_[c_.position]; }

  // A run of digits as a count, saturated; kNoWidth when there is none.
  int32_t readDigits() {
    size_t start = c_.position;
    int64_t value = 0;
    while (!c_.atEnd() && peek() >= u'0' && peek() <= u'9') {
      value = value * 10 + (peek() - u'0');
      if (value > kWidthCeiling) value = int64_t{kWidthCeiling} + 1;  // stays past the ceiling
      ++c_.position;
    }
    if (c_.position == start) return kNoWidth;
    return value > kWidthCeiling ? kWidthCeiling : static_cast<int32_t>(value);
  }

  // A suffix is taken only when it is there whole.
  bool takeSuffix(std::u16string_view suffix) {
    if (text_.substr(c_.position, suffix.size()) != suffix) return false;
    c_.position += suffix.size();
    return true;
  }

  SpecifierType integerType(SpecifierType t8, SpecifierType t16, SpecifierType t32,
                            SpecifierType t64) {
    if (takeSuffix(u"8")) return t8;
    if (takeSuffix(u"16")) return t16;
    if (takeSuffix(u"32")) return t32;
    if (takeSuffix(u"64")) return t64;
    return t32;
  }

  FormatDescription parseSet() {
    // Reported two units back: on the "%" of a plain "%[", inside the
    // conversion when a width or flag came between.
    c_.errorPosition = c_.position - 2;
    if (c_.atEnd()) return failWith("ClosingSet");
    SpecifierType type = SetField;
    if (peek() == u'^') {
      type = NegatedSetField;
      ++c_.position;
      if (c_.atEnd()) return failWith("ClosingSet");
    }
    size_t first = c_.position;
    if (peek() == u']') ++c_.position;  // a leading "]" is a member
    size_t close = text_.find(u']', c_.position);
    if (close == std::u16string_view::npos) return failWith("ClosingSet");
    item_.type = type;
    item_.text.assign(text_.substr(first, close - first));
    c_.position = close + 1;
    return item_;
  }

  FormatDescription parseDatePattern() {
    size_t close = text_.find(u'}', c_.position);
    if (close == std::u16string_view::npos || close + 1 >= text_.size() ||
        text_[close + 1] != u'D') {
      return failWith("ClosingDateFormat");
    }
    item_.type = DatetimeField;
    item_.text.assign(text_.substr(c_.position, close - c_.position));
    c_.position = close + 2;
    return item_;
  }

  FormatDescription failWith(const char* key) {
    c_.errorMessage = detailText(key);
    return fail();
  }

  FormatDescription fail() {
    c_.position = text_.size();
    if (c_.errorMessage.empty()) c_.errorMessage = detailText("IncompleteFormat");
    return FormatDescription{};
  }

  FormatCursor& c_;
  std::u16string_view text_;
  FormatDescription item_;
};

// A run up to a separator or a lone "%", with "%%" reduced to "%".
FormatDescription parseLiteral(FormatCursor& c) {
  FormatDescription item;
  item.type = LiteralField;
  item.skip = true;
  while (!c.atEnd()) {
    char16_t ch = c.text[c.position];
    if (isSeparator(ch)) break;
    if (ch == u'%') {
      if (c.position + 1 >= c.text.size() || c.text[c.position + 1] != u'%') break;
      ++c.position;
    }
    item.text.push_back(ch);
    ++c.position;
  }
  item.width = item.text.size() > static_cast<size_t>(kWidthCeiling)
                   ? kWidthCeiling
                   : static_cast<int32_t>(item.text.size());
  return item;
}

}  // namespace

void FormatCursor::skipSeparators() {
  while (!atEnd() && isSeparator(text[position])) ++position;
}

FormatDescription nextItem(FormatCursor& cursor) {
  const std::u16string_view& t = cursor.text;
  size_t at = cursor.position;
  bool conversion = t[at] == u'%' && (at + 1 >= t.size() || t[at + 1] != u'%');
  FormatDescription item = conversion ? ConversionParser(cursor).parse() : parseLiteral(cursor);
  cursor.itemEnd = cursor.position;
  cursor.skipSeparators();
  return item;
}

void parseFormat(Options& options, const ustring& format) {
  FormatCursor cursor(format);
  cursor.skipSeparators();
  std::vector<FormatDescription> items;
  bool allWidthZero = true;
  while (!cursor.atEnd()) {
    FormatDescription item = nextItem(cursor);
    if (item.type == NoField) {
      raise("BadFormatString", static_cast<long>(cursor.errorPosition + 1),
            format.substr(cursor.errorPosition), cursor.errorMessage);
    }
    if (isStringType(item.type)) options.formatHasStringFields = true;
    allWidthZero = allWidthZero && item.width == 0;
    items.push_back(std::move(item));
  }
  if (items.empty() && !format.empty()) raise("SecondInput");
  // Items of width 0 take nothing from the text; applied without end they
  // would never reach the end of it.
  if (options.numberOfLines > 0 && !items.empty() && allWidthZero) {
    options.numberOfLines = 1;
    options.numberOfLinesIsInfinite = false;
  }
  options.format = std::move(items);
}

}  // namespace textscan
