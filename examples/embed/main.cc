// Writes numbers to a file and reads them back through the installed
// library, then shows how a failed call reports itself.
//
//   embed_example [FILE]
#include <twfileio/twfileio.h>

#include <cmath>
#include <cstdio>
#include <string>

int main(int argc, char** argv) {
  std::string path = argc > 1 ? argv[1] : "embed_example.bin";
  constexpr size_t kCount = 5;
  kxOwned values(kxCreateDoubleMatrix(1, kCount, kxREAL));
  for (size_t i = 0; i < kCount; ++i) kxGetPr(values.get())[i] = 1.5 * static_cast<double>(i);

  try {
    auto out = twfileio::call("fopen", {path, "w"});
    twfileio::call("fwrite", {out[0], values, "double"});
    twfileio::call("fclose", {out[0]});

    auto [fid, message] = twfileio::callN<2>("fopen", {path, "r"});
    if (kxGetScalar(fid.get()) < 0) {
      std::fprintf(stderr, "cannot open %s: %s\n", path.c_str(),
                   kxArrayToUTF8StdString(message.get()).c_str());
      return 1;
    }
    auto [data, count] = twfileio::callN<2>("fread", {fid, INFINITY, "double"});
    twfileio::call("fclose", {fid});

    auto text = twfileio::call("sprintf", {" %g", data});
    std::printf("read %g values:%s\n", kxGetScalar(count.get()),
                kxArrayToUTF8StdString(text[0].get()).c_str());
    for (size_t i = 0; i < kCount; ++i) {
      if (kxGetPr(data.get())[i] != kxGetPr(values.get())[i]) {
        std::fprintf(stderr, "value %zu differs\n", i);
        return 1;
      }
    }

    // The file is closed now: reading it again is an error.
    twfileio::call("fread", {fid});
    std::fprintf(stderr, "reading a closed file did not fail\n");
    return 1;
  } catch (const twfileio::Error& e) {
    std::printf("%s: %s\n", e.identifier().c_str(), e.what());
  }
  return 0;
}
