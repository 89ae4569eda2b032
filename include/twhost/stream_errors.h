// The codes of file, print and scan faults. A stream, a file's lastError and
// a print or scan run hold an int: 0 for none, a positive errno from the
// system, or one of these. Each is named after its key in the "KORVAN:FileIO"
// catalogue, which holds its text.
#pragma once

namespace Tarnwicks::FileIO {

enum class StreamError : int {
  NoHelp = -1,
  CannotOpenFile = -2,
  IsOpenRead = -3,
  EndOfFile = -4,
  IsOpenWrite = -5,
  NoSpace = -6,
  FlushError = -7,
  InvalidFormat = -8,
  MatchingFailure = -9,
  SizeTooBig = -10,
  NoMemory = -11,
  NoMemoryForString = -12,
  NotEnoughArgs = -13,
  UnsupportedDirective = -14,
  BadWidthNaN = -15,
  BadWidthNegInf = -16,
  BadWidthInf = -17,
  BadWidthInt = -18,
  BadWidthEmptyArg = -19,
  BadPrecisionNaN = -20,
  BadPrecisionNegInf = -21,
  BadPrecisionInf = -22,
  BadPrecisionInt = -23,
  BadPrecisionEmptyArg = -24,
  BadOffsetNaN = -25,
  BadOffsetBeforeBegin = -26,
  BadOffsetAfterEnd = -27,
  BadOffsetInt = -28,
  EmptyArg = -29,
  UngetcFailed = -30,
  WriteCarryByteFailed = -31,
  RequireBinaryFile = -32,
  FseekFailed = -33,
  ReadFailed = -34,
  FseekFailedNegOne = -35,
  FseekFailedSkip = -36,
  InvalidChar = -37,
  TruncatedChar = -38,
  IllegalChar = -39,
  InvalidTableFormat = -40,
  BufferOverflow = -41,
  UnknownError = -42,
  NonScalarNumbered = -43,
  NumberedMoreThanArgc = -44,
  InternalError = -45,
};

// The int that errorCode and lastError hold.
constexpr int code(StreamError e) {
  return static_cast<int>(e);
}

// The codes run down from the first to the last without a gap.
inline constexpr int kFirstStreamError = code(StreamError::NoHelp);
inline constexpr int kLastStreamError = code(StreamError::InternalError);

// True for a value of errorCode that is one of the codes above (not 0, not
// an errno).
constexpr bool isStreamError(int value) {
  return value <= kFirstStreamError && value >= kLastStreamError;
}

}  // namespace Tarnwicks::FileIO
