// The format of a read whose format is empty: as many %n conversions as the
// widest line has fields (the first "HeaderColumns" of them %*s), found by
// reading the input once and going back to its start.
//
// Going back means going to where the stream began, before
// "NumCharactersToSkip": those characters are passed over for the counting
// only, and are then read as data. More than 99999 fields on a line are not
// believed: the format is then one %n, applied to the end of the input.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>

#include "read_context.h"
#include "textscan/options.h"
#include "twhost/errors.h"

namespace textscan {

// Puts the stream back where it began.
template <class S>
using FormatRewinder = std::function<void(S&)>;

inline constexpr uint64_t kMostColumnsBelieved = 99999;

template <class S>
void buildFormatFromData(Options& options, S& s, const ReadContext& ctx,
                         const FormatRewinder<S>& rewind) {
  const bool limited = !options.numberOfLinesIsInfinite && std::isfinite(options.numberOfLines);
  const uint64_t limit = limited ? static_cast<uint64_t>(options.numberOfLines) : 0;
  auto skipWhite = [&] {
    while (ctx.isWhite(s.peek())) s.advance(1);
  };
  auto skipDelimiterRun = [&] {
    for (;;) {
      if (ctx.commentOpensHere(s)) {
        ctx.skipComment(s);
      } else if (size_t d = ctx.matchDelimiter(s)) {
        s.advance(d);
      } else {
        return;
      }
    }
  };

  ctx.skipHeaderLines(s, options.headerLines);
  for (;;) {
    size_t d = ctx.matchDelimiter(s);
    if (d == 0 && !ctx.isWhite(s.peek())) break;
    s.advance(d == 0 ? 1 : d);
  }

  uint64_t widest = 0, rows = 0, columnsOnLine = 0;
  bool insideField = false, gaveUp = false;
  auto closeLine = [&] {
    if (insideField) {
      ++columnsOnLine;
      insideField = false;
    }
    if (columnsOnLine > 0) ++rows;
    widest = std::max(widest, columnsOnLine);
    columnsOnLine = 0;
  };

  for (;;) {
    while (ctx.commentOpensHere(s)) {
      ctx.skipComment(s);
      skipWhite();
    }
    if (s.atEnd()) {
      closeLine();
      if (widest == 0) kxThrowId("KORVAN:textscan", "EmptyFormatString");
      if (widest > kMostColumnsBelieved) {
        widest = 1;
        gaveUp = true;
      }
      break;
    }
    if (size_t d = ctx.matchDelimiter(s)) {
      ++columnsOnLine;
      if (!ctx.commentOpensHere(s)) {
        s.advance(d);
        if (ctx.multipleDelimsAsOne) skipDelimiterRun();
      }
      if (columnsOnLine > kMostColumnsBelieved) {
        widest = 1;
        gaveUp = true;
        break;
      }
    } else if (!ctx.isLineEndChar(s.peek())) {
      insideField = true;
      s.advance(1);
      if (ctx.isWhite(s.peek())) {
        if (options.delimiterIsDefault) {
          ++columnsOnLine;
          insideField = false;
        }
        skipWhite();
      }
    } else {
      closeLine();
      ctx.consumeEndOfLine(s);
      if (ctx.multipleDelimsAsOne) skipDelimiterRun();
      skipWhite();
      if (ctx.matchDelimiter(s) == 0) {
        size_t spaces = 0;
        while (s.peek(spaces) == u' ') ++spaces;
        char16_t after = s.peek(spaces);
        if (after == kEndOfText || ctx.isLineEndChar(after)) s.advance(spaces);
      }
      if (limited && rows == limit) break;
    }
  }

  rewind(s);
  // "HeaderColumns" compared as a 32-bit count, which it saturates.
  double headerColumns = std::min(options.headerColumns, 2147483647.0);
  if (static_cast<int64_t>(headerColumns) > static_cast<int64_t>(widest)) {
    kxThrowId("KORVAN:textscan", "BuildFormatString");
  }
  const uint64_t skipped = static_cast<uint64_t>(headerColumns);
  options.format.clear();
  for (uint64_t k = 0; k < widest; ++k) {
    FormatDescription item;
    item.type = k < skipped ? StringField : NumberField;
    item.skip = k < skipped;
    options.format.push_back(item);
  }
  options.numberOfLines = gaveUp ? INFINITY : static_cast<double>(rows);
  options.numberOfLinesIsInfinite = gaveUp;
}

}  // namespace textscan
