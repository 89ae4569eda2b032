// Switches of the read for tests and fuzzing: whether UTF-8 files may be
// read as bytes. Off, every file is decoded first; the results must be the
// same either way, and the tests and the fuzz target compare them.
#pragma once

namespace textscan {

bool fastPathEnabled();
void setFastPathEnabled(bool enabled);

}  // namespace textscan
