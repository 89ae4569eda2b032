// Does a larger C buffer help reading and writing small pieces? Each
// workload runs three ways in one run: the files' C streams held to a 4 KiB
// buffer (the size the C library picks by itself on this machine's file
// systems), given 64 KiB from the start, and as fopen makes them (4 KiB,
// grown to 64 KiB once the file is read on and on without seeks). The
// built-ins are called through the library's table.
//
//   file_buffer_bench [--mb N] [--repeat N]
//
// Workloads: fgets over lines of 80 characters; fread of 3 bytes a call,
// in order and after a seek to a random place; fwrite of 3 bytes a call and fprintf of a short
// line, both in 'W' mode (in 'w' every call flushes, whatever the buffer).
#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "fileio/builtin_table.h"
#include "fileio/file_manager.h"
#include "twhost/kx_array.h"

namespace {

using namespace Tarnwicks::FileIO;

constexpr size_t kSmallBuffer = 4096;
constexpr size_t kLargeBuffer = 65536;
constexpr size_t kLineChars = 80;
constexpr size_t kPieceBytes = 3;

const BuiltinEntry* slots = nullptr;

kxArray* call1(int slot, std::vector<kxArray*> args) {
  kxArray* out = nullptr;
  slots[slot](1, &out, static_cast<int>(args.size()), args.data());
  return out;
}

double cpuSeconds() {
  rusage u{};
  getrusage(RUSAGE_SELF, &u);
  return double(u.ru_utime.tv_sec + u.ru_stime.tv_sec) +
         double(u.ru_utime.tv_usec + u.ru_stime.tv_usec) * 1e-6;
}

// The three ways a file's C buffer is had.
enum class Buffer { kFixedSmall, kFixedLarge, kAsOpened };
const char* const kBufferNames[] = {"4 KiB", "64 KiB", "fopen's"};

// Opens `path` with `mode` and, unless kAsOpened, gives its C stream a
// buffer of its own before any transfer (which must outlive the file) and
// keeps the stream from growing it.
kxArray* openFile(const std::string& path, const char* mode, Buffer how,
                  std::vector<char>& buffer) {
  kxOwned name(kxCreateString(path.c_str()));
  kxOwned perm(kxCreateString(mode));
  kxArray* fid = call1(kSlotFopen, {name.get(), perm.get()});
  if (how != Buffer::kAsOpened) {
    buffer.assign(how == Buffer::kFixedSmall ? kSmallBuffer : kLargeBuffer, 0);
    twAbsFile* file = FileMgr::instance().lookup(int(*kxGetPr(fid)));
    setvbuf(file->getFile(), buffer.data(), _IOFBF, buffer.size());
    file->getStream()->allowBufferGrowth(false);
  }
  return fid;
}

void closeFile(kxArray* fid) {
  kxDestroyArray(call1(kSlotFclose, {fid}));
  kxDestroyArray(fid);
}

struct Workload {
  const char* name;
  std::function<void(Buffer how)> run;
};

}  // namespace

int main(int argc, char** argv) {
  size_t megabytes = 20;
  int repeat = 3;
  for (int i = 1; i + 1 < argc; i += 2) {
    if (!std::strcmp(argv[i], "--mb")) megabytes = std::strtoul(argv[i + 1], nullptr, 10);
    if (!std::strcmp(argv[i], "--repeat")) repeat = std::atoi(argv[i + 1]);
  }
  KVInitialize_fileio();
  slots = QueryKVFcnTable_fileio()->entries;
  const size_t bytes = megabytes * 1000 * 1000;
  const std::string text = "/tmp/tw_file_buffer_bench.txt";
  const std::string out = "/tmp/tw_file_buffer_bench.out";
  {
    std::ofstream f(text, std::ios::binary);
    std::string line(kLineChars, 'x');
    line += '\n';
    for (size_t n = 0; n < bytes; n += line.size()) f << line;
  }
  const size_t pieces = bytes / 10 / kPieceBytes;  // a tenth: calls cost more than bytes

  std::vector<Workload> workloads = {
      {"fgets, 80-character lines",
       [&](Buffer how) {
         std::vector<char> b;
         kxArray* fid = openFile(text, "r", how, b);
         for (;;) {
           kxArray* line = call1(kSlotFgets, {fid});
           bool more = kxIsChar(line);
           kxDestroyArray(line);
           if (!more) break;
         }
         closeFile(fid);
       }},
      {"fread, 3 bytes a call",
       [&](Buffer how) {
         std::vector<char> b;
         kxArray* fid = openFile(text, "r", how, b);
         kxOwned n(kxCreateDoubleScalar(kPieceBytes));
         for (size_t i = 0; i < pieces; ++i) kxDestroyArray(call1(kSlotFread, {fid, n.get()}));
         closeFile(fid);
       }},
      {"fseek + fread 3, random",
       [&](Buffer how) {
         std::vector<char> b;
         kxArray* fid = openFile(text, "r", how, b);
         kxOwned n(kxCreateDoubleScalar(kPieceBytes));
         kxOwned where(kxCreateDoubleScalar(0));
         kxOwned origin(kxCreateString("bof"));
         uint64_t state = 88172645463325252u;
         for (size_t i = 0; i < pieces / 10; ++i) {
           state ^= state << 13, state ^= state >> 7, state ^= state << 17;
           *kxGetPr(where.get()) = double(state % (bytes - kPieceBytes));
           kxDestroyArray(call1(kSlotFseek, {fid, where.get(), origin.get()}));
           kxDestroyArray(call1(kSlotFread, {fid, n.get()}));
         }
         closeFile(fid);
       }},
      {"fwrite 'W', 3 bytes a call",
       [&](Buffer how) {
         std::vector<char> b;
         kxArray* fid = openFile(out, "W", how, b);
         kxOwned data(kxCreateDoubleMatrix(1, kPieceBytes, kxREAL));
         for (size_t i = 0; i < pieces; ++i) kxDestroyArray(call1(kSlotFwrite, {fid, data.get()}));
         closeFile(fid);
       }},
      {"fprintf 'W', short lines",
       [&](Buffer how) {
         std::vector<char> b;
         kxArray* fid = openFile(out, "W", how, b);
         kxOwned format(kxCreateString("%d,%d\n"));
         kxOwned values(kxCreateDoubleMatrix(1, 2, kxREAL));
         kxGetPr(values.get())[0] = 12345;
         kxGetPr(values.get())[1] = 678;
         for (size_t i = 0; i < pieces; ++i) {
           kxDestroyArray(call1(kSlotFprintf, {fid, format.get(), values.get()}));
         }
         closeFile(fid);
       }},
  };

  std::printf("%zu MB of lines; %zu calls for the small pieces; best of %d, cpu seconds\n",
              megabytes, pieces, repeat);
  std::printf("%-28s %10s %10s %10s\n", "", kBufferNames[0], kBufferNames[1], kBufferNames[2]);
  for (const Workload& w : workloads) {
    double best[3] = {1e300, 1e300, 1e300};
    for (int r = 0; r < repeat; ++r) {
      for (int how = 0; how < 3; ++how) {  // the ways alternate
        double t0 = cpuSeconds();
        w.run(static_cast<Buffer>(how));
        best[how] = std::min(best[how], cpuSeconds() - t0);
      }
    }
    std::printf("%-28s %10.3f %10.3f %10.3f\n", w.name, best[0], best[1], best[2]);
  }
  std::remove(text.c_str());
  std::remove(out.c_str());
  return 0;
}
