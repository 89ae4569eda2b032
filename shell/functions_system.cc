// Host functions that talk to the user and the system: disp, error,
// warning, files and folders, and fgetl and frewind on top of the library.
#include <glob.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <random>

#include "display.h"
#include "functions.h"
#include "interpreter.h"
#include "shell_errors.h"
#include "twhost/calls.h"
#include "twhost/console.h"
#include "twhost/paths.h"
#include "twhost/text.h"
#include "value.h"

namespace tw {

namespace fs = std::filesystem;

namespace {

Value borrowedCopy(const kxArray* a) {
  return Value::adopt(kxDuplicateArray(a));
}

// "component:component..." with no blanks: the first argument of error()
// and warning() is an identifier when it looks like one and more follows.
bool looksLikeIdentifier(const std::string& s) {
  auto isPart = [](char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '-';
  };
  if (s.empty() || !std::isalpha(static_cast<unsigned char>(s[0]))) return false;
  size_t parts = 1, partLength = 0;
  for (char c : s) {
    if (c == ':') {
      if (partLength == 0) return false;
      ++parts;
      partLength = 0;
    } else if (isPart(c)) {
      ++partLength;
    } else {
      return false;
    }
  }
  return parts >= 2 && partLength > 0;
}

// The identifier and the message of error(...) and warning(...). A lone
// text is the message as it stands; a format with arguments goes through
// sprintf.
void identifierAndMessage(Interpreter& interp, const char* fn, int nrhs, kxArray** prhs,
                          std::string& id, std::string& message) {
  int first = 0;
  if (nrhs >= 2 && isCharRow(prhs[0]) && looksLikeIdentifier(textOf(prhs[0], "an identifier"))) {
    id = textOf(prhs[0], "an identifier");
    first = 1;
  }
  if (!kxIsChar(prhs[first])) shellError("NeedText", std::string(fn), classNameOf(prhs[first]));
  std::string format = textOf(prhs[first], "a message");
  bool plain = nrhs == 1 || (nrhs == first + 1 && format.find_first_of("%\\") == std::string::npos);
  if (plain) {
    message = format;
    return;
  }
  std::vector<Value> args;
  for (int i = first; i < nrhs; ++i) args.push_back(borrowedCopy(prhs[i]));
  std::vector<Value> out = interp.callNamed("sprintf", 1, args);
  message = out[0] ? kxArrayToUTF8StdString(out[0].get()) : std::string();
}

[[noreturn]] void throwFromStruct(const kxArray* s) {
  const kxArray* id = kxIsStruct(s) ? kxGetField(s, 0, "identifier") : nullptr;
  const kxArray* msg = kxIsStruct(s) ? kxGetField(s, 0, "message") : nullptr;
  if (!msg || !kxIsChar(msg)) shellError("BadErrorStruct");
  throw UserError(id && kxIsChar(id) ? kxArrayToUTF8StdString(id) : std::string(),
                  kxArrayToUTF8StdString(msg));
}

std::string currentFolder() {
  std::error_code ec;
  fs::path p = fs::current_path(ec);
  return ec ? kpGetCurrentPathname() : p.string();
}

std::string randomName() {
  static std::mt19937_64 rng{std::random_device{}()};
  static const char digits[] = "0123456789abcdef";
  std::string s = "tw_";
  uint64_t v = rng();
  for (int i = 0; i < 16; ++i, v >>= 4) s += digits[v & 15];
  return s;
}

std::string textArgument(const kxArray* a, const char* what) {
  if (!isCharRow(a)) shellError("NeedText", std::string(what), classNameOf(a));
  return textOf(a, what);
}

std::string expandedPath(const std::string& name) {
  return fl::i18n::to_string(kpTildeExpansion(fl::i18n::to_ustring(name)));
}

}  // namespace

void registerSystemFunctions(Interpreter& interp) {
  Interpreter* ip = &interp;

  registerShellFunction("disp", [ip](int nlhs, kxArray**, int nrhs, kxArray** prhs) {
    checkArgCount("disp", nrhs, 1, 1);
    checkOutCount("disp", nlhs, 0);
    writeOut(dispText(prhs[0], {ip->numberFormat(), terminalWidth()}));
  });

  // format, format short, format long: how the console shows numbers.
  registerShellFunction("format", [ip](int nlhs, kxArray**, int nrhs, kxArray** prhs) {
    checkArgCount("format", nrhs, 0, 1);
    checkOutCount("format", nlhs, 0);
    std::string style = nrhs ? textArgument(prhs[0], "a format") : "short";
    for (char& c : style) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (style == "short") {
      ip->setNumberFormat(NumberFormat::Short);
    } else if (style == "long") {
      ip->setNumberFormat(NumberFormat::Long);
    } else {
      shellError("BadFormat", style);
    }
  });

  registerShellFunction("error", [ip](int nlhs, kxArray**, int nrhs, kxArray** prhs) {
    checkArgCount("error", nrhs, 1, -1);
    checkOutCount("error", nlhs, 0);
    if (nrhs == 1 && kxIsStruct(prhs[0])) throwFromStruct(prhs[0]);
    std::string id, message;
    identifierAndMessage(*ip, "error", nrhs, prhs, id, message);
    if (message.empty() && id.empty()) return;  // error('') does nothing
    throw UserError(id, message);
  });

  registerShellFunction("rethrow", [](int nlhs, kxArray**, int nrhs, kxArray** prhs) {
    checkArgCount("rethrow", nrhs, 1, 1);
    checkOutCount("rethrow", nlhs, 0);
    throwFromStruct(prhs[0]);
  });

  registerShellFunction("warning", [ip](int nlhs, kxArray**, int nrhs, kxArray** prhs) {
    checkArgCount("warning", nrhs, 1, -1);
    checkOutCount("warning", nlhs, 0);
    std::string first = isCharRow(prhs[0]) ? textOf(prhs[0], "a message") : std::string();
    if ((first == "on" || first == "off") && nrhs <= 2) {
      std::string id = nrhs == 2 ? textArgument(prhs[1], "a warning identifier") : "all";
      ip->setWarningEnabled(id, first == "on");
      return;
    }
    std::string id, message;
    identifierAndMessage(*ip, "warning", nrhs, prhs, id, message);
    ip->warn(id, message);
  });

  registerShellFunction("tempdir", [](int nlhs, kxArray** plhs, int nrhs, kxArray**) {
    checkArgCount("tempdir", nrhs, 0, 0);
    checkOutCount("tempdir", nlhs, 1);
    std::string dir = fs::temp_directory_path().string();
    if (dir.empty() || dir.back() != '/') dir += '/';
    plhs[0] = kxCreateString(dir.c_str());
  });

  registerShellFunction("tempname", [](int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
    checkArgCount("tempname", nrhs, 0, 1);
    checkOutCount("tempname", nlhs, 1);
    fs::path dir = nrhs ? fs::path(textArgument(prhs[0], "a folder")) : fs::temp_directory_path();
    plhs[0] = kxCreateString((dir / randomName()).string().c_str());
  });

  registerShellFunction("delete", [ip](int nlhs, kxArray**, int nrhs, kxArray** prhs) {
    checkArgCount("delete", nrhs, 1, -1);
    checkOutCount("delete", nlhs, 0);
    for (int i = 0; i < nrhs; ++i) {
      std::string pattern = expandedPath(textArgument(prhs[i], "a file name"));
      glob_t g{};
      int rc = glob(pattern.c_str(), GLOB_NOSORT, nullptr, &g);
      if (rc != 0 || g.gl_pathc == 0) {
        globfree(&g);
        ip->warn("KORVAN:shell:FileNotFound", shellMessageText("FileNotFound", pattern));
        continue;
      }
      for (size_t k = 0; k < g.gl_pathc; ++k) {
        std::error_code ec;
        if (fs::is_directory(g.gl_pathv[k], ec) || !fs::remove(g.gl_pathv[k], ec)) {
          std::string why = ec ? ec.message() : std::string("it is a folder");
          ip->warn("KORVAN:shell:CannotDelete",
                   shellMessageText("CannotDelete", std::string(g.gl_pathv[k]), why));
        }
      }
      globfree(&g);
    }
  });

  registerShellFunction("pwd", [](int nlhs, kxArray** plhs, int nrhs, kxArray**) {
    checkArgCount("pwd", nrhs, 0, 0);
    checkOutCount("pwd", nlhs, 1);
    plhs[0] = kxCreateString(currentFolder().c_str());
  });

  registerShellFunction("cd", [](int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
    checkArgCount("cd", nrhs, 0, 1);
    checkOutCount("cd", nlhs, 1);
    std::string old = currentFolder();
    if (nrhs == 1) {
      std::string to = expandedPath(textArgument(prhs[0], "a folder"));
      if (chdir(to.c_str()) != 0) shellError("NoSuchFolder", to);
      if (nlhs == 0) return;
    }
    plhs[0] = kxCreateString(old.c_str());
  });

  registerShellFunction("addpath", [ip](int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
    checkArgCount("addpath", nrhs, 1, -1);
    checkOutCount("addpath", nlhs, 1);
    std::string old;
    for (const std::string& p : kpSearchPath()) old += (old.empty() ? "" : ":") + p;
    bool atEnd = false;
    std::vector<std::string> folders;
    for (int i = 0; i < nrhs; ++i) {
      std::string arg = textArgument(prhs[i], "a folder");
      if (arg == "-end" || arg == "-END") {
        atEnd = true;
        continue;
      }
      if (arg == "-begin" || arg == "-BEGIN") continue;
      size_t start = 0;
      for (;;) {
        size_t colon = arg.find(':', start);
        std::string part = arg.substr(start, colon == std::string::npos ? colon : colon - start);
        if (!part.empty()) folders.push_back(part);
        if (colon == std::string::npos) break;
        start = colon + 1;
      }
    }
    // Added at the front in reverse, so that the first named is searched first.
    if (!atEnd) std::reverse(folders.begin(), folders.end());
    for (const std::string& f : folders) {
      std::error_code ec;
      fs::path full = fs::absolute(expandedPath(f), ec).lexically_normal();
      if (ec || !fs::is_directory(full, ec)) {
        ip->warn("KORVAN:shell:NoSuchFolder", shellMessageText("NoSuchFolder", f));
        continue;
      }
      std::string text = full.string();
      if (text.size() > 1 && text.back() == '/') text.pop_back();
      kpAddPath(text, atEnd);
    }
    if (nlhs == 1) plhs[0] = kxCreateString(old.c_str());
  });

  registerShellFunction("exist", [ip](int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
    checkArgCount("exist", nrhs, 1, 2);
    checkOutCount("exist", nlhs, 1);
    std::string name = textArgument(prhs[0], "a name");
    std::string kind = nrhs == 2 ? textArgument(prhs[1], "a kind") : "";
    auto wants = [&](const char* k) { return kind.empty() || kind == k; };
    double code = 0;
    std::error_code ec;
    std::string path = expandedPath(name);
    if (wants("var") && ip->isVariable(name)) {
      code = 1;
    } else if (wants("builtin") && !name.empty() && ip->findFunction(name)) {
      code = 5;
    } else if ((wants("file") || wants("dir")) && fs::is_directory(path, ec)) {
      code = 7;
    } else if (wants("file")) {
      char found[4096];
      if (kpFullPath(found, path.c_str(), sizeof found)) code = 2;
    }
    plhs[0] = kxCreateDoubleScalar(code);
  });

  // fgetl: the line fgets reads, without its line terminator; -1 at the end.
  registerShellFunction("fgetl", [ip](int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
    checkArgCount("fgetl", nrhs, 1, 1);
    checkOutCount("fgetl", nlhs, 1);
    std::vector<Value> out = ip->callNamed("fgets", 1, {borrowedCopy(prhs[0])});
    const kxArray* line = out[0].get();
    if (!line || !kxIsChar(line)) {
      plhs[0] = line ? kxDuplicateArray(line) : kxCreateDoubleScalar(-1);
      return;
    }
    ustring text(kxGetChars(line), numelOf(line));
    size_t n = text.size();
    if (n >= 2 && ((text[n - 2] == u'\r' && text[n - 1] == u'\n') ||
                   (text[n - 2] == u'\n' && text[n - 1] == u'\r'))) {
      n -= 2;
    } else if (n >= 1 && (text[n - 1] == u'\n' || text[n - 1] == u'\r')) {
      n -= 1;
    }
    plhs[0] = kxCreateStringFromNChars_UTF16(text.data(), n);
  });

  // frewind: fseek(fid, 0, -1); the status only when asked for.
  registerShellFunction("frewind", [ip](int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
    checkArgCount("frewind", nrhs, 1, 1);
    checkOutCount("frewind", nlhs, 1);
    std::vector<Value> out =
        ip->callNamed("fseek", 1, {borrowedCopy(prhs[0]), makeScalar(0), makeScalar(-1)});
    if (nlhs == 1 && out[0]) plhs[0] = out[0].duplicate();
  });
}

}  // namespace tw
