// Helpers of the print tests: arrays of any class, a run of a format into a
// string stream, calls of the built-ins through their table, caught warnings,
// and the C library's printf as the oracle.
#pragma once

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdio>
#include <string>
#include <vector>

#include "fileio/string_streams.h"
#include "print/format_runner.h"
#include "support/builtin_calls.h"
#include "twhost/catalog.h"
#include "twhost/kx_data.h"
#include "twhost/stream_errors.h"
#include "twhost/text.h"

namespace print_test {

using Tarnwicks::FileIO::code;
using test_support::call;
using test_support::CaughtWarnings;
using test_support::num;
using test_support::Outcome;
using test_support::str;

// A 1-by-n (or rows-by-n/rows) array of class `cls` from doubles, converted
// by the host's rules.
inline kxArray* array(kxClassID cls, const std::vector<double>& values, size_t rows = 1) {
  size_t n = values.size();
  size_t cols = rows == 0 ? 0 : n / rows;
  kxArray* a = cls == kxCHAR_CLASS ? kxCreateCharMatrix(rows, cols)
                                   : kxCreateNumericMatrix(rows, cols, cls, kxREAL);
  if (n != 0) AssignToVoidBuffer(cls, kxGetData(a), kxDOUBLE_CLASS, values.data(), n);
  return a;
}
inline kxArray* doubles(const std::vector<double>& values, size_t rows = 1) {
  return array(kxDOUBLE_CLASS, values, rows);
}
template <class T>
kxArray* exact(kxClassID cls, const std::vector<T>& values) {
  kxArray* a = kxCreateNumericMatrix(1, values.size(), cls, kxREAL);
  std::copy(values.begin(), values.end(), static_cast<T*>(kxGetData(a)));
  return a;
}
inline kxArray* empty() {
  return kxCreateDoubleMatrix(0, 0, kxREAL);
}

// A format run over values as sprintf runs it: the text and the fault code.
struct Printed {
  std::string text;
  int code = 0;
};

inline Printed run(const std::string& format, std::vector<kxArray*> args, bool batch = true) {
  Tarnwicks::FileIO::outputStringStream out("UTF-16");
  Printed p;
  {
    Tarnwicks::FileIO::PrintSink sink(out, Tarnwicks::FileIO::PrintSink::Mode::Units, false);
    Tarnwicks::FileIO::PrintFormatRunner runner(fl::i18n::to_ustring(format), sink, args.data(),
                                                args.size());
    if (!batch) runner.disableBatch();
    runner.run();
    p.code = runner.errorCode;
  }
  const char16_t* units = reinterpret_cast<const char16_t*>(out.data());
  p.text = fl::i18n::to_string(std::u16string(units, out.size() / 2));
  for (kxArray* a : args) kxDestroyArray(a);
  return p;
}

// printf itself, the oracle.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
inline std::string cprintf(const char* format, ...) {
  va_list args;
  va_start(args, format);
  va_list again;
  va_copy(again, args);
  int n = vsnprintf(nullptr, 0, format, args);
  va_end(args);
  std::string s(static_cast<size_t>(n < 0 ? 0 : n) + 1, '\0');
  vsnprintf(s.data(), s.size(), format, again);
  va_end(again);
  s.resize(s.size() - 1);
  return s;
}
#pragma GCC diagnostic pop

// The text of a stream error code as the second outputs give it.
inline std::string codeText(int code) {
  return fl::i18n::to_string(kxStreamErrorText(code));
}
inline std::string codeText(Tarnwicks::FileIO::StreamError e) {
  return codeText(Tarnwicks::FileIO::code(e));
}

}  // namespace print_test
