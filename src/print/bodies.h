// The built-in bodies that the print family provides. The frame's table calls them
// after the gateway has checked the argument counts.
#pragma once

#include "twhost/kx_array.h"

namespace Tarnwicks::FileIO {

int fprintfBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);
int sprintfBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);
int sprintfcBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);

}  // namespace Tarnwicks::FileIO
