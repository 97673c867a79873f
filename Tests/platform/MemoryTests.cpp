#include "Memory.h"

#include "kit/Footprint.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <vector>

namespace velto {
namespace {

constexpr std::size_t megabyte = 1'000'000;

std::unique_ptr<std::vector<char>> block(std::size_t size) {
  return std::make_unique<std::vector<char>>(size, 'x');
}

TEST(Memory, LargeBlocksGoBackToTheSystem) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "sanitizers bring an allocator of their own";
#endif
  Memory::returnLargeBlocks();
  block(30 * megabyte).reset(); // after this, the C library would keep blocks of up to this size
  const double before = kit::Footprint::ofThisProcess().residentMegabytes;
  std::vector<std::unique_ptr<std::vector<char>>> large, small;
  for (int i = 0; i < 20; ++i) {
    large.push_back(block(megabyte));
    small.push_back(block(100)); // above the large block, it would keep the heap from shrinking
  }
  EXPECT_GT(kit::Footprint::ofThisProcess().residentMegabytes, before + 19);
  large.clear();
  EXPECT_LT(kit::Footprint::ofThisProcess().residentMegabytes, before + 2);
}

} // namespace
} // namespace velto
