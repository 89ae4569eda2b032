#include "format_runner.h"

#include "twhost/stream_errors.h"

namespace Tarnwicks::FileIO {

PrintFormatRunner::PrintFormatRunner(const ustring& format, PrintSink& sink, kxArray* const* args,
                                     uint64_t count)
    : parser_(format, false), sink_(sink) {
  if (parser_.numberingStyle() == PrintFormatParser::kNumbered) {
    source_ = std::make_unique<printfNumberedArgumentSource>(args, count);
  } else {
    auto sequential = std::make_unique<printfSequentialArgumentSource>(args, count);
    sequential_ = sequential.get();
    source_ = std::move(sequential);
    if (BatchProgram::eligible(parser_))
      batch_ = std::make_unique<BatchProgram>(parser_, sink.takesAsciiTextInline());
  }
}

bool PrintFormatRunner::run() {
  try {
    runPasses();
    sink_.flush();
    return true;
  } catch (int code) {
    errorCode = code;
    // Text gathered before the fault was printed before it; a failure to
    // write it out is the earlier fault.
    try {
      sink_.flush();
    } catch (int writeCode) {
      errorCode = writeCode;
    }
    return false;
  }
}

// Whole passes that lie inside what is left of the current array go to the
// batch loop. Returns true when it printed any.
bool PrintFormatRunner::runBatch() {
  if (!batch_ || !sequential_->hasCurrent()) return false;
  uint64_t perPass = batch_->valuesPerPass();
  uint64_t passes = sequential_->remaining() / perPass;
  if (passes == 0) return false;
  batch_->run(sequential_->currentClass(), sequential_->currentElements(),
              sequential_->currentIndex(), passes, sink_);
  sequential_->consume(passes * perPass);
  return true;
}

void PrintFormatRunner::runPasses() {
  bool atPassEnd = runBatch();
  if (!atPassEnd) {
    piece_ = parser_.nextPiece();
    if (piece_ == nullptr) return;
  }
  for (;;) {
    if (!atPassEnd) {
      while (piece_ != nullptr) {
        piece_->output(sink_, *source_);
        piece_ = parser_.nextPiece();
      }
    }
    if (!source_->hasMoreData()) return;
    // Values left over and nothing to consume them.
    if (parser_.numberingStyle() == PrintFormatParser::kUndecided)
      throw code(StreamError::MatchingFailure);
    atPassEnd = runBatch();
    if (!atPassEnd) {
      piece_ = parser_.restartPieces();
      if (piece_ == nullptr) return;
    }
  }
}

}  // namespace Tarnwicks::FileIO
