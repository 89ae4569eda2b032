// Finds the date format of a %D conversion that came without one, from the
// data. The candidates come from the interpreter
// ("datetime.getFormatsForGuessing"): a priority block, whose first entry
// that reads the first field is taken at once, and the rest, which the
// first field picks from and each later field narrows.
//
// Cost: one ICU parser per candidate, made once on the first field and
// dropped at once when it fails; later fields test at most the first two
// survivors.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "date_parser.h"
#include "twhost/kx_array.h"

namespace datetime {

class formatGuesser {
 public:
  // Loads the candidates for the locale (a char row, borrowed: it must
  // outlive the guesser).
  explicit formatGuesser(const kxArray* locale);

  // How many candidates the field leaves: 0 when none reads it (nobody is
  // dropped then), 1 when one format stands, 2 or more while it is open.
  size_t narrowCandidates(const char16_t* units, size_t length);

  // The winner: the first survivor, with a warning naming the first two
  // when more than one is left. Null when no candidate ever read a field.
  std::shared_ptr<datetimeICUParser> takeWinner(ustring& format);

  const std::vector<ustring>& candidates() const { return formats_; }

 private:
  size_t scanCandidates(const char16_t* units, size_t length);
  std::shared_ptr<datetimeICUParser> parserFor(const ustring& format);

  const kxArray* locale_;
  std::string localeName_;  // settled from locale_ by the first parser
  std::vector<ustring> formats_;
  std::vector<std::shared_ptr<datetimeICUParser>> parsers_;  // in step with formats_ once set
  uint64_t priorityCount_ = 0;
};

}  // namespace datetime
