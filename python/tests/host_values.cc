// tw_host_values: a module for the tests only. It makes values through the
// host API that no built-in makes yet (dates, categories) and runs Python
// values through the conversions of twfileio in both directions, so that
// each rule can be checked on its own.
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <string>
#include <vector>

#include "from_array.h"
#include "python_errors.h"
#include "to_array.h"
#include "twhost/kx_data.h"

namespace py = pybind11;

namespace {

kxOwned objectOf(const char* className, const std::vector<size_t>& dims, kxOwned props) {
  return kxOwned(kxCreateObjectArray(className, dims.size(), dims.data(), props.release()));
}

kxOwned oneByOneStruct(std::vector<const char*> names) {
  return kxOwned(kxCreateStructMatrix(1, 1, static_cast<int>(names.size()), names.data()));
}

// A datetime of the given size: highs in the real part of "Data", lows in
// its imaginary part (a real "Data" when `lows` is empty).
py::object datetimeValue(const std::vector<double>& highs, const std::vector<double>& lows,
                         const std::vector<size_t>& dims) {
  kxOwned data(kxCreateDoubleMatrix(highs.size(), 1, lows.empty() ? kxREAL : kxCOMPLEX));
  for (size_t i = 0; i < highs.size(); ++i) {
    kxGetPr(data.get())[i] = highs[i];
    if (!lows.empty()) kxGetPi(data.get())[i] = lows[i];
  }
  kxOwned props = oneByOneStruct({"Format", "Data"});
  kxSetField(props.get(), 0, "Format", kxCreateString("uuuu-MM-dd HH:mm:ss.SSS"));
  kxSetField(props.get(), 0, "Data", data.release());
  kxOwned value = objectOf("datetime", dims, std::move(props));
  return twpython::fromArray(value.get());
}

// A categorical: codes 1-based (0 or NaN undefined) in the given class.
py::object categoricalValue(const std::vector<double>& codes,
                            const std::vector<std::string>& categories,
                            const std::vector<size_t>& dims, const std::string& codeClass) {
  kxClassID cls = codeClass == "double" ? kxDOUBLE_CLASS : kxUINT32_CLASS;
  kxOwned codeArray(kxCreateNumericMatrix(codes.size(), 1, cls, kxREAL));
  AssignToVoidBuffer(cls, kxGetData(codeArray.get()), kxDOUBLE_CLASS, codes.data(), codes.size());
  kxOwned names(kxCreateCellMatrix(categories.size(), 1));
  for (size_t i = 0; i < categories.size(); ++i) {
    kxSetCell(names.get(), i, kxCreateString(categories[i].c_str()));
  }
  kxOwned props = oneByOneStruct({"Codes", "Categories"});
  kxSetField(props.get(), 0, "Codes", codeArray.release());
  kxSetField(props.get(), 0, "Categories", names.release());
  kxOwned value = objectOf("categorical", dims, std::move(props));
  return twpython::fromArray(value.get());
}

py::tuple describe(const kxArray* a) {
  const size_t* d = kxGetDimensions(a);
  std::vector<size_t> dims(d, d + kxGetNumberOfDimensions(a));
  return py::make_tuple(std::string(kxGetClassName(a)), py::tuple(py::cast(dims)), kxIsComplex(a));
}

}  // namespace

PYBIND11_MODULE(tw_host_values, m) {
  twpython::registerMessages();
  py::register_exception_translator([](std::exception_ptr p) {
    try {
      if (p) std::rethrow_exception(p);
    } catch (const twfileio::Error& e) {
      twpython::setPythonError(py::module_::import("twfileio").attr("Error"), e);
    }
  });
  m.def("echo", [](py::handle v) {
    kxOwned a = twpython::toArray(v);
    return twpython::fromArray(a.get());
  });
  m.def("describe", [](py::handle v) { return describe(twpython::toArray(v).get()); });
  // What a call would see of its arguments: class, size, and where the data is.
  m.def("as_inputs", [](const py::args& args) {
    twpython::CallInputs inputs(args);
    py::list seen;
    for (const kxArray* a : inputs.arrays()) {
      seen.append(py::make_tuple(describe(a), reinterpret_cast<uintptr_t>(kxGetData(a))));
    }
    return seen;
  });
  m.def("datetime", &datetimeValue, py::arg("highs"), py::arg("lows"), py::arg("dims"));
  m.def("categorical", &categoricalValue, py::arg("codes"), py::arg("categories"), py::arg("dims"),
        py::arg("code_class") = "uint32");
}
