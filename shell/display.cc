// Value display.
#include "display.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

#include "number_text.h"
#include "twhost/text.h"
#include "value.h"

namespace tw {

namespace {

constexpr int kStep = 4;

std::string pad(int n) {
  return std::string(static_cast<size_t>(n), ' ');
}

std::string realText(double v) {
  if (std::isnan(v)) return "NaN";
  if (std::isinf(v)) return v > 0 ? "Inf" : "-Inf";
  if (v == std::floor(v) && std::fabs(v) < 1e15) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%.0f", v == 0 ? 0.0 : v);
    return buf;
  }
  return shortestText(v);
}

std::string singleText(float v) {
  if (std::isnan(v) || std::isinf(v) || (v == std::floor(v) && std::fabs(v) < 1e7)) {
    return realText(v);
  }
  return shortestText(v);
}

std::string elementText(const kxArray* a, size_t i) {
  kxClassID cls = kxGetClassID(a);
  std::string re;
  switch (cls) {
    case kxDOUBLE_CLASS:
      re = realText(kxGetPr(a)[i]);
      break;
    case kxSINGLE_CLASS:
      re = singleText(static_cast<const float*>(kxGetData(a))[i]);
      break;
    case kxINT64_CLASS:
      re = std::to_string(static_cast<const int64_t*>(kxGetData(a))[i]);
      break;
    case kxUINT64_CLASS:
      re = std::to_string(static_cast<const uint64_t*>(kxGetData(a))[i]);
      break;
    default:
      re = realText(elementAsDouble(a, i));
      break;
  }
  if (!kxIsComplex(a)) return re;
  double im = imagAsDouble(a, i);
  std::string imText = cls == kxSINGLE_CLASS ? singleText(static_cast<float>(std::fabs(im)))
                                             : realText(std::fabs(im));
  if (std::isnan(im)) imText = "NaN";
  return re + (std::signbit(im) ? " - " : " + ") + imText + "i";
}

std::string quoted(const ustring& text) {
  return "'" + fl::i18n::to_string(text) + "'";
}

std::string className(const kxArray* a) {
  std::string c = classNameOf(a);
  return kxIsSparse(a) ? "sparse " + c : c;
}

std::string header(const kxArray* a) {
  return sizeText(dimsOf(a)) + " " + className(a);
}

// Subscripts of element i as "1,2".
std::string subscriptText(const std::vector<size_t>& dims, size_t i) {
  std::string s;
  for (size_t k = 0; k < dims.size(); ++k) {
    size_t d = dims[k] ? dims[k] : 1;
    if (k) s += ',';
    s += std::to_string(i % d + 1);
    i /= d;
  }
  return s;
}

// Pages of an array with more than two dimensions, each with its label.
template <class F>
void forEachPage(const kxArray* a, F&& page) {
  std::vector<size_t> dims = dimsOf(a);
  size_t m = dims[0], n = dims[1], pages = 1;
  for (size_t k = 2; k < dims.size(); ++k) pages *= dims[k];
  for (size_t p = 0; p < pages; ++p) {
    std::string label;
    if (dims.size() > 2) {
      label = "(:,:";
      size_t q = p;
      for (size_t k = 2; k < dims.size(); ++k) {
        label += "," + std::to_string(q % dims[k] + 1);
        q /= dims[k];
      }
      label += ")";
    }
    page(label, p * m * n, m, n);
  }
}

void renderNumbers(std::string& out, const kxArray* a, int indent) {
  forEachPage(a, [&](const std::string& label, size_t offset, size_t m, size_t n) {
    if (!label.empty()) out += pad(indent) + label + "\n";
    std::vector<std::string> texts(m * n);
    std::vector<size_t> width(n, 0);
    for (size_t j = 0; j < n; ++j) {
      for (size_t i = 0; i < m; ++i) {
        texts[j * m + i] = elementText(a, offset + j * m + i);
        width[j] = std::max(width[j], texts[j * m + i].size());
      }
    }
    for (size_t i = 0; i < m; ++i) {
      std::string line = pad(indent);
      for (size_t j = 0; j < n; ++j) {
        const std::string& t = texts[j * m + i];
        line += pad(static_cast<int>(width[j] - t.size()) + (j ? 3 : 0)) + t;
      }
      out += line + "\n";
    }
  });
}

void renderChars(std::string& out, const kxArray* a, int indent) {
  const char16_t* d = kxGetChars(a);
  forEachPage(a, [&](const std::string& label, size_t offset, size_t m, size_t n) {
    if (!label.empty()) out += pad(indent) + label + "\n";
    for (size_t i = 0; i < m; ++i) {
      ustring row(n, u' ');
      for (size_t j = 0; j < n; ++j) row[j] = d[offset + j * m + i];
      out += pad(indent) + quoted(row) + "\n";
    }
  });
}

std::string emptyText(const kxArray* a) {
  const char* brackets = kxIsChar(a) ? "''" : kxIsCell(a) ? "{}" : "[]";
  return std::string(brackets) + " (" + header(a) + ")";
}

// Civil date from days since 1970-01-01 (proleptic Gregorian).
void civilFromDays(long long z, long long& y, unsigned& m, unsigned& d) {
  z += 719468;
  long long era = (z >= 0 ? z : z - 146096) / 146097;
  unsigned doe = static_cast<unsigned>(z - era * 146097);
  unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  y = static_cast<long long>(yoe) + era * 400;
  unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  unsigned mp = (5 * doy + 2) / 153;
  d = doy - (153 * mp + 2) / 5 + 1;
  m = mp < 10 ? mp + 3 : mp - 9;
  if (m <= 2) ++y;
}

std::string dateText(double high, double low) {
  if (std::isnan(high)) return "NaT";
  if (std::isinf(high)) return high > 0 ? "Inf" : "-Inf";
  double dayMs = 86400000.0;
  double days = std::floor(high / dayMs);
  double rest = (high - days * dayMs) + low;
  if (rest < 0) {
    rest += dayMs;
    days -= 1;
  }
  long long y;
  unsigned mo, d;
  civilFromDays(static_cast<long long>(days), y, mo, d);
  long long ms = static_cast<long long>(std::llround(rest));
  char buf[64];
  std::snprintf(buf, sizeof buf, "%04lld-%02u-%02u %02lld:%02lld:%02lld.%03lld", y, mo, d,
                ms / 3600000, ms / 60000 % 60, ms / 1000 % 60, ms % 1000);
  return buf;
}

void render(std::string& out, const std::string& label, const kxArray* a, int indent);

void renderObject(std::string& out, const kxArray* a, int indent) {
  const kxArray* props = kxGetObjectProperties(a);
  std::string cls = kxGetObjectClassName(a);
  size_t n = numelOf(a);
  auto prop = [&](const char* name) -> const kxArray* {
    return props && kxIsStruct(props) ? kxGetField(props, 0, name) : nullptr;
  };
  if (cls == "datetime") {
    const kxArray* data = prop("Data");
    for (size_t i = 0; i < n; ++i) {
      bool have = data && i < numelOf(data);
      out += pad(indent) +
             dateText(have ? elementAsDouble(data, i) : NAN, have ? imagAsDouble(data, i) : 0) +
             "\n";
    }
  } else if (cls == "categorical") {
    const kxArray* cats = prop("Categories");
    const kxArray* codes = prop("Codes");
    for (size_t i = 0; i < n; ++i) {
      double code = codes && i < numelOf(codes) ? elementAsDouble(codes, i) : 0;
      std::string text = "<undefined>";
      if (cats && kxIsCell(cats) && code >= 1 && code <= static_cast<double>(numelOf(cats))) {
        const kxArray* c = kxGetCell(cats, static_cast<size_t>(code) - 1);
        if (c && kxIsChar(c)) text = fl::i18n::to_string(ustring(kxGetChars(c), numelOf(c)));
      }
      out += pad(indent) + text + "\n";
    }
  } else if (props) {
    render(out, "properties", props, indent);
  }
}

void renderStructFields(std::string& out, const kxArray* a, size_t index, int indent) {
  for (int f = 0; f < kxGetNumberOfFields(a); ++f) {
    const kxArray* v = kxGetFieldByNumber(a, index, f);
    std::string name = kxGetFieldNameByNumber(a, f);
    if (v) {
      render(out, name, v, indent);
    } else {
      out += pad(indent) + name + " = []\n";
    }
  }
}

// The value after "label = ": inline when it fits on the line, else a
// header and an indented body.
void render(std::string& out, const std::string& label, const kxArray* a, int indent) {
  std::string lead = pad(indent) + label + " = ";
  size_t n = numelOf(a);
  int inner = indent + kStep;
  if (kxIsObject(a)) {
    out += lead + header(a) + "\n";
    renderObject(out, a, inner);
    return;
  }
  if (kxIsStruct(a)) {
    std::string fields;
    for (int f = 0; f < kxGetNumberOfFields(a); ++f) {
      fields += (f ? ", " : "") + std::string(kxGetFieldNameByNumber(a, f));
    }
    if (n == 1) {
      out += lead + header(a) + "\n";
      renderStructFields(out, a, 0, inner);
      return;
    }
    out += lead + header(a) + " (fields: " + (fields.empty() ? "none" : fields) + ")\n";
    std::vector<size_t> dims = dimsOf(a);
    for (size_t i = 0; i < n; ++i) {
      out += pad(inner) + "(" + subscriptText(dims, i) + ") =\n";
      renderStructFields(out, a, i, inner + kStep);
    }
    return;
  }
  if (n == 0) {
    out += lead + emptyText(a) + "\n";
    return;
  }
  if (kxIsCell(a)) {
    out += lead + header(a) + "\n";
    std::vector<size_t> dims = dimsOf(a);
    for (size_t i = 0; i < n; ++i) {
      const kxArray* e = kxGetCell(a, i);
      std::string l = "{" + subscriptText(dims, i) + "}";
      if (e) {
        render(out, l, e, inner);
      } else {
        out += pad(inner) + l + " = []\n";
      }
    }
    return;
  }
  if (kxIsChar(a)) {
    if (isCharRow(a)) {
      out += lead + quoted(ustring(kxGetChars(a), n)) + "\n";
    } else {
      out += lead + header(a) + "\n";
      renderChars(out, a, inner);
    }
    return;
  }
  if (kxClassElementSize(kxGetClassID(a)) == 0) {
    out += lead + header(a) + "\n";
    return;
  }
  if (n == 1 && !kxIsSparse(a)) {
    std::string text = elementText(a, 0);
    if (!kxIsDouble(a)) text += " (" + className(a) + ")";
    out += lead + text + "\n";
    return;
  }
  out += lead + header(a) + "\n";
  renderNumbers(out, a, inner);
}

}  // namespace

std::string displayText(const std::string& name, const kxArray* a) {
  std::string out;
  render(out, name, a, 0);
  return out;
}

std::string dispText(const kxArray* a) {
  size_t n = numelOf(a);
  if (isCharRow(a)) return fl::i18n::to_string(ustring(kxGetChars(a), n)) + "\n";
  if (n == 0 && !kxIsStruct(a) && !kxIsObject(a)) return "";
  if (isNumericOrLogicalOrChar(a) && !kxIsChar(a)) {
    std::string out;
    if (n == 1) return elementText(a, 0) + "\n";
    renderNumbers(out, a, kStep);
    return out;
  }
  if (kxIsChar(a)) {
    std::string out;
    renderChars(out, a, 0);
    return out;
  }
  // Containers: the nested form, without the name line.
  std::string out;
  render(out, "", a, 0);
  size_t eol = out.find('\n');
  return eol == std::string::npos ? out : out.substr(eol + 1);
}

}  // namespace tw
