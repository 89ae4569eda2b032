// The Python module twfileio: one function per built-in of the library's
// table, with numpy arrays in and out.
//
// Calls hold the GIL throughout: the library keeps one table of open files
// and takes no locks, so one call at a time is its contract.
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <algorithm>
#include <climits>
#include <string>
#include <string_view>

#include "from_array.h"
#include "python_errors.h"
#include "to_array.h"
#include "twfileio/twfileio.h"
#include "twhost/errors.h"

namespace py = pybind11;
using namespace pybind11::literals;

namespace twpython {

namespace {

const char* const kModuleDoc = R"(The file built-ins of libtwfileio, called from Python.

Every built-in is a function of the same name, with the same arguments and
results: twfileio.fopen, twfileio.fread, ..., twfileio.textscan. Ask for
several outputs with nargout=N and get a tuple; nargout=0 gives None.

    fid = twfileio.fopen("data.bin", "w")
    twfileio.fwrite(fid, numpy.arange(10.0), "double")
    twfileio.fclose(fid)

Values in:
    None -> [] (0-by-0 double); bool -> logical; int, float -> double (an int
    a double can't hold exactly is refused); complex -> complex double;
    str -> char row; bytes -> uint8 row; list, tuple -> 1-by-n cell;
    dict -> 1-by-1 struct; numpy arrays keep their class and shape (1-d is a
    row, dtype "U1" is char, dtype object is a cell). A numpy array given
    directly as an argument is lent to the call without a copy when it is
    real, native, aligned and column-major (or 1-d).

Values out, shapes kept and data column-major:
    real numeric and logical arrays -> numpy arrays that take over the
    library's data block (no copy); 1-by-1 -> float, bool, or a numpy scalar
    of the class; complex -> numpy complex (copied); char row -> str; char
    matrix -> numpy "U1"; cell -> list (numpy object array unless a vector);
    struct -> dict (list of dicts for a vector); datetime -> numpy
    datetime64[ns] array; categorical -> a (codes, categories) pair, never a
    pandas object: codes 0-based with -1 for undefined elements, so that
    pandas.Categorical.from_codes(codes, categories) makes one.

Errors raise twfileio.Error, with .identifier ("KORVAN:FileIO:InvalidFid")
and .message. Warnings go through the warnings module as twfileio.Warning,
with .identifier; a warning filtered into an error ends the call with it.
)";

struct Doc {
  std::string_view name;
  const char* text;
};

// The calling forms, for help(); a built-in missing here still works.
constexpr Doc kDocs[] = {
    {"fopen",
     "fopen(filename[, permission[, machinefmt[, encoding]]], *, nargout=1) -> fid[, message]\n"
     "fopen('all') -> open fids; fopen(fid, nargout=4) -> name, permission, machinefmt, "
     "encoding\n\nOpens a file; fid is -1 when it does not open, and the message says why."},
    {"fclose", "fclose(fid) or fclose('all') -> 0, or -1 on failure\n\nCloses files."},
    {"fread",
     "fread(fid[, size[, precision[, skip[, machinefmt]]]], *, nargout=1) -> data[, count]\n\n"
     "Reads binary data. The result is a column-major numpy array that owns the\n"
     "library's block: fread(fid, numpy.inf, 'double') copies nothing."},
    {"fwrite",
     "fwrite(fid, data[, precision[, skip[, machinefmt]]]) -> count\n\nWrites binary data "
     "in column-major order."},
    {"fscanf",
     "fscanf(fid, format[, size], *, nargout=1) -> data[, count]\n\nReads formatted "
     "text from a file."},
    {"fprintf",
     "fprintf([fid, ]format, *values) -> byte count\n\nWrites formatted text, to "
     "the screen when no fid is given."},
    {"sscanf",
     "sscanf(text, format[, size], *, nargout=1) -> data[, count[, message[, "
     "next]]]\n\nReads formatted text from a str."},
    {"sprintf",
     "sprintf(format, *values, nargout=1) -> text[, message]\n\nFormats values "
     "into a str."},
    {"sprintfc",
     "sprintfc(format, values[, flag], *, nargout=1) -> texts[, ...]\n\nFormats "
     "each value into its own str."},
    {"fgets",
     "fgets(fid[, nchar], *, nargout=1) -> line[, terminators]\n\nReads a line with "
     "its terminator; -1.0 at the end of the file."},
    {"fseek",
     "fseek(fid, offset, origin) -> 0, or -1 on failure\n\norigin: 'bof', 'cof', "
     "'eof', -1, 0 or 1."},
    {"ftell", "ftell(fid) -> position in bytes, -1 on failure"},
    {"ferror",
     "ferror(fid[, 'clear'], *, nargout=1) -> message[, number]\n\nThe last error "
     "of a file."},
    {"feof", "feof(fid) -> 1.0 at the end of the file, else 0.0"},
    {"textscan",
     "textscan(fid or text, format[, repeat], *options, nargout=1) -> columns[, "
     "position]\n\nReads delimited text into a list of columns."},
    {"textscanOptionsQuery",
     "textscanOptionsQuery(fid or text, format, *options) -> dict of the effective options"},
};

std::string docOf(std::string_view name) {
  for (const Doc& d : kDocs) {
    if (d.name == name) return d.text;
  }
  return std::string(name) + "(*args, nargout=1)\n\nThe built-in " + std::string(name) + ".";
}

// The exception and warning classes, made at import; they live as long as
// the module does.
PyObject* g_errorClass = nullptr;
PyObject* g_warningClass = nullptr;

// The host's warnings, as Python warnings. Nothing may be thrown back into
// the library: when a filter turns the warning into an exception it stays
// pending, later warnings of the call are dropped, and the call raises it
// once the built-in is done.
void warnInPython(const std::string& identifier, const std::string& message) {
  py::gil_scoped_acquire gil;
  if (PyErr_Occurred()) return;
  try {
    py::object warning = py::reinterpret_borrow<py::object>(g_warningClass)(message);
    warning.attr("identifier") = identifier;
    warning.attr("message") = message;
    static const auto* warn = new py::object(py::module_::import("warnings").attr("warn"));
    (*warn)(warning, "stacklevel"_a = 1);
  } catch (py::error_already_set& e) {
    e.restore();
  } catch (...) {
    PyErr_SetString(PyExc_RuntimeError, "twfileio: a warning could not be issued");
  }
}

int outputCount(const py::kwargs& kwargs) {
  int nargout = 1;
  for (auto item : kwargs) {
    std::string key = item.first.cast<std::string>();
    if (key != "nargout") throw py::type_error("unexpected keyword argument '" + key + "'");
    if (!PyLong_Check(item.second.ptr()) || PyBool_Check(item.second.ptr())) {
      throw py::type_error("nargout must be an int");
    }
    // Counts past any built-in's limit all get the same error from it.
    long long n = PyLong_AsLongLong(item.second.ptr());
    if (n == -1 && PyErr_Occurred()) {
      PyErr_Clear();
      n = LLONG_MAX;
    }
    nargout = static_cast<int>(std::clamp<long long>(n, INT_MIN, INT_MAX));
  }
  return nargout;
}

// True while a built-in runs. Python code can run inside one (a warning's
// handler, say); a second call from there would find the library halfway
// through the first, so it is refused.
bool g_inCall = false;

class CallInProgress {
 public:
  CallInProgress() {
    if (g_inCall) raise("NestedCall");
    g_inCall = true;
  }
  ~CallInProgress() { g_inCall = false; }
  CallInProgress(const CallInProgress&) = delete;
  CallInProgress& operator=(const CallInProgress&) = delete;
};

py::object callBuiltin(std::string_view name, const py::args& args, const py::kwargs& kwargs) {
  int nargout = outputCount(kwargs);
  std::vector<kxOwned> out;
  {
    CallInProgress running;
    CallInputs inputs(args);
    try {
      out = twfileio::callArrays(name, inputs.arrays(), nargout);
    } catch (const twfileio::Error&) {
      // A warning turned error came first.
      if (PyErr_Occurred()) throw py::error_already_set();
      throw;
    }
    if (PyErr_Occurred()) throw py::error_already_set();
  }
  if (nargout <= 0) return py::none();
  if (nargout == 1) return fromArray(out[0].get());
  py::tuple results(nargout);
  for (int i = 0; i < nargout; ++i) results[i] = fromArray(out[i].get());
  return results;
}

}  // namespace

}  // namespace twpython

PYBIND11_MODULE(twfileio, m) {
  using namespace twpython;
  py::options options;
  options.disable_function_signatures();
  m.doc() = kModuleDoc;
  registerMessages();

  g_errorClass = PyErr_NewExceptionWithDoc(
      "twfileio.Error",
      "A failed call of a built-in: .identifier (\"KORVAN:FileIO:InvalidFid\") and .message.",
      PyExc_Exception, nullptr);
  g_warningClass = PyErr_NewExceptionWithDoc("twfileio.Warning",
                                             "A warning of a built-in: .identifier and .message.",
                                             PyExc_UserWarning, nullptr);
  if (!g_errorClass || !g_warningClass) throw py::error_already_set();
  m.attr("Error") = py::reinterpret_borrow<py::object>(g_errorClass);
  m.attr("Warning") = py::reinterpret_borrow<py::object>(g_warningClass);
  py::register_exception_translator([](std::exception_ptr p) {
    try {
      if (p) std::rethrow_exception(p);
    } catch (const twfileio::Error& e) {
      setPythonError(g_errorClass, e);
    }
  });
  kxSetWarningHandler(warnInPython);

  py::tuple names(twfileio::builtinNames().size());
  size_t slot = 0;
  for (const char* name : twfileio::builtinNames()) {
    std::string_view n = name;
    m.def(
        name,
        [n](const py::args& args, const py::kwargs& kwargs) {
          return callBuiltin(n, args, kwargs);
        },
        docOf(n).c_str());
    names[slot++] = py::str(name);
  }
  m.attr("builtins") = names;
  m.def(
      "call",
      [](const std::string& name, const py::args& args, const py::kwargs& kwargs) {
        return callBuiltin(name, args, kwargs);
      },
      "call(name, *args, nargout=1)\n\nCalls the built-in `name`, as twfileio.<name> does.");
  m.attr("__version__") = libtwfileio_version;
}
