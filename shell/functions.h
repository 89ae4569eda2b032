// The shell's host functions. They are registered by name with the host
// (kxRegisterFunction), so the library can call them too, and follow the
// calling form of every function: nlhs outputs asked for, borrowed inputs.
#pragma once

#include <string>
#include <vector>

#include "twhost/calls.h"
#include "twhost/kx_array.h"

namespace tw {

class Interpreter;

// Conversions between classes and the constructors: double ... char,
// complex, sparse, struct, cell, zeros, ones, reshape and the constants.
void registerDataFunctions();
// size, numel, class, isempty, isequal and the other questions about values.
void registerQueryFunctions();
// disp, error, warning, format, files and folders, fgetl and frewind.
void registerSystemFunctions(Interpreter& interp);
// help and help NAME.
void registerHelpFunction(Interpreter& interp);

inline void registerHostFunctions(Interpreter& interp) {
  registerDataFunctions();
  registerQueryFunctions();
  registerSystemFunctions(interp);
  registerHelpFunction(interp);
}

// Registers a function of the shell with the host by name, and keeps the
// name for help's list.
void registerShellFunction(const std::string& name, kxFunction fn);
// Every name registered so far, in the order of registration.
const std::vector<std::string>& shellFunctionNames();

// ---- shared by the function files ----------------------------------------------
void checkArgCount(const char* fn, int nrhs, int min, int max);  // max -1: no limit
void checkOutCount(const char* fn, int nlhs, int max);
// A size given as n, as m, n, ..., or as [m n ...]; a final class name such
// as 'int8' is taken off and returned in `cls` when `cls` is not null.
std::vector<size_t> sizeArguments(const char* fn, int nrhs, kxArray** prhs, kxClassID* cls);
// The class named by a text such as "uint16"; kxUNKNOWN_CLASS if none.
kxClassID classFromName(const std::string& name);
// Text on the console's output stream, as disp and help print it.
void writeOut(const std::string& text);

}  // namespace tw
