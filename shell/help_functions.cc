// Help for the shell's own functions.
#include "help_texts.h"

namespace tw {

namespace {

const char* const kIntegerNote =
    "Rounds to the nearest integer (halves away from zero), saturates at the\n"
    "class's bounds, and turns NaN into 0.";

const HelpEntry kFunctions[] = {
    // ---- the session
    {"help", "list the functions, or explain one", "help\nhelp NAME", "help fgetl"},
    {"format", "how the console shows numbers",
     "format short    about five significant digits (the default)\n"
     "format long     every digit\n"
     "format          the same as format short\n"
     "JSON records always keep every digit.",
     "format long\npi\nformat short\npi"},
    {"disp", "show a value without its name", "disp(x)", "disp([1 2 3])\ndisp('text')"},
    {"error", "raise an error",
     "error(message)\nerror(identifier, format, values...)\nerror(errStruct)",
     "try\n  error('demo:tooBig', 'value %d is too big', 12);\ncatch err\n  err.identifier\nend"},
    {"rethrow", "raise again an error caught by try/catch", "rethrow(err)",
     "try\n  try, error('a:b', 'inner'), catch err, rethrow(err), end\ncatch again\n"
     "  again.message\nend"},
    {"warning", "show a warning, or turn warnings off and on",
     "warning(message)\nwarning(identifier, format, values...)\n"
     "warning('off', identifier)    warning('on', identifier)\n"
     "warning('off')                every warning",
     "warning('demo:note', 'shown once');\nwarning('off', 'demo:note');\n"
     "warning('demo:note', 'not shown');"},
    // ---- files and folders
    {"fgetl", "read one line of a file, without its line end",
     "line = fgetl(fid)\nline is -1 at the end of the file.",
     "fid = fopen(tempname(), 'w+');\nfprintf(fid, 'one\\ntwo\\n');\nfrewind(fid);\n"
     "first = fgetl(fid)\nfclose(fid);"},
    {"frewind", "go back to the start of a file", "frewind(fid)\nstatus = frewind(fid)",
     "fid = fopen(tempname(), 'w+');\nfwrite(fid, 1:3);\nfrewind(fid);\n"
     "position = ftell(fid)\nfclose(fid);"},
    {"tempdir", "the folder for temporary files, with a final /", "folder = tempdir()",
     "folder = tempdir()"},
    {"tempname", "a new file name in the temporary folder",
     "name = tempname()\nname = tempname(folder)", "name = tempname()"},
    {"delete", "delete files; names may hold * and ?", "delete(name, ...)",
     "name = tempname();\nfclose(fopen(name, 'w'));\ndelete(name);"},
    {"pwd", "the current folder", "folder = pwd()", "here = pwd()"},
    {"cd", "change the current folder", "cd(folder)\nold = cd(folder)\nfolder = cd()",
     "old = cd(tempdir());\ncd(old);"},
    {"addpath", "add folders to the search path that fopen uses for reading",
     "addpath(folder, ...)\naddpath(folder, '-end')\nold = addpath(...)", "addpath(tempdir());"},
    {"exist", "whether a name is a variable (1), a file (2), a function (5) or a folder (7)",
     "code = exist(name)\ncode = exist(name, kind)    kind: 'var' 'file' 'dir' 'builtin'",
     "x = 1;\nexist('x')\nexist('fopen')"},
    // ---- questions about values
    {"size", "the size of an array", "dims = size(x)\nn = size(x, dim)\n[m, n] = size(x)",
     "[rows, cols] = size(zeros(2, 3))"},
    {"numel", "the number of elements", "n = numel(x)", "n = numel(zeros(2, 3))"},
    {"length", "the largest dimension, or 0 for an empty array", "n = length(x)",
     "n = length(zeros(2, 5))"},
    {"ndims", "the number of dimensions", "n = ndims(x)", "n = ndims(zeros(2, 3, 4))"},
    {"class", "the class of a value, as text", "name = class(x)", "name = class(int8(1))"},
    {"isempty", "whether an array has no elements", "tf = isempty(x)", "tf = isempty([])"},
    {"isequal", "whether values have the same size and contents", "tf = isequal(a, b, ...)",
     "tf = isequal([1 2], [1 2])"},
    {"isfield", "whether a struct has a field", "tf = isfield(s, name)\ntf = isfield(s, names)",
     "tf = isfield(struct('a', 1), 'a')"},
    {"strcmp", "whether texts are equal", "tf = strcmp(a, b)    a or b may be a cell of texts",
     "tf = strcmp({'a', 'b'}, 'b')"},
    {"fieldnames", "the names of a struct's fields, in a column cell", "names = fieldnames(s)",
     "names = fieldnames(struct('a', 1, 'b', 2))"},
    {"isnan", "which elements are NaN", "tf = isnan(x)", "tf = isnan([1 NaN 3])"},
    {"iscell", "whether a value is a cell array", "tf = iscell(x)", "tf = iscell({1})"},
    {"ischar", "whether a value is text", "tf = ischar(x)", "tf = ischar('abc')"},
    {"isstruct", "whether a value is a struct", "tf = isstruct(x)",
     "tf = isstruct(struct('a', 1))"},
    {"isnumeric", "whether a value is of a numeric class", "tf = isnumeric(x)",
     "tf = isnumeric(int8(1))"},
    {"islogical", "whether a value is logical", "tf = islogical(x)", "tf = islogical(true)"},
    {"isreal", "whether a value has no imaginary part", "tf = isreal(x)",
     "tf = isreal(complex(1, 0))"},
    {"issparse", "whether a matrix is sparse", "tf = issparse(x)",
     "tf = issparse(sparse([1 0; 0 1]))"},
    // ---- making values
    {"double", "convert to double precision", "y = double(x)", "y = double(int8(-5))"},
    {"single", "convert to single precision", "y = single(x)", "y = single(pi)"},
    {"int8", "convert to 8-bit signed integers", kIntegerNote, "y = int8([100 200 -200 2.5])"},
    {"uint8", "convert to 8-bit unsigned integers", kIntegerNote, "y = uint8([-1 255.5])"},
    {"int16", "convert to 16-bit signed integers", kIntegerNote, "y = int16(40000)"},
    {"uint16", "convert to 16-bit unsigned integers", kIntegerNote, "y = uint16(65535.4)"},
    {"int32", "convert to 32-bit signed integers", kIntegerNote, "y = int32(-2.5)"},
    {"uint32", "convert to 32-bit unsigned integers", kIntegerNote, "y = uint32(NaN)"},
    {"int64", "convert to 64-bit signed integers", kIntegerNote, "y = int64(2^62)"},
    {"uint64", "convert to 64-bit unsigned integers", kIntegerNote, "y = uint64(2^64)"},
    {"logical", "convert to logical: non-zero is true", "tf = logical(x)",
     "tf = logical([2 0 -1])"},
    {"char", "convert codes to text, or stack texts as the rows of a char matrix",
     "text = char(codes)\nrows = char(text1, text2, ...)\nrows = char(cellOfTexts)\n"
     "rows = char(dates)    a datetime's elements as text, in its format",
     "word = char([104 105])\nrows = char('a', 'bcd')"},
    {"complex", "a complex value from its parts", "z = complex(re, im)\nz = complex(re)",
     "z = complex(1, -2)"},
    {"sparse", "a sparse matrix from a full one", "s = sparse(x)", "s = sparse([0 2; 3 0])"},
    {"struct", "a struct from field names and values",
     "s = struct(name, value, ...)\ns = struct()\n"
     "A cell value makes a struct array, one element for each of its cells.",
     "s = struct('file', 'data.txt', 'lines', 3)"},
    {"cell", "a cell array of empty cells", "c = cell(n)\nc = cell(m, n, ...)", "c = cell(1, 3)"},
    {"reshape", "the same elements in another shape, taken in column order",
     "y = reshape(x, m, n, ...)\ny = reshape(x, [m n ...])\nOne size may be [], to be worked out.",
     "y = reshape(1:6, 2, [])"},
    {"zeros", "an array of zeros", "z = zeros(n)\nz = zeros(m, n, ...)\nz = zeros(..., className)",
     "z = zeros(2, 3, 'int16')"},
    {"ones", "an array of ones", "o = ones(n)\no = ones(m, n, ...)\no = ones(..., className)",
     "o = ones(1, 3)"},
    // ---- constants
    {"pi", "the ratio of a circle's circumference to its diameter", "p = pi\np = pi(m, n)",
     "format long\npi\nformat short"},
    {"eps", "the distance from 1 to the next larger double", "e = eps", "e = eps"},
    {"Inf", "positive infinity", "x = Inf\nx = Inf(m, n)", "x = [1 -Inf Inf]"},
    {"inf", "positive infinity, as Inf", "x = inf", "x = -inf"},
    {"NaN", "not a number", "x = NaN\nx = NaN(m, n)", "x = NaN(1, 2)"},
    {"nan", "not a number, as NaN", "x = nan", "x = nan"},
    {"true", "logical 1", "t = true\nt = true(m, n)", "t = true(1, 2)"},
    {"false", "logical 0", "f = false\nf = false(m, n)", "f = false"},
    {"i", "the imaginary unit", "z = i", "z = 3 + 2*i"},
    {"j", "the imaginary unit, as i", "z = j", "z = 1 - j"},
};

}  // namespace

std::span<const HelpEntry> functionHelp() {
  return kFunctions;
}

}  // namespace tw
