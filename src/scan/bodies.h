// The built-in bodies that the scan area provides. The frame's table calls them
// after the gateway has checked the argument counts.
#pragma once

#include "twhost/kx_array.h"

namespace Tarnwicks::FileIO {

int fscanfBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);
int sscanfBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);

}  // namespace Tarnwicks::FileIO
