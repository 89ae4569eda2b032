// FileMgr: the table from the file identifiers that user code holds to open
// file objects, with the three standard files at 0, 1 and 2.
//
// One table serves the process and lives until its end. A closed fid stays
// in the table with a null entry, and the lowest such number is handed out
// first. The table has no lock: every call comes on the interpreter's thread.
#pragma once

#include <map>
#include <memory>
#include <vector>

#include "fileio/tw_file.h"

namespace Tarnwicks::FileIO {

class FileMgr {
 public:
  // The one table; it exists from the time the library is loaded.
  static FileMgr& instance();

  FileMgr();
  // Closes every user file still open (the table lives until the process
  // ends): bits waiting in a carry and text in an encoder are written first,
  // and a file whose data could not all be written is reported on stderr
  // with the system's reason.
  virtual ~FileMgr();
  FileMgr(const FileMgr&) = delete;
  FileMgr& operator=(const FileMgr&) = delete;

  // The file of `fid`; null when unknown or closed.
  twAbsFile* lookup(int fid) const;
  // The same, but a missing file raises kxErrMsg(26).
  twAbsFile* require(int fid) const;
  // `which` must be 1: every user fid with a live file, ascending.
  std::vector<int> list(int which) const;
  // The fid the next add() will use: the lowest vacated one, else one past
  // the largest in use.
  int allocateFid() const;
  // Takes `file` and returns its fid.
  int add(std::unique_ptr<twAbsFile> file);
  // Opens a twFile: the fid, or -1 with `error` set (an errno or
  // CannotOpenFile).
  // Raises only for an encoding that can't be opened; no fid stays taken.
  int open(const ustring& name, const FilePermission& permission,
           const MachineFormat& machineFormat, const EncodingAttribute& encoding, int& error);
  // Closes a live user file; false for standard or unknown fids and for a
  // failed close. The fid is vacated whatever the result. A failed close
  // (data still buffered that the system refused) warns
  // "KORVAN:fclose:DataNotWritten" with the file's name and the system's
  // reason, since the fid that ferror would ask about is gone.
  bool close(int fid);
  // Closes every live user file; false if any close failed.
  bool closeAll();

  int getFirstUserFid() const { return firstUserFid; }

 private:
  std::map<int, std::unique_ptr<twAbsFile>> files;  // null once closed
  int openCount = 0;
  int firstUserFid = 3;
};

// The fid in a double scalar argument. Anything else, a non-integer, a
// negative or a value that doesn't fit raises "KORVAN:FileIO:InvalidFid".
int fidFromArray(const kxArray* a);
// fidFromArray, then the required lookup (kxErrMsg(26) for no such file).
twAbsFile* fileFromArray(const kxArray* a);

}  // namespace Tarnwicks::FileIO
