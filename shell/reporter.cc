// Console and JSON reporters.
#include "reporter.h"

#include "display.h"
#include "json_writer.h"
#include "twhost/console.h"

namespace tw {

using services::io::KVStream;
using services::io::writeConsoleBytes;

void ConsoleReporter::display(const std::string& name, const kxArray* value) {
  std::string text = displayText(name, value);
  writeConsoleBytes(KVStream::KVOut, text.data(), text.size());
}

void ConsoleReporter::warning(const std::string& /*identifier*/, const std::string& message) {
  std::string text = "Warning: " + message + "\n";
  writeConsoleBytes(KVStream::KVErr, text.data(), text.size());
}

void ConsoleReporter::error(const std::string& identifier, const std::string& message, int line) {
  std::string text = "Error: " + message;
  if (!identifier.empty()) text += " [" + identifier + "]";
  if (line > 0) text += " (line " + std::to_string(line) + ")";
  text += "\n";
  writeConsoleBytes(KVStream::KVErr, text.data(), text.size());
}

bool JsonReporter::open(const std::string& path) {
  file_ = std::fopen(path.c_str(), "a");
  return file_ != nullptr;
}

JsonReporter::~JsonReporter() {
  if (file_) std::fclose(file_);
}

void JsonReporter::write(const std::string& record) {
  if (!file_) return;
  std::fputs(record.c_str(), file_);
  std::fputc('\n', file_);
  // Flushed at once, so that the records are there even if the process dies.
  std::fflush(file_);
}

void JsonReporter::display(const std::string& name, const kxArray* value) {
  write(jsonDisplayRecord(name, value));
}

void JsonReporter::warning(const std::string& identifier, const std::string& message) {
  write(jsonMessageRecord("warning", identifier, message));
}

void JsonReporter::error(const std::string& identifier, const std::string& message, int) {
  write(jsonMessageRecord("error", identifier, message));
}

}  // namespace tw
