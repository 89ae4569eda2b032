// The wording of the shell's own errors and warnings.
#include "shell_errors.h"

namespace tw {

namespace {

struct Text {
  const char* key;
  const char* text;
};

const Text kTexts[] = {
    {"SyntaxError", "{0}"},
    {"Interrupted", "Interrupted by Ctrl-C."},
    {"UndefinedName", "'{0}' is not a variable or a function."},
    {"UndefinedFunction", "There is no function named '{0}'."},
    {"UndefinedDotted", "'{0}' is not a variable, a function or a package method."},
    {"NoValue", "'{0}' gives no value to use here."},
    {"TooFewOutputs", "Output {0} was asked for, but the right-hand side did not give it."},
    {"TooManyOutputs", "Too many outputs asked of {0}."},
    {"TooFewInputs", "Not enough inputs for {0}."},
    {"TooManyInputs", "Too many inputs for {0}."},
    {"BadTarget", "This cannot be assigned to."},
    // indexing
    {"BadIndex", "Indices must be positive integers or logical values; {0} is not one."},
    {"BadIndexType", "A value of class {0} cannot be used as an index."},
    {"IndexOutOfRange", "Index {0} is past the end: the array has {1} elements."},
    {"SubscriptOutOfRange",
     "Index {0} in position {1} is past the end: that dimension has {2} elements."},
    {"BraceOnNonCell", "Braces index cells, but this value is of class {0}."},
    {"BraceAssignCount", "Braces assign to one cell at a time, not to {0}."},
    {"CellNeedsCell",
     "Only cells go into a cell array through parentheses; use braces to store a {0}."},
    {"StructNeedsStruct", "Only a struct can be assigned into a struct array, not a {0}."},
    {"NoSuchField", "There is no field named '{0}'."},
    {"FieldOfNonStruct", "Field '{0}' needs a struct, but this value is of class {1}."},
    {"FieldOfArray",
     "Field '{0}' cannot be set on a {1} struct array at once; name one element, as in s(i).{0}."},
    {"BadFieldName", "A field name must be a non-empty character row."},
    {"GrowMatrix",
     "A matrix cannot grow through a single index or its last subscript; give one subscript per "
     "dimension."},
    {"DeleteShape", "Deleting with several subscripts needs all but one of them to be ':'."},
    {"NoSubscripts", "An assignment through () needs at least one subscript."},
    {"AssignCount", "{0} values cannot be assigned to {1} elements."},
    {"IndexObject", "Values of class {0} cannot be indexed or assigned into here."},
    {"EndOutsideIndex", "'end' stands for the last index only inside an array's subscripts."},
    {"ColonOutsideIndex", "A lone ':' has a meaning only as a subscript."},
    // operators
    {"UndefinedOperator", "Operator '{0}' is not defined for {1} and {2}."},
    {"UndefinedUnary", "Operator '{0}' is not defined for a value of class {1}."},
    {"SizeMismatch", "The sizes of the operands of '{0}' do not agree: {1} and {2}."},
    {"MixedIntegers", "Integers of classes {0} and {1} cannot be combined."},
    {"ComplexInteger", "Complex arithmetic is not supported for integer classes ({0} and {1})."},
    {"InnerDimensions",
     "In a matrix product the columns of the left ({0}) must match the rows of the right ({1}); "
     "use .* to multiply element by element."},
    {"IntegerMatrixProduct",
     "Matrix products are not supported for integer classes ({0} and {1}); use .* instead."},
    {"NotMatrix", "'{0}' works on two-dimensional matrices only."},
    {"MatrixDivision",
     "Matrix division with '{0}' is not supported; divide by a scalar or use ./ instead."},
    {"MatrixPower", "Matrix powers are not supported; use .^ for element-wise powers."},
    {"TransposeNd", "Only two-dimensional arrays can be transposed."},
    {"NotLogicalScalar", "Each operand of '{0}' must be a single logical or numeric value."},
    {"BadCondition", "A value of class {0} cannot be used as a condition."},
    {"RangeTooLarge", "That range has too many elements."},
    // joining
    {"JoinRows", "Arrays joined side by side need the same number of rows: {0} and {1}."},
    {"JoinColumns",
     "Rows stacked on top of each other need the same number of columns: {0} and {1}."},
    {"JoinClasses", "Values of class {0} cannot be joined with {1}."},
    {"JoinNd", "Only arrays of one or two dimensions can be joined."},
    {"StructFieldsDiffer", "Structs joined together must have the same fields."},
    // conversions and arguments
    {"ConversionFailed", "A value of class {0} cannot be converted to class {1}."},
    {"NeedScalar", "{0} must be a real numeric scalar."},
    {"NeedText", "{0} must be text, but this value is of class {1}."},
    {"NeedNumbers", "{0} needs numbers, but this value is of class {1}."},
    {"BadSize", "The size given to {0} must be made of non-negative integers."},
    {"BadDimension", "A dimension must be a positive integer."},
    {"BadClassName", "'{0}' is not the name of a numeric class."},
    {"ComplexParts", "The parts of a complex number must be real numbers."},
    {"SparseInput", "sparse takes a real double or logical matrix, not a value of class {0}."},
    {"StructPairs", "struct takes field names and values in pairs."},
    {"StructCellSizes", "The cell values given to struct must all have the same size."},
    {"ReshapeCount", "{0} elements cannot be arranged as {1}."},
    {"ReshapeOpen", "Only one size of a reshape can be left open with []."},
    {"BadErrorStruct", "An error struct needs a 'message' field that holds text."},
    {"BadFormat", "'{0}' is not a number format; use format short or format long."},
    {"NoHelp", "There is no help for '{0}'; help alone lists the functions."},
    // files and folders
    {"NoSuchFolder", "The folder '{0}' does not exist."},
    {"FileNotFound", "No file matches '{0}'."},
    {"CannotDelete", "'{0}' could not be deleted: {1}."},
};

}  // namespace

void registerShellMessages() {
  for (const Text& t : kTexts) kxRegisterMessage(std::string("KORVAN:shell:") + t.key, t.text);
}

}  // namespace tw
