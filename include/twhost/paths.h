// Files and folders as the host sees them: tilde expansion, the current
// folder, the search path, and opening a file along it.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "twhost/export.h"
#include "twhost/kx_array.h"

TW_HOST ustring kpTildeExpansion(const ustring& name);

// The search path that reading opens walk after the current folder.
TW_HOST void kpAddPath(const std::string& folder, bool atEnd = false);
TW_HOST std::vector<std::string> kpSearchPath();
TW_HOST std::string kpGetCurrentPathname();
// Resolves `name` (relative to the current folder, then along the search
// path) into `buffer`; non-zero when the file exists.
TW_HOST int kpFullPath(char* buffer, const char* name, size_t size);
// Tell the path manager that a file in a folder on its path changed; the
// host keeps no cache today, so this only records the event for tests.
TW_HOST void kpSetFullnameChanged(const std::string& folder, const std::string& fullName);
TW_HOST unsigned long kpChangeCount();

namespace PathNameResolver {
// "~" and "~/..." become the home folder.
TW_HOST void expandRootSymbols(ustring& name);
TW_HOST void relativeToAbsolute(ustring& name, bool resolveLinks);
// Collapses "//", "/./" and "/x/../" in place.
TW_HOST void fixDotsAndSlashes(ustring& name);
// Opens by full path, else in the current folder, else along the search
// path. Gives the FILE*, the name found, and errno of the first attempt.
TW_HOST FILE* openFileThroughFullPathOrCWDThenKVPath(const ustring& name, const std::string& mode,
                                                     ustring& found, int& err);
}  // namespace PathNameResolver

namespace fl::filesystem {
// Opens by a UTF-16 name (converted to UTF-8, the file system's encoding).
TW_HOST FILE* fopen(const ustring& name, const std::string& mode);
// Converts a name to the file system's encoding; a lone surrogate throws
// CvtInvalidCharacter.
struct CvtInvalidCharacter : std::exception {
  const char* what() const noexcept override { return "invalid character in file name"; }
};
TW_HOST std::string to_filesystem(const ustring& name);
}  // namespace fl::filesystem

// Loads a shared library by name; 0 on success.
TW_HOST int utLoadLibrary(const std::string& name, void** handle);
