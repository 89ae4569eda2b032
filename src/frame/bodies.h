// The bodies behind the sixteen gateways. Each subsystem defines its own;
// the gateways (gateways.cc) check the argument counts and then call them.
#pragma once

#include "host/kx_array.h"

namespace Tarnwicks::FileIO {

int fopenBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);
int fcloseBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);
int freadBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);
int fwriteBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);
int fscanfBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);
int fprintfBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);
int sscanfBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);
int sprintfBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);
int sprintfcBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);
int fgetsBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);
int fseekBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);
int ftellBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);
int ferrorBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);
int feofBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);
int textscanBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);
int textscanOptionsQueryBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);

// Runs once when the library is initialised: adds the package methods.
void registerFormatParser();

}  // namespace Tarnwicks::FileIO
