// The JSON writer.
//
// Every value is an object with "class" and "size" (the full dimension
// vector); elements are in column-major order.
//
//   double, single, int8 ... uint64: "real": [...], and "imag": [...] when
//     complex. Numbers are written with the shortest digits that read back
//     exactly (singles as singles); 64-bit integers exactly; NaN, Inf and
//     -Inf as the strings "NaN", "Inf", "-Inf". Sparse arrays are written
//     as full doubles.
//   logical: "real": [1, 0, ...]
//   char: "rows": one string per row.
//   cell: "data": [V, ...]
//   struct: "fields": [names in order], "data": [{"name": V, ...}, ...]
//
// Objects (kxCreateObjectArray: a class name, the value's own size, and a
// 1-by-1 struct of properties). Two classes have records of their own, and
// whoever makes such values must give them these properties:
//
//   "datetime": "Format" is a char row; "Data" is a complex double array of
//     the value's size, each element a date as a double-double count of
//     milliseconds since 1970-01-01 UTC, high part in the real part and low
//     part in the imaginary part (NaT: high NaN, low 0). Written as
//     {"class": "datetime", "size": [...], "format": "...",
//      "data": [[high, low], ...]}.
//   "categorical": "Categories" is a cell of char rows; "Codes" is a uint32
//     or double array of the value's size, each element the 1-based number
//     of its category, 0 (or NaN) for an undefined element. Written as
//     {"class": "categorical", "size": [...], "categories": [...],
//      "data": ["name" or null, ...]}.
//
// Any other object is {"class": name, "size": [...], "properties": V}.
#include "json_writer.h"

#include <cmath>
#include <cstdio>

#include "number_text.h"
#include "twhost/text.h"
#include "value.h"

namespace tw {

namespace {

void appendUtf8String(std::string& out, const std::string& utf8) {
  appendJsonString(out, fl::i18n::to_ustring(utf8));
}

void appendSize(std::string& out, const kxArray* a) {
  out += "\"size\": [";
  size_t nd = kxGetNumberOfDimensions(a);
  const size_t* d = kxGetDimensions(a);
  for (size_t i = 0; i < nd; ++i) {
    if (i) out += ", ";
    out += std::to_string(d[i]);
  }
  out += ']';
}

void appendDouble(std::string& out, double v) {
  if (std::isnan(v)) {
    out += "\"NaN\"";
  } else if (std::isinf(v)) {
    out += v > 0 ? "\"Inf\"" : "\"-Inf\"";
  } else {
    out += shortestText(v);
  }
}

void appendElement(std::string& out, kxClassID cls, const void* data, size_t i) {
  switch (cls) {
    case kxDOUBLE_CLASS:
      return appendDouble(out, static_cast<const double*>(data)[i]);
    case kxSINGLE_CLASS: {
      float f = static_cast<const float*>(data)[i];
      if (std::isnan(f) || std::isinf(f)) return appendDouble(out, f);
      out += shortestText(f);
      return;
    }
    case kxLOGICAL_CLASS:
      out += static_cast<const bool*>(data)[i] ? '1' : '0';
      return;
    case kxCHAR_CLASS:
      out += std::to_string(static_cast<const char16_t*>(data)[i]);
      return;
    case kxINT8_CLASS:
      out += std::to_string(static_cast<const int8_t*>(data)[i]);
      return;
    case kxUINT8_CLASS:
      out += std::to_string(static_cast<const uint8_t*>(data)[i]);
      return;
    case kxINT16_CLASS:
      out += std::to_string(static_cast<const int16_t*>(data)[i]);
      return;
    case kxUINT16_CLASS:
      out += std::to_string(static_cast<const uint16_t*>(data)[i]);
      return;
    case kxINT32_CLASS:
      out += std::to_string(static_cast<const int32_t*>(data)[i]);
      return;
    case kxUINT32_CLASS:
      out += std::to_string(static_cast<const uint32_t*>(data)[i]);
      return;
    case kxINT64_CLASS:
      out += std::to_string(static_cast<const int64_t*>(data)[i]);
      return;
    case kxUINT64_CLASS:
      out += std::to_string(static_cast<const uint64_t*>(data)[i]);
      return;
    default:
      out += "null";
      return;
  }
}

void appendList(std::string& out, kxClassID cls, const void* data, size_t n) {
  out += '[';
  for (size_t i = 0; i < n; ++i) {
    if (i) out += ", ";
    appendElement(out, cls, data, i);
  }
  out += ']';
}

void appendValue(std::string& out, const kxArray* a);

void appendSlot(std::string& out, const kxArray* a) {
  if (a) {
    appendValue(out, a);
  } else {
    out += "{\"class\": \"double\", \"size\": [0, 0], \"real\": []}";
  }
}

void appendChar(std::string& out, const kxArray* a) {
  size_t n = numelOf(a), m = kxGetM(a);
  size_t cols = m ? n / m : 0;
  const char16_t* d = kxGetChars(a);
  out += ", \"rows\": [";
  for (size_t i = 0; i < m; ++i) {
    if (i) out += ", ";
    ustring row(cols, u' ');
    for (size_t j = 0; j < cols; ++j) row[j] = d[j * m + i];
    appendJsonString(out, row);
  }
  out += ']';
}

void appendStruct(std::string& out, const kxArray* a) {
  int nf = kxGetNumberOfFields(a);
  out += ", \"fields\": [";
  for (int f = 0; f < nf; ++f) {
    if (f) out += ", ";
    appendUtf8String(out, kxGetFieldNameByNumber(a, f));
  }
  out += "], \"data\": [";
  for (size_t i = 0; i < numelOf(a); ++i) {
    if (i) out += ", ";
    out += '{';
    for (int f = 0; f < nf; ++f) {
      if (f) out += ", ";
      appendUtf8String(out, kxGetFieldNameByNumber(a, f));
      out += ": ";
      appendSlot(out, kxGetFieldByNumber(a, i, f));
    }
    out += '}';
  }
  out += ']';
}

const kxArray* property(const kxArray* props, const char* name) {
  return props && kxIsStruct(props) ? kxGetField(props, 0, name) : nullptr;
}

void appendDatetime(std::string& out, const kxArray* a, const kxArray* props) {
  const kxArray* format = property(props, "Format");
  const kxArray* data = property(props, "Data");
  out += ", \"format\": ";
  appendJsonString(
      out, format && kxIsChar(format) ? ustring(kxGetChars(format), numelOf(format)) : ustring());
  out += ", \"data\": [";
  size_t n = numelOf(a);
  for (size_t i = 0; i < n; ++i) {
    if (i) out += ", ";
    bool have = data && i < numelOf(data);
    out += '[';
    appendDouble(out, have ? elementAsDouble(data, i) : NAN);
    out += ", ";
    appendDouble(out, have ? imagAsDouble(data, i) : 0.0);
    out += ']';
  }
  out += ']';
}

void appendCategorical(std::string& out, const kxArray* a, const kxArray* props) {
  const kxArray* cats = property(props, "Categories");
  const kxArray* codes = property(props, "Codes");
  std::vector<ustring> names;
  if (cats && kxIsCell(cats)) {
    for (size_t i = 0; i < numelOf(cats); ++i) {
      const kxArray* c = kxGetCell(cats, i);
      names.push_back(c && kxIsChar(c) ? ustring(kxGetChars(c), numelOf(c)) : ustring());
    }
  }
  out += ", \"categories\": [";
  for (size_t i = 0; i < names.size(); ++i) {
    if (i) out += ", ";
    appendJsonString(out, names[i]);
  }
  out += "], \"data\": [";
  size_t n = numelOf(a);
  for (size_t i = 0; i < n; ++i) {
    if (i) out += ", ";
    double code = codes && i < numelOf(codes) ? elementAsDouble(codes, i) : 0;
    if (code >= 1 && code <= static_cast<double>(names.size()) && code == std::floor(code)) {
      appendJsonString(out, names[static_cast<size_t>(code) - 1]);
    } else {
      out += "null";
    }
  }
  out += ']';
}

void appendValue(std::string& out, const kxArray* a) {
  out += "{\"class\": ";
  appendUtf8String(out, classNameOf(a));
  out += ", ";
  appendSize(out, a);
  kxClassID cls = kxGetClassID(a);
  if (kxIsObject(a)) {
    const kxArray* props = kxGetObjectProperties(a);
    std::string name = kxGetObjectClassName(a);
    if (name == "datetime") {
      appendDatetime(out, a, props);
    } else if (name == "categorical") {
      appendCategorical(out, a, props);
    } else {
      out += ", \"properties\": ";
      appendSlot(out, props);
    }
  } else if (cls == kxCHAR_CLASS) {
    appendChar(out, a);
  } else if (cls == kxCELL_CLASS) {
    out += ", \"data\": [";
    for (size_t i = 0; i < numelOf(a); ++i) {
      if (i) out += ", ";
      appendSlot(out, kxGetCell(a, i));
    }
    out += ']';
  } else if (cls == kxSTRUCT_CLASS) {
    appendStruct(out, a);
  } else if (kxClassElementSize(cls) != 0) {
    out += ", \"real\": ";
    appendList(out, cls, kxGetData(a), numelOf(a));
    if (kxIsComplex(a)) {
      out += ", \"imag\": ";
      appendList(out, cls, kxGetImagData(a), numelOf(a));
    }
  }
  out += '}';
}

}  // namespace

void appendJsonString(std::string& out, const ustring& text) {
  out += '"';
  for (char16_t u : text) {
    if (u == u'"') {
      out += "\\\"";
    } else if (u == u'\\') {
      out += "\\\\";
    } else if (u >= 0x20 && u < 0x7F) {
      out += static_cast<char>(u);
    } else {
      char buf[8];
      std::snprintf(buf, sizeof buf, "\\u%04X", static_cast<unsigned>(u));
      out += buf;
    }
  }
  out += '"';
}

std::string jsonValue(const kxArray* a) {
  std::string out;
  appendValue(out, a);
  return out;
}

std::string jsonDisplayRecord(const std::string& name, const kxArray* a) {
  std::string out = "{\"name\": ";
  appendUtf8String(out, name);
  out += ", \"value\": ";
  appendValue(out, a);
  out += '}';
  return out;
}

std::string jsonMessageRecord(const char* kind, const std::string& identifier,
                              const std::string& message, const SourceLocation& where) {
  auto number = [](int n) { return n > 0 ? std::to_string(n) : std::string("null"); };
  std::string out = "{\"";
  out += kind;
  out += "\": {\"identifier\": ";
  appendUtf8String(out, identifier);
  out += ", \"message\": ";
  appendUtf8String(out, message);
  out += ", \"file\": ";
  if (where.file.empty()) {
    out += "null";
  } else {
    appendUtf8String(out, where.file);
  }
  out += ", \"line\": " + number(where.line);
  out += ", \"column\": " + number(where.column);
  out += "}}";
  return out;
}

}  // namespace tw
