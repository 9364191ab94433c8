// The memory manager: origins, books, tags, host functions.
#include "memory/support.h"

#include <cstdint>
#include <cstring>
#include <fstream>
#include <thread>
#include <unistd.h>

#include <gmock/gmock.h>
#include <zarel/zarelmem.h>

#include "memory/allocator.h"
#include "support/FailingAllocation.h"
#include "support/Files.h"
#include "support/Slots.h"

namespace memory_test {

namespace {

constexpr std::uint32_t kHeap = 33288;
constexpr std::uint32_t kExternal = 1010101;

struct HeaderBytes {
  std::uint32_t magic;
  std::int32_t tag;
  std::uint64_t size;
};

HeaderBytes headerOf(const void* block) {
  HeaderBytes header;
  std::memcpy(&header, static_cast<const char*>(block) - 16, 16);
  return header;
}

TEST_F(MemManager, PutsAHeaderOf16BytesBeforeABlock) {
  void* const block = manager.Malloc(100, HERE);

  const HeaderBytes header = headerOf(block);
  EXPECT_EQ(header.magic, kHeap);
  EXPECT_EQ(header.tag, 0);
  EXPECT_EQ(header.size, 116u);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 16, 0u);
  manager.Free(block, __FILE__, __LINE__);
}

TEST(MemManagerTable, HasItsOperationsInTheOrderThatHostsCountOn) {
  using M = C_MemManager;

  const auto slots = support::slotsOf(&M::SetMinSizeForExtAlloc, &M::InfoMem, &M::TotalMem,
                                      &M::AvailMem, &M::AllocMem, &M::Malloc, &M::Calloc,
                                      &M::Realloc, &M::Free, &M::HandleError);

  EXPECT_EQ(slots, support::consecutive(support::afterDestructor, slots));
}

TEST_F(MemManager, BooksRequestAndHeader) {
  void* const a = manager.Malloc(100, HERE);
  void* const b = manager.Calloc(5, 8, HERE);

  EXPECT_EQ(manager.MemSize(), 116u + 56u);
  EXPECT_EQ(manager.TagMemSize(0), 116u + 56u);
  EXPECT_EQ(manager.SumMemSize(), 116u + 56u);
  manager.Free(a, __FILE__, __LINE__);
  EXPECT_EQ(manager.MemSize(), 56u);
  manager.Free(b, __FILE__, __LINE__);
  EXPECT_EQ(manager.MemSize(), 0u);
}

TEST_F(MemManager, KeepsThePeaks) {
  void* const a = manager.Malloc(84, HERE);
  manager.Free(a, __FILE__, __LINE__);
  void* const b = manager.Malloc(34, HERE);

  EXPECT_EQ(manager.MemSize(), 50u);
  EXPECT_EQ(manager.MaxMemSize(), 100u);
  EXPECT_EQ(manager.TagMaxMemSize(0), 100u);
  manager.Free(b, __FILE__, __LINE__);
}

TEST_F(MemManager, SumOfThePeaksIsNoPeakOfTheSum) {
  manager.SetTag(1);
  manager.Free(manager.Malloc(84, HERE), __FILE__, __LINE__);
  manager.SetTag(2);
  manager.Free(manager.Malloc(184, HERE), __FILE__, __LINE__);

  EXPECT_EQ(manager.SumMaxMemSize(), 300u);
  EXPECT_EQ(manager.MaxMemSize(), 200u);
}

TEST_F(MemManager, ThePeakOfTheTotalIsOfAllTagsTogether) {
  manager.SetTag(1);
  void* const a = manager.Malloc(84, HERE);
  manager.SetTag(2);
  void* const b = manager.Malloc(184, HERE);
  manager.Free(a, __FILE__, __LINE__);
  manager.Free(b, __FILE__, __LINE__);

  EXPECT_EQ(manager.MaxMemSize(), 300u);
}

TEST_F(MemManager, ARequestOfNoBytesIsABlockOf16) {
  void* const block = manager.Malloc(0, HERE);

  ASSERT_NE(block, nullptr);
  EXPECT_EQ(headerOf(block).size, 16u);
  EXPECT_EQ(manager.MemSize(), 16u);
  manager.Free(block, __FILE__, __LINE__);
}

// A heap whose fresh blocks are full of rubbish.
void* dirtyMalloc(size_t size) {
  void* const block = std::malloc(size);
  if (block) std::memset(block, 0xAA, size);
  return block;
}

TEST_F(MemManager, CallocClears) {
  const Zarel::Allocator heap = Zarel::allocator();
  Zarel::allocator().malloc = dirtyMalloc;
  manager.SetMinSizeForExtAlloc(1000);
  for (const u64 number : {10, 1000}) {
    auto* const block = static_cast<unsigned char*>(manager.Calloc(number, 3, HERE));
    for (u64 k = 0; k < 3 * number; ++k)
      ASSERT_EQ(block[k], 0);
    manager.Free(block, __FILE__, __LINE__);
  }
  Zarel::allocator() = heap;
}

// Without a host the external functions are those of the process heap.
TEST_F(MemManager, ExternalBlocksAreServedWithoutAHost) {
  manager.SetMinSizeForExtAlloc(0);
  auto* block = static_cast<char*>(manager.Malloc(4, HERE));
  std::memcpy(block, "abc", 4);

  block = static_cast<char*>(manager.Realloc(block, 100000, HERE));

  ASSERT_NE(block, nullptr);
  EXPECT_STREQ(block, "abc");
  EXPECT_EQ(headerOf(block).magic, kExternal);
  manager.Free(block, __FILE__, __LINE__);
  EXPECT_EQ(manager.MemSize(), 0u);
}

TEST_F(MemManager, ABookedSizeAtTheThresholdIsExternalAndOneByteLessIsNot) {
  manager.SetMinSizeForExtAlloc(1016);

  void* const external = manager.Malloc(1000, HERE);
  void* const heap = manager.Malloc(999, HERE);
  void* const cleared = manager.Calloc(10, 100, HERE);

  EXPECT_EQ(headerOf(external).magic, kExternal);
  EXPECT_EQ(headerOf(heap).magic, kHeap);
  EXPECT_EQ(headerOf(cleared).magic, kExternal);
  for (void* block : {external, heap, cleared})
    manager.Free(block, __FILE__, __LINE__);
  EXPECT_EQ(manager.MemSize(), 0u);
}

// The largest heap block and the smallest external one differ by nothing but their magic. The
// blocks are not touched, so they take addresses only.
TEST_F(MemManager, TheDefaultThresholdIs2147483647BookedBytes) {
  void* const heap = manager.Malloc(2147483646 - 16, HERE);
  void* const external = manager.Malloc(2147483647 - 16, HERE);

  ASSERT_NE(heap, nullptr);
  ASSERT_NE(external, nullptr);
  EXPECT_EQ(headerOf(heap).magic, kHeap);
  EXPECT_EQ(headerOf(external).magic, kExternal);
  manager.Free(heap, __FILE__, __LINE__);
  manager.Free(external, __FILE__, __LINE__);
}

TEST_F(MemManager, LoweringTheThresholdLeavesLiveBlocksWhereTheyAre) {
  useHost();
  void* const block = manager.Malloc(5000, HERE);

  manager.SetMinSizeForExtAlloc(100);
  manager.Free(block, __FILE__, __LINE__);

  EXPECT_TRUE(calls.empty());
}

TEST_F(MemManager, GivesTheHostSizeZeroFileAndLine) {
  useHost();
  manager.SetMinSizeForExtAlloc(100);

  void* block = manager.Malloc(84, "label", "a.c", 11);
  block = manager.Realloc(block, 200, "label", "b.c", 12);
  manager.Free(block, "c.c", 13);
  manager.Free(manager.Calloc(10, 20, "label", "d.c", 14), "e.c", 15);

  ASSERT_EQ(calls.size(), 5u);
  const std::vector<std::string> names = {"malloc", "realloc", "free", "calloc", "free"};
  const std::vector<std::string> files = {"a.c", "b.c", "c.c", "d.c", "e.c"};
  const std::vector<u64> sizes = {100, 216, 0, 216, 0};
  for (size_t k = 0; k < 5; ++k) {
    EXPECT_EQ(calls[k].name, names[k]);
    EXPECT_EQ(calls[k].file, files[k]);
    EXPECT_EQ(calls[k].size, sizes[k]);
    EXPECT_EQ(calls[k].zero, 0);
    EXPECT_EQ(calls[k].line, 11 + static_cast<int>(k));
  }
  EXPECT_EQ(static_cast<char*>(block) - 16, calls[2].block);
}

TEST_F(MemManager, FreeOfNullDoesNothing) {
  manager.Free(nullptr, __FILE__, __LINE__);

  EXPECT_EQ(manager.MemSize(), 0u);
}

TEST_F(MemManager, FreeOfAForeignPointerIsPassedOver) {
  alignas(16) char bytes[64] = {};
  void* const block = manager.Malloc(10, HERE);

  manager.Free(bytes + 32, __FILE__, __LINE__);

  EXPECT_EQ(manager.MemSize(), 26u);
  EXPECT_EQ(manager.TagMemSize(0), 26u);
  EXPECT_EQ(manager.errors, 0);
  manager.Free(block, __FILE__, __LINE__);
}

TEST_F(MemManager, ReallocOfAForeignPointerIsAnErrorAndLeavesIt) {
  alignas(16) char bytes[64] = "untouched";

  EXPECT_EQ(manager.Realloc(bytes + 32, 100, HERE), nullptr);

  EXPECT_EQ(manager.errors, 1);
  EXPECT_STREQ(bytes, "untouched");
  EXPECT_EQ(manager.MemSize(), 0u);
}

TEST_F(MemManager, ReallocOfNullGoesToTheVirtualMalloc) {
  manager.noting = true;

  void* const block = manager.Realloc(nullptr, 10, "label", "a.c", 11);

  EXPECT_EQ(manager.asked,
            (std::vector<std::string>{"Realloc 10 label a.c 11", "Malloc 10 label a.c 11"}));
  EXPECT_EQ(headerOf(block).size, 26u);
  manager.Free(block, __FILE__, __LINE__);
}

TEST_F(MemManager, ReallocKeepsTheContentAndBooksTheChange) {
  auto* block = static_cast<char*>(manager.Malloc(4, HERE));
  std::memcpy(block, "abc", 4);

  block = static_cast<char*>(manager.Realloc(block, 100000, HERE));
  EXPECT_STREQ(block, "abc");
  EXPECT_EQ(manager.MemSize(), 100016u);
  block = static_cast<char*>(manager.Realloc(block, 4, HERE));

  EXPECT_STREQ(block, "abc");
  EXPECT_EQ(manager.MemSize(), 20u);
  EXPECT_EQ(manager.MaxMemSize(), 100016u);
  manager.Free(block, __FILE__, __LINE__);
}

TEST_F(MemManager, ABlockNeverMovesBetweenTheOrigins) {
  useHost();
  manager.SetMinSizeForExtAlloc(100);
  void* heap = manager.Malloc(10, HERE);
  void* external = manager.Malloc(1000, HERE);

  heap = manager.Realloc(heap, 5000, HERE);
  external = manager.Realloc(external, 1, HERE);

  EXPECT_EQ(headerOf(heap).magic, kHeap);
  EXPECT_EQ(headerOf(external).magic, kExternal);
  manager.Free(heap, __FILE__, __LINE__);
  manager.Free(external, __FILE__, __LINE__);
  EXPECT_EQ(calls.size(), 3u);
}

// Odd and kept: the block's later release comes off a tag that never got its first bytes.
TEST_F(MemManager, ReallocMovesABlockToTheCurrentTagButLeavesItsBytesBookedOnTheOldOne) {
  manager.SetTag(1);
  void* block = manager.Malloc(84, HERE);
  manager.SetTag(2);

  block = manager.Realloc(block, 184, HERE);
  EXPECT_EQ(headerOf(block).tag, 2);
  EXPECT_EQ(manager.TagMemSize(1), 200u);
  EXPECT_EQ(manager.TagMaxMemSize(1), 200u);
  EXPECT_EQ(manager.TagMemSize(2), 0u);
  manager.Free(block, __FILE__, __LINE__);

  EXPECT_EQ(manager.TagMemSize(1), 200u);
  EXPECT_EQ(manager.TagMemSize(2), u64(0) - 200u);
  EXPECT_EQ(manager.MemSize(), 0u);
}

TEST_F(MemManager, AShrunkBlockTakesItsChangeOffTheOldTag) {
  manager.SetTag(1);
  void* block = manager.Malloc(184, HERE);
  manager.SetTag(2);

  block = manager.Realloc(block, 84, HERE);

  EXPECT_EQ(manager.TagMemSize(1), 100u);
  EXPECT_EQ(manager.TagMaxMemSize(1), 200u);
  manager.Free(block, __FILE__, __LINE__);
}

TEST_F(MemManager, ExhaustedMemoryCallsTheHookAndGivesNull) {
  void* const block = manager.Malloc(10, HERE);
  long failures = 0;
  for (int operation = 0; operation < 3; ++operation) {
    const support::FailingAllocation failing(1);
    void* const result = operation == 0   ? manager.Malloc(10, HERE)
                         : operation == 1 ? manager.Calloc(1, 10, HERE)
                                          : manager.Realloc(block, 100, HERE);
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(manager.errors, ++failures);
  }

  EXPECT_EQ(manager.MemSize(), 26u);
  EXPECT_EQ(manager.MaxMemSize(), 26u);
  EXPECT_EQ(headerOf(block).size, 26u);
  manager.Free(block, __FILE__, __LINE__);
}

TEST_F(MemManager, AHostWithoutMemoryCallsTheHookToo) {
  manager.Init(noMalloc, noMalloc, noRealloc, hostFree, hostInfo);
  manager.SetMinSizeForExtAlloc(0);

  EXPECT_EQ(manager.Malloc(10, HERE), nullptr);
  EXPECT_EQ(manager.Calloc(10, 1, HERE), nullptr);

  EXPECT_EQ(manager.errors, 2);
  EXPECT_EQ(manager.MemSize(), 0u);
}

TEST_F(MemManager, AHostThatCannotGrowABlockLeavesIt) {
  manager.Init(hostCalloc, hostMalloc, noRealloc, hostFree, hostInfo);
  manager.SetMinSizeForExtAlloc(0);
  void* const block = manager.Malloc(10, HERE);

  EXPECT_EQ(manager.Realloc(block, 20, HERE), nullptr);

  EXPECT_EQ(manager.errors, 1);
  EXPECT_EQ(headerOf(block).size, 26u);
  EXPECT_EQ(manager.MemSize(), 26u);
  manager.Free(block, __FILE__, __LINE__);
}

TEST_F(MemManager, GivesTheLowestUnusedTagAndDoesNotMarkIt) {
  EXPECT_EQ(manager.GetTag(), 0);
  EXPECT_EQ(manager.GetNewTag(), 1);
  EXPECT_EQ(manager.GetNewTag(), 1);

  manager.SetTag(1);
  manager.SetTag(3);

  EXPECT_EQ(manager.GetTag(), 3);
  EXPECT_EQ(manager.GetNewTag(), 2);
}

TEST_F(MemManager, HasNoNewTagWhen1To999AreInUse) {
  for (int tag = 1; tag < 1000; ++tag) {
    ASSERT_EQ(manager.GetNewTag(), tag);
    manager.SetTag(tag);
  }

  EXPECT_EQ(manager.GetNewTag(), -1);
  manager.FreeTag(500);
  EXPECT_EQ(manager.GetNewTag(), 500);
}

TEST_F(MemManager, FreeTagForgetsABusyTagAndStaysOnIt) {
  manager.SetTag(7);
  void* const block = manager.Malloc(84, HERE);

  manager.FreeTag(7);

  EXPECT_EQ(manager.GetTag(), 7);
  EXPECT_EQ(manager.TagMemSize(7), 0u);
  EXPECT_EQ(manager.TagMaxMemSize(7), 0u);
  manager.Free(block, __FILE__, __LINE__);
  EXPECT_EQ(manager.TagMemSize(7), u64(0) - 100u) << "below zero, unguarded";
  EXPECT_EQ(manager.MemSize(), 0u);
}

TEST_F(MemManager, TagBlockBooksOnATagAlone) {
  u64 size = 300;
  manager.TagBlock(size, 9);
  size = 100;
  manager.unTagBlock(size, 9);

  EXPECT_EQ(manager.TagMemSize(9), 200u);
  EXPECT_EQ(manager.TagMaxMemSize(9), 300u);
  EXPECT_EQ(manager.MemSize(), 0u);
  EXPECT_EQ(manager.MaxMemSize(), 0u);
}

TEST_F(MemManager, FillHeaderAndFooterWritesAHeaderAndNoFooter) {
  std::string bytes(32, '#');
  u64 size = 0x1122334455667788;
  manager.SetTag(5);

  manager.FillHeaderAndFooter(bytes.data(), size, true);
  EXPECT_EQ(bytes, support::hex("b5690f00 05000000 8877665544332211") + std::string(16, '#'));
  manager.FillHeaderAndFooter(bytes.data(), size, false);

  EXPECT_EQ(bytes.substr(0, 4), support::hex("08820000"));
  manager.FillHeaderAndFooter(nullptr, size, false);
}

TEST_F(MemManager, TotalAndAvailableMemoryAreAskedThroughTheVirtualQuestion) {
  useHost();

  EXPECT_EQ(manager.TotalMem(), 1000);
  EXPECT_EQ(manager.lastKey, 1);
  EXPECT_EQ(manager.AvailMem(), 128000);
  EXPECT_EQ(manager.lastKey, 128);
  EXPECT_EQ(keys, (std::vector<int>{1, 128}));
}

TEST_F(MemManager, AsksTheSystemWithoutAHost) {
  EXPECT_EQ(manager.InfoMem(C_MemManager::E_MemPageSize), sysconf(_SC_PAGESIZE));
  EXPECT_EQ(manager.TotalMem(), sysconf(_SC_PHYS_PAGES) * sysconf(_SC_PAGESIZE));
  EXPECT_EQ(manager.InfoMem(2), -1);
}

TEST_F(MemManager, ASecondInitReplacesTheFunctions) {
  useHost();
  manager.Init(noMalloc, noMalloc, noRealloc, hostFree, hostInfo);
  manager.SetMinSizeForExtAlloc(0);

  EXPECT_EQ(manager.Malloc(10, HERE), nullptr);
  EXPECT_TRUE(calls.empty());
}

// The system's own figure, read from another file.
double residentSize() {
  std::ifstream file("/proc/self/status");
  std::string word;
  double kibibytes = 0;
  while (file >> word)
    if (word == "VmRSS:" && file >> kibibytes) return kibibytes * 1024;
  return -1;
}

TEST_F(MemManager, AllocMemIsWhatTheProcessOccupies) {
  constexpr size_t kMore = 64 << 20;
  const __int64 before = manager.AllocMem();
  const std::vector<char> block(kMore, 1);

  const __int64 after = manager.AllocMem();

  EXPECT_GT(before, 0);
  EXPECT_GT(static_cast<double>(after - before), 0.75 * kMore);
  EXPECT_NEAR(static_cast<double>(after), residentSize(), 0.25 * kMore);
}

// ---- the process's books ----

TEST(MemManagerOfTheProcess, IsNotCreatedByFreeingNull) {
  ReleaseGlobalMemManager();
  zarelmem_free(nullptr, __FILE__, __LINE__);
  EXPECT_FALSE(C_MemManager::IsInstanced());

  ReleaseGlobalMemManager();
  zarelmem_free(zarelmem_malloc(1, "test", 1, __FILE__, __LINE__), __FILE__, __LINE__);

  EXPECT_TRUE(C_MemManager::IsInstanced());
  EXPECT_EQ(getGlobalMemManager(), C_MemManager::Instance());
}

TEST(MemManagerOfTheProcess, EntryPointsGoThroughAnInstalledManager) {
  auto* const host = new HostManager;
  C_MemManager::Install(host);

  void* block = zarelmem_malloc(84, "test", 1, __FILE__, __LINE__);
  block = zarelmem_realloc(block, 184, "test", 1, __FILE__, __LINE__);
  EXPECT_EQ(host->MemSize(), 200u);
  EXPECT_EQ(zarelmem_malloc(SIZE_MAX - 15, "test", 1, __FILE__, __LINE__), nullptr);
  EXPECT_EQ(zarelmem_calloc(SIZE_MAX / 2, 3, "test", 1, __FILE__, __LINE__), nullptr);
  EXPECT_EQ(zarelmem_calloc(SIZE_MAX - 15, 1, "test", 1, __FILE__, __LINE__), nullptr);
  EXPECT_EQ(zarelmem_realloc(block, SIZE_MAX - 15, "test", 1, __FILE__, __LINE__), nullptr);
  EXPECT_EQ(host->errors, 4) << "sizes that overflow with their header are exhausted memory";
  zarelmem_free(block, __FILE__, __LINE__);

  EXPECT_EQ(host->MemSize(), 0u);
  EXPECT_EQ(host->MaxMemSize(), 200u);
  ReleaseGlobalMemManager();
}

TEST(MemManagerOfTheProcess, EntryPointsHandOnWhoAsks) {
  auto* const host = new HostManager;
  C_MemManager::Install(host);
  host->noting = true;

  void* block = zarelmem_realloc(nullptr, 10, "a", 1, "a.c", 1);
  block = zarelmem_realloc(block, 20, "b", 1, "b.c", 2);
  zarelmem_free(block, "c.c", 3);
  block = zarelmem_malloc(30, "d", 1, "d.c", 4);
  zarelmem_free(block, "e.c", 5);
  block = zarelmem_calloc(5, 8, "f", 1, "f.c", 6);
  zarelmem_free(block, "g.c", 7);

  EXPECT_EQ(host->asked,
            (std::vector<std::string>{"Malloc 10 a a.c 1", "Realloc 20 b b.c 2", "Free 0  c.c 3",
                                      "Malloc 30 d d.c 4", "Free 0  e.c 5", "Calloc 5 8 f f.c 6",
                                      "Free 0  g.c 7"}));
  ReleaseGlobalMemManager();
}

void* noteSizeAndRefuse(u64 size, int, char*, int) {
  calls.push_back({"malloc", nullptr, size, 0, "", 0});
  return nullptr;
}

TEST(MemManagerOfTheProcess, TheLargestSizeThatFitsWithItsHeaderReachesTheHost) {
  auto* const host = new HostManager;
  C_MemManager::Install(host);
  calls.clear();
  host->Init(noteSizeAndRefuse, noteSizeAndRefuse, noRealloc, hostFree, hostInfo);

  EXPECT_EQ(zarelmem_malloc(SIZE_MAX - 16, "test", 1, __FILE__, __LINE__), nullptr);
  EXPECT_EQ(zarelmem_calloc(1, SIZE_MAX - 16, "test", 1, __FILE__, __LINE__), nullptr);

  ASSERT_EQ(calls.size(), 2u);
  EXPECT_EQ(calls[0].size, SIZE_MAX);
  EXPECT_EQ(calls[1].size, SIZE_MAX);
  EXPECT_EQ(host->errors, 2);
  ReleaseGlobalMemManager();
}

TEST(MemManagerOfTheProcess, AManagerInUseIsInstalledWithoutEffect) {
  auto* const host = new HostManager;
  C_MemManager::Install(host);
  void* const block = zarel_malloc(84, "test", 1);

  C_MemManager::Install(host);

  EXPECT_EQ(getGlobalMemManager(), host);
  EXPECT_EQ(host->MemSize(), 100u);
  zarel_free(block);
  ReleaseGlobalMemManager();
}

TEST(MemManagerOfTheProcess, EntryPointsWithoutAPlaceTellTheirOwn) {
  auto* const host = new HostManager;
  C_MemManager::Install(host);
  calls.clear();
  host->Init(hostCalloc, hostMalloc, hostRealloc, hostFree, hostInfo);
  zarelmem_initialize(16);

  void* const block = zarel_realloc(zarel_malloc(10, "test", 1), 20, "test", 1);
  zarel_free(block);
  zarel_free(zarel_calloc(2, 5, "test", 1));

  ASSERT_EQ(calls.size(), 5u);
  for (const HostCall& call : calls) {
    EXPECT_THAT(call.file, testing::EndsWith("src/memory/zarelmem.cpp"));
    EXPECT_EQ(call.line, calls[0].line);
  }
  ReleaseGlobalMemManager();
}

TEST(MemManagerOfTheProcess, TagsAreReachedFromC) {
  ReleaseGlobalMemManager();

  const int tag = zarel_get_new_tag();
  zarel_set_tag(tag);
  void* const block = zarel_malloc(84, "test", 1);

  EXPECT_EQ(tag, 1);
  EXPECT_EQ(zarel_tag_memsize(tag), 100u);
  EXPECT_EQ(zarel_tag_maxmemsize(tag), 100u);
  EXPECT_EQ(zarel_sum_memsize(), 100u);
  EXPECT_EQ(zarel_sum_maxmemsize(), 100u);
  zarel_free(block);
  zarel_free_tag(tag);
  EXPECT_EQ(zarel_tag_maxmemsize(tag), 0u);
  EXPECT_EQ(zarel_get_new_tag(), tag);
  ReleaseGlobalMemManager();
}

// The books may miss some of it, but every block is whole.
TEST(MemManagerOfTheProcess, ThreadsThatAllocateAtOnceGetSoundBlocks) {
  getGlobalMemManager();
  const auto work = [](unsigned char mark) {
    for (int k = 1; k < 5000; ++k) {
      const auto size = static_cast<size_t>(k % 300 + 1);
      auto* const block = static_cast<unsigned char*>(zarel_malloc(size, "test", 1));
      std::memset(block, mark, size);
      if (block[0] != mark || block[size - 1] != mark) ADD_FAILURE() << k;
      zarel_free(block);
    }
  };

  std::vector<std::thread> threads;
  for (unsigned char mark = 1; mark <= 4; ++mark)
    threads.emplace_back(work, mark);
  for (std::thread& thread : threads)
    thread.join();
  ReleaseGlobalMemManager();
}

// The manager's own tables are the first to fail.
TEST(MemManagerOfTheProcess, NoMemoryForTheManagerIsANullBlock) {
  bool thrown = false;
  const auto allocate = [&] {
    ReleaseGlobalMemManager();
    try {
      void* const block = zarelmem_malloc(8, "test", 1, __FILE__, __LINE__);
      const support::Unharmed checks;
      EXPECT_EQ(block == nullptr, support::FailingAllocation::happened());
      zarelmem_free(block, __FILE__, __LINE__);
    } catch (...) {
      thrown = true;
    }
  };

  for (const auto duration :
       {support::FailingAllocation::Once, support::FailingAllocation::FromThenOn})
    EXPECT_GT(support::forEachFailingAllocation(allocate, duration), 3);
  EXPECT_FALSE(thrown);
}

// Asks while there is neither a manager nor memory for one.
template <class Question>
auto answerWithoutAManager(Question question) {
  const support::FailingAllocation failing(1);
  ReleaseGlobalMemManager();
  const auto answer = question();
  EXPECT_TRUE(support::FailingAllocation::happened());
  EXPECT_FALSE(C_MemManager::IsInstanced());
  return answer;
}

TEST(MemManagerOfTheProcess, NoMemoryForTheManagerLeavesTheAnswersOfAnEmptyOne) {
  int stranger = 0;

  EXPECT_EQ(answerWithoutAManager(zarel_get_new_tag), -1);
  EXPECT_EQ(answerWithoutAManager(zarel_sum_memsize), 0u);
  EXPECT_EQ(answerWithoutAManager(zarel_sum_maxmemsize), 0u);
  EXPECT_EQ(answerWithoutAManager([] { return zarel_tag_memsize(1); }), 0u);
  EXPECT_EQ(answerWithoutAManager([] { return zarel_tag_maxmemsize(1); }), 0u);
  EXPECT_EQ(answerWithoutAManager([] { return zarel_calloc(1, 8, "test", 1); }), nullptr);
  EXPECT_EQ(answerWithoutAManager([&] { return zarel_realloc(&stranger, 8, "test", 1); }), nullptr);
  answerWithoutAManager([&] { return zarel_free(&stranger), 0; });
  answerWithoutAManager([] { return zarelmem_initialize(8), 0; });
  answerWithoutAManager([] { return zarel_set_tag(1), 0; });
  answerWithoutAManager([] { return zarel_free_tag(1), 0; });
}

} // namespace

} // namespace memory_test
