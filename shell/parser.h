// Turns tokens into statements.
#pragma once

#include <string>

#include "ast.h"
#include "lexer.h"

namespace tw {

// Parses a whole script or a chunk of interactive input. Names are given
// slots in `symbols`. Throws SyntaxError.
Block parseProgram(const std::string& source, SymbolTable& symbols);

}  // namespace tw
