// Calling the file built-ins from a C++ program: by name, with the host's
// arrays in and owned arrays out.
//
//   #include <twfileio/twfileio.h>
//   auto fid = twfileio::call("fopen", {"data.bin", "w"});
//   twfileio::call("fwrite", {fid[0], values});
//   auto [data, count] = twfileio::callN<2>("fread", {fid[0], INFINITY, "double"});
//
// Ownership. Inputs are borrowed: a call never changes or keeps them. Every
// output comes back as a kxOwned (twhost/kx_array.h) that the caller alone
// owns; it is out of the host's call-frame accounting, so it lives until the
// kxOwned lets it go, whatever errors happen later. Arrays inside a cell or
// struct belong to it.
//
// Errors. A call that fails throws twfileio::Error, which carries the
// identifier ("KORVAN:FileIO:InvalidFid") and the message; whatever the call
// had made is freed. A failure of the file itself (a short read, a file that
// does not open) is not an error: it arrives in the outputs, as the
// built-in's own contract says (fid -1 and a message, a count, ferror).
// Warnings go to the host's warning handler (kxSetWarningHandler in
// twhost/errors.h), which writes them on stderr unless the program installs
// its own. An exception thrown by such a handler passes through unchanged.
//
// Threads. The library keeps one table of open files and takes no locks:
// call it from one thread at a time.
//
// Built-ins are found by name in the library's table, so a built-in added
// there is callable here as it is.
#pragma once

#include <array>
#include <cstddef>
#include <initializer_list>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "fileio/builtin_table.h"
#include "twhost/kx_array.h"

namespace twfileio {

// The one exception of a failed call.
class TW_FILEIO_API Error : public std::runtime_error {
 public:
  Error(std::string identifier, const std::string& message);
  ~Error() override;
  // "catalog:key", as in "KORVAN:FileIO:InvalidFid".
  const std::string& identifier() const noexcept { return identifier_; }
  // The catalogue's text with its arguments in place; also what().
  std::string message() const { return what(); }

 private:
  std::string identifier_;
};

// One input of a call: an array the caller keeps (borrowed), or a number,
// logical or UTF-8 text made into an array for this call and freed after it.
class TW_FILEIO_API Input {
 public:
  Input(const kxArray* borrowed) : array_(borrowed) {}
  Input(const kxOwned& borrowed) : array_(borrowed.get()) {}
  Input(const char* utf8);
  Input(const std::string& utf8) : Input(utf8.c_str()) {}
  Input(bool value);
  // Any other number becomes a double, the class of the language's literals.
  template <class T>
  requires(std::is_arithmetic_v<T> && !std::is_same_v<T, bool>) Input(T value)
      : Input(Number{static_cast<double>(value)}) {}

  Input(Input&& other) noexcept : array_(other.array_), made_(std::move(other.made_)) {}
  Input(const Input&) = delete;
  Input& operator=(const Input&) = delete;
  Input& operator=(Input&&) = delete;
  ~Input() = default;

  const kxArray* get() const { return array_; }

 private:
  struct Number {
    double value;
  };
  explicit Input(Number n);

  const kxArray* array_;
  kxOwned made_;
};

// The names of the built-ins, in the table's order.
inline constexpr std::span<const char* const> builtinNames() {
  return std::span<const char* const>(Tarnwicks::FileIO::kBuiltinNames);
}
// True when `name` is a built-in of the library.
TW_FILEIO_API bool isBuiltin(std::string_view name);

// Calls the built-in `name` with borrowed inputs, asking for `nargout`
// outputs. The result has max(nargout, 1) entries: with nargout 0 the
// built-in may still give one value (the language's `ans`). An entry the
// built-in did not fill is null. An unknown name throws Error
// "KORVAN:twfileio:UnknownBuiltin". Initialises the library on first use.
TW_FILEIO_API std::vector<kxOwned> callArrays(std::string_view name,
                                              std::span<const kxArray* const> inputs,
                                              int nargout = 1);

// The same with inputs written in place: call("fseek", {fid, 0, "bof"}).
TW_FILEIO_API std::vector<kxOwned> call(std::string_view name, std::initializer_list<Input> inputs,
                                        int nargout = 1);

// N outputs as an array, for structured bindings.
template <size_t N>
std::array<kxOwned, N> callN(std::string_view name, std::initializer_list<Input> inputs) {
  std::vector<kxOwned> out = call(name, inputs, static_cast<int>(N));
  std::array<kxOwned, N> result;
  for (size_t i = 0; i < N && i < out.size(); ++i) result[i] = std::move(out[i]);
  return result;
}

}  // namespace twfileio
