// Argument-count limits of the sixteen slots and their entry points.
#pragma once

#include "fileio/builtin_table.h"

namespace Tarnwicks::FileIO {

struct SlotLimits {
  int maxOut;
  int minIn;
  int maxIn;    // -1: no upper limit
  bool legacy;  // numbered messages 3 (outputs) and 2 (inputs), inputs first
};

inline constexpr SlotLimits kSlotLimits[16] = {
    {4, 1, 4, false},   // fopen
    {1, 1, 1, false},   // fclose
    {2, 1, 5, false},   // fread
    {1, 2, 5, false},   // fwrite
    {2, 2, 3, false},   // fscanf
    {1, 1, -1, true},   // fprintf
    {4, 2, 3, false},   // sscanf
    {2, 1, -1, true},   // sprintf
    {3, 2, 3, false},   // sprintfc
    {2, 1, 2, false},   // fgets
    {1, 3, 3, false},   // fseek
    {1, 1, 1, false},   // ftell
    {2, 1, 2, false},   // ferror
    {1, 1, 1, false},   // feof
    {2, 2, -1, false},  // textscan
    {2, 2, -1, false},  // textscanOptionsQuery
};

extern const BuiltinEntry kBuiltinEntries[16];

}  // namespace Tarnwicks::FileIO
