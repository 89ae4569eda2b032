#include "python_errors.h"

namespace twpython {

void setPythonError(pybind11::handle errorClass, const twfileio::Error& e) {
  pybind11::object error = errorClass(e.message());
  error.attr("identifier") = e.identifier();
  error.attr("message") = e.message();
  PyErr_SetObject(errorClass.ptr(), error.ptr());
}

void registerMessages() {
  struct Text {
    const char* identifier;
    const char* text;
  };
  static const Text kTexts[] = {
      {"KORVAN:python:UnsupportedType", "A Python value of type '{0}' has no array form."},
      {"KORVAN:python:UnsupportedDtype", "A numpy array of dtype '{0}' has no array form."},
      {"KORVAN:python:UnsupportedClass", "A value of class '{0}' has no Python form."},
      {"KORVAN:python:IntegerNotExact",
       "The integer {0} has no exact double; pass it as a numpy.int64 or numpy.uint64."},
      {"KORVAN:python:FieldNameNotText",
       "A dict passed as a struct has a key of type '{0}'; "
       "field names are str."},
      {"KORVAN:python:CharNeedsTwoUnits",
       "The character U+{0} needs two UTF-16 units and does not fit one element of a char "
       "array; pass the text as a str."},
      {"KORVAN:python:NestingTooDeep",
       "Lists, dicts and object arrays are nested more than {0} deep (or hold themselves)."},
      {"KORVAN:python:NestedCall",
       "A built-in was called while another one was running (from a warning handler, "
       "say); call it after the first one returns."},
      {"KORVAN:python:DatetimeOutOfRange",
       "A date {0} milliseconds from 1970 lies outside what numpy.datetime64[ns] holds "
       "(the years 1678 to 2262)."},
  };
  for (const Text& t : kTexts) kxRegisterMessage(t.identifier, t.text);
}

}  // namespace twpython
