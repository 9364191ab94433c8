// What the system says of its memory, against the system's own files.
#include <cerrno>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <string>

#include <fcntl.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <zarel/C_MemManager.h>

#include "memory/information.h"
#include "support/FailingCall.h"
#include "support/Files.h"
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

// The entries of /proc that have a program's status.
double directoriesOfProcesses() {
  double count = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
    const std::string name = entry.path().filename();
    count += name.find_first_not_of("0123456789") == std::string::npos;
  }
  return count;
}

TEST(InfoMem, CountsFilesThreadsAndProcesses) {
  const __int64 processes = ask(C_MemManager::E_MemProcessCount);
  EXPECT_NEAR(static_cast<double>(processes), directoriesOfProcesses(), 200);

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

// A system of our own: what the library reads of it stands in files of the test.
class OwnSystem : public Calls {
protected:
  OwnSystem() {
    root = &directory;
    support::writeBytes(directory.file("meminfo"), "MemTotal:       16000 kB\n"
                                                   "MemFree:         1000 kB\n"
                                                   "MemAvailable:    9000 kB\n"
                                                   "Buffers:          100 kB\n"
                                                   "Cached:          2000 kB\n"
                                                   "SwapCached:       333 kB\n"
                                                   "SReclaimable:     400 kB\n"
                                                   "SUnreclaim:       200 kB\n"
                                                   "KernelStack:       80 kB\n"
                                                   "PageTables:        40 kB\n"
                                                   "SecPageTables:      7 kB\n"
                                                   "CommitLimit:    24000 kB\n"
                                                   "Committed_AS:    5000 kB\n");
    support::writeBytes(directory.file("file-nr"), "1234\t5\t99999\n");
    support::writeBytes(directory.file("loadavg"), "0.10 0.20 0.30 4/1000567 8910\n");
    support::writeBytes(directory.file("statm"), "900 42 7 1 0 8 0\n");
    Zarel::systemCalls().open = [](const char* path, int flags, mode_t mode) {
      const std::string name = std::filesystem::path(path).filename();
      return ::open(root->file(name).c_str(), flags, mode);
    };
  }

  static constexpr __int64 kibi = 1024;
  const __int64 page = sysconf(_SC_PAGESIZE);
  support::TempDirectory directory;
  static const support::TempDirectory* root;
};
const support::TempDirectory* OwnSystem::root = nullptr;

TEST_F(OwnSystem, TellsBytesForFourKeys) {
  EXPECT_EQ(ask(C_MemManager::E_MemPhysicalTotal), 16000 * kibi);
  EXPECT_EQ(ask(C_MemManager::E_MemPhysicalAvail), 9000 * kibi);
  EXPECT_EQ(ask(C_MemManager::E_MemCommitTotal), 5000 * kibi);
  EXPECT_EQ(ask(C_MemManager::E_MemSystemCache), 2100 * kibi);
}

TEST_F(OwnSystem, TellsPagesForTheKernelAndTheCommitLimit) {
  EXPECT_EQ(ask(C_MemManager::E_MemKernelTotal), 720 * kibi / page);
  EXPECT_EQ(ask(C_MemManager::E_MemKernelPaged), 400 * kibi / page);
  EXPECT_EQ(ask(C_MemManager::E_MemKernelNonpaged), 320 * kibi / page);
  EXPECT_EQ(ask(C_MemManager::E_MemCommitLimit), 24000 * kibi / page);
}

TEST_F(OwnSystem, TellsCounts) {
  EXPECT_EQ(ask(C_MemManager::E_MemHandleCount), 1234);
  EXPECT_EQ(ask(C_MemManager::E_MemThreadCount), 1000567);
  EXPECT_NEAR(static_cast<double>(ask(C_MemManager::E_MemProcessCount)), directoriesOfProcesses(),
              200);
}

TEST_F(OwnSystem, OneMissingFigureLeavesItsSumUnknown) {
  support::writeBytes(directory.file("meminfo"), "SReclaimable:     400 kB\n"
                                                 "SUnreclaim:       200 kB\n"
                                                 "PageTables:        40 kB\n"
                                                 "Cached:          2000 kB\n");

  EXPECT_EQ(ask(C_MemManager::E_MemKernelPaged), 400 * kibi / page);
  EXPECT_EQ(ask(C_MemManager::E_MemKernelNonpaged), -1);
  EXPECT_EQ(ask(C_MemManager::E_MemKernelTotal), -1);
  EXPECT_EQ(ask(C_MemManager::E_MemSystemCache), -1);
}

TEST_F(OwnSystem, AllocMemIsTheResidentPages) {
  EXPECT_EQ(getGlobalMemManager()->AllocMem(), 42 * page);
}

TEST(Faults, OfEachSystemCallLeaveAnAnswerOrNone) {
  const auto descriptors = [] {
    const std::filesystem::directory_iterator open("/proc/self/fd");
    return std::distance(begin(open), end(open));
  };
  const auto before = descriptors();
  const __int64 total = ask(C_MemManager::E_MemPhysicalTotal);

  const long failed = support::forEachFailingCall([&] {
    const __int64 told = ask(C_MemManager::E_MemPhysicalTotal);
    const bool unread =
        support::FailingCall::happened() && support::FailingCall::failed() != "close";
    // A file whose first bytes came tells them even if no more come.
    EXPECT_TRUE(told == total || (unread && told == -1));
    const __int64 resident = getGlobalMemManager()->AllocMem();
    EXPECT_GE(resident, 0);
  });

  EXPECT_GE(failed, 6);
  EXPECT_EQ(descriptors(), before);
}

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
