// The wording of every message the host knows. Placeholders {0}, {1} ...
// take the identifier's arguments in order.
#include "catalog_texts.h"

namespace twhost {

// The key in "KORVAN:FileIO" of each stream error is its own name. A code
// added to the enum without its case here is a -Wswitch warning, which the
// build keeps clean.
const char* streamErrorKey(Tarnwicks::FileIO::StreamError e) {
  using Tarnwicks::FileIO::StreamError;
  switch (e) {
    case StreamError::NoHelp:
      return "NoHelp";
    case StreamError::CannotOpenFile:
      return "CannotOpenFile";
    case StreamError::IsOpenRead:
      return "IsOpenRead";
    case StreamError::EndOfFile:
      return "EndOfFile";
    case StreamError::IsOpenWrite:
      return "IsOpenWrite";
    case StreamError::NoSpace:
      return "NoSpace";
    case StreamError::FlushError:
      return "FlushError";
    case StreamError::InvalidFormat:
      return "InvalidFormat";
    case StreamError::MatchingFailure:
      return "MatchingFailure";
    case StreamError::SizeTooBig:
      return "SizeTooBig";
    case StreamError::NoMemory:
      return "NoMemory";
    case StreamError::NoMemoryForString:
      return "NoMemoryForString";
    case StreamError::NotEnoughArgs:
      return "NotEnoughArgs";
    case StreamError::UnsupportedDirective:
      return "UnsupportedDirective";
    case StreamError::BadWidthNaN:
      return "BadWidthNaN";
    case StreamError::BadWidthNegInf:
      return "BadWidthNegInf";
    case StreamError::BadWidthInf:
      return "BadWidthInf";
    case StreamError::BadWidthInt:
      return "BadWidthInt";
    case StreamError::BadWidthEmptyArg:
      return "BadWidthEmptyArg";
    case StreamError::BadPrecisionNaN:
      return "BadPrecisionNaN";
    case StreamError::BadPrecisionNegInf:
      return "BadPrecisionNegInf";
    case StreamError::BadPrecisionInf:
      return "BadPrecisionInf";
    case StreamError::BadPrecisionInt:
      return "BadPrecisionInt";
    case StreamError::BadPrecisionEmptyArg:
      return "BadPrecisionEmptyArg";
    case StreamError::BadOffsetNaN:
      return "BadOffsetNaN";
    case StreamError::BadOffsetBeforeBegin:
      return "BadOffsetBeforeBegin";
    case StreamError::BadOffsetAfterEnd:
      return "BadOffsetAfterEnd";
    case StreamError::BadOffsetInt:
      return "BadOffsetInt";
    case StreamError::EmptyArg:
      return "EmptyArg";
    case StreamError::UngetcFailed:
      return "UngetcFailed";
    case StreamError::WriteCarryByteFailed:
      return "WriteCarryByteFailed";
    case StreamError::RequireBinaryFile:
      return "RequireBinaryFile";
    case StreamError::FseekFailed:
      return "FseekFailed";
    case StreamError::ReadFailed:
      return "ReadFailed";
    case StreamError::FseekFailedNegOne:
      return "FseekFailedNegOne";
    case StreamError::FseekFailedSkip:
      return "FseekFailedSkip";
    case StreamError::InvalidChar:
      return "InvalidChar";
    case StreamError::TruncatedChar:
      return "TruncatedChar";
    case StreamError::IllegalChar:
      return "IllegalChar";
    case StreamError::InvalidTableFormat:
      return "InvalidTableFormat";
    case StreamError::BufferOverflow:
      return "BufferOverflow";
    case StreamError::UnknownError:
      return "UnknownError";
    case StreamError::NonScalarNumbered:
      return "NonScalarNumbered";
    case StreamError::NumberedMoreThanArgc:
      return "NumberedMoreThanArgc";
    case StreamError::InternalError:
      return "InternalError";
  }
  return nullptr;
}

const CatalogText kCatalogTexts[] = {
    // ---- the host itself ----
    {"KORVAN:maxlhs", "Too many output arguments."},
    {"KORVAN:maxrhs", "Too many input arguments."},
    {"KORVAN:minrhs", "Not enough input arguments."},
    {"KORVAN:nomem", "Out of memory: the request needs more memory than is available."},
    {"KORVAN:internal", "Internal error: {0}"},
    {"KORVAN:numericOverflow", "A number is too large for the place it has to fit in."},
    {"KORVAN:shell:ConversionFailed", "A value of class {0} cannot be converted to class {1}."},
    {"KORVAN:shell:UndefinedFunction", "There is no function named '{0}'."},
    {"KORVAN:twfileio:UnknownBuiltin", "The file library has no built-in named '{0}'."},
    {"KORVAN:twfileio:NegativeOutputCount",
     "A call cannot ask for {0} outputs; the count is 0 or more."},

    // ---- numbered messages ----
    {"KORVAN:legacy:1", "This function takes exactly one character vector."},
    {"KORVAN:legacy:2", "Not enough input arguments: a format is needed."},
    {"KORVAN:legacy:3", "Too many output arguments."},
    {"KORVAN:legacy:26",
     "The file identifier does not name an open file, or the file could not be closed."},
    {"KORVAN:legacy:27", "The format must be a character vector."},
    {"KORVAN:legacy:28", "The offset must be a real numeric scalar."},
    {"KORVAN:legacy:29", "The origin must be 'bof', 'cof', 'eof', -1, 0 or 1."},
    {"KORVAN:legacy:30", "Give a file identifier, or 'all' to close every open file."},
    {"KORVAN:legacy:31", "The text to read must be a character vector."},
    {"KORVAN:legacy:32", "The second argument must be the text 'clear'."},
    {"KORVAN:legacy:33", "The only second argument allowed here is 'clear'."},
    {"KORVAN:legacy:34",
     "The machine format is not valid: use 'native', 'ieee-le', 'ieee-be', 'ieee-le.l64' or "
     "'ieee-be.l64'."},
    {"KORVAN:legacy:35", "A format must follow the file identifier."},
    {"KORVAN:legacy:36", "The number of characters to read must not be empty."},
    {"KORVAN:legacy:39", "The number of elements is too large to be counted."},

    // ---- files ----
    {"KORVAN:FileIO:InvalidFid",
     "The file identifier does not refer to an open file. Get one from fopen first."},
    {"KORVAN:FileIO:InvalidIntPrecision",
     "A precision 'intN' is read as the signed bit field 'bitN'. Write 'bitN', or one of "
     "'int8', 'int16', 'int32' and 'int64'."},
    {"KORVAN:FileIO:InvalidUIntPrecision",
     "A precision 'uintN' is read as the unsigned bit field 'ubitN'. Write 'ubitN', or one of "
     "'uint8', 'uint16', 'uint32' and 'uint64'."},
    {"KORVAN:FileIO:sizeMustBeNumeric", "The size must be given as a number."},
    {"KORVAN:FileIO:NoHelp", "No further description is available for this error."},
    {"KORVAN:FileIO:CannotOpenFile", "The file could not be opened."},
    {"KORVAN:FileIO:IsOpenRead", "The file is not open for reading; nothing can be read from it."},
    {"KORVAN:FileIO:EndOfFile", "The end of the file was reached."},
    {"KORVAN:FileIO:IsOpenWrite", "The file is open for reading only; it cannot be written."},
    {"KORVAN:FileIO:NoSpace", "There is no room left on the device to write the file."},
    {"KORVAN:FileIO:FlushError", "Buffered data could not be written out to the file."},
    {"KORVAN:FileIO:InvalidFormat", "The format is not valid."},
    {"KORVAN:FileIO:MatchingFailure", "The input does not match the format."},
    {"KORVAN:FileIO:SizeTooBig", "The requested size is too large."},
    {"KORVAN:FileIO:NoMemory", "There is not enough memory to finish the operation."},
    {"KORVAN:FileIO:NoMemoryForString", "There is not enough memory to hold the text."},
    {"KORVAN:FileIO:NotEnoughArgs", "The format asks for more arguments than were given."},
    {"KORVAN:FileIO:UnsupportedDirective", "The format holds a conversion that is not supported."},
    {"KORVAN:FileIO:BadWidthNaN", "A field width taken from the arguments is NaN."},
    {"KORVAN:FileIO:BadWidthNegInf", "A field width taken from the arguments is -Inf."},
    {"KORVAN:FileIO:BadWidthInf", "A field width taken from the arguments is Inf."},
    {"KORVAN:FileIO:BadWidthInt",
     "A field width taken from the arguments is not a whole number in range."},
    {"KORVAN:FileIO:BadWidthEmptyArg", "A field width taken from the arguments is empty."},
    {"KORVAN:FileIO:BadPrecisionNaN", "A precision taken from the arguments is NaN."},
    {"KORVAN:FileIO:BadPrecisionNegInf", "A precision taken from the arguments is -Inf."},
    {"KORVAN:FileIO:BadPrecisionInf", "A precision taken from the arguments is Inf."},
    {"KORVAN:FileIO:BadPrecisionInt",
     "A precision taken from the arguments is not a whole number in range."},
    {"KORVAN:FileIO:BadPrecisionEmptyArg", "A precision taken from the arguments is empty."},
    {"KORVAN:FileIO:BadOffsetNaN", "The offset is NaN."},
    {"KORVAN:FileIO:BadOffsetBeforeBegin", "The position would lie before the start of the file."},
    {"KORVAN:FileIO:BadOffsetAfterEnd", "The position would lie past the end of the file."},
    {"KORVAN:FileIO:BadOffsetInt", "The offset is not a whole number."},
    {"KORVAN:FileIO:EmptyArg", "An argument that the format needs is empty."},
    {"KORVAN:FileIO:UngetcFailed", "A character could not be put back into the input."},
    {"KORVAN:FileIO:WriteCarryByteFailed",
     "The bits left over from a bit-field write could not be written to the file."},
    {"KORVAN:FileIO:RequireBinaryFile", "This operation needs a file opened in binary mode."},
    {"KORVAN:FileIO:FseekFailed", "The file could not be moved to the requested position."},
    {"KORVAN:FileIO:ReadFailed", "Reading from the file failed."},
    {"KORVAN:FileIO:FseekFailedNegOne",
     "The file could not be moved to the requested position; the system refused the move."},
    {"KORVAN:FileIO:FseekFailedSkip", "The bytes to skip could not be skipped in the file."},
    {"KORVAN:FileIO:InvalidChar",
     "A character has no form in the file's encoding, or bytes read stand for no character; a "
     "substitute stands in its place."},
    {"KORVAN:FileIO:TruncatedChar", "The input ends in the middle of a character."},
    {"KORVAN:FileIO:IllegalChar",
     "The text is ill-formed (a lone surrogate, or bytes not valid in the file's encoding); a "
     "substitute stands in its place."},
    {"KORVAN:FileIO:InvalidTableFormat", "The conversion table of the encoding cannot be used."},
    {"KORVAN:FileIO:BufferOverflow", "A buffer was too small for the converted text."},
    {"KORVAN:FileIO:UnknownError", "An error of unknown cause occurred."},
    {"KORVAN:FileIO:NonScalarNumbered", "An argument chosen by its number must be a scalar."},
    {"KORVAN:FileIO:NumberedMoreThanArgc",
     "An argument number in the format is larger than the number of arguments."},
    {"KORVAN:FileIO:InternalError", "An internal error occurred in the file library."},
    {"KORVAN:FileIO:NotBuiltYet", "{0} is not implemented yet in this build of the library."},

    // ---- attributes ----
    {"KORVAN:legacy_two_part:badfilename_mx", "The file name is not valid."},
    {"KORVAN:legacy_two_part:badmachformat_mx", "The machine format is not valid."},
    {"KORVAN:legacy_two_part:badpermission_mx",
     "The permission is not valid: it must start with 'r', 'w', 'a', 'W' or 'A'."},
    {"KORVAN:legacy_two_part:badprecision_mx", "The precision is not valid."},
    {"KORVAN:legacy_two_part:badsize_mx",
     "The size is not valid: give a non-negative scalar, or a pair [m, n] of which only n may be "
     "Inf."},
    {"KORVAN:legacy_two_part:badskip_mx", "The skip count must be a non-negative whole number."},
    {"KORVAN:legacy_two_part:notimplemented_mx", "This operation is not available for this file."},

    // ---- fopen ----
    {"KORVAN:fclose:DataNotWritten",
     "Closing '{0}' failed, and data written to it may be lost: {1}"},
    {"KORVAN:fopen:NotScalarIntValued", "The file identifier must be a whole-number scalar."},
    {"KORVAN:fopen:NotVectorChar", "The file name must be a character vector."},
    {"KORVAN:fopen:InvalidInput", "The arguments given to fopen are not valid."},
    {"KORVAN:fopen:IncorrectFileMode",
     "The permission holds a letter that is not allowed. Use 'r', 'w', 'a', 'W', 'A', with "
     "'+', 'b' or 't'."},
    {"KORVAN:fopen:ConflictingExclusiveFileModes",
     "The permission may ask for only one of reading ('r'), writing ('w', 'W') and appending "
     "('a', 'A')."},
    {"KORVAN:fopen:EncodingString",
     "The encoding must be given as a character vector, without NUL characters."},
    {"KORVAN:fopen:NulInName",
     "The file name holds a NUL character (char(0)), which no file name can hold."},
    {"KORVAN:fopen:InvalidCharacter",
     "The file name holds characters that the file system cannot represent."},

    // ---- encodings ----
    {"KORVAN:iofun:InvalidEncoding", "'{0}' is not a known encoding."},
    {"KORVAN:iofun:InvalidDefaultEncoding", "The default encoding '{0}' is not a known encoding."},
    {"KORVAN:iofun:UnsupportedEncoding",
     "The encoding '{0}' is not fully supported; text may not be converted correctly."},

    // ---- position and lines ----
    {"KORVAN:fseek:offsetMustBeDouble", "The offset must be of class double."},
    {"KORVAN:fseek:originMustBeDouble",
     "The origin must be a double (-1, 0 or 1) or one of 'bof', 'cof' and 'eof'."},
    {"KORVAN:fgets:ncharMustBeDouble", "The number of characters must be of class double."},
    {"KORVAN:fgets:InvalidSize", "The number of characters must be a positive whole number."},

    // ---- fwrite ----
    {"KORVAN:fwrite:UnsupportedClass", "Values of class {0} cannot be written to a file."},
    {"KORVAN:fwrite:UnsupportedAttribute", "Sparse arrays cannot be written to a file."},

    // ---- print ----
    {"KORVAN:printf:invalidInputType", "Values of class {0} cannot be printed with a format."},
    {"KORVAN:printf:invalidInputAttribute", "Sparse arrays cannot be printed with a format."},
    {"KORVAN:printf:NoControlCharacterInFormat",
     "The format ends in a backslash with no character after it."},
    {"KORVAN:printf:OctalCharCodeInvalid",
     "An octal escape in the format has no octal digits after the backslash."},
    {"KORVAN:printf:HexCharCodeInvalid",
     "The escape '\\x' in the format has no hexadecimal digits."},
    {"KORVAN:printf:OctalCharCodeOutOfRange",
     "An octal escape in the format names a character code above 65535."},
    {"KORVAN:printf:HexCharCodeOutOfRange",
     "A hexadecimal escape in the format names a character code above 65535."},
    {"KORVAN:printf:BadEscapeSequenceInFormat",
     "The format holds the unknown escape sequence '\\{0}'."},
    {"KORVAN:sprintfc:invalidInputType", "Values of class {0} cannot be formatted."},
    {"KORVAN:sprintfc:invalidInputAttribute", "Sparse arrays cannot be formatted."},
    {"KORVAN:sprintfc:invalidThirdInputType", "The third argument must be logical."},
    {"KORVAN:sprintfc:invalidFormatType",
     "Arguments chosen by number ('%n$') cannot be used in this format."},

    // ---- textscan ----
    {"KORVAN:textscan:AllNatSuggestFormat",
     "None of the dates could be read. Give their format with %{...}D; the default format for "
     "this locale is '{0}'."},
    {"KORVAN:textscan:AllNatSuggestLocale",
     "None of the dates could be read with the locale '{0}'. Check the 'DateLocale' option: the "
     "format names months or days, which depend on the language."},
    {"KORVAN:textscan:AllNatSuggestOther",
     "None of the dates could be read with the format '{0}'. Check that it matches the data."},
    {"KORVAN:textscan:BadFormatString", "The format is not valid at position {0}, in '{1}': {2}"},
    {"KORVAN:textscan:BufSizeDeprecation",
     "The option 'Bufsize' is no longer supported: textscan sizes its buffer itself."},
    {"KORVAN:textscan:BuildFormatString",
     "'HeaderColumns' is larger than the number of columns found in the data."},
    {"KORVAN:textscan:ClosingDateFormat", "A date format opened with '%{' is not closed by '}D'."},
    {"KORVAN:textscan:ClosingSet", "A character set opened with '%[' is not closed by ']'."},
    {"KORVAN:textscan:DelimiterSpaceConflict",
     "Some characters are both whitespace and delimiters; they are taken as delimiters."},
    {"KORVAN:textscan:EmptyCellArrayInvalid", "The value of '{0}' cannot be an empty cell array."},
    {"KORVAN:textscan:EmptyFormatString",
     "The format is empty and no columns could be found in the data."},
    {"KORVAN:textscan:IncompleteFormat", "A conversion in the format is incomplete."},
    {"KORVAN:textscan:IncorrectEscapeConstant",
     "The value of '{0}' holds an unsupported escape sequence. Use \\\\, \\b, \\n, \\r or \\t."},
    {"KORVAN:textscan:LookforAndGetEndofline",
     "'EndOfLine' must be empty, a single character, or '\\r\\n'."},
    {"KORVAN:textscan:LookforAndGetHeaderColumns", "'HeaderColumns' must not be negative."},
    {"KORVAN:textscan:LookforAndGetHeaderLines", "'HeaderLines' must not be negative."},
    {"KORVAN:textscan:LookforAndGetNumCharactersToSkip",
     "'NumCharactersToSkip' must not be negative."},
    {"KORVAN:textscan:NoInput", "The first argument is empty: there is nothing to read."},
    {"KORVAN:textscan:NonStringCellsInCommentStyle",
     "'CommentStyle' must be a character vector or a cell array of one or two character "
     "vectors."},
    {"KORVAN:textscan:NonStringCellsInTreatAsEmpty",
     "Every cell of 'TreatAsEmpty' must hold a character vector."},
    {"KORVAN:textscan:NonStringsInTreatAsEmpty",
     "'TreatAsEmpty' must be a character vector or a cell array of character vectors."},
    {"KORVAN:textscan:NotAString", "'{0}' must be a character vector."},
    {"KORVAN:textscan:NotAStringOrCellOfStrings",
     "'{0}' must be a character vector or a cell array of character vectors."},
    {"KORVAN:textscan:NotAnIntegerValue", "'{0}' must be a whole number."},
    {"KORVAN:textscan:NotNumericScalar", "'{0}' must be a real numeric scalar."},
    {"KORVAN:textscan:NumericInTreatAsEmpty",
     "'TreatAsEmpty' cannot hold numbers, since they would be read as numbers first."},
    {"KORVAN:textscan:SecondInput",
     "The format must be a character vector: empty, or holding more than blanks."},
    {"KORVAN:textscan:SkipComments", "A comment is still open at the end of the input."},
    {"KORVAN:textscan:TimeZoneSupport",
     "The date format '{0}' holds a time zone, which textscan cannot read."},
    {"KORVAN:textscan:UnableToGuessFormat",
     "The dates fit more than one format, such as '{0}' and '{1}'; '{2}' is used. Give the "
     "format with %{...}D to choose another."},
    {"KORVAN:textscan:UnableToReadFile", "The file is not open for reading."},
    {"KORVAN:textscan:UnknownOption", "'{0}' is not an option of textscan."},
    {"KORVAN:textscan:UnpairedParamsValues", "Options must be given as name and value pairs."},
    {"KORVAN:textscan:UnsupportedSpecifier", "'%{0}' is not a supported conversion."},
    {"KORVAN:textscan:WrongInputType",
     "The first argument must be a file identifier or a character vector."},
    {"KORVAN:textscan:handleErrorAndShowInfo",
     "Field {2} of row {1} could not be read as {3}. The input there is:\n{0}"},
    {"KORVAN:textscan:standardStream",
     "textscan cannot read from the standard input, output or error."},

    // ---- dates and categories ----
    {"KORVAN:categorical:InvalidCodesAndNames",
     "Categories need numeric codes, one value per name, and names as character vectors."},
    {"KORVAN:datetime:FormatConflict_Zz",
     "The format '{0}' names a time zone, but the values have no time zone."},
    {"KORVAN:datetime:InvalidFractionalSeconds",
     "Fractional seconds must be written as one unbroken run of 'S' letters."},
    {"KORVAN:datetime:InvalidLocale", "The locale must be given as a character vector."},
    {"KORVAN:datetime:InvalidLocaleString", "'{0}' is not a locale that dates can be read in."},
    {"KORVAN:datetime:InvalidTextscanValues",
     "Dates from text must come as a double array of milliseconds with a character format."},
    {"KORVAN:datetime:ParseErrs", "The date format '{0}' cannot be used."},
    {"KORVAN:datetime:kexErrors:ICUError", "Date handling failed at step '{0}': {1}."},
    // Not a message: the name of the locale whose date words the reader uses.
    {"KORVAN:datetime:localizedStrings:Locale", "en_US"},
};

const size_t kCatalogTextCount = sizeof(kCatalogTexts) / sizeof(kCatalogTexts[0]);

}  // namespace twhost
