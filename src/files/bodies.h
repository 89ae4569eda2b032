// The built-in bodies that the files area provides. The frame's table calls them
// after the gateway has checked the argument counts.
#pragma once

#include "twhost/kx_array.h"

namespace Tarnwicks::FileIO {

int fopenBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);
int fcloseBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);
int fgetsBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);
int fseekBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);
int ftellBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);
int ferrorBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);
int feofBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);

}  // namespace Tarnwicks::FileIO
