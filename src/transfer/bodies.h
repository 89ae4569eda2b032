// The built-in bodies that binary transfer provides. The frame's table calls them
// after the gateway has checked the argument counts.
#pragma once

#include "twhost/kx_array.h"

namespace Tarnwicks::FileIO {

int freadBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);
int fwriteBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);

}  // namespace Tarnwicks::FileIO
