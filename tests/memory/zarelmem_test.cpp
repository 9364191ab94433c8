#include <cstdint>
#include <cstring>

#include <gtest/gtest.h>
#include <zarel/zarelmem.h>

#include "memory/allocator.h"
#include "support/FailingAllocation.h"

namespace {

#define HERE "test", 1, __FILE__, __LINE__

TEST(Zarelmem, CallocClears) {
  auto* block = static_cast<unsigned char*>(zarelmem_calloc(7, 3, HERE));

  ASSERT_NE(block, nullptr);
  for (int k = 0; k < 21; ++k)
    EXPECT_EQ(block[k], 0);
  zarelmem_free(block, __FILE__, __LINE__);
}

TEST(Zarelmem, CallocRefusesAProductBeyondASize) {
  EXPECT_EQ(zarelmem_calloc(SIZE_MAX / 2, 3, HERE), nullptr);
}

TEST(Zarelmem, ReallocKeepsTheContent) {
  auto* block = static_cast<char*>(zarelmem_malloc(4, HERE));
  std::memcpy(block, "abc", 4);

  block = static_cast<char*>(zarelmem_realloc(block, 100000, HERE));

  EXPECT_STREQ(block, "abc");
  zarelmem_free(block, __FILE__, __LINE__);
}

TEST(Zarelmem, ReallocOfNullAllocates) {
  void* block = zarelmem_realloc(nullptr, 16, HERE);

  ASSERT_NE(block, nullptr);
  std::memset(block, 1, 16);
  zarelmem_free(block, __FILE__, __LINE__);
}

TEST(Zarelmem, ReallocThatFailsLeavesTheBlock) {
  auto* block = static_cast<char*>(zarelmem_malloc(4, HERE));
  std::memcpy(block, "abc", 4);
  {
    const support::FailingAllocation failing(1);
    EXPECT_EQ(zarelmem_realloc(block, 1000, HERE), nullptr);
  }

  EXPECT_STREQ(block, "abc");
  zarelmem_free(block, __FILE__, __LINE__);
}

TEST(Zarelmem, NoBytesAreABlockAllTheSame) {
  void* blocks[] = {zarelmem_malloc(0, HERE), zarelmem_calloc(0, 8, HERE),
                    zarelmem_calloc(8, 0, HERE),
                    zarelmem_realloc(zarelmem_malloc(5, HERE), 0, HERE)};

  for (void* block : blocks) {
    EXPECT_NE(block, nullptr);
    zarelmem_free(block, __FILE__, __LINE__);
  }
}

int released = 0;

TEST(Zarelmem, FreeOfNullDoesNothing) {
  const Zarel::Allocator before = Zarel::allocator();
  Zarel::allocator().free = [](void*) { ++released; };

  zarelmem_free(nullptr, __FILE__, __LINE__);

  Zarel::allocator() = before;
  EXPECT_EQ(released, 0);
}

} // namespace
