// The pieces that read text: %s, %c, %[ sets, literals, and the piece that
// stands for a fault in the format.
//
// Characters come one at a time through the stream's text layer, decoded in
// the stream's encoding, and a character that ends a run goes back by the
// bytes it took. This is the general path: a call per character.
#include <string>

#include "fileio/tcodn_stream.h"
#include "pieces.h"
#include "twhost/stream_errors.h"
#include "twhost/text.h"

namespace Tarnwicks::FileIO {

namespace {

constexpr int kMatchingFailure = code(StreamError::MatchingFailure);

// The characters of a stream, one at a time, with the last one given back
// on request.
class Characters {
 public:
  explicit Characters(stream& s) : text_(textOf(s)) {}
  // False at the end of input.
  bool get(char16_t& c) { return text_.readChars(&c, 1, bytes_) == 1; }
  void putBack() { text_.unread(static_cast<int64_t>(bytes_)); }
  // Takes white space; false when the input ends in it.
  bool skipSpace() {
    char16_t c;
    while (get(c)) {
      if (!twu_isspace(c)) {
        putBack();
        return true;
      }
    }
    return false;
  }

 private:
  static TcodnStream& textOf(stream& s) {
    TcodnStream* t = s.textLayer();
    if (t == nullptr) stream::notImplemented();
    return *t;
  }
  TcodnStream& text_;
  size_t bytes_ = 0;
};

void storeText(OutputBuffer& out, const std::u16string& text) {
  if (out.getClassId() == kxCHAR_CLASS) {
    out.append(text.data(), text.size());
    return;
  }
  for (char16_t c : text) storeAs(out, c);
}

// What a text piece returns: nothing read is a failure with the stream's
// code (0 at the end of input); otherwise the text is stored unless the
// piece is skipped.
uint64_t finishText(const finFormatPiece& piece, const std::u16string& text, stream& s,
                    OutputBuffer& out, bool& failed, int& code) {
  if (text.empty()) {
    failed = true;
    code = s.errorCode;
    return 0;
  }
  if (piece.skipped) return 0;
  storeText(out, text);
  return 1;
}

bool withinWidth(int width, size_t n) {
  return width < 0 || n < static_cast<size_t>(width);
}

}  // namespace

uint64_t finFormatPieceS::read(stream& s, OutputBuffer& out, bool, bool& failed, int& code) {
  Characters in(s);
  std::u16string word;
  if (in.skipSpace()) {
    char16_t c;
    while (withinWidth(width, word.size()) && in.get(c)) {
      if (twu_isspace(c)) {
        in.putBack();
        break;
      }
      word.push_back(c);
    }
  }
  return finishText(*this, word, s, out, failed, code);
}

uint64_t finFormatPieceC::read(stream& s, OutputBuffer& out, bool, bool& failed, int& code) {
  Characters in(s);
  const size_t wanted = width < 0 ? 1 : static_cast<size_t>(width);
  std::u16string chars;
  char16_t c;
  while (chars.size() < wanted && in.get(c)) chars.push_back(c);
  return finishText(*this, chars, s, out, failed, code);
}

finFormatPieceCMATCH::finFormatPieceCMATCH(ustring format, int width, bool skipped,
                                           const ustring& set)
    : finFormatPiece(std::move(format), width, skipped) {
  size_t i = 0;
  if (i < set.size() && set[i] == u'^') {
    negated_ = true;
    ++i;
  }
  while (i < set.size()) {
    // "a-z" is a range; a "-" first or last stands for itself, and so do
    // the three characters of a reversed range.
    if (i + 2 < set.size() && set[i + 1] == u'-' && set[i] <= set[i + 2]) {
      ranges_.push_back({set[i], set[i + 2]});
      i += 3;
    } else {
      ranges_.push_back({set[i], set[i]});
      ++i;
    }
  }
}

bool finFormatPieceCMATCH::matches(char16_t c) const {
  bool in = false;
  for (const Range& r : ranges_) {
    if (c >= r.first && c <= r.last) {
      in = true;
      break;
    }
  }
  return in != negated_;
}

uint64_t finFormatPieceCMATCH::read(stream& s, OutputBuffer& out, bool, bool& failed, int& code) {
  Characters in(s);
  std::u16string run;
  char16_t c;
  bool ended = true;
  while (withinWidth(width, run.size()) && (ended = !in.get(c)) == false) {
    if (!matches(c)) {
      in.putBack();
      break;
    }
    run.push_back(c);
  }
  if (run.empty() && !ended) {
    // A character stood there and is not in the set.
    failed = true;
    code = kMatchingFailure;
    return 0;
  }
  return finishText(*this, run, s, out, failed, code);
}

bool finFormatPieceLiteral::onlySpace() const {
  for (char16_t c : pieceFormat) {
    if (!twu_isspace(c)) return false;
  }
  return true;
}

uint64_t finFormatPieceLiteral::read(stream& s, OutputBuffer&, bool, bool& failed, int& code) {
  Characters in(s);
  for (size_t i = 0; i < pieceFormat.size(); ++i) {
    char16_t wanted = pieceFormat[i];
    if (twu_isspace(wanted)) {
      in.skipSpace();
      continue;
    }
    // "%%" in the format stands for one "%".
    if (wanted == u'%') ++i;
    char16_t c;
    if (!in.get(c)) {
      failed = true;
      code = 0;
      return 0;
    }
    if (c != wanted) {
      in.putBack();
      failed = true;
      code = kMatchingFailure;
      return 0;
    }
  }
  return 0;
}

}  // namespace Tarnwicks::FileIO
