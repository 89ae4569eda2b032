// For the tests and the fuzz target: textscan called through its slot on a
// file and on a char array, with each outcome (result, error, position)
// rendered as text, so that two ways of reading the same input can be
// compared whole. Not used by the library itself.
#pragma once

#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "fileio/builtin_table.h"
#include "twhost/errors.h"
#include "twhost/kx_array.h"
#include "twhost/kx_frame.h"

namespace textscan::check {

// Class, size and every byte of the data; cells element by element.
inline std::string transcript(const kxArray* a) {
  if (!a) return "null";
  std::string out = kxGetClassName(a);
  out += "[" + std::to_string(kxGetM(a)) + "x" + std::to_string(kxGetN(a)) + "]";
  size_t n = kxGetNumberOfElements(a);
  if (kxIsCell(a)) {
    out += "{";
    for (size_t i = 0; i < n; ++i) out += transcript(kxGetCell(a, i)) + ";";
    return out + "}";
  }
  size_t bytes = n * kxGetElementSize(a);
  auto append = [&](const void* data) {
    if (!data) return;
    out.append(static_cast<const char*>(data), bytes);
  };
  append(kxGetData(a));
  if (kxIsComplex(a)) {
    out += "|i|";
    append(kxGetImagData(a));
  }
  return out;
}

struct ReadOutcome {
  std::string result;  // the transcript of the result cell, or the error
  double position = -1;

  bool operator==(const ReadOutcome&) const = default;
};

// Calls a slot with copies of `args`; the outputs are handed back owned.
inline std::vector<kxOwned> callSlot(Tarnwicks::FileIO::BuiltinSlot slot, int nlhs,
                                     const std::vector<const kxArray*>& args, std::string& error) {
  std::vector<kxArray*> in;
  for (const kxArray* a : args) in.push_back(kxDuplicateArray(a));
  std::vector<kxArray*> out(static_cast<size_t>(nlhs) + 1, nullptr);
  try {
    kxCallBuiltin(QueryKVFcnTable_fileio()->entries[slot], nlhs, out.data(),
                  static_cast<int>(in.size()), in.data());
  } catch (...) {
    kxErrorReport r = kxDescribeException(std::current_exception());
    error = r.identifier + ": " + r.message;
  }
  for (kxArray* a : in) kxDestroyArray(a);
  std::vector<kxOwned> owned;
  for (kxArray* a : out) owned.emplace_back(a);
  return owned;
}

// textscan(source, args...) with two outputs.
inline ReadOutcome readSource(const kxArray* source, const std::vector<const kxArray*>& args) {
  std::vector<const kxArray*> all{source};
  all.insert(all.end(), args.begin(), args.end());
  std::string error;
  std::vector<kxOwned> out = callSlot(Tarnwicks::FileIO::kSlotTextscan, 2, all, error);
  if (!error.empty()) return {error, -1};
  return {transcript(out[0].get()), kxGetScalar(out[1].get())};
}

// textscan on the file at `path`, opened for reading in `encoding`.
inline ReadOutcome readFile(const std::string& path, const char* encoding,
                            const std::vector<const kxArray*>& args) {
  kxOwned name(kxCreateString(path.c_str()));
  kxOwned mode(kxCreateString("r"));
  kxOwned order(kxCreateString("n"));
  kxOwned enc(kxCreateString(encoding));
  std::string error;
  std::vector<kxOwned> fid = callSlot(Tarnwicks::FileIO::kSlotFopen, 1,
                                      {name.get(), mode.get(), order.get(), enc.get()}, error);
  if (!error.empty() || kxGetScalar(fid[0].get()) < 0) return {"cannot open " + path, -1};
  ReadOutcome outcome = readSource(fid[0].get(), args);
  callSlot(Tarnwicks::FileIO::kSlotFclose, 1, {fid[0].get()}, error);
  return outcome;
}

}  // namespace textscan::check

namespace textscan::check {

// One textscan call made from a few bytes of choices: a format of up to four
// items and a set of options, each picked from a table of the cases that
// steer a read differently. The rest of the bytes are the text.
struct MadeCall {
  std::string format;
  std::vector<kxOwned> args;  // format, then name-value pairs

  std::vector<const kxArray*> view() const {
    std::vector<const kxArray*> v;
    for (const kxOwned& a : args) v.push_back(a.get());
    return v;
  }
};

inline constexpr size_t kChoiceBytes = 8;

inline MadeCall makeCall(const uint8_t* choice) {
  static const char* const kItems[] = {
      "%f",  "%d",  "%s", "%q",  "%u8", "%d64", "%f32",  "%n",  "%[^,]",   "%[ab]", "x",
      "%*f", "%*s", "%t", "%3s", "%c",  "%2c",  "%5.2f", "%*d", "%[^a\n]", "%s%f",  "%.1f"};
  constexpr size_t kItemCount = sizeof kItems / sizeof kItems[0];
  MadeCall call;
  size_t items = 1 + choice[0] % 4;
  for (size_t k = 0; k < items; ++k) {
    if (k) call.format += " ";
    call.format += kItems[choice[1 + k] % kItemCount];
  }
  call.args.emplace_back(kxCreateString(call.format.c_str()));
  auto option = [&call](const char* name, kxArray* value) {
    call.args.emplace_back(kxCreateString(name));
    call.args.emplace_back(value);
  };
  uint8_t delimiter = choice[5] % 8;
  if (delimiter == 1) option("Delimiter", kxCreateString(","));
  if (delimiter == 2) option("Delimiter", kxCreateString(",;"));
  if (delimiter == 3) {
    kxArray* list = kxCreateCellMatrix(1, 2);
    kxSetCell(list, 0, kxCreateString(","));
    kxSetCell(list, 1, kxCreateString("ab"));
    option("Delimiter", list);
  }
  if (delimiter == 4) option("Delimiter", kxCreateString("\\t"));
  if (delimiter == 5) option("Delimiter", kxCreateString("\xc3\xa9"));  // beyond ASCII: decoded
  uint8_t flags = choice[6];
  if (flags & 1) option("MultipleDelimsAsOne", kxCreateLogicalScalar(true));
  if (flags & 2) option("ReturnOnError", kxCreateLogicalScalar(false));
  if (flags & 4) option("CollectOutput", kxCreateLogicalScalar(true));
  if ((flags >> 3 & 3) == 1) option("CommentStyle", kxCreateString("#"));
  if ((flags >> 3 & 3) == 2) {
    kxArray* pair = kxCreateCellMatrix(1, 2);
    kxSetCell(pair, 0, kxCreateString("/*"));
    kxSetCell(pair, 1, kxCreateString("*/"));
    option("CommentStyle", pair);
  }
  if (flags & 32) option("HeaderLines", kxCreateDoubleScalar(1));
  if (flags & 64) option("TreatAsEmpty", kxCreateString("NA"));
  if (flags & 128) option("Whitespace", kxCreateString(""));
  uint8_t more = choice[7];
  if (more % 4 == 1) option("NumCharactersToSkip", kxCreateDoubleScalar(more % 7));
  if ((more >> 2) % 4 == 1) option("EndOfLine", kxCreateString("\\r\\n"));
  if ((more >> 2) % 4 == 2) option("EndOfLine", kxCreateString(""));
  if ((more >> 4) % 4 == 1) option("EmptyValue", kxCreateDoubleScalar(-7));
  if ((more >> 6) == 1) option("ExpChars", kxCreateString("e"));
  return call;
}

}  // namespace textscan::check
