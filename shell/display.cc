// Value display.
#include "display.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

#include "date_text.h"
#include "twhost/text.h"
#include "value.h"

namespace tw {

namespace {

constexpr int kStep = 4;
constexpr int kColumnGap = 3;

std::string pad(int n) {
  return std::string(static_cast<size_t>(n), ' ');
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

// Columns [first, last) of a page, right-aligned to one width.
void renderColumns(std::string& out, const std::vector<std::string>& texts, size_t width, size_t m,
                   size_t first, size_t last, int indent) {
  for (size_t i = 0; i < m; ++i) {
    std::string line = pad(indent);
    for (size_t j = first; j < last; ++j) {
      const std::string& t = texts[j * m + i];
      line += pad(static_cast<int>(width - t.size()) + (j > first ? kColumnGap : 0)) + t;
    }
    out += line + "\n";
  }
}

// The elements in aligned columns of one width. Columns that would run past
// the width of the line go in further blocks, each headed by the columns it
// holds.
void renderNumbers(std::string& out, const kxArray* a, int indent, const DisplayOptions& options) {
  NumberStyle style(a, options.format);
  std::string factor = style.factorText();
  if (!factor.empty()) out += pad(indent) + factor + "\n";
  forEachPage(a, [&](const std::string& label, size_t offset, size_t m, size_t n) {
    if (!label.empty()) out += pad(indent) + label + "\n";
    std::vector<std::string> texts(m * n);
    size_t width = 0;
    for (size_t k = 0; k < m * n; ++k) {
      texts[k] = style.text(a, offset + k);
      width = std::max(width, texts[k].size());
    }
    size_t room = static_cast<size_t>(std::max(options.width - indent, 1));
    size_t perBlock = std::max<size_t>(1, (room + kColumnGap) / (width + kColumnGap));
    for (size_t first = 0; first < n; first += perBlock) {
      size_t last = std::min(n, first + perBlock);
      if (perBlock < n) {
        out += pad(indent) +
               (last - first == 1
                    ? "Column " + std::to_string(first + 1)
                    : "Columns " + std::to_string(first + 1) + " to " + std::to_string(last)) +
               "\n";
      }
      renderColumns(out, texts, width, m, first, last, indent);
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

void render(std::string& out, const std::string& label, const kxArray* a, int indent,
            const DisplayOptions& options);

void renderObject(std::string& out, const kxArray* a, int indent, const DisplayOptions& options) {
  const kxArray* props = kxGetObjectProperties(a);
  std::string cls = kxGetObjectClassName(a);
  size_t n = numelOf(a);
  auto prop = [&](const char* name) -> const kxArray* {
    return props && kxIsStruct(props) ? kxGetField(props, 0, name) : nullptr;
  };
  if (cls == "datetime") {
    for (const std::string& text : datetimeTexts(a)) out += pad(indent) + text + "\n";
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
    render(out, "properties", props, indent, options);
  }
}

void renderStructFields(std::string& out, const kxArray* a, size_t index, int indent,
                        const DisplayOptions& options) {
  for (int f = 0; f < kxGetNumberOfFields(a); ++f) {
    const kxArray* v = kxGetFieldByNumber(a, index, f);
    std::string name = kxGetFieldNameByNumber(a, f);
    if (v) {
      render(out, name, v, indent, options);
    } else {
      out += pad(indent) + name + " = []\n";
    }
  }
}

// The value after "label = ": inline when it fits on the line, else a
// header and an indented body.
void render(std::string& out, const std::string& label, const kxArray* a, int indent,
            const DisplayOptions& options) {
  std::string lead = pad(indent) + label + " = ";
  size_t n = numelOf(a);
  int inner = indent + kStep;
  if (kxIsObject(a)) {
    out += lead + header(a) + "\n";
    renderObject(out, a, inner, options);
    return;
  }
  if (kxIsStruct(a)) {
    std::string fields;
    for (int f = 0; f < kxGetNumberOfFields(a); ++f) {
      fields += (f ? ", " : "") + std::string(kxGetFieldNameByNumber(a, f));
    }
    if (n == 1) {
      out += lead + header(a) + "\n";
      renderStructFields(out, a, 0, inner, options);
      return;
    }
    out += lead + header(a) + " (fields: " + (fields.empty() ? "none" : fields) + ")\n";
    std::vector<size_t> dims = dimsOf(a);
    for (size_t i = 0; i < n; ++i) {
      out += pad(inner) + "(" + subscriptText(dims, i) + ") =\n";
      renderStructFields(out, a, i, inner + kStep, options);
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
        render(out, l, e, inner, options);
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
    std::string text = NumberStyle(a, options.format).text(a, 0);
    if (!kxIsDouble(a)) text += " (" + className(a) + ")";
    out += lead + text + "\n";
    return;
  }
  out += lead + header(a) + "\n";
  renderNumbers(out, a, inner, options);
}

}  // namespace

std::string displayText(const std::string& name, const kxArray* a, const DisplayOptions& options) {
  std::string out;
  render(out, name, a, 0, options);
  return out;
}

std::string dispText(const kxArray* a, const DisplayOptions& options) {
  size_t n = numelOf(a);
  if (isCharRow(a)) return fl::i18n::to_string(ustring(kxGetChars(a), n)) + "\n";
  if (n == 0 && !kxIsStruct(a) && !kxIsObject(a)) return "";
  if (isNumericOrLogicalOrChar(a) && !kxIsChar(a)) {
    std::string out;
    if (n == 1) return NumberStyle(a, options.format).text(a, 0) + "\n";
    renderNumbers(out, a, kStep, options);
    return out;
  }
  if (kxIsChar(a)) {
    std::string out;
    renderChars(out, a, 0);
    return out;
  }
  // Containers: the nested form, without the name line.
  std::string out;
  render(out, "", a, 0, options);
  size_t eol = out.find('\n');
  return eol == std::string::npos ? out : out.substr(eol + 1);
}

int terminalWidth() {
  constexpr int kDefaultWidth = 80;
  winsize size{};
  if (isatty(STDOUT_FILENO) && ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
    return size.ws_col;
  }
  if (const char* columns = std::getenv("COLUMNS")) {
    int n = std::atoi(columns);
    if (n > 0) return n;
  }
  return kDefaultWidth;
}

}  // namespace tw
