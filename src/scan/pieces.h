// The pieces of a scan format: one object per conversion or literal run,
// each reading one thing from a stream into the scan's OutputBuffer.
//
// read() never throws for what it finds in the input: a failure sets
// `failed` and leaves a code (0 at the end of input, MatchingFailure for a
// mismatch, the stream's code otherwise). It returns how many conversions it
// stored: 1, or 0 for a skipped ("%*") conversion and for literals, however
// many characters a text conversion stored.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "fileio/output_buffer.h"
#include "fileio/stream.h"
#include "number_functors.h"
#include "twhost/kx_array.h"

namespace Tarnwicks::FileIO {

class finFormatPiece {
 public:
  // `format` is the piece's own text, without a skip star; `width` -1 for
  // none.
  finFormatPiece(ustring format, int width, bool skipped)
      : width(width), pieceFormat(std::move(format)), skipped(skipped), startWidth(width) {}
  virtual ~finFormatPiece() = default;
  finFormatPiece(const finFormatPiece&) = delete;
  finFormatPiece& operator=(const finFormatPiece&) = delete;

  virtual bool isLiteral() const { return false; }
  // The class of what the piece stores, when it alone decided the result.
  virtual kxClassID resultClass() const { return kxCHAR_CLASS; }
  // `convertsText`: the stream's text is decoded through its encoding (a
  // file) rather than being the UTF-8 of a text (sscanf); pieces read
  // characters through the stream's text layer either way.
  virtual uint64_t read(stream& s, OutputBuffer& out, bool convertsText, bool& failed,
                        int& code) = 0;

  // Each time the piece is handed out its width is what the format said.
  void restoreWidth() { width = startWidth; }

  int width;
  ustring pieceFormat;
  bool skipped;
  int startWidth;
};

// Appends `value` to `out`, converted to the buffer's class (char codes and
// numbers alike: the class rule makes every such conversion exact or
// intended).
template <class T>
void storeAs(OutputBuffer& out, T value) {
  switch (out.getClassId()) {
    case kxINT64_CLASS: {
      auto v = static_cast<int64_t>(value);
      out.push(&v);
      return;
    }
    case kxUINT64_CLASS: {
      auto v = static_cast<uint64_t>(value);
      out.push(&v);
      return;
    }
    case kxCHAR_CLASS: {
      auto v = static_cast<char16_t>(value);
      out.push(&v);
      return;
    }
    default: {
      auto v = static_cast<double>(value);
      out.push(&v);
      return;
    }
  }
}

// The input as a window of bytes for the number readers; raises
// "KORVAN:legacy_two_part:notimplemented_mx" for a stream that has none
// (the screen).
ByteSource& numberSource(stream& s);

// A numeric conversion read by functor F.
template <class F>
class finFormatPieceT final : public finFormatPiece {
 public:
  using finFormatPiece::finFormatPiece;
  kxClassID resultClass() const override { return F::kResultClass; }
  uint64_t read(stream& s, OutputBuffer& out, bool, bool& failed, int& code) override {
    ByteSource& in = numberSource(s);
    if (skipToNumber(in)) {
      failed = true;
      code = 0;
      return 0;
    }
    typename F::value_type value{};
    if (!F::read(in, width, value, code)) {
      failed = true;
      return 0;
    }
    if (skipped) return 0;
    storeAs(out, value);
    return 1;
  }
};

// %s: a word, after white space.
class finFormatPieceS final : public finFormatPiece {
 public:
  using finFormatPiece::finFormatPiece;
  uint64_t read(stream& s, OutputBuffer& out, bool convertsText, bool& failed, int& code) override;
};

// %c: `width` characters (1 without one), white space included.
class finFormatPieceC final : public finFormatPiece {
 public:
  using finFormatPiece::finFormatPiece;
  uint64_t read(stream& s, OutputBuffer& out, bool convertsText, bool& failed, int& code) override;
};

// %[...]: the longest run of characters in the set (or, after "^", not in
// it). "]" first, or first after "^", belongs to the set; "a-z" is a range
// unless the "-" stands first or last.
class finFormatPieceCMATCH final : public finFormatPiece {
 public:
  // `set` is the text between "[" and the closing "]".
  finFormatPieceCMATCH(ustring format, int width, bool skipped, const ustring& set);
  uint64_t read(stream& s, OutputBuffer& out, bool convertsText, bool& failed, int& code) override;
  bool matches(char16_t c) const;

 private:
  struct Range {
    char16_t first, last;
  };
  std::vector<Range> ranges_;
  bool negated_ = false;
};

// Text that must stand in the input: white space in it skips any white
// space, "%%" matches one "%", anything else itself.
class finFormatPieceLiteral final : public finFormatPiece {
 public:
  explicit finFormatPieceLiteral(ustring text) : finFormatPiece(std::move(text), -1, false) {}
  bool isLiteral() const override { return true; }
  uint64_t read(stream& s, OutputBuffer& out, bool convertsText, bool& failed, int& code) override;
  // True when the text is white space alone: it can't fail.
  bool onlySpace() const;
};

// A fault in the format, met when the scan reaches it.
class finFormatPieceError final : public finFormatPiece {
 public:
  explicit finFormatPieceError(int code) : finFormatPiece(ustring(), -1, false), code_(code) {}
  uint64_t read(stream&, OutputBuffer&, bool, bool& failed, int& code) override {
    failed = true;
    code = code_;
    return 0;
  }

 private:
  int code_;
};

}  // namespace Tarnwicks::FileIO
