// The exported surface of libtwfileio: the table of sixteen built-ins and the
// functions a host uses to find it.
#pragma once

#include <cstdint>

#include "twhost/kx_array.h"

#define TW_FILEIO_API __attribute__((visibility("default")))

namespace Tarnwicks::FileIO {

// The calling form of every built-in: nlhs outputs asked for, plhs to fill,
// nrhs borrowed inputs. The result is 0, or non-zero for a soft failure.
using BuiltinEntry = int (*)(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);

// The slot order is fixed: the host binds names to positions.
enum BuiltinSlot : int {
  kSlotFopen = 0,
  kSlotFclose = 1,
  kSlotFread = 2,
  kSlotFwrite = 3,
  kSlotFscanf = 4,
  kSlotFprintf = 5,
  kSlotSscanf = 6,
  kSlotSprintf = 7,
  kSlotSprintfc = 8,
  kSlotFgets = 9,
  kSlotFseek = 10,
  kSlotFtell = 11,
  kSlotFerror = 12,
  kSlotFeof = 13,
  kSlotTextscan = 14,
  kSlotTextscanOptionsQuery = 15,
};

struct BuiltinTable {
  const BuiltinEntry* entries;
  uint64_t fileioTableIdA;  // identification constants, handed over as stored
  uint64_t fileioTableIdB;
  uint64_t fileioBuiltinCount;
};

inline constexpr uint64_t kFileioTableIdA = 0x3e2b3ce3;
inline constexpr uint64_t kFileioTableIdB = 0x55ba9d45;
inline constexpr uint64_t kFileioBuiltinCount = 16;

// The names a host binds to the slots, in slot order.
inline constexpr const char* kBuiltinNames[16] = {
    "fopen",    "fclose",  "fread",    "fwrite",
    "fscanf",   "fprintf", "sscanf",   "sprintf",
    "sprintfc", "fgets",   "fseek",    "ftell",
    "ferror",   "feof",    "textscan", "textscanOptionsQuery"};

}  // namespace Tarnwicks::FileIO

extern "C" {
TW_FILEIO_API void KVInitialize_fileio();
TW_FILEIO_API void KVTerminate_fileio();
TW_FILEIO_API const Tarnwicks::FileIO::BuiltinTable* QueryKVFcnTable_fileio();
TW_FILEIO_API extern const char* const libtwfileio_version;
TW_FILEIO_API extern const char* const libtwfileio_build_date;
}

namespace builtins::util {
// The sprintf body, for hosts that format without going through the table.
TW_FILEIO_API int fiSprintf(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);
}  // namespace builtins::util
