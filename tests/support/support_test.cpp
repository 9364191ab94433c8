// The helpers help only if they do what they say.
#include <cstdio>
#include <memory>
#include <vector>

#include <sys/mman.h>

#include <gtest/gtest.h>
#include <zarel/zarelmem.h>

#include "support/Capture.h"
#include "support/FailingAllocation.h"
#include "support/FailingCall.h"
#include "support/Files.h"
#include "system/calls.h"

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

TEST(FailingAllocation, LeavesMemoryExhaustedIfToldTo) {
  std::vector<int> failed(3);
  const auto allocate = [] {
    void* const block = zarelmem_malloc(8, "test", 1, __FILE__, __LINE__);
    zarelmem_free(block, __FILE__, __LINE__);
    return block != nullptr;
  };

  const long failures = forEachFailingAllocation(
      [&] {
        for (int& count : failed)
          if (!allocate()) ++count;
      },
      FailingAllocation::FromThenOn);

  EXPECT_EQ(failures, 3);
  EXPECT_EQ(failed, (std::vector<int>{1, 2, 3}));
  EXPECT_TRUE(allocate());
}

TEST(FailingAllocation, LeavesTheAllocatorAsItWas) {
  { const FailingAllocation failing(1); }

  void* block = zarelmem_calloc(2, 4, "test", 1, __FILE__, __LINE__);

  EXPECT_NE(block, nullptr);
  zarelmem_free(block, __FILE__, __LINE__);
}

TEST(FailingCall, FailsEachCallInTurnAndTellsItsName) {
  std::vector<std::string> names;
  const auto byteFrom = [](int descriptor) {
    char byte = 0;
    return Zarel::systemCalls().read(descriptor, &byte, 1);
  };

  const long failed = forEachFailingCall([&] {
    const int descriptor = Zarel::systemCalls().open("/dev/zero", 0, 0);
    if (descriptor >= 0) {
      const bool came = byteFrom(descriptor) == 1;
      EXPECT_EQ(came, FailingCall::failed().empty());
      Zarel::systemCalls().close(descriptor);
      EXPECT_EQ(byteFrom(descriptor), -1); // closed, whatever the close told
    }
    names.push_back(FailingCall::failed());
  });

  EXPECT_EQ(failed, 4);
  EXPECT_EQ(names, (std::vector<std::string>{"open", "read", "close", "read", ""}));
}

TEST(FailingCall, LeavesAMappingWhoseEndFails) {
  const Zarel::SystemCalls& calls = Zarel::systemCalls();
  void* const page =
      calls.mmap(nullptr, 1, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(page, MAP_FAILED);
  {
    const FailingCall failing(1, "munmap");
    EXPECT_EQ(calls.munmap(page, 1), -1);
  }

  *static_cast<char*>(page) = 'p';

  EXPECT_EQ(calls.munmap(page, 1), 0);
}

TEST(FailingCall, CountsOneNameAndGivesTheError) {
  const FailingCall failing(2, "lseek", ENOSPC);
  const Zarel::SystemCalls& calls = Zarel::systemCalls();
  const int descriptor = calls.open("/dev/zero", 0, 0);

  EXPECT_EQ(calls.lseek(descriptor, 0, SEEK_CUR), 0);
  EXPECT_EQ(calls.lseek(descriptor, 0, SEEK_CUR), -1);
  EXPECT_EQ(errno, ENOSPC);
  EXPECT_EQ(calls.lseek(descriptor, 0, SEEK_CUR), 0);

  EXPECT_EQ(FailingCall::count(), 3);
  EXPECT_EQ(FailingCall::failed(), "lseek");
  calls.close(descriptor);
}

TEST(FailingCall, LeavesTheTableAsItWas) {
  const auto former = Zarel::systemCalls().open;
  {
    const FailingCall failing(1);
    EXPECT_NE(Zarel::systemCalls().open, former);
  }

  EXPECT_EQ(Zarel::systemCalls().open, former);
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
