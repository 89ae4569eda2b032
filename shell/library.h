// Loading libtwfileio and binding its sixteen built-ins to their names.
#pragma once

#include <string>

namespace tw {

class Interpreter;

// The library's file beside the running program.
std::string defaultLibraryPath();

struct LibraryVersion {
  std::string version;    // four numbers joined by points
  std::string buildDate;  // "Mon D YYYY"
  std::string path;       // the file that was loaded
};

// Reads what the library at `path` says of itself. Returns an empty string
// on success, else what went wrong.
std::string readLibraryVersion(const std::string& path, LibraryVersion& out);

// Opens the library, initialises it once and binds its table's slots to the
// built-in names in slot order. Returns an empty string on success, else
// what went wrong.
std::string loadLibrary(const std::string& path, Interpreter& interp);

}  // namespace tw
