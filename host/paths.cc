// Names of files: tilde expansion, cleaning, the search path, and opening
// along it.
#include "twhost/paths.h"

#include <dlfcn.h>
#include <limits.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "twhost/text.h"

namespace {

std::vector<std::string>& searchPath() {
  static std::vector<std::string> path;
  return path;
}

unsigned long g_changeCount = 0;

std::string homeFolder() {
  if (const char* h = std::getenv("HOME"); h && *h) return h;
  if (passwd* pw = getpwuid(getuid())) return pw->pw_dir;
  return "/";
}

bool isRegularFile(const std::string& name) {
  struct stat st;
  return ::stat(name.c_str(), &st) == 0 && !S_ISDIR(st.st_mode);
}

std::string joinPath(const std::string& folder, const std::string& name) {
  if (folder.empty() || folder.back() == '/') return folder + name;
  return folder + "/" + name;
}

}  // namespace

ustring kpTildeExpansion(const ustring& name) {
  if (name.empty() || name[0] != u'~') return name;
  if (name.size() > 1 && name[1] != u'/') return name;  // ~user is left alone
  return fl::i18n::to_ustring(homeFolder()) + name.substr(1);
}

void kpAddPath(const std::string& folder, bool atEnd) {
  auto& path = searchPath();
  std::erase(path, folder);
  if (atEnd) {
    path.push_back(folder);
  } else {
    path.insert(path.begin(), folder);
  }
}

std::vector<std::string> kpSearchPath() {
  return searchPath();
}

std::string kpGetCurrentPathname() {
  char buf[PATH_MAX];
  return ::getcwd(buf, sizeof buf) ? std::string(buf) : std::string(".");
}

int kpFullPath(char* buffer, const char* name, size_t size) {
  std::string n = name;
  std::string found;
  if (!n.empty() && n[0] == '/') {
    if (isRegularFile(n)) found = n;
  } else if (isRegularFile(joinPath(kpGetCurrentPathname(), n))) {
    found = joinPath(kpGetCurrentPathname(), n);
  } else {
    for (const auto& folder : searchPath()) {
      if (isRegularFile(joinPath(folder, n))) {
        found = joinPath(folder, n);
        break;
      }
    }
  }
  if (found.empty() || found.size() + 1 > size) return 0;
  std::memcpy(buffer, found.c_str(), found.size() + 1);
  return 1;
}

void kpSetFullnameChanged(const std::string&, const std::string&) {
  ++g_changeCount;
}
unsigned long kpChangeCount() {
  return g_changeCount;
}

namespace PathNameResolver {

void expandRootSymbols(ustring& name) {
  name = kpTildeExpansion(name);
}

void relativeToAbsolute(ustring& name, bool) {
  if (!name.empty() && name[0] == u'/') return;
  name = fl::i18n::to_ustring(joinPath(kpGetCurrentPathname(), "")) + name;
}

void fixDotsAndSlashes(ustring& name) {
  if (name.empty()) return;
  bool absolute = name[0] == u'/';
  std::vector<ustring> parts;
  size_t start = 0;
  while (start <= name.size()) {
    size_t slash = name.find(u'/', start);
    if (slash == ustring::npos) slash = name.size();
    ustring part = name.substr(start, slash - start);
    if (part == u"..") {
      if (!parts.empty() && parts.back() != u"..") {
        parts.pop_back();
      } else if (!absolute) {
        parts.push_back(part);
      }
    } else if (!part.empty() && part != u".") {
      parts.push_back(part);
    }
    start = slash + 1;
  }
  bool trailingSlash = name.size() > 1 && name.back() == u'/';
  ustring out = absolute ? u"/" : u"";
  for (size_t i = 0; i < parts.size(); ++i) {
    if (i) out += u'/';
    out += parts[i];
  }
  if (trailingSlash && !parts.empty()) out += u'/';
  if (out.empty()) out = u".";
  name = out;
}

FILE* openFileThroughFullPathOrCWDThenKVPath(const ustring& name, const std::string& mode,
                                             ustring& found, int& err) {
  std::string n = fl::i18n::to_string(name);
  err = 0;
  FILE* f = nullptr;
  if (isRegularFile(n) || (!n.empty() && n[0] == '/')) {
    errno = 0;
    f = std::fopen(n.c_str(), mode.c_str());
    err = errno;
    if (f) {
      ustring full = name;
      relativeToAbsolute(full, false);
      fixDotsAndSlashes(full);
      found = full;
      return f;
    }
    if (!n.empty() && n[0] == '/') return nullptr;
  }
  if (err == 0) err = ENOENT;
  for (const auto& folder : searchPath()) {
    std::string candidate = joinPath(folder, n);
    if (!isRegularFile(candidate)) continue;
    if ((f = std::fopen(candidate.c_str(), mode.c_str()))) {
      found = fl::i18n::to_ustring(candidate);
      err = 0;
      return f;
    }
  }
  return nullptr;
}

}  // namespace PathNameResolver

namespace fl::filesystem {

std::string to_filesystem(const ustring& name) {
  for (size_t i = 0; i < name.size(); ++i) {
    char16_t c = name[i];
    if (c >= 0xD800 && c <= 0xDBFF) {
      if (i + 1 >= name.size() || name[i + 1] < 0xDC00 || name[i + 1] > 0xDFFF) {
        throw CvtInvalidCharacter();
      }
      ++i;
    } else if (c >= 0xDC00 && c <= 0xDFFF) {
      throw CvtInvalidCharacter();
    }
  }
  return fl::i18n::to_string(name);
}

FILE* fopen(const ustring& name, const std::string& mode) {
  return std::fopen(fl::i18n::to_string(name).c_str(), mode.c_str());
}

}  // namespace fl::filesystem

int utLoadLibrary(const std::string& name, void** handle) {
  void* h = ::dlopen(name.c_str(), RTLD_NOW | RTLD_GLOBAL);
  if (handle) *handle = h;
  return h ? 0 : -1;
}
