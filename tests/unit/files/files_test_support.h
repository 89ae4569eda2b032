// Helpers of the file layer's tests: a scratch folder, caught warnings and
// the identifier of a raised error, as the other modules' tests have them.
#pragma once

#include <cstdio>
#include <memory>
#include <string>

#include "fileio/attributes.h"
#include "fileio/file_stream.h"
#include "support/builtin_calls.h"
#include "support/scratch_dir.h"

namespace files_test {

using test_support::CaughtWarnings;
using test_support::raisedBy;
using test_support::ScratchDir;

// A scratch folder with one fileStream on a file of given bytes.
class StreamOnFile : public ScratchDir {
 protected:
  // Writes `bytes` to the scratch file `name`, opens it with permission
  // `mode` and puts a stream in `encoding` ("" for the default) on it.
  Tarnwicks::FileIO::fileStream& openStream(const std::string& name, const std::string& bytes,
                                            const char* mode, const char* encoding) {
    close();
    permission = Tarnwicks::FileIO::FilePermission(mode, 0);
    file = std::fopen(writeFile(name, bytes).c_str(), permission.cMode);
    s = std::make_unique<Tarnwicks::FileIO::fileStream>(file, encoding, &permission);
    return *s;
  }
  void close() {
    s.reset();
    if (file) std::fclose(file);
    file = nullptr;
  }
  void TearDown() override {
    close();
    ScratchDir::TearDown();
  }

  Tarnwicks::FileIO::FilePermission permission;
  FILE* file = nullptr;
  std::unique_ptr<Tarnwicks::FileIO::fileStream> s;
};

}  // namespace files_test
