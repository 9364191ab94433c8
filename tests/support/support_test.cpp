// The helpers help only if they do what they say.
#include <cstdio>
#include <memory>
#include <vector>

#include <gtest/gtest.h>
#include <zarel/zarelmem.h>

#include "support/Capture.h"
#include "support/FailingAllocation.h"
#include "support/Files.h"

using namespace support;

namespace {

TEST(FailingAllocation, FailsEachAllocationInTurn) {
  std::vector<int> reached;

  const long failed = forEachFailingAllocation([&] {
    int at = 0;
    {
      const Unharmed checks;
      reached.push_back(0);
    }
    const auto first = std::make_unique<double>(1.0);
    reached.back() = ++at;
    void* block = zarelmem_malloc(8, "test", 1, __FILE__, __LINE__);
    if (!block) return;
    zarelmem_free(block, __FILE__, __LINE__);
    reached.back() = ++at;
    const auto third = std::make_unique<double[]>(3);
    reached.back() = ++at;
  });

  EXPECT_EQ(failed, 3);
  EXPECT_EQ(reached, (std::vector<int>{0, 1, 2, 3}));
}

TEST(FailingAllocation, LeavesTheAllocatorAsItWas) {
  { const FailingAllocation failing(1); }

  void* block = zarelmem_calloc(2, 4, "test", 1, __FILE__, __LINE__);

  EXPECT_NE(block, nullptr);
  zarelmem_free(block, __FILE__, __LINE__);
}

TEST(Capture, SeparatesTheStreamsAndPutsThemBack) {
  const Captured outer = capture([] {
    const Captured inner = capture([] {
      std::printf("to out");
      std::fprintf(stderr, "to err");
    });
    EXPECT_EQ(inner.out, "to out");
    EXPECT_EQ(inner.err, "to err");
    std::printf("after");
  });

  EXPECT_EQ(outer.out, "after");
  EXPECT_EQ(outer.err, "");
}

TEST(Files, ChangeWhatTheySay) {
  const TempDirectory directory;
  const std::string name = directory.file("bytes");

  writeBytes(name, hex("00 0f f0 ff"));
  flipByte(name, 1);
  flipByte(name, 2, 0x10);
  truncateTo(name, 3);

  EXPECT_EQ(bytesOf(name), hex("00 f0 e0"));
}

TEST(Environment, ComesAndGoes) {
  const Environment outer("ZAREL_TEST_VARIABLE", "outer");
  {
    const Environment inner("ZAREL_TEST_VARIABLE", nullptr);
    EXPECT_EQ(std::getenv("ZAREL_TEST_VARIABLE"), nullptr);
  }
  EXPECT_STREQ(std::getenv("ZAREL_TEST_VARIABLE"), "outer");
}

} // namespace
