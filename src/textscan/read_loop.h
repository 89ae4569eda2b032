// The row loop of a read: between rows it passes comments, whitespace,
// empty lines (and runs of delimiters with "MultipleDelimsAsOne"); within a
// row each item's reader takes its field and the item's column its value.
//
// A short row meets its line end at the next reader, which gives an empty
// field without moving, and so on to the end of the format: the readers pad
// it, not the loop. A row cut by the end of the input is not padded. Exactly
// one delimiter ends a field (a run of them with "MultipleDelimsAsOne").
#pragma once

#include <memory>
#include <vector>

#include "field_readers.h"
#include "numeric_reader.h"
#include "output_columns.h"
#include "read_context.h"
#include "textscan/options.h"

namespace textscan {

// The readers and columns of one read, item by item.
struct ReadPlan {
  std::vector<ItemReader> items;
  std::vector<OutputColumn*> itemColumns;  // null for skipped items
  std::vector<std::unique_ptr<OutputColumn>> columns;
  StopStrings stops;
  StopStrings quotedStops;
  EmptyWords emptyWords;

  ReadPlan(const Options& options, const ReadContext& ctx);
  ReadPlan(const ReadPlan&) = delete;
};

// Where the row loop stopped.
enum class LoopEnd { Done, FailedField };

template <class S>
class RowLoop {
 public:
  RowLoop(ReadPlan& plan, S& s, const ReadContext& ctx, Options& options)
      : plan_(plan),
        s_(s),
        ctx_(ctx),
        options_(options),
        singleDelimiters_(ctx.hasDelimiters && !ctx.hasLongDelimiters && !ctx.multipleDelimsAsOne) {
  }

  LoopEnd readRows() {
    for (;;) {
      if (s_.atEnd() || !moreRows()) return LoopEnd::Done;
      passBetweenRows();
      if (s_.atEnd()) return LoopEnd::Done;
      if (!readRow()) return LoopEnd::FailedField;
      ++options_.rowsRead;
      if (!moreRows()) return LoopEnd::Done;
      // A line longer than the format gives further rows from the same line.
      char16_t c = s_.peek();
      if (c != kEndOfText && !ctx_.isLineEndChar(c)) continue;
      if (ctx_.matchDelimiter(s_) > 0) continue;
      ctx_.consumeEndOfLine(s_);
    }
  }

  // The index of the field that failed, or of the next one.
  size_t currentField() const { return currentField_; }

 private:
  bool moreRows() const { return options_.numberOfLines > static_cast<double>(options_.rowsRead); }

  void passBetweenRows() {
    for (;;) {
      uint8_t cls = ctx_.classOf(s_.peek());
      if (cls == 0) return;
      if ((cls & kCommentStart) && ctx_.commentOpensHere(s_)) {
        ctx_.skipComment(s_);
        continue;
      }
      if ((cls & kWhite) && ctx_.skipWhitespace(s_) == 0) continue;
      if (size_t d = ctx_.matchDelimiter(s_)) {
        // The row starts with an empty field, unless runs count as one.
        if (!ctx_.multipleDelimsAsOne) return;
        s_.advance(d);
        continue;
      }
      if (ctx_.hasEndOfLine && ctx_.isLineEndChar(s_.peek())) {
        ctx_.consumeEndOfLine(s_);  // an empty line yields no row
        continue;
      }
      return;
    }
  }

  void passCommentsAndWhitespace() {
    for (;;) {
      uint8_t cls = ctx_.classOf(s_.peek());
      if (cls == 0) return;
      if ((cls & kCommentStart) && ctx_.commentOpensHere(s_)) {
        ctx_.skipComment(s_);
        continue;
      }
      if ((cls & kWhite) && ctx_.skipWhitespace(s_) == 0) continue;
      return;
    }
  }

  bool readRow() {
    const size_t n = plan_.items.size();
    for (currentField_ = 0;;) {
      if (currentField_ == n || s_.atEnd()) {
        currentField_ = 0;
        return true;
      }
      const ItemReader& r = plan_.items[currentField_];
      OutputColumn* column = plan_.itemColumns[currentField_];
      // A common number or text field takes no skip first: it starts at no
      // special unit.
      if (!(r.plainNumbers && readPlainNumber(r, column)) &&
          !(r.plainText && readPlainText(r, column))) {
        passCommentsAndWhitespace();
        if (!readField(r, column)) return false;
      }
      ++currentField_;
      // The common case after a field: one single-unit delimiter and
      // nothing else special, which the loop below would pass the same way.
      if (singleDelimiters_ && s_.buffered() > 0 &&
          ctx_.classOf(S::unit(here()[0])) == kDelimiterStart) {
        s_.advance(1);
        continue;
      }
      for (;;) {
        passCommentsAndWhitespace();
        size_t d = ctx_.hasDelimiters ? ctx_.matchDelimiter(s_) : 0;
        if (d == 0) break;
        s_.advance(d);
        if (!ctx_.multipleDelimsAsOne) break;
      }
    }
  }

  const typename S::Unit* here() const { return s_.data() + s_.head(); }

  template <class Column>
  void addText(OutputColumn* column, size_t length) {
    static_cast<Column*>(column)->add(here(), length);
  }

  bool readField(const ItemReader& r, OutputColumn* column) {
    FieldResult f;
    switch (r.type) {
      case LiteralField:
        f = readLiteral(r, s_);
        break;
      case CharacterField:
        f = readCharacters(r, s_);
        if (f.ok && column) addText<CharColumn>(column, f.length);
        break;
      case StringField:
        f = readString(r, s_);
        if (column) addText<StringColumn>(column, f.length);
        break;
      case QuotedField:
      case ApostropheQuotedField:
        f = readQuoted(r, s_);
        if (column) addText<StringColumn>(column, f.length);
        break;
      case CategoricalField:
      case DatetimeField:
        f = readQuoted(r, s_);
        if (column) addText<PluginColumn>(column, f.length);
        break;
      case SetField:
      case NegatedSetField:
        f = readSet(r, s_, ctx_);
        if (f.ok && column) addText<StringColumn>(column, f.length);
        break;
      default: {
        if (r.plainNumbers && readPlainNumber(r, column)) return true;
        NumericField nf = readNumber(r, s_, ctx_, plan_.emptyWords);
        f = nf.field;
        if (f.ok && column) addNumber(r.type, column, nf.number);
        break;
      }
    }
    if (!f.ok) return false;
    s_.advance(f.length);
    return true;
  }

  // The common number, read and kept in one pass; false when the field needs
  // the full reader (a delimiter, blanks, an empty word, another form).
  [[gnu::always_inline]] bool readPlainNumber(const ItemReader& r, OutputColumn* column) {
    const auto* p = here();
    size_t avail = s_.buffered();
    if (avail == 0) return false;
    char16_t first = S::unit(p[0]);
    if (ctx_.classOf(first) != 0 || plan_.emptyWords.firstUnits.contains(first)) return false;
    double x;
    size_t length = readPlainReal(p, avail, r.syntax, x);
    if (length == 0) return false;
    if (column) addReal(r.type, column, x, length);
    s_.advance(length);
    return true;
  }

  // The common field of a text item (%s, %q, %t, %C, %D), read and handed
  // over in one scan: it starts at no special unit, its closing quote (if
  // it opens with one) and a stop after it lie inside the window. False,
  // with nothing moved, for any other field, which the full reader
  // (readString, readQuoted) then takes the same way.
  [[gnu::always_inline]] bool readPlainText(const ItemReader& r, OutputColumn* column) {
    const auto* p = here();
    size_t avail = s_.buffered();
    if (avail == 0) return false;
    char16_t first = S::unit(p[0]);
    if (ctx_.classOf(first) != 0) return false;
    size_t length = 1;
    if (first == r.quote) {
      if (r.type == StringField) return false;  // quotes mean nothing to %s
      // The first lone quote closes the field; doubled ones are passed.
      for (;;) {
        while (length < avail && S::unit(p[length]) != r.quote) ++length;
        if (length + 1 >= avail) return false;  // it or the unit after it lies past the window
        if (S::unit(p[length + 1]) != r.quote) break;
        length += 2;
      }
    }
    const UnitSet& stops = r.stops->firstUnits;
    while (length < avail && !stops.contains(S::unit(p[length]))) ++length;
    if (length == avail) return false;  // the field may go on past the window
    if (column) {
      if (r.type == CategoricalField || r.type == DatetimeField) {
        addText<PluginColumn>(column, length);
      } else {
        addText<StringColumn>(column, length);
      }
    }
    s_.advance(length);
    return true;
  }

  [[gnu::always_inline]] void addReal(SpecifierType type, OutputColumn* column, double x,
                                      size_t n) {
    const auto* p = here();
    switch (type) {
      case Int8Field:
        return static_cast<NumericColumn<int8_t>*>(column)->addReal(x, p, n);
      case Int16Field:
        return static_cast<NumericColumn<int16_t>*>(column)->addReal(x, p, n);
      case Int32Alias:
      case Int32Field:
        return static_cast<NumericColumn<int32_t>*>(column)->addReal(x, p, n);
      case Int64Field:
        return static_cast<NumericColumn<int64_t>*>(column)->addReal(x, p, n);
      case UInt8Field:
        return static_cast<NumericColumn<uint8_t>*>(column)->addReal(x, p, n);
      case UInt16Field:
        return static_cast<NumericColumn<uint16_t>*>(column)->addReal(x, p, n);
      case UInt32Alias:
      case UInt32Field:
        return static_cast<NumericColumn<uint32_t>*>(column)->addReal(x, p, n);
      case UInt64Field:
        return static_cast<NumericColumn<uint64_t>*>(column)->addReal(x, p, n);
      case SingleField:
        return static_cast<NumericColumn<float>*>(column)->addReal(x, p, n);
      default:
        return static_cast<NumericColumn<double>*>(column)->addReal(x, p, n);
    }
  }

  void addNumber(SpecifierType type, OutputColumn* column, const LexedNumber& number) {
    switch (type) {
      case Int8Field:
        return static_cast<NumericColumn<int8_t>*>(column)->add(here(), number);
      case Int16Field:
        return static_cast<NumericColumn<int16_t>*>(column)->add(here(), number);
      case Int32Alias:
      case Int32Field:
        return static_cast<NumericColumn<int32_t>*>(column)->add(here(), number);
      case Int64Field:
        return static_cast<NumericColumn<int64_t>*>(column)->add(here(), number);
      case UInt8Field:
        return static_cast<NumericColumn<uint8_t>*>(column)->add(here(), number);
      case UInt16Field:
        return static_cast<NumericColumn<uint16_t>*>(column)->add(here(), number);
      case UInt32Alias:
      case UInt32Field:
        return static_cast<NumericColumn<uint32_t>*>(column)->add(here(), number);
      case UInt64Field:
        return static_cast<NumericColumn<uint64_t>*>(column)->add(here(), number);
      case SingleField:
        return static_cast<NumericColumn<float>*>(column)->add(here(), number);
      default:
        return static_cast<NumericColumn<double>*>(column)->add(here(), number);
    }
  }

  ReadPlan& plan_;
  S& s_;
  const ReadContext& ctx_;
  Options& options_;
  // Every delimiter is one unit long and a run of them is no one delimiter.
  const bool singleDelimiters_;
  size_t currentField_ = 0;
};

}  // namespace textscan
