// The text of an open file for a read: read in blocks behind a CharStream,
// as bytes (UTF-8 text, not decoded) or as UTF-16 decoded through the file's
// encoding.
//
// The window keeps what the readers may still look at: when it is refilled,
// what lies before the block holding the stream's place is dropped, so that
// a long read holds a few blocks and not the file. A field longer than a
// block makes the window grow to hold it.
//
// finish() seeks the file to the byte after the last character consumed,
// which is the read's second result; the destructor does it if an exception
// left it undone. For decoded text of varying width the bytes of the part of
// a block consumed are found by decoding that part once more.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "char_stream.h"
#include "fileio/file_stream.h"

namespace textscan {

template <class CharT>
class FileSource final : public Refiller<CharT> {
 public:
  // Starts at the file's present position.
  FileSource(Tarnwicks::FileIO::fileStream& file, CharStream<CharT>& stream);
  ~FileSource() override;
  FileSource(const FileSource&) = delete;

  bool more(CharStream<CharT>& stream, size_t wanted) override;
  // Back to where the source started.
  void rewind();
  // The byte position reached, to which the file is sought.
  uint64_t finish();

 private:
  // A block as it came from the file: where its first unit stands in the
  // whole text, and its first byte in the file.
  struct Block {
    uint64_t firstUnit;
    uint64_t firstByte;
    bool oneBytePerUnit;
  };

  size_t readBlock(CharT* into, size_t units, size_t& bytes);
  void dropConsumed();
  // The end marker (U+FFFF, or its UTF-8 bytes) in units [from, count_):
  // the text ends there.
  void cutAtEndMarker(size_t from);
  uint64_t bytePositionOf(uint64_t unit);

  Tarnwicks::FileIO::fileStream& file_;
  CharStream<CharT>& stream_;
  int64_t startByte_ = 0;
  std::unique_ptr<CharT[]> buffer_;
  size_t capacity_ = 0;
  size_t count_ = 0;       // units in the buffer
  size_t held_ = 0;        // bytes behind count_ that may open the end marker
  uint64_t dropped_ = 0;   // units dropped from the front so far
  uint64_t nextByte_ = 0;  // file position after the last block
  std::vector<Block> blocks_;
  bool ended_ = false;
  bool finished_ = false;
};

extern template class FileSource<char>;
extern template class FileSource<char16_t>;

}  // namespace textscan
