// The message catalogue: lookup, placing of arguments, and the texts of
// stream error numbers.
#include "twhost/catalog.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <unordered_map>

#include "catalog_texts.h"
#include "twhost/text.h"

namespace {

std::unordered_map<std::string, std::string>& catalog() {
  static std::unordered_map<std::string, std::string> texts = [] {
    std::unordered_map<std::string, std::string> t;
    t.reserve(twhost::kCatalogTextCount * 2);
    for (size_t i = 0; i < twhost::kCatalogTextCount; ++i) {
      t.emplace(twhost::kCatalogTexts[i].identifier, twhost::kCatalogTexts[i].text);
    }
    return t;
  }();
  return texts;
}

struct ArgText {
  std::string operator()(long v) const { return std::to_string(v); }
  std::string operator()(const std::string& s) const { return s; }
  std::string operator()(const std::u16string& s) const { return fl::i18n::to_string(s); }
};

// Replaces each {N} by argument N. A placeholder without its argument stays
// as written, so a thrower that passes too few still gives a readable text.
std::string placeArguments(const std::string& text,
                           const std::vector<resource_core::MsgArg>& args) {
  std::string out;
  out.reserve(text.size());
  size_t i = 0;
  while (i < text.size()) {
    size_t open = text.find('{', i);
    if (open == std::string::npos) break;
    size_t digitsEnd = open + 1;
    while (digitsEnd < text.size() && text[digitsEnd] >= '0' && text[digitsEnd] <= '9') {
      ++digitsEnd;
    }
    bool placeholder = digitsEnd > open + 1 && digitsEnd - open <= 4 && digitsEnd < text.size() &&
                       text[digitsEnd] == '}';
    if (!placeholder) {
      out.append(text, i, open + 1 - i);
      i = open + 1;
      continue;
    }
    size_t index = std::stoul(text.substr(open + 1, digitsEnd - open - 1));
    out.append(text, i, open - i);
    if (index < args.size()) {
      out += std::visit(ArgText{}, args[index]);
    } else {
      out.append(text, open, digitsEnd + 1 - open);
    }
    i = digitsEnd + 1;
  }
  out.append(text, i, std::string::npos);
  return out;
}

}  // namespace

std::string kxMessageText(const resource_core::BaseMsgID& id) {
  std::string identifier = id.id();
  auto it = catalog().find(identifier);
  if (it == catalog().end()) return "No message text is known for '" + identifier + "'.";
  return placeArguments(it->second, id.args);
}

bool kxHasMessage(const std::string& identifier) {
  return catalog().count(identifier) != 0;
}

void kxRegisterMessage(const std::string& identifier, const std::string& text) {
  catalog()[identifier] = text;
}

std::vector<std::string> kxCatalogIdentifiers() {
  std::vector<std::string> ids;
  ids.reserve(catalog().size());
  for (const auto& entry : catalog()) ids.push_back(entry.first);
  std::sort(ids.begin(), ids.end());
  return ids;
}

const char* kxStreamErrorKey(int code) {
  if (!Tarnwicks::FileIO::isStreamError(code)) return nullptr;
  return twhost::streamErrorKey(static_cast<Tarnwicks::FileIO::StreamError>(code));
}

ustring kxStreamErrorText(int code) {
  if (code == 0) return ustring();
  if (const char* key = kxStreamErrorKey(code)) {
    return fl::i18n::to_ustring(kxMessageText({"KORVAN:FileIO", key}));
  }
  return fl::i18n::to_ustring(std::strerror(code));
}
