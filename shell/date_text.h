// The text of a datetime's elements in the value's own "Format" (an ICU
// date pattern), as the console shows them and char() gives them.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "twhost/kx_array.h"

namespace tw {

// The pattern shown when a datetime has no format, or one ICU refuses.
inline constexpr char16_t kFallbackDateFormat[] = u"yyyy-MM-dd HH:mm:ss.SSS";

// Formats the instants of one datetime. Making one costs an ICU formatter
// and calendar; each text after that costs one ICU format call.
class DateTextFormatter {
 public:
  explicit DateTextFormatter(const ustring& format);
  ~DateTextFormatter();
  DateTextFormatter(const DateTextFormatter&) = delete;
  DateTextFormatter& operator=(const DateTextFormatter&) = delete;

  // The instant high + low milliseconds since 1970, in UTC, to the
  // nanosecond: "NaT" for NaN, "Inf" and "-Inf" for the infinities. A run
  // of "S" shows the digits of the second's fraction, cut (not rounded) to
  // its length; ten or more "S" go on with zeros.
  std::string text(double high, double low) const;

 private:
  struct Icu;
  std::unique_ptr<Icu> icu_;
};

// The text of each element of a datetime value, in its "Format" (the
// fallback when it has none), in element order.
std::vector<std::string> datetimeTexts(const kxArray* datetime);

}  // namespace tw
