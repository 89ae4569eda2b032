// The built-in bodies that the textscan area provides, and the package
// method it adds at start-up. The frame's table calls the bodies after the
// gateway has checked the argument counts.
#pragma once

#include "twhost/kx_array.h"

namespace textscan {

int textscanBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);
int textscanOptionsQueryBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs);

// Adds "formatParser" to the package korvan.iofun.internal.
void registerFormatParser();

}  // namespace textscan
