// textscan's %D (dates) and %C (categories) conversions, which this area
// provides as columns of the reader's column interface.
#pragma once

namespace datetime {

// Installs the makers of both column kinds into textscan; call once at
// start-up, before any read.
void installTextscanColumns();

}  // namespace datetime
