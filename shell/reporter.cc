// Console and JSON reporters.
#include "reporter.h"

#include "display.h"
#include "json_writer.h"
#include "twhost/console.h"

namespace tw {

using services::io::KVStream;
using services::io::writeConsoleBytes;

void ConsoleReporter::display(const std::string& name, const kxArray* value, NumberFormat format) {
  std::string text = displayText(name, value, {format, terminalWidth()});
  writeConsoleBytes(KVStream::KVOut, text.data(), text.size());
}

namespace {

constexpr int kCaretIndent = 4;

// "script.tw:3:5: ", as compilers write it, so that editors can jump there;
// nothing at the prompt, where the line was just typed.
std::string prefix(const SourceLocation& where) {
  if (where.file.empty()) return "";
  std::string p = where.file + ":";
  if (where.line > 0) p += std::to_string(where.line) + ":";
  if (where.column > 0) p += std::to_string(where.column) + ":";
  return p + " ";
}

}  // namespace

void ConsoleReporter::warning(const std::string& /*identifier*/, const std::string& message,
                              const SourceLocation& where) {
  std::string text = prefix(where) + "Warning: " + message + "\n";
  writeConsoleBytes(KVStream::KVErr, text.data(), text.size());
}

void ConsoleReporter::error(const std::string& identifier, const std::string& message,
                            const SourceLocation& where) {
  std::string text = prefix(where) + "Error: " + message;
  if (!identifier.empty()) text += " [" + identifier + "]";
  text += "\n" + caretLines(where, kCaretIndent);
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

void JsonReporter::display(const std::string& name, const kxArray* value, NumberFormat) {
  write(jsonDisplayRecord(name, value));
}

void JsonReporter::warning(const std::string& identifier, const std::string& message,
                           const SourceLocation& where) {
  write(jsonMessageRecord("warning", identifier, message, where));
}

void JsonReporter::error(const std::string& identifier, const std::string& message,
                         const SourceLocation& where) {
  write(jsonMessageRecord("error", identifier, message, where));
}

}  // namespace tw
