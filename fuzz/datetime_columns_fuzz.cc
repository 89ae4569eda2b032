// libFuzzer target for textscan's %C and %D columns: random text read with a
// format and options picked by the first bytes.
//
// Beyond the sanitizers it checks that
// - a UTF-8 file read as bytes and decoded, in normal blocks and in blocks
//   of three units, and a char array of the decoded text give the same
//   values (and the files the same position): the reader's one-scan path
//   for plain fields and its full path agree;
// - a format of %C alone, over a char array (whole in the reader's window,
//   so its plain fields take the one-scan path), gives the categories of
//   the texts that the same format in %q reads from the file in tiny
//   blocks (where nearly every field takes the full reader).
//
// Input: byte 0 picks the format, byte 1 the options, the rest is the text.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "datetime/column_read_check.h"
#include "datetime/columns.h"
#include "textscan/column.h"

namespace {

using namespace datetime::check;

constexpr size_t kChoiceBytes = 2;
constexpr size_t kTinyBlock = 3;

struct Format {
  const char* text;
  int categoryColumns;  // the number of %C when they are all it holds, else 0
};

const Format kFormats[] = {
    {"%C", 1},
    {"%C %C", 2},
    {"%C %f", 0},
    {"%q %C", 0},
    {"%{yyyy-MM-dd}D %C", 0},
    {"%C %{HH:mm:ss.SSSSSS}D", 0},
    {"%D", 0},
    {"%*s %C", 0},
};

// Bits of byte 1, each adding one option.
std::vector<kxOwned> optionsOf(uint8_t bits) {
  std::vector<kxOwned> a;
  auto add = [&](const char* name, kxArray* value) {
    a.emplace_back(kxCreateString(name));
    a.emplace_back(value);
  };
  if (bits & 1) add("Delimiter", kxCreateString(bits & 2 ? "," : ",;"));
  if (bits & 4) add("CommentStyle", kxCreateString("#"));
  if (bits & 8) add("MultipleDelimsAsOne", kxCreateDoubleScalar(1));
  if (bits & 16) add("Whitespace", kxCreateString(""));
  if (bits & 32) add("EndOfLine", kxCreateString("\\r\\n"));
  if (bits & 64) add("ReturnOnError", kxCreateDoubleScalar(0));
  return a;
}

void ignoreWarning(const std::string&, const std::string&) {}

const std::string& scratchPath() {
  static const std::string path = "/tmp/datetime_columns_fuzz." + std::to_string(getpid());
  return path;
}

[[noreturn]] void fault(const char* what, const Format& format, const std::string& a,
                        const std::string& b) {
  fprintf(stderr, "datetime_columns_fuzz: %s\nformat: %s\nfirst: %s\nsecond: %s\n", what,
          format.text, a.c_str(), b.c_str());
  std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size <= kChoiceBytes) return 0;
  static const bool installed = (datetime::installTextscanColumns(), true);
  (void)installed;
  kxSetWarningHandler(&ignoreWarning);
  const Format& format = kFormats[data[0] % std::size(kFormats)];
  std::vector<kxOwned> options = optionsOf(data[1]);
  kxOwned formatText(kxCreateString(format.text));
  std::vector<const kxArray*> args{formatText.get()};
  for (const kxOwned& o : options) args.push_back(o.get());

  std::string text(reinterpret_cast<const char*>(data + kChoiceBytes), size - kChoiceBytes);
  if (FILE* f = fopen(scratchPath().c_str(), "wb")) {
    fwrite(text.data(), 1, text.size(), f);
    fclose(f);
  } else {
    return 0;
  }
  std::string bytes = fileOutcome(scratchPath(), args, true, 0);
  std::string decoded = fileOutcome(scratchPath(), args, false, 0);
  if (decoded != bytes) fault("bytes and decoded text differ", format, bytes, decoded);
  std::string tinyBytes = fileOutcome(scratchPath(), args, true, kTinyBlock);
  if (tinyBytes != bytes) fault("tiny blocks of bytes differ", format, bytes, tinyBytes);
  std::string tinyDecoded = fileOutcome(scratchPath(), args, false, kTinyBlock);
  if (tinyDecoded != bytes) fault("tiny blocks of decoded text differ", format, bytes, tinyDecoded);

  std::u16string wide;
  textscan::FieldText(text.data(), text.size()).appendTo(wide);
  kxOwned source(kxCreateStringFromNChars_UTF16(wide.data(), wide.size()));
  std::string inMemory = outcomeOf(source.get(), args);
  if (withoutPosition(inMemory) != withoutPosition(bytes)) {
    fault("a char array differs", format, bytes, inMemory);
  }
  if (format.categoryColumns > 0) {
    std::vector<const kxArray*> optionArgs(args.begin() + 1, args.end());
    std::string why;
    if (!categoriesMatchQuotedTexts(source.get(), scratchPath(), format.categoryColumns, optionArgs,
                                    why)) {
      fault("%C and %q read different fields", format, why, "");
    }
  }
  return 0;
}
