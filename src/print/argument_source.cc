#include "argument_source.h"

#include "element_values.h"
#include "twhost/stream_errors.h"

namespace Tarnwicks::FileIO {

namespace {

template <class R, class Convert>
R convertElement(kxClassID cls, const void* data, uint64_t index, Convert convert) {
  return visitElementType(
      cls, [&]<class T>() -> R { return convert(static_cast<const T*>(data)[index]); });
}

double asDouble(kxClassID c, const void* d, uint64_t i) {
  return convertElement<double>(c, d, i, [](auto v) { return elementToDouble(v); });
}
float asSingle(kxClassID c, const void* d, uint64_t i) {
  return convertElement<float>(c, d, i,
                               [](auto v) { return static_cast<float>(elementToDouble(v)); });
}
char16_t asChar16(kxClassID c, const void* d, uint64_t i) {
  return convertElement<char16_t>(c, d, i, [](auto v) { return elementToChar16(v); });
}
int64_t asInt64(kxClassID c, const void* d, uint64_t i) {
  return convertElement<int64_t>(c, d, i, [](auto v) { return elementToInt64(v); });
}
uint64_t asUInt64(kxClassID c, const void* d, uint64_t i) {
  return convertElement<uint64_t>(c, d, i, [](auto v) { return elementToUInt64(v); });
}
bool isCodeAt(kxClassID c, const void* d, uint64_t i) {
  return convertElement<bool>(c, d, i, [](auto v) { return isCharacterCode(v); });
}

}  // namespace

// ---- base -------------------------------------------------------------------

printfArgumentSource::printfArgumentSource(kxArray* const* a, uint64_t count)
    : args(a), argCount(count) {}

printfArgumentSource::~printfArgumentSource() = default;

bool printfArgumentSource::hasMoreData() {
  return remaining() != 0 || moreArguments();
}
void printfArgumentSource::selectArgument(uint64_t) {}
bool printfArgumentSource::hasCurrent() {
  return currentData.has_value();
}
bool printfArgumentSource::moreArguments() {
  return argIndex < argCount;
}

void printfArgumentSource::advance() {
  stepElement();
  if (elementIndex >= elementCount) nextArgument();
}

void printfArgumentSource::stepElement() {
  ++elementIndex;
}
uint64_t printfArgumentSource::remaining() {
  return elementCount - elementIndex;
}
void printfArgumentSource::nextArgument() {}

bool printfArgumentSource::currentIsChar() {
  return argIndex < argCount && kxGetClassID(args[argIndex]) == kxCHAR_CLASS;
}

void printfArgumentSource::loadCurrent() {
  if (hasCurrent()) {
    currentData.reset();
    elementCount = 0;
  }
  elementIndex = 0;
  if (argIndex >= argCount) return;
  const kxArray* a = args[argIndex];
  elementCount = kxGetNumberOfElements(a);
  currentData.emplace(a);
  currentClass_ = currentData->classId();
  currentElements_ = currentData->data();
}

bool printfArgumentSource::requireValue(bool allowEmpty) {
  if (!hasCurrent()) {
    advance();
    throw code(StreamError::NotEnoughArgs);
  }
  if (elementCount != 0) return true;
  advance();
  if (allowEmpty) return false;
  throw code(StreamError::EmptyArg);
}

template <class R>
R printfArgumentSource::readWith(R (*convert)(kxClassID, const void*, uint64_t)) {
  R value = convert(currentClass_, currentElements_, elementIndex);
  advance();
  return value;
}

double printfArgumentSource::readDouble() {
  return readWith(asDouble);
}
float printfArgumentSource::readSingle() {
  return readWith(asSingle);
}
char16_t printfArgumentSource::readChar16() {
  return readWith(asChar16);
}
int64_t printfArgumentSource::readInt64() {
  return readWith(asInt64);
}
uint64_t printfArgumentSource::readUInt64() {
  return readWith(asUInt64);
}

TakenText printfArgumentSource::takeString() {
  if (!hasCurrent()) throw code(StreamError::NotEnoughArgs);
  uint64_t n = remaining();
  if (currentIsChar()) {
    // What is left of a char array goes to one %s, whole.
    TakenText view{static_cast<const char16_t*>(currentElements_) + elementIndex,
                   static_cast<size_t>(n)};
    nextArgument();
    return view;
  }
  textBuffer_.clear();
  if (n == 0) {
    advance();
    return {textBuffer_.data(), 0};
  }
  textBuffer_.reserve(static_cast<size_t>(n));
  for (uint64_t i = 0; i < n; ++i) {
    // Inf and NaN are no character codes either.
    if (!isCodeAt(currentClass_, currentElements_, elementIndex)) break;
    textBuffer_.push_back(asChar16(currentClass_, currentElements_, elementIndex));
    advance();
  }
  // An element that can't be a character ends the text; if it is the first,
  // it is dropped, so that a format reused on it makes progress.
  if (textBuffer_.empty()) advance();
  return {textBuffer_.data(), textBuffer_.size()};
}

// ---- sequential ---------------------------------------------------------------

printfSequentialArgumentSource::printfSequentialArgumentSource(kxArray* const* a, uint64_t count)
    : printfArgumentSource(a, count) {
  loadCurrent();
}

void printfSequentialArgumentSource::nextArgument() {
  ++argIndex;
  loadCurrent();
}

void printfSequentialArgumentSource::consume(uint64_t n) {
  elementIndex += n;
  if (elementIndex >= elementCount) nextArgument();
}

// ---- numbered -------------------------------------------------------------------

printfNumberedArgumentSource::printfNumberedArgumentSource(kxArray* const* a, uint64_t count)
    : printfArgumentSource(a, count) {}

void printfNumberedArgumentSource::selectArgument(uint64_t number) {
  argIndex = number - 1;  // 0, from a literal piece, selects nothing
  loadCurrent();
}

void printfNumberedArgumentSource::advance() {
  if (!hasCurrent()) throw code(StreamError::NumberedMoreThanArgc);
  if (elementCount != 1) throw code(StreamError::NonScalarNumbered);
}

// ---- matrix rows ------------------------------------------------------------------

printfMatrixArgumentSource::printfMatrixArgumentSource(kxArray* matrix)
    : printfArgumentSource(&matrix_, 1), matrix_(matrix) {
  loadCurrent();
  rowStride = kxGetM(matrix);
}

uint64_t printfMatrixArgumentSource::remaining() {
  if (exhausted || rowStride == 0) return 0;
  return (rowStart + elementCount - elementIndex) / rowStride;
}

void printfMatrixArgumentSource::restartRow(uint64_t row) {
  rowStart = row;
  elementIndex = row;
  exhausted = false;
}

}  // namespace Tarnwicks::FileIO
