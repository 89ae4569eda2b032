// FileMgr: the table of open files, and turning a fid argument into a file.
#include "fileio/file_manager.h"

#include <climits>
#include <cstdio>

#include "fileio/screen_streams.h"
#include "twhost/catalog.h"
#include "twhost/errors.h"

namespace Tarnwicks::FileIO {

FileMgr& FileMgr::instance() {
  static FileMgr table;
  return table;
}

namespace {
// The standard files exist from the moment the library is mapped.
[[maybe_unused]] FileMgr& tableAtLoad = FileMgr::instance();
}  // namespace

FileMgr::FileMgr() {
  // The table's last act may be to report a file that could not be written
  // out: the catalogue is made first, so that it is still there then.
  (void)kxHasMessage("KORVAN:fclose:DataNotWritten");
  add(std::make_unique<twSystemFile<screenStreamBase>>(u"\"stdin\"", FilePermission("r", 1),
                                                       stdin));
  add(std::make_unique<twSystemFile<outputScreenStream>>(u"\"stdout\"", FilePermission("a", 1),
                                                         stdout));
  add(std::make_unique<twSystemFile<stdErrStream>>(u"\"stderr\"", FilePermission("a", 1), stderr));
  firstUserFid = openCount;
}

FileMgr::~FileMgr() {
  for (auto& [fid, file] : files) {
    if (file == nullptr) continue;
    // Files left open are written out and closed as the process ends. The
    // host's warning channel may be gone by now, so a loss is told on
    // stderr directly: it must not pass in silence.
    if (fid >= firstUserFid && !file->closeAtExit()) {
      std::string text = kxMessageText(
          kxMsg("KORVAN:fclose", "DataNotWritten", file->name, kxStreamErrorText(file->lastError)));
      std::fflush(stdout);
      std::fprintf(stderr, "Warning: %s\n", text.c_str());
    }
    file.reset();
  }
}

twAbsFile* FileMgr::lookup(int fid) const {
  auto it = files.find(fid);
  return it == files.end() ? nullptr : it->second.get();
}

twAbsFile* FileMgr::require(int fid) const {
  twAbsFile* f = lookup(fid);
  if (f == nullptr) kxErrMsg(26);
  return f;
}

std::vector<int> FileMgr::list(int which) const {
  std::vector<int> fids;
  if (which != 1) return fids;
  for (const auto& [fid, file] : files) {
    if (fid >= firstUserFid && file != nullptr) fids.push_back(fid);
  }
  return fids;
}

int FileMgr::allocateFid() const {
  int candidate = openCount;
  for (const auto& [fid, file] : files) {
    if (file == nullptr) return fid;
    if (fid >= candidate) candidate = fid + 1;
  }
  return candidate;
}

int FileMgr::add(std::unique_ptr<twAbsFile> file) {
  int fid = allocateFid();
  files[fid] = std::move(file);
  ++openCount;
  return fid;
}

int FileMgr::open(const ustring& name, const FilePermission& permission,
                  const MachineFormat& machineFormat, const EncodingAttribute& encoding,
                  int& error) {
  auto file = std::make_unique<twFile>(name, permission, machineFormat, encoding);
  if (file->open()) {
    error = 0;
    return add(std::move(file));
  }
  error = file->lastError;
  return -1;
}

bool FileMgr::close(int fid) {
  auto it = files.find(fid);
  if (it == files.end() || it->second == nullptr || fid < firstUserFid) return false;
  bool closed = it->second->close();
  if (!closed) {
    twAbsFile& file = *it->second;
    kxWarningMsgId(
        kxMsg("KORVAN:fclose", "DataNotWritten", file.name, kxStreamErrorText(file.lastError)));
  }
  it->second.reset();
  --openCount;
  return closed;
}

bool FileMgr::closeAll() {
  bool all = true;
  for (auto& [fid, file] : files) {
    if (fid >= firstUserFid && file != nullptr && !close(fid)) all = false;
  }
  return all;
}

int fidFromArray(const kxArray* a) {
  if (a == nullptr || kxGetClassID(a) != kxDOUBLE_CLASS || kxGetNumberOfElements(a) != 1) {
    kxThrowId("KORVAN:FileIO", "InvalidFid");
  }
  // A whole number from 0 to INT_MAX; NaN fails the range test. Every call
  // on a file passes here, so the test is two comparisons and a round trip
  // through int.
  const double v = *kxGetPr(a);
  if (!(v >= 0 && v <= double(INT_MAX))) kxThrowId("KORVAN:FileIO", "InvalidFid");
  const int fid = static_cast<int>(v);
  if (double(fid) != v) kxThrowId("KORVAN:FileIO", "InvalidFid");
  return fid;
}

twAbsFile* fileFromArray(const kxArray* a) {
  return FileMgr::instance().require(fidFromArray(a));
}

}  // namespace Tarnwicks::FileIO
