// Switches of the read for tests and fuzzing. Whether UTF-8 files may be
// read as bytes: off, every file is decoded first. The units a file is read
// in at a time: small blocks make every refill and drop of a read happen
// within a few bytes. The results must be the same either way, and the
// tests and the fuzz target compare them.
#pragma once

#include <cstddef>

namespace textscan {

bool fastPathEnabled();
void setFastPathEnabled(bool enabled);

// 0 restores the normal size.
size_t fileBlockUnits();
void setFileBlockUnits(size_t units);

}  // namespace textscan
