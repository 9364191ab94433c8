// What the system says of its memory, against the system's own files.
#include <cerrno>
#include <cmath>
#include <fstream>
#include <string>

#include <unistd.h>

#include <gtest/gtest.h>
#include <zarel/C_MemManager.h>

#include "memory/information.h"
#include "system/calls.h"
#include "system/machine.h"

namespace {

__int64 ask(int key) {
  int zero = 0;
  return Zarel::memoryInformation(&key, &zero);
}

// A line of /proc/meminfo, in bytes, read another way.
double meminfo(const std::string& name) {
  std::ifstream file("/proc/meminfo");
  std::string word;
  double value = 0;
  while (file >> word)
    if (word == name + ":" && file >> value) return value * 1024;
  return -1;
}

// The machine lives on between two readings.
void expectNear(__int64 value, double expected) {
  EXPECT_GT(value, 0);
  EXPECT_NEAR(static_cast<double>(value), expected, 0.2 * expected + (64 << 20));
}

TEST(InfoMem, TellsPhysicalMemory) {
  EXPECT_EQ(ask(C_MemManager::E_MemPhysicalTotal), sysconf(_SC_PHYS_PAGES) * sysconf(_SC_PAGESIZE));
  expectNear(ask(C_MemManager::E_MemPhysicalAvail), meminfo("MemAvailable"));
}

TEST(InfoMem, TellsCommitmentInBytesAndItsLimitInPages) {
  expectNear(ask(C_MemManager::E_MemCommitTotal), meminfo("Committed_AS"));
  EXPECT_EQ(ask(C_MemManager::E_MemCommitLimit) * sysconf(_SC_PAGESIZE),
            static_cast<__int64>(meminfo("CommitLimit")));
}

TEST(InfoMem, TellsKernelMemoryInPages) {
  const auto page = static_cast<double>(sysconf(_SC_PAGESIZE));
  const double paged = static_cast<double>(ask(C_MemManager::E_MemKernelPaged)) * page;
  const double fixed = static_cast<double>(ask(C_MemManager::E_MemKernelNonpaged)) * page;
  const double total = static_cast<double>(ask(C_MemManager::E_MemKernelTotal)) * page;

  EXPECT_NEAR(paged, meminfo("SReclaimable"), 64 << 20);
  EXPECT_GE(fixed, meminfo("PageTables") / 2);
  EXPECT_NEAR(total, paged + fixed, 64 << 20);
}

TEST(InfoMem, TellsCacheAndPage) {
  expectNear(ask(C_MemManager::E_MemSystemCache), meminfo("Cached") + meminfo("Buffers"));
  EXPECT_EQ(ask(C_MemManager::E_MemPageSize), sysconf(_SC_PAGESIZE));
}

TEST(InfoMem, CountsFilesThreadsAndProcesses) {
  const __int64 processes = ask(C_MemManager::E_MemProcessCount);

  EXPECT_GT(ask(C_MemManager::E_MemHandleCount), 3);
  EXPECT_GE(processes, 2);
  EXPECT_GE(ask(C_MemManager::E_MemThreadCount), processes / 2);
}

TEST(InfoMem, AnswersMinus1ToAnyOtherKey) {
  for (const int key : {0, 2, 3, 8, 129, 256, 512, 1024, 2048, 262144, -1})
    EXPECT_EQ(ask(key), -1) << key;
}

// Puts the table of system calls back.
class Calls : public testing::Test {
protected:
  ~Calls() override { Zarel::systemCalls() = _former; }

private:
  Zarel::SystemCalls _former = Zarel::systemCalls();
};

TEST_F(Calls, ASystemThatDoesNotAnswerIsMinus1AndNoResidentBytes) {
  Zarel::systemCalls().open = [](const char*, int, mode_t) {
    errno = EACCES;
    return -1;
  };

  for (const int key : {1, 4, 16, 32, 64, 128, 4096, 16384, 32768, 131072})
    EXPECT_EQ(ask(key), -1) << key;
  EXPECT_EQ(getGlobalMemManager()->AllocMem(), 0);
}

TEST_F(Calls, AnEmptyAnswerIsNone) {
  Zarel::systemCalls().read = [](int, void*, size_t) -> ssize_t { return 0; };

  EXPECT_EQ(ask(C_MemManager::E_MemPhysicalTotal), -1);
  EXPECT_EQ(ask(C_MemManager::E_MemThreadCount), -1);
  EXPECT_EQ(getGlobalMemManager()->AllocMem(), 0);
}

TEST_F(Calls, ALineWithoutANumberIsNone) {
  Zarel::systemCalls().read = [](int, void* buffer, size_t) -> ssize_t {
    static bool first = true;
    if (!first) return 0;
    first = false;
    std::char_traits<char>::copy(static_cast<char*>(buffer), "MemTotal: none\n", 15);
    return 15;
  };

  EXPECT_EQ(ask(C_MemManager::E_MemPhysicalTotal), -1);
}

} // namespace
