// Help for the sixteen built-ins of the file library.
#include "help_texts.h"

namespace tw {

namespace {

const HelpEntry kBuiltins[] = {
    {"fopen", "open a file, list the open files, or ask how a file was opened",
     "fid = fopen(name)                      open for reading\n"
     "[fid, message] = fopen(name, permission, machineFormat, encoding)\n"
     "fids = fopen('all')                    the identifiers of the open files\n"
     "[name, permission, format, encoding] = fopen(fid)\n"
     "permission: 'r' 'w' 'a' 'r+' 'w+' 'a+' (a 't' or 'b' may follow; 'W' and 'A'\n"
     "  write without flushing). machineFormat: 'n' native, 'l' or 'ieee-le', 'b' or\n"
     "  'ieee-be'. encoding: an ICU converter name, 'UTF-8' by default.\n"
     "A file that cannot be opened gives fid -1, and message says why.",
     "[fid, message] = fopen('data.bin', 'w', 'ieee-be')\n"
     "fclose(fid);"},
    {"fclose", "close a file, or all of them", "status = fclose(fid)\nstatus = fclose('all')",
     "fid = fopen(tempname(), 'w');\nfclose(fid)"},
    {"fread", "read binary data into an array",
     "[data, count] = fread(fid)\n"
     "[data, count] = fread(fid, size, precision, skip, machineFormat)\n"
     "size: n, Inf (all, the default), or [m n] and [m Inf] for m rows, filled\n"
     "  column by column. precision: 'uint8' (the default, read as double),\n"
     "  'int16', 'single', ..., 'int16=>int16' or '*int16' to keep the class,\n"
     "  'ubit4', 'bit12' for bit fields, '3*uint8' for groups before a skip.",
     "fid = fopen(tempname(), 'w+');\n"
     "fwrite(fid, [1 2 300], 'uint16');\n"
     "frewind(fid);\n"
     "words = fread(fid, [1 3], 'uint16=>uint16')\n"
     "fclose(fid);"},
    {"fwrite", "write the elements of an array as binary data",
     "count = fwrite(fid, data)               as uint8\n"
     "count = fwrite(fid, data, precision, skip, machineFormat)\n"
     "Elements go in column order; precision names the type in the file.",
     "fid = fopen(tempname(), 'w');\n"
     "count = fwrite(fid, [1.5 -2], 'double', 0, 'ieee-be')\n"
     "fclose(fid);"},
    {"fscanf", "read formatted text from a file into an array",
     "[data, count] = fscanf(fid, format)\n"
     "[data, count] = fscanf(fid, format, size)\n"
     "The format is applied again and again while the text matches it; size as\n"
     "  for fread. Numbers come back as a column of doubles.",
     "fid = fopen(tempname(), 'w+');\n"
     "fprintf(fid, '1 2 3 4');\n"
     "frewind(fid);\n"
     "pairs = fscanf(fid, '%d', [2 Inf])\n"
     "fclose(fid);"},
    {"fprintf", "write formatted text to a file or the console",
     "count = fprintf(fid, format, values...)\n"
     "count = fprintf(format, values...)     to the console\n"
     "The format is used again while values are left: each element of each\n"
     "  array in turn. fid 1 is the console, 2 its error stream.",
     "fprintf('%d squared is %d\\n', [1 2 3; 1 4 9]);"},
    {"sscanf", "read formatted text from a text into an array",
     "[data, count, message, next] = sscanf(text, format)\n"
     "[data, count, message, next] = sscanf(text, format, size)\n"
     "next is the index of the first character not read.",
     "[values, count] = sscanf('3.5 7 10', '%f')"},
    {"sprintf", "format values into a text",
     "[text, message] = sprintf(format, values...)\n"
     "As fprintf, but the result is returned: %d %i %u %f %e %g %x %o %c %s,\n"
     "  with flags, width and precision (%-8.3f, %*d).",
     "label = sprintf('%s has %d lines', 'the file', 3)"},
    {"sprintfc", "format each row of values into a cell of texts",
     "[texts, message, isLiteral] = sprintfc(format, values)\n"
     "[texts, message, isLiteral] = sprintfc(format, values, flag)\n"
     "One text for each use of the format.",
     "pieces = sprintfc('%d-%d', [1 2 3 4])"},
    {"fgets", "read one line of a file, with its line end",
     "[line, ends] = fgets(fid)\n"
     "[line, ends] = fgets(fid, nchar)      at most nchar characters\n"
     "line is -1 at the end of the file; fgetl drops the line end.",
     "fid = fopen(tempname(), 'w+');\n"
     "fprintf(fid, 'one\\ntwo\\n');\n"
     "frewind(fid);\n"
     "first = fgets(fid)\n"
     "fclose(fid);"},
    {"fseek", "move to a position in a file",
     "status = fseek(fid, offset, origin)\n"
     "origin: 'bof' or -1 (the start), 'cof' or 0 (here), 'eof' or 1 (the end).\n"
     "status is 0, or -1 when the position is outside the file (ferror says why).",
     "fid = fopen(tempname(), 'w+');\n"
     "fwrite(fid, 1:10);\n"
     "fseek(fid, -2, 'eof');\n"
     "lastTwo = fread(fid)'\n"
     "fclose(fid);"},
    {"ftell", "the position in a file, in bytes from its start", "position = ftell(fid)",
     "fid = fopen(tempname(), 'w');\nfwrite(fid, 1:5);\nposition = ftell(fid)\nfclose(fid);"},
    {"ferror", "the last error of a file, as text and as a number",
     "[message, number] = ferror(fid)\n"
     "[message, number] = ferror(fid, 'clear')   and forget it",
     "fid = fopen(tempname(), 'w+');\n"
     "fseek(fid, 10, 'bof');\n"
     "[message, number] = ferror(fid)\n"
     "fclose(fid);"},
    {"feof", "whether a read has reached the end of a file", "atEnd = feof(fid)",
     "fid = fopen(tempname(), 'w+');\n"
     "fwrite(fid, 1:3);\n"
     "frewind(fid);\n"
     "data = fread(fid);\n"
     "atEnd = feof(fid)\n"
     "fclose(fid);"},
    {"textscan", "read delimited text into a cell of typed columns",
     "[columns, position] = textscan(fid, format)\n"
     "[columns, position] = textscan(text, format, repeat, name, value, ...)\n"
     "format: %f %d %u %s %q %c %D (dates) %C (categories) %*f to skip, ...\n"
     "columns: a cell with one entry per conversion: numbers in a column of\n"
     "  their class, text in a cell column, %D a datetime and %C a categorical\n"
     "  (help datetime, help categorical).\n"
     "Options: 'Delimiter', 'HeaderLines', 'CollectOutput', 'EmptyValue',\n"
     "  'TreatAsEmpty', 'CommentStyle', 'Whitespace', 'EndOfLine', ...",
     "c = textscan(sprintf('a,1\\nb,2\\n'), '%s %f', 'Delimiter', ',')"},
    {"textscanOptionsQuery", "the options that textscan would read with, as a struct",
     "options = textscanOptionsQuery(source, format, name, value, ...)\n"
     "The same inputs as textscan; nothing is read.",
     "options = textscanOptionsQuery('1;2', '%f', 'Delimiter', ';')"},
};

}  // namespace

std::span<const HelpEntry> builtinHelp() {
  return kBuiltins;
}

}  // namespace tw
