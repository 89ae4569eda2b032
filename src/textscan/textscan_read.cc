// textscan: from the settled options to the result cell. Chooses the
// stream (a char array, or an open file read as bytes or decoded), sets up
// the line end, readers and columns, runs the row loop, and turns a failed
// field into a partial result or an error.
#include <algorithm>
#include <string>

#include "bodies.h"
#include "file_source.h"
#include "fileio/file_manager.h"
#include "format_from_data.h"
#include "narrow_text.h"
#include "read_loop.h"
#include "read_switches.h"
#include "textscan/column.h"
#include "textscan/options.h"
#include "twhost/calls.h"
#include "twhost/errors.h"
#include "utf8_units.h"

namespace textscan {

namespace {

// The text shown with a failed field: to its line end, or this many units.
constexpr size_t kShownUnits = 200;

// The text at the place of a failure, as the error shows it.
template <class S>
ustring textAtFailure(S& s, const ReadContext& ctx) {
  ustring shown;
  for (size_t i = 0;; ++i) {
    char16_t c = s.peek(i);
    if (c == kEndOfText || ctx.isLineEndChar(c)) {
      shown += u"\n";
      return shown;
    }
    if (i == kShownUnits) {
      shown += u"...";
      return shown;
    }
    shown.push_back(c);
  }
}

// A narrow field is shown decoded, like any other.
template <>
ustring textAtFailure(CharStream<char>& s, const ReadContext& ctx) {
  size_t n = 0;
  for (char16_t c = s.peek(); c != kEndOfText && !ctx.isLineEndChar(c) && n <= 4 * kShownUnits;
       c = s.peek(++n)) {
  }
  ustring decoded;
  FieldText(s.data() + s.head(), n).appendTo(decoded);
  if (decoded.size() > kShownUnits) return decoded.substr(0, kShownUnits) + u"...";
  bool atLineEnd = n <= 4 * kShownUnits;
  return atLineEnd ? decoded + u"\n" : decoded.substr(0, kShownUnits) + u"...";
}

// A date column found no format that reads its first field: the error (or,
// with "ReturnOnError", the warning) suggests the locale's default format.
void suggestDateFormat(const Options& options) {
  kxArray* out[1] = {};
  kxArray* in[] = {const_cast<kxArray*>(options.dateLocale)};
  inCallFcn(1, out, options.dateLocale ? 1 : 0, in, "datetime.getDefaultFormatForLocale");
  kxOwned format(out[0]);
  auto message = kxMsg("KORVAN:textscan", "AllNatSuggestFormat", matrix::get_ustring(format.get()));
  if (!options.returnOnError) kxThrow(message);
  kxWarningMsgId(message);
}

// The part of the read that is the same for every stream: readers and
// columns, header lines, the loop, and the result cell.
template <class S>
kxArray* readBody(Options& options, S& s, const ReadContext& ctx, FormatRewinder<S> rewind) {
  collectStopStrings(options);
  if (options.format.empty()) buildFormatFromData(options, s, ctx, rewind);
  ReadPlan plan(options, ctx);
  ctx.skipHeaderLines(s, options.headerLines);
  RowLoop<S> loop(plan, s, ctx, options);
  LoopEnd end = LoopEnd::Done;
  try {
    end = loop.readRows();
  } catch (const UnableToGuessFormat&) {
    suggestDateFormat(options);
  }
  if (end == LoopEnd::FailedField && !options.returnOnError) {
    const ItemReader& failed = plan.items[loop.currentField()];
    kxThrowId("KORVAN:textscan", "handleErrorAndShowInfo", textAtFailure(s, ctx),
              static_cast<long>(options.rowsRead + 1), static_cast<long>(loop.currentField() + 1),
              std::string(failed.label));
  }
  return assembleResults(plan.columns, options.collectOutput);
}

// The line end, found from the start of the text unless the caller gave it,
// and the delimiters that depend on it.
template <class S>
void settleLineEnd(Options& options, S& s) {
  if (options.endOfLine.empty() && options.endOfLineIsDefault) {
    options.endOfLine = ReadContext::detectEndOfLine(s);
  }
  prepareDelimitersForLineEnd(options);
}

// The first U+FFFF of the text ends it.
size_t usableLength(const char16_t* text, size_t size) {
  return static_cast<size_t>(std::find(text, text + size, kEndOfText) - text);
}

// A UTF-8 file is read as bytes when every character that steers the read
// is ASCII and no conversion counts characters (a width, %c): its fields
// are then the same whether decoded or not. Text known to be ASCII (a char
// array) has a byte for each character, so counts are the same too.
bool bytesWillDo(const Options& options, const ReadContext& ctx, bool asciiText = false) {
  if (!fastPathEnabled() || !ctx.asciiOnly()) return false;
  auto ascii = [](const ustring& t) {
    return std::all_of(t.begin(), t.end(), [](char16_t c) { return c < 128; });
  };
  auto allAscii = [&](const std::vector<ustring>& list) {
    return std::all_of(list.begin(), list.end(), ascii);
  };
  if (!allAscii(options.delimiters) || !allAscii(options.commentStyle) ||
      !allAscii(options.treatAsEmpty) || !ascii(options.expChars)) {
    return false;
  }
  for (const FormatDescription& item : options.format) {
    bool countsCharacters =
        item.type == CharacterField || (!isNumericType(item.type) && item.width != kNoWidth);
    if (countsCharacters && !asciiText) return false;
    if (!ascii(item.text) && item.type != DatetimeField) return false;
  }
  return true;
}

// A char array of ASCII text is read as bytes, narrowed a block at a time;
// its places are the same in units and bytes.
kxArray* readAsciiText(Options& options, const ReadContext& ctx, const char16_t* text,
                       size_t size) {
  CharStream<char> s;
  NarrowedText source(text, size, s);
  // Block by block, so that a long skip does not narrow the text whole.
  for (auto n =
           static_cast<size_t>(std::min(options.numCharactersToSkip, static_cast<double>(size)));
       n > 0 && s.available(1);) {
    size_t step = std::min(n, s.buffered());
    s.advance(step);
    n -= step;
  }
  auto rewind = [&source](CharStream<char>&) { source.rewind(); };
  kxArray* result = readBody<CharStream<char>>(options, s, ctx, rewind);
  options.finalPosition = static_cast<int64_t>(source.position());
  return result;
}

kxArray* readText(Options& options) {
  const char16_t* text = nullptr;
  size_t size = matrix::get_kxchar_ptr_and_len(options.source, text);
  size = kxGetNumberOfElements(options.source);
  bool ascii = fastPathEnabled() && allAsciiUnits(text, size);
  size_t usable = ascii ? size : usableLength(text, size);
  CharStream<char16_t> detect(text, usable);
  settleLineEnd(options, detect);
  ReadContext ctx(options);
  if (ascii && bytesWillDo(options, ctx, true)) return readAsciiText(options, ctx, text, size);
  CharStream<char16_t> s(text, usable);
  // A skip past the end only has to stay past it.
  s.advance(
      static_cast<size_t>(std::min(options.numCharactersToSkip, static_cast<double>(size) + 1)));
  auto rewind = [text, usable](CharStream<char16_t>& stream) {
    stream = CharStream<char16_t>(text, usable);
  };
  kxArray* result = readBody<CharStream<char16_t>>(options, s, ctx, rewind);
  options.finalPosition = static_cast<int64_t>(std::min(s.head(), size));
  return result;
}

// "NumCharactersToSkip" counts characters as decoded, also over bytes.
void skipCharacters(CharStream<char16_t>& s, double n) {
  s.advance(static_cast<size_t>(n));
}
void skipCharacters(CharStream<char>& s, double n) {
  constexpr size_t kLongestSequence = 4;
  for (double k = 0; k < n && s.available(1); ++k) {
    s.available(kLongestSequence);
    char16_t unit;
    s.advance(decodeUtf8Unit(s.data() + s.head(), s.buffered(), unit));
  }
}

template <class CharT>
kxArray* readFileAs(Options& options, Tarnwicks::FileIO::fileStream& file, ReadContext& ctx) {
  CharStream<CharT> s;
  FileSource<CharT> source(file, s);
  skipCharacters(s, options.numCharactersToSkip);
  auto rewind = [&source](CharStream<CharT>&) { source.rewind(); };
  kxArray* result = readBody<CharStream<CharT>>(options, s, ctx, rewind);
  kxOwned guard(result);
  options.finalPosition = static_cast<int64_t>(source.finish());
  return guard.release();
}

kxArray* readFile(Options& options) {
  using namespace Tarnwicks::FileIO;
  int fid = static_cast<int>(kxGetScalar(options.source));
  twAbsFile* file = FileMgr::instance().lookup(fid);
  if (!file || fid < FileMgr::instance().getFirstUserFid() || !file->getStream()) {
    kxThrowId("KORVAN:textscan", "standardStream");
  }
  if (!file->permission.read) kxThrowId("KORVAN:textscan", "UnableToReadFile");
  fileStream& stream = *file->getStream();
  {
    // The line end comes from the text as decoded, from where the read starts.
    CharStream<char16_t> detect;
    FileSource<char16_t> source(stream, detect);
    settleLineEnd(options, detect);
    source.rewind();
    source.finish();
  }
  ReadContext ctx(options);
  // An empty format is built from the data as numbers: nothing counts
  // characters then, and bytes will do whenever they would for %n.
  bool utf8 = stream.fastDecoder().kind == FastDecoder::kUtf8;
  if (utf8 && bytesWillDo(options, ctx)) return readFileAs<char>(options, stream, ctx);
  return readFileAs<char16_t>(options, stream, ctx);
}

}  // namespace

int textscanBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
  Options options(nlhs, nrhs, prhs);
  kxArray* result = kxIsDouble(options.source) ? readFile(options) : readText(options);
  plhs[0] = result;
  if (nlhs > 1) plhs[1] = kxCreateDoubleScalar(static_cast<double>(options.finalPosition));
  return 0;
}

}  // namespace textscan

namespace textscan {

namespace {
bool bytesAllowed = true;
}  // namespace

bool fastPathEnabled() {
  return bytesAllowed;
}
void setFastPathEnabled(bool enabled) {
  bytesAllowed = enabled;
}

}  // namespace textscan
