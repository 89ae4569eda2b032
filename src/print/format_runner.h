// PrintFormatRunner: one print run, a format applied to its values until
// they run out. Used by fprintf and sprintf.
#pragma once

#include <cstdint>
#include <memory>

#include "argument_source.h"
#include "batch_program.h"
#include "format_parser.h"
#include "print_sink.h"
#include "twhost/kx_array.h"

namespace Tarnwicks::FileIO {

class PrintFormatRunner {
 public:
  PrintFormatRunner(const ustring& format, PrintSink& sink, kxArray* const* args, uint64_t count);

  // True on a clean end. False when a fault ended the output, with its code
  // in errorCode; what was printed before it stays. NotEnoughArgs is the
  // ordinary end of a format reused until its values ran out mid-pass.
  bool run();
  // Keeps every value on the pieces' own path; for comparing the two.
  void disableBatch() { batch_.reset(); }

  int errorCode = 0;

 private:
  void runPasses();
  bool runBatch();

  PrintFormatParser parser_;
  std::unique_ptr<printfArgumentSource> source_;
  printfSequentialArgumentSource* sequential_ = nullptr;
  foutFormatPiece* piece_ = nullptr;
  PrintSink& sink_;
  std::unique_ptr<BatchProgram> batch_;
};

}  // namespace Tarnwicks::FileIO
