// The readers and columns of a read, made from the format items.
#include "read_loop.h"

namespace textscan {

namespace {

const char* labelOf(SpecifierType type) {
  switch (type) {
    case LiteralField:
      return "Literal";
    case CharacterField:
      return "Character";
    case SetField:
      return "Character Set";
    case NegatedSetField:
      return "Negative Character Set";
    case StringField:
      return "String";
    case QuotedField:
    case ApostropheQuotedField:
    case CategoricalField:
    case DatetimeField:
      return "Quoted String";
    default:
      return "Numeric";
  }
}

std::vector<ustring> withSpace(std::vector<ustring> stops) {
  stops.emplace_back(kSpace);
  return stops;
}

}  // namespace

ReadPlan::ReadPlan(const Options& options, const ReadContext& /*ctx*/)
    : stops(options.stopStrings),
      quotedStops(options.spaceEndsQuotedField ? withSpace(options.stopStrings)
                                               : options.stopStrings),
      emptyWords(options.treatAsEmpty) {
  for (const FormatDescription& item : options.format) {
    ItemReader r;
    r.type = item.type;
    r.skip = item.skip;
    r.hasWidth = item.width != kNoWidth;
    r.width = item.width < 0 ? 0 : static_cast<size_t>(item.width);
    r.label = labelOf(item.type);
    switch (item.type) {
      case LiteralField:
        r.literal = item.text;
        break;
      case CharacterField:
        if (!r.hasWidth) r.width = 1;
        break;
      case SetField:
      case NegatedSetField:
        r.members = UnitSet(item.text);
        break;
      case StringField:
        r.stops = &stops;
        r.plainText = !r.hasWidth && !stops.anyLong;
        break;
      case ApostropheQuotedField:
        r.quote = u'\'';
        r.stops = &quotedStops;
        r.plainText = !r.hasWidth && !quotedStops.anyLong;
        break;
      case QuotedField:
        r.stops = &quotedStops;
        r.plainText = !r.hasWidth && !quotedStops.anyLong;
        break;
      case CategoricalField:
      case DatetimeField:
        r.stops = &quotedStops;
        r.plainText = !r.hasWidth && !quotedStops.anyLong;
        break;
      default:
        r.syntax = NumberSyntax(options.expChars, item.width, item.precision);
        r.plainNumbers = item.width == kNoWidth && item.precision == kNoPrecision &&
                         r.syntax.isExponentLetter(u'e') && r.syntax.isExponentLetter(u'E');
        break;
    }
    std::unique_ptr<OutputColumn> column = makeColumn(item, options);
    itemColumns.push_back(column.get());
    if (column) columns.push_back(std::move(column));
    items.push_back(std::move(r));
  }
}

}  // namespace textscan
