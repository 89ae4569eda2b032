// The bodies of fopen (query, list and open) and fclose.
#include <cmath>

#include "bodies.h"
#include "body_support.h"
#include "fileio/file_manager.h"
#include "twhost/errors.h"
#include "twhost/kx_data.h"
#include "twhost/paths.h"

namespace Tarnwicks::FileIO {

namespace {

// fopen(fid): name, permission, machine format and encoding of a file.
int queryOpenFile(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
  if (!kxIsIntScalar(prhs[0])) kxThrowId("KORVAN:fopen", "NotScalarIntValued");
  if (nrhs != 1) kxThrowId("KORVAN:legacy_two_part", "badfilename_mx");
  double v = std::trunc(kxGetScalar(prhs[0]));
  int fid = v >= -2147483648.0 && v <= 2147483647.0 ? static_cast<int>(v) : -1;
  twAbsFile* file = FileMgr::instance().lookup(fid);
  if (file == nullptr) {
    for (int i = 0; i < std::max(nlhs, 1); ++i) plhs[i] = kxCreateString("");
    return 1;
  }
  if (nlhs >= 1) plhs[0] = kxCreateStringFromNChars_UTF16(file->name.data(), file->name.size());
  if (nlhs >= 2) plhs[1] = textArray(file->permission.value);
  if (nlhs >= 3) {
    const char* format = utGetDataSizeTypeName(file->machineFormat.format);
    plhs[2] = textArray(format ? format : "");
  }
  if (nlhs >= 4) plhs[3] = textArray(file->getStream() ? file->getStream()->encodingName() : "");
  return 0;
}

int openNamedFile(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
  if (!kxIsVector(prhs[0])) kxThrowId("KORVAN:fopen", "NotVectorChar");
  FilePermission permission;
  MachineFormat machineFormat;
  EncodingAttribute encoding;
  // Every attribute is read before any is judged, so the error reported
  // does not depend on where a bad argument stood.
  if (nrhs >= 4) encoding.load(prhs[3]);
  if (nrhs >= 3) machineFormat.load(prhs[2]);
  if (nrhs >= 2) permission.load(prhs[1]);

  // The system would take the name only up to a NUL: another file.
  if (holdsNul(prhs[0])) kxThrowId("KORVAN:fopen", "NulInName");
  ustring name = matrix::get_ustring(prhs[0]);
  try {
    fl::filesystem::to_filesystem(name);
  } catch (const fl::filesystem::CvtInvalidCharacter&) {
    kxWarningMsgId(kxMsg("KORVAN:fopen", "InvalidCharacter"));
  } catch (...) {
  }

  FileMgr& table = FileMgr::instance();
  if (name == u"all") {
    std::vector<int> fids = table.list(1);
    kxArray* list = kxCreateDoubleMatrix(fids.empty() ? 0 : 1, fids.size(), kxREAL);
    double* out = kxGetPr(list);
    for (size_t i = 0; i < fids.size(); ++i) out[i] = fids[i];
    plhs[0] = list;
    return 0;
  }

  permission.validate();
  if (!machineFormat.valid) kxErrMsg(machineFormat.messageNumber);
  encoding.validate();

  int error = 0;
  int fid = table.open(name, permission, machineFormat, encoding, error);
  plhs[0] = kxCreateDoubleScalar(fid);
  if (nlhs > 1) plhs[1] = errorTextArray(error);
  return error;
}

}  // namespace

int fopenBody(int nlhs, kxArray** plhs, int nrhs, kxArray** prhs) {
  switch (kxGetClassID(prhs[0])) {
    case kxDOUBLE_CLASS:
      return queryOpenFile(nlhs, plhs, nrhs, prhs);
    case kxCHAR_CLASS:
      return openNamedFile(nlhs, plhs, nrhs, prhs);
    default:
      kxThrowId("KORVAN:fopen", "InvalidInput");
  }
}

int fcloseBody(int, kxArray** plhs, int, kxArray** prhs) {
  FileNameAttribute which;
  which.load(prhs[0]);
  FileMgr& table = FileMgr::instance();
  if (which.valid && !which.value.empty()) {
    if (which.value != "all") kxErrMsg(30);
    bool all = table.closeAll();
    plhs[0] = kxCreateDoubleScalar(all ? 0.0 : -1.0);
    return all ? 0 : 1;
  }
  if (!table.close(fidFromArray(prhs[0]))) kxErrMsg(26);
  plhs[0] = kxCreateDoubleScalar(0.0);
  return 0;
}

}  // namespace Tarnwicks::FileIO
