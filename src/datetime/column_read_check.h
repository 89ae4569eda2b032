// For the tests and the fuzz target: textscan reads with %C and %D columns
// rendered whole as text (datetime and categorical values opened up into
// their properties), so that two ways of reading one input can be
// compared; and the categories that %C must give for the texts %q reads
// from the same fields by the reader's full path. Not used by the library
// itself.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "datetime/category_collector.h"
#include "textscan/read_paths_check.h"
#include "textscan/read_switches.h"
#include "twhost/kx_data.h"

namespace datetime::check {

using textscan::check::callSlot;
using textscan::check::transcript;

// A value as text; an object as its class and each property's transcript.
inline std::string describe(const kxArray* a) {
  if (!a || !kxIsObject(a)) return transcript(a);
  std::string out = std::string(kxGetObjectClassName(a)) + "(";
  const kxArray* props = kxGetObjectProperties(a);
  for (int f = 0; props && f < kxGetNumberOfFields(props); ++f) {
    out += std::string(kxGetFieldNameByNumber(props, f)) + "=" +
           transcript(kxGetFieldByNumber(props, 0, f)) + ";";
  }
  return out + ")";
}

// textscan(source, args...): each column described on its own line, then
// "@" and the position; or the error as "identifier: message".
inline std::string outcomeOf(const kxArray* source, const std::vector<const kxArray*>& args) {
  std::vector<const kxArray*> all{source};
  all.insert(all.end(), args.begin(), args.end());
  std::string error;
  std::vector<kxOwned> out = callSlot(Tarnwicks::FileIO::kSlotTextscan, 2, all, error);
  if (!error.empty()) return error;
  std::string text;
  for (size_t i = 0; i < kxGetNumberOfElements(out[0].get()); ++i) {
    text += describe(kxGetCell(out[0].get(), i)) + "\n";
  }
  return text + "@" + std::to_string(kxGetScalar(out[1].get()));
}

// The outcome without its position, which counts bytes in a file and units
// in a char array.
inline std::string withoutPosition(const std::string& outcome) {
  return outcome.substr(0, outcome.rfind('@'));
}

// The outcome of reading the UTF-8 file at `path` as bytes or decoded, in
// blocks of `block` units (0 for the normal size).
inline std::string fileOutcome(const std::string& path, const std::vector<const kxArray*>& args,
                               bool bytes, size_t block) {
  textscan::setFastPathEnabled(bytes);
  textscan::setFileBlockUnits(block);
  kxOwned name(kxCreateString(path.c_str()));
  std::string error;
  std::vector<kxOwned> fid = callSlot(Tarnwicks::FileIO::kSlotFopen, 1, {name.get()}, error);
  std::string outcome = outcomeOf(fid[0].get(), args);
  callSlot(Tarnwicks::FileIO::kSlotFclose, 1, {fid[0].get()}, error);
  textscan::setFastPathEnabled(true);
  textscan::setFileBlockUnits(0);
  return outcome;
}

using Names = std::vector<std::optional<std::u16string>>;

// Each element of a categorical as its category's name, none for undefined.
inline Names namesOf(const kxArray* categorical) {
  const kxArray* props = kxGetObjectProperties(categorical);
  const kxArray* categories = kxGetField(props, 0, "Categories");
  const kxArray* codes = kxGetField(props, 0, "Codes");
  Names out;
  for (size_t i = 0; i < kxGetNumberOfElements(codes); ++i) {
    auto code = static_cast<size_t>(KxData(codes).asDouble(i));
    if (code == 0) {
      out.emplace_back();
    } else {
      out.emplace_back(matrix::get_ustring(kxGetCell(categories, code - 1)));
    }
  }
  return out;
}

// What %C must give for the cell of texts %q reads from the same fields.
inline Names categoriesOfTexts(const kxArray* cell) {
  Names out;
  for (size_t i = 0; i < kxGetNumberOfElements(cell); ++i) {
    const kxArray* e = kxGetCell(cell, i);
    std::u16string text = e ? matrix::get_ustring(e) : std::u16string();
    if (isUndefinedCategory(text)) {
      out.emplace_back();
    } else {
      out.emplace_back(text);
    }
  }
  return out;
}

// Reads the char array `source` with a format of n "%C", and the UTF-8 file
// at `path` holding the same text with n "%q", decoded and in blocks of
// three units, the rest of `args` (name-value pairs) alike; tells whether
// each %C column holds the categories of the texts of its %q column. The
// char array lies whole in the reader's window, so its plain fields take
// the one-scan path; in the file's tiny blocks nearly every field reaches
// the window's end and takes the full reader. `why` says what differs.
inline bool categoriesMatchQuotedTexts(const kxArray* source, const std::string& path, int columns,
                                       const std::vector<const kxArray*>& options,
                                       std::string& why) {
  constexpr size_t kTinyBlock = 3;
  auto formatOf = [&](const char* conversion) {
    std::string format;
    for (int k = 0; k < columns; ++k) format += (k ? " " : "") + std::string(conversion);
    return kxOwned(kxCreateString(format.c_str()));
  };
  kxOwned categoryFormat = formatOf("%C");
  std::vector<const kxArray*> args{source, categoryFormat.get()};
  args.insert(args.end(), options.begin(), options.end());
  std::string categoryError;
  std::vector<kxOwned> categories =
      callSlot(Tarnwicks::FileIO::kSlotTextscan, 2, args, categoryError);

  kxOwned textFormat = formatOf("%q");
  textscan::setFastPathEnabled(false);
  textscan::setFileBlockUnits(kTinyBlock);
  kxOwned name(kxCreateString(path.c_str()));
  std::string textError;
  std::vector<kxOwned> fid = callSlot(Tarnwicks::FileIO::kSlotFopen, 1, {name.get()}, textError);
  args = {fid[0].get(), textFormat.get()};
  args.insert(args.end(), options.begin(), options.end());
  std::vector<kxOwned> texts = callSlot(Tarnwicks::FileIO::kSlotTextscan, 2, args, textError);
  std::string ignored;
  callSlot(Tarnwicks::FileIO::kSlotFclose, 1, {fid[0].get()}, ignored);
  textscan::setFastPathEnabled(true);
  textscan::setFileBlockUnits(0);

  if (categoryError != textError) {
    why = "errors differ: \"" + categoryError + "\" and \"" + textError + "\"";
    return false;
  }
  if (!categoryError.empty()) return true;
  for (int k = 0; k < columns; ++k) {
    if (namesOf(kxGetCell(categories[0].get(), k)) !=
        categoriesOfTexts(kxGetCell(texts[0].get(), k))) {
      why = "column " + std::to_string(k + 1) + " differs";
      return false;
    }
  }
  return true;
}

}  // namespace datetime::check
