// Help for the kinds of value that textscan makes beyond plain arrays: the
// datetimes of %D and the categoricals of %C. They have no function of
// their own in the shell, so help tells how to read and index them.
#include "help_texts.h"

namespace tw {

namespace {

const HelpEntry kValues[] = {
    {"datetime", "dates and times, as textscan's %D gives them",
     "c = textscan(source, '%D')           guesses the format from the first fields\n"
     "c = textscan(source, '%{yyyy-MM-dd HH:mm:ss.SSS}D')   an ICU date pattern\n"
     "d = c{1}       a column of instants; a field that is no date is NaT\n"
     "d(i), d(end), d(2:3), d(mask)   a datetime of those elements\n"
     "numel(d), size(d)               how many: the column is n-by-1\n"
     "char(d)                         the dates as text, one row each\n"
     "The console shows each date in the value's own format (the pattern read\n"
     "with, or the one guessed), to the nanosecond if the pattern has the \"S\"\n"
     "for it. With --json a datetime is {\"class\": \"datetime\", \"format\": ...,\n"
     "\"data\": [[high, low], ...]}: milliseconds since 1970 in UTC, as a pair\n"
     "whose sum is exact; NaT is [\"NaN\", 0].",
     "c = textscan(sprintf('2024-01-02 10:30\\n2024-03-04 08:00\\nnone\\n'), ...\n"
     "             '%{yyyy-MM-dd HH:mm}D', 'Delimiter', ',');\n"
     "d = c{1}\n"
     "second = d(2)\n"
     "n = numel(d)\n"
     "text = char(d(1:2))"},
    {"categorical", "categories, as textscan's %C gives them",
     "c = textscan(source, '%C')\n"
     "k = c{1}       a column: each element is one of the categories, or undefined\n"
     "k(i), k(end), k(2:3), k(mask)   a categorical of those elements, same categories\n"
     "numel(k), size(k)               how many: the column is n-by-1\n"
     "The categories are the distinct texts of the fields, sorted. A field in\n"
     "double quotes is unquoted first; an empty or blank field, and <undefined>,\n"
     "is undefined. With --json a categorical is {\"class\": \"categorical\",\n"
     "\"categories\": [...], \"data\": [name or null, ...]}.",
     "c = textscan(sprintf('red\\nblue\\n\"red\"\\n<undefined>\\n'), '%C');\n"
     "k = c{1}\n"
     "first = k(1)\n"
     "n = numel(k)"},
};

}  // namespace

std::span<const HelpEntry> valueHelp() {
  return kValues;
}

}  // namespace tw
