// libFuzzer target for textscan's read: random text with a random format
// and options (makeCall picks them from the first bytes).
//
// Beyond the sanitizers it checks that every way of reading the same input
// gives the same outcome (result, error and position): a UTF-8 file read
// as bytes and read decoded, each in normal blocks and in blocks of three
// units (so that every refill and drop happens inside fields), and a char
// array of the decoded text (result and error); a char array of ASCII text
// is also read as bytes, in normal and tiny blocks, against its read in
// units (result, error and position).
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "textscan/column.h"
#include "textscan/read_paths_check.h"
#include "textscan/read_switches.h"

namespace {

using namespace textscan::check;

constexpr size_t kTinyBlock = 3;

void ignoreWarning(const std::string&, const std::string&) {}

const std::string& scratchPath() {
  static const std::string path = "/tmp/textscan_read_fuzz." + std::to_string(getpid());
  return path;
}

ReadOutcome readWith(const MadeCall& call, bool bytes, size_t block) {
  textscan::setFastPathEnabled(bytes);
  textscan::setFileBlockUnits(block);
  ReadOutcome outcome = readFile(scratchPath(), "UTF-8", call.view());
  textscan::setFastPathEnabled(true);
  textscan::setFileBlockUnits(0);
  return outcome;
}

ReadOutcome readTextWith(const kxArray* source, const MadeCall& call, bool bytes, size_t block) {
  textscan::setFastPathEnabled(bytes);
  textscan::setFileBlockUnits(block);
  ReadOutcome outcome = readSource(source, call.view());
  textscan::setFastPathEnabled(true);
  textscan::setFileBlockUnits(0);
  return outcome;
}

[[noreturn]] void fault(const char* what, const MadeCall& call, const ReadOutcome& a,
                        const ReadOutcome& b) {
  fprintf(stderr, "textscan_read_fuzz: %s\nformat: %s\nfirst: %s @ %g\nsecond: %s @ %g\n", what,
          call.format.c_str(), a.result.c_str(), a.position, b.result.c_str(), b.position);
  std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < kChoiceBytes) return 0;
  kxSetWarningHandler(&ignoreWarning);
  MadeCall call = makeCall(data);
  std::string text(reinterpret_cast<const char*>(data + kChoiceBytes), size - kChoiceBytes);
  if (FILE* f = fopen(scratchPath().c_str(), "wb")) {
    fwrite(text.data(), 1, text.size(), f);
    fclose(f);
  } else {
    return 0;
  }
  ReadOutcome bytes = readWith(call, true, 0);
  ReadOutcome decoded = readWith(call, false, 0);
  if (!(bytes == decoded)) fault("bytes and decoded text differ", call, bytes, decoded);
  ReadOutcome tinyBytes = readWith(call, true, kTinyBlock);
  if (!(tinyBytes == bytes)) fault("tiny blocks of bytes differ", call, bytes, tinyBytes);
  ReadOutcome tinyDecoded = readWith(call, false, kTinyBlock);
  if (!(tinyDecoded == bytes))
    fault("tiny blocks of decoded text differ", call, bytes, tinyDecoded);
  if (!text.empty()) {
    std::u16string wide;
    textscan::FieldText(text.data(), text.size()).appendTo(wide);
    kxOwned source(kxCreateStringFromNChars_UTF16(wide.data(), wide.size()));
    ReadOutcome inMemory = readTextWith(source.get(), call, false, 0);
    if (inMemory.result != bytes.result) fault("a char array differs", call, bytes, inMemory);
    ReadOutcome narrowed = readTextWith(source.get(), call, true, 0);
    if (!(narrowed == inMemory))
      fault("a char array read as bytes differs", call, inMemory, narrowed);
    ReadOutcome tinyNarrowed = readTextWith(source.get(), call, true, kTinyBlock);
    if (!(tinyNarrowed == inMemory))
      fault("tiny blocks of a char array read as bytes differ", call, inMemory, tinyNarrowed);
  }
  return 0;
}
