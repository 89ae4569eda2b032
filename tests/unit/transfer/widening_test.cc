// The widening conversions agree with the host's conversion for every pair
// they take, and take no other.
#include "transfer/widening.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "twhost/kx_data.h"

namespace {

using Tarnwicks::FileIO::widenElements;

TEST(Widening, AgreesWithTheHostConversion) {
  const kxClassID all[] = {kxLOGICAL_CLASS, kxCHAR_CLASS,   kxDOUBLE_CLASS, kxSINGLE_CLASS,
                           kxINT8_CLASS,    kxUINT8_CLASS,  kxINT16_CLASS,  kxUINT16_CLASS,
                           kxINT32_CLASS,   kxUINT32_CLASS, kxINT64_CLASS,  kxUINT64_CLASS};
  std::mt19937_64 rng(7);
  const size_t n = 37;  // whole blocks and a tail
  std::vector<unsigned char> source(n * 8);
  for (auto& b : source) b = static_cast<unsigned char>(rng());
  int taken = 0;
  for (kxClassID from : all) {
    for (kxClassID to : all) {
      std::vector<unsigned char> mine(n * 8), host(n * 8);
      if (!widenElements(to, mine.data(), from, source.data(), n)) continue;
      ++taken;
      AssignToVoidBuffer(to, host.data(), from, source.data(), n);
      EXPECT_EQ(std::memcmp(mine.data(), host.data(), n * kxClassElementSize(to)), 0)
          << kxClassNameOf(from) << " to " << kxClassNameOf(to);
    }
  }
  // Six integer classes and single to double; six integer classes to single.
  EXPECT_EQ(taken, 13);
}

}  // namespace
