// Where the shell's results go: displayed values, warnings and the uncaught
// error. On the console they are text; with --json they are records.
#pragma once

#include <cstdio>
#include <string>

#include "number_format.h"
#include "source_location.h"
#include "twhost/kx_array.h"

namespace tw {

class Reporter {
 public:
  virtual ~Reporter() = default;
  // `format` is the console's; records always carry every digit.
  virtual void display(const std::string& name, const kxArray* value, NumberFormat format) = 0;
  virtual void warning(const std::string& identifier, const std::string& message,
                       const SourceLocation& where) = 0;
  virtual void error(const std::string& identifier, const std::string& message,
                     const SourceLocation& where) = 0;
};

class ConsoleReporter : public Reporter {
 public:
  void display(const std::string& name, const kxArray* value, NumberFormat format) override;
  void warning(const std::string& identifier, const std::string& message,
               const SourceLocation& where) override;
  void error(const std::string& identifier, const std::string& message,
             const SourceLocation& where) override;
};

class JsonReporter : public Reporter {
 public:
  // Appends to the file; false when it cannot be opened.
  bool open(const std::string& path);
  ~JsonReporter() override;
  void display(const std::string& name, const kxArray* value, NumberFormat format) override;
  void warning(const std::string& identifier, const std::string& message,
               const SourceLocation& where) override;
  void error(const std::string& identifier, const std::string& message,
             const SourceLocation& where) override;

 private:
  void write(const std::string& record);
  std::FILE* file_ = nullptr;
};

}  // namespace tw
