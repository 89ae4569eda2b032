#include "body_support.h"

#include "fileio/tw_file.h"
#include "twhost/catalog.h"

namespace Tarnwicks::FileIO {

kxArray* errorTextArray(int code) {
  ustring text = kxStreamErrorText(code);
  if (text.empty()) return kxCreateString("");
  return kxCreateStringFromNChars_UTF16(text.data(), text.size());
}

kxArray* textArray(const std::string& text) {
  return kxCreateString(text.c_str());
}

bool tellPosition(twAbsFile* file, int64_t& position) {
  stream* s = file->getStream();
  if (s->getPosition(position) != 0) {
    position = kUnknownPosition;
    file->lastError = s->errorOr(StreamError::NoHelp);
    return false;
  }
  file->lastError = 0;
  return true;
}

}  // namespace Tarnwicks::FileIO
