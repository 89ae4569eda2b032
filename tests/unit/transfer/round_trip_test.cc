// The round trip: for every precision name, every bit width from 1 to 64
// (with and without a container), both byte orders, with and without a skip
// and a repeat count, fwrite then fread gives the values back, saturated to
// the type in the file.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "transfer_test_support.h"

namespace {

using namespace transfer_test;

enum class Kind { Logical, Char, Integer, Single, Double, NoConvert };

struct Precision {
  std::string name;
  Kind kind;
  int bits = 0;  // integers: width of the value
  bool isSigned = false;
  bool isBitField = false;
};

std::vector<Precision> allPrecisions() {
  std::vector<Precision> p;
  auto integer = [&](const std::string& name, int bits, bool isSigned, bool field = false) {
    p.push_back({name, Kind::Integer, bits, isSigned, field});
  };
  for (const char* n : {"bool", "logical"}) p.push_back({n, Kind::Logical});
  for (const char* n : {"char", "char*1"}) p.push_back({n, Kind::Char});
  for (const char* n : {"schar", "signed char", "int8", "integer*1"}) integer(n, 8, true);
  for (const char* n : {"uchar", "unsigned char", "uint8"}) integer(n, 8, false);
  for (const char* n : {"short", "int16", "integer*2"}) integer(n, 16, true);
  for (const char* n : {"ushort", "unsigned short", "uint16"}) integer(n, 16, false);
  for (const char* n : {"int", "long", "int32", "integer*4"}) integer(n, 32, true);
  for (const char* n : {"uint", "unsigned int", "ulong", "unsigned long", "uint32"})
    integer(n, 32, false);
  for (const char* n : {"int64", "integer*8"}) integer(n, 64, true);
  integer("uint64", 64, false);
  for (const char* n : {"float", "single", "float32", "real*4"}) p.push_back({n, Kind::Single});
  for (const char* n : {"double", "float64", "real*8"}) p.push_back({n, Kind::Double});
  p.push_back({"noconvert", Kind::NoConvert});
  for (int bits = 1; bits <= 64; ++bits) {
    integer("bit" + std::to_string(bits), bits, true, true);
    integer("ubit" + std::to_string(bits), bits, false, true);
    const int container = std::min(64, bits + bits % 5);
    const std::string in = std::to_string(bits) + "in" + std::to_string(container);
    integer("bit" + in, bits, true, true);
    integer("ubit" + in, bits, false, true);
  }
  return p;
}

// Values around and beyond the range of the type, with halves, NaN and
// infinities.
std::vector<double> valuesFor(const Precision& p, std::mt19937_64& rng) {
  std::vector<double> v = {0, 1, -1, 0.5, -0.5, 1.5, NAN, INFINITY, -INFINITY};
  std::uniform_real_distribution<double> unit(-1, 1);
  switch (p.kind) {
    case Kind::Char:
      // Surrogate units are no characters; the rest of the plane is.
      v = {0, 65, 233, 0x3B1, 0x20AC, 0xD7FF, 0xE000, 0xFFFD, 70000, -3, 66.4, NAN};
      break;
    case Kind::Integer: {
      const double span = std::ldexp(1.0, p.bits + 1);
      for (int i = 0; i < 20; ++i) v.push_back(std::round(unit(rng) * span));
      v.push_back(std::ldexp(1.0, p.bits - 1));
      v.push_back(-std::ldexp(1.0, p.bits - 1));
      v.push_back(std::ldexp(1.0, p.bits - 1) - 1);
      break;
    }
    default:
      for (int i = 0; i < 20; ++i) v.push_back(unit(rng) * std::ldexp(1.0, rng() % 300 - 150));
      break;
  }
  return v;
}

// What the file holds for a value, read back as a double (integers as
// int64 or uint64 bit patterns turned into long doubles for exactness).
long double expected(const Precision& p, double v) {
  switch (p.kind) {
    case Kind::Logical:
      return v != 0 || std::isnan(v) ? 1 : 0;
    case Kind::Char:
      return std::isnan(v) ? 0 : std::clamp(std::round(v), 0.0, 65535.0);
    case Kind::Single:
      return static_cast<float>(v);
    case Kind::Double:
    case Kind::NoConvert:
      return v;
    case Kind::Integer:
      break;
  }
  if (std::isnan(v)) return 0;
  const long double r = std::round(static_cast<long double>(v));
  const long double lo = p.isSigned ? -std::ldexp(1.0L, p.bits - 1) : 0.0L;
  const long double hi =
      p.isSigned ? std::ldexp(1.0L, p.bits - 1) - 1 : std::ldexp(1.0L, p.bits) - 1;
  return std::clamp(r, lo, hi);
}

// The precision that reads the values back in a class that holds them all.
std::string readBack(const Precision& p, int repeat) {
  std::string out;
  switch (p.kind) {
    case Kind::Logical:
      out = "logical";
      break;
    case Kind::Char:
      out = "char";
      break;
    case Kind::Single:
      out = "single";
      break;
    case Kind::Double:
    case Kind::NoConvert:
      out = "double";
      break;
    case Kind::Integer:
      out = p.isSigned ? "int64" : "uint64";
      break;
  }
  return std::to_string(repeat) + "*" + p.name + "=>" + out;
}

std::vector<long double> asLongDoubles(const kxArray* a) {
  std::vector<long double> out(kxGetNumberOfElements(a));
  for (size_t i = 0; i < out.size(); ++i) {
    switch (kxGetClassID(a)) {
      case kxINT64_CLASS:
        out[i] = static_cast<const int64_t*>(kxGetData(a))[i];
        break;
      case kxUINT64_CLASS:
        out[i] = static_cast<const uint64_t*>(kxGetData(a))[i];
        break;
      default: {
        double d = 0;
        AssignToVoidBuffer(kxDOUBLE_CLASS, &d, kxGetClassID(a),
                           static_cast<const char*>(kxGetData(a)) + i * kxGetElementSize(a), 1);
        out[i] = d;
      }
    }
  }
  return out;
}

class RoundTrip : public TransferTest {};

TEST_F(RoundTrip, EveryPrecisionOrderSkipAndRepeat) {
  std::mt19937_64 rng(2024);
  int cases = 0;
  for (const Precision& p : allPrecisions()) {
    for (const char* order : {"l", "b"}) {
      for (int skip : {0, 11}) {
        for (int repeat : {1, 3}) {
          const std::vector<double> values = valuesFor(p, rng);
          const std::string what = p.name + " " + order + " skip " + std::to_string(skip) +
                                   " repeat " + std::to_string(repeat);
          const std::string write = (repeat > 1 ? std::to_string(repeat) + "*" : "") + p.name;
          // "noconvert" moves the bytes of the doubles: its sizes count bytes.
          const double units = p.kind == Kind::NoConvert ? 8 : 1;
          const double n = values.size() * units;

          double fid = open("rt.bin", "w");
          Outcome w =
              call(kSlotFwrite, 1,
                   {num(fid), rowOf(kxDOUBLE_CLASS, values), str(write), num(skip), str(order)});
          ASSERT_EQ(w.error, "") << what;
          ASSERT_EQ(w.number(), n) << what;
          close(fid);

          fid = open("rt.bin", "r");
          // The writer leaves a gap before each group, the reader passes one
          // after each: the first gap is passed by hand.
          if (skip != 0 && p.isBitField) {
            call(kSlotFread, 1,
                 {num(fid), num(1), str("ubit" + std::to_string(skip)), num(0), str(order)});
          } else if (skip != 0) {
            call(kSlotFseek, 1, {num(fid), num(skip), str("bof")});
          }
          Outcome r = call(kSlotFread, 2,
                           {num(fid), num(n), str(readBack(p, repeat)), num(skip), str(order)});
          ASSERT_EQ(r.error, "") << what;
          close(fid);
          ASSERT_EQ(r.number(1), n) << what;
          const std::vector<long double> got = asLongDoubles(r.at());
          ASSERT_EQ(got.size(), values.size()) << what;
          for (size_t i = 0; i < values.size(); ++i) {
            long double want = expected(p, values[i]);
            if (std::isnan(want)) {
              EXPECT_TRUE(std::isnan(got[i])) << what << " value " << values[i];
            } else {
              EXPECT_EQ(got[i], want) << what << " value " << values[i];
            }
          }
          ++cases;
        }
      }
    }
  }
  EXPECT_EQ(cases, (37 + 4 * 64) * 2 * 2 * 2);
}

}  // namespace
