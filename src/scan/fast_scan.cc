// The fast path: the scan loop of scanControl with the one conversion's
// read inlined, over the UTF-16 text of sscanf or a stream's bytes.
#include "fast_scan.h"

#include <algorithm>

#include "twhost/kx_memory.h"
#include "unit_numbers.h"

namespace Tarnwicks::FileIO {

namespace {

// Values in one block. It starts at the most the input can hold, as far as
// that is known: only pages written become resident, so the room never
// used costs address space alone, and the block never moves while it
// fills. Past that it grows by doubling through realloc, which moves a
// large block by remapping its pages, without a copy. release() gives back
// the room not used the same way. push() is an inline compare and store.
template <class T>
class GrowingBlock {
 public:
  // `expected`: the most elements the input can give, 0 when unknown.
  explicit GrowingBlock(size_t expected) {
    if (expected > kFirst) {
      capacity_ = std::min(expected, kMostReserved);
      data_ = static_cast<T*>(kxReallocExCheck(nullptr, capacity_ * sizeof(T)));
    }
  }
  ~GrowingBlock() { kxFreeEx(data_); }
  GrowingBlock(const GrowingBlock&) = delete;
  GrowingBlock& operator=(const GrowingBlock&) = delete;

  void push(T v) {
    if (size_ == capacity_) grow();
    data_[size_++] = v;
  }
  size_t size() const { return size_; }
  // The block cut to its size (null when empty), for the caller to own.
  void* release() {
    void* block = nullptr;
    if (size_ != 0) block = kxReallocExCheck(data_, size_ * sizeof(T));
    if (size_ == 0) kxFreeEx(data_);
    data_ = nullptr;
    size_ = capacity_ = 0;
    return block;
  }

 private:
  static constexpr size_t kFirst = 4096;
  // The most reserved up front: 1 GiB of doubles. A larger input grows from
  // there, by remapping.
  static constexpr size_t kMostReserved = size_t{1} << 27;
  void grow() {
    capacity_ = std::max(kFirst, capacity_ * 2);
    data_ = static_cast<T*>(kxReallocExCheck(data_, capacity_ * sizeof(T)));
  }
  T* data_ = nullptr;
  size_t size_ = 0;
  size_t capacity_ = 0;
};

// The scan loop of scanControl::scan for a plan's format: literals of white
// space, which never fail, and one conversion read by F. Source gives
// skipToNumber(), read<F>(value, code) and literal(index).
template <class F, class Stored, class Source>
FastOutcome runPlan(const FastPlan& plan, Source& in, const ScanSize& size) {
  // A number takes at least one character, and two in a row at least one
  // more between them: an input of n characters holds (n + 1) / 2 at most.
  size_t expected = in.inputLeft() == 0 ? 0 : (in.inputLeft() + 1) / 2;
  if (!size.unlimited) expected = std::min<uint64_t>(expected, size.limit());
  GrowingBlock<Stored> out(expected);
  FastOutcome outcome;
  outcome.cls = F::kResultClass;
  const size_t pieces = plan.literal.size();
  const uint64_t limit = size.limit();
  size_t next = 0;
  bool wrapped = false;
  bool result = false;
  uint64_t count = 0;
  auto finish = [&](bool normalEnd, int error) {
    outcome.normalEnd = normalEnd;
    outcome.error = error;
    outcome.total = out.size();
    outcome.block = out.release();
    return outcome;
  };
  while (size.unlimited || limit > count) {
    if (next >= pieces) {
      next = 0;
      wrapped = true;
    }
    const size_t index = next++;
    if (wrapped) {
      // Every pass reads a number or ends the scan, so a pass that stored
      // nothing can't have happened.
      if (count == 0) return finish(true, 0);
      result = true;
    }
    if (plan.literal[index]) {
      in.literal(index);
      continue;
    }
    if (in.skipToNumber()) return finish(result, 0);
    typename F::value_type value;
    int code = 0;
    if (!in.template read<F>(value, code)) return finish(result, code);
    out.push(static_cast<Stored>(value));
    ++count;
  }
  if (size.unlimited) return finish(result, 0);
  // The size is met: the literals that close this pass are still read.
  while (next < pieces && plan.literal[next]) in.literal(next++);
  return finish(true, 0);
}

// What the result class keeps of a functor's value.
template <class F>
using StoredType =
    std::conditional_t<F::kResultClass == kxINT64_CLASS, int64_t,
                       std::conditional_t<F::kResultClass == kxUINT64_CLASS, uint64_t, double>>;

// Calls run.template operator()<F>() with the functor of the plan's
// conversion and length.
template <class Run>
FastOutcome withFunctor(const FastPlan& plan, Run&& run) {
  constexpr int kShort = 1, kLong = 2;
  const int length = plan.length;
  switch (plan.reader) {
    case ReaderKind::Signed:
      if (length == kShort) return run.template operator()<IntegerReadingFunctor<short>>();
      if (length == kLong) return run.template operator()<IntegerReadingFunctor<long long>>();
      return run.template operator()<IntegerReadingFunctor<int>>();
    case ReaderKind::AnyBase:
      if (length == kShort) {
        return run.template operator()<IntegerCouldBeHexReadingFunctor<short>>();
      }
      if (length == kLong) {
        return run.template operator()<IntegerCouldBeHexReadingFunctor<long long>>();
      }
      return run.template operator()<IntegerCouldBeHexReadingFunctor<int>>();
    case ReaderKind::Unsigned:
      if (length == kShort) {
        return run.template operator()<UnsignedIntegerReadingFunctor<unsigned short>>();
      }
      if (length == kLong) {
        return run.template operator()<UnsignedIntegerReadingFunctor<unsigned long long>>();
      }
      return run.template operator()<UnsignedIntegerReadingFunctor<unsigned int>>();
    case ReaderKind::Hex:
      if (length == kShort) return run.template operator()<HexReadingFunctor<unsigned short>>();
      if (length == kLong) return run.template operator()<HexReadingFunctor<unsigned long long>>();
      return run.template operator()<HexReadingFunctor<unsigned int>>();
    case ReaderKind::Octal:
      if (length == kShort) return run.template operator()<OctalReadingFunctor<unsigned short>>();
      if (length == kLong) {
        return run.template operator()<OctalReadingFunctor<unsigned long long>>();
      }
      return run.template operator()<OctalReadingFunctor<unsigned int>>();
    case ReaderKind::Float:
      break;
  }
  if (length == kShort) return run.template operator()<FloatReadingFunctor<float>>();
  return run.template operator()<FloatReadingFunctor<double>>();
}

// sscanf's text as a Source.
class TextSource {
 public:
  TextSource(const char16_t* text, size_t n) : units_(text, n), left_(n) {}
  bool skipToNumber() { return units_.skipToNumber(); }
  template <class F>
  bool read(typename F::value_type& value, int& code) {
    return units_.read<F>(value, code);
  }
  void literal(size_t) { units_.skipSpace(); }
  size_t consumed() const { return units_.consumed(); }
  size_t inputLeft() const { return left_; }

 private:
  UnitNumbers units_;
  size_t left_;
};

// A stream as a Source: numbers by the readers on its ByteSource, as the
// numeric pieces read them; literals by the format's own pieces.
class StreamSource {
 public:
  StreamSource(scanFormatParser& format, stream& s)
      : format_(format), stream_(s), in_(numberSource(s)) {}
  bool skipToNumber() { return FileIO::skipToNumber(in_); }
  template <class F>
  bool read(typename F::value_type& value, int& code) {
    return F::read(in_, -1, value, code);
  }
  void literal(size_t index) {
    int code = 0;
    bool failed = false;
    format_.pieceAt(index, code)->read(stream_, unused_, true, failed, code);
  }
  // The bytes from here to the end of a file; 0 when unknown.
  size_t inputLeft() {
    // Asking is no part of the scan: a medium without a size or position
    // (a pipe) leaves no error behind.
    const int kept = stream_.errorCode;
    int64_t size = 0, position = 0;
    const bool known =
        stream_.getFileSize(size) && stream_.getPosition(position) == 0 && size >= position;
    stream_.errorCode = kept;
    return known ? static_cast<size_t>(size - position) : 0;
  }

 private:
  scanFormatParser& format_;
  stream& stream_;
  ByteSource& in_;
  // Literals store nothing: they are given a buffer that stays empty.
  OutputBuffer unused_{kxDOUBLE_CLASS, 1, 1, 1};
};

}  // namespace

FastPlan planFastScan(scanFormatParser& format) {
  FastPlan plan;
  bool haveNumber = false;
  for (size_t i = 0; i < format.size(); ++i) {
    const PieceShape& shape = format.shapes()[i];
    int code = 0;
    const finFormatPiece* piece = format.pieceAt(i, code);
    if (shape.kind == PieceShape::Literal) {
      if (!static_cast<const finFormatPieceLiteral*>(piece)->onlySpace()) return FastPlan();
      plan.literal.push_back(true);
      continue;
    }
    if (shape.kind != PieceShape::Number || piece->skipped || piece->startWidth >= 0) {
      return FastPlan();
    }
    if (haveNumber && (shape.reader != plan.reader || shape.length != plan.length)) {
      return FastPlan();
    }
    haveNumber = true;
    plan.reader = shape.reader;
    plan.length = shape.length;
    plan.literal.push_back(false);
  }
  plan.eligible = haveNumber;
  return plan;
}

FastOutcome fastScanText(const FastPlan& plan, const char16_t* text, size_t n, const ScanSize& size,
                         size_t& consumed) {
  TextSource in(text, n);
  FastOutcome outcome =
      withFunctor(plan, [&]<class F>() { return runPlan<F, StoredType<F>>(plan, in, size); });
  consumed = in.consumed();
  return outcome;
}

FastOutcome fastScanStream(const FastPlan& plan, scanFormatParser& format, stream& s,
                           const ScanSize& size) {
  StreamSource in(format, s);
  return withFunctor(plan, [&]<class F>() { return runPlan<F, StoredType<F>>(plan, in, size); });
}

}  // namespace Tarnwicks::FileIO
