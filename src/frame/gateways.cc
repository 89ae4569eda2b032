// The sixteen gateways: argument counts first, in a fixed order and before
// any argument is looked at, then the body. No gateway catches: errors pass
// through to the host.
#include <clocale>

#include "fileio/builtin_table.h"
#include "files/bodies.h"
#include "gateways.h"
#include "not_built_yet.h"
#include "print/bodies.h"
#include "scan/bodies.h"
#include "textscan/bodies.h"
#include "transfer/bodies.h"
#include "twhost/errors.h"

namespace Tarnwicks::FileIO {

namespace {

// Counts for the ordinary gateways: outputs first, then inputs. Where the
// input count is fixed a mismatch always reports too few.
void checkCounts(int nlhs, int nrhs, const SlotLimits& lim) {
  if (nlhs > lim.maxOut) matrix::detail::error_maxlhs();
  if (lim.maxIn >= 0 && lim.minIn == lim.maxIn) {
    if (nrhs != lim.minIn) matrix::detail::error_minrhs();
    return;
  }
  if (lim.maxIn >= 0 && nrhs > lim.maxIn) matrix::detail::error_maxrhs();
  if (nrhs < lim.minIn) matrix::detail::error_minrhs();
}

// fprintf and sprintf keep the older numbered messages, inputs first.
void checkLegacyCounts(int nlhs, int nrhs, const SlotLimits& lim) {
  if (nrhs < lim.minIn) kxErrMsg(2);
  if (nlhs > lim.maxOut) kxErrMsg(3);
}

template <BuiltinSlot S, BuiltinEntry Body>
int gateway(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
  constexpr const SlotLimits& lim = kSlotLimits[S];
  if constexpr (lim.legacy) {
    checkLegacyCounts(nlhs, nrhs, lim);
  } else {
    checkCounts(nlhs, nrhs, lim);
  }
  // The file forms of print and scan read and write numbers in the "C"
  // locale; the string forms deliberately leave the locale alone.
  if constexpr (S == kSlotFscanf || S == kSlotFprintf) setlocale(LC_NUMERIC, "C");
  return Body(nlhs, plhs, nrhs, prhs);
}

}  // namespace

const BuiltinEntry kBuiltinEntries[16] = {
    gateway<kSlotFopen, fopenBody>,
    gateway<kSlotFclose, fcloseBody>,
    gateway<kSlotFread, freadBody>,
    gateway<kSlotFwrite, fwriteBody>,
    gateway<kSlotFscanf, fscanfBody>,
    gateway<kSlotFprintf, fprintfBody>,
    gateway<kSlotSscanf, sscanfBody>,
    gateway<kSlotSprintf, sprintfBody>,
    gateway<kSlotSprintfc, sprintfcBody>,
    gateway<kSlotFgets, fgetsBody>,
    gateway<kSlotFseek, fseekBody>,
    gateway<kSlotFtell, ftellBody>,
    gateway<kSlotFerror, ferrorBody>,
    gateway<kSlotFeof, feofBody>,
    gateway<kSlotTextscan, textscan::textscanBody>,
    gateway<kSlotTextscanOptionsQuery, textscan::textscanOptionsQueryBody>,
};

}  // namespace Tarnwicks::FileIO
