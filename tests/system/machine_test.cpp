// What the system says of machine and process, against other ways to ask it.
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <string>

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include "system/OwnSystemCalls.h"
#include "system/machine.h"

using namespace Zarel;

namespace {

// What the next file of the system holds, and which one was opened how.
std::string content;
std::string openedPath;
int openedFlags;

// Files of the system with the content of a test. The descriptors are real ones.
class Machine : public testing::Test {
protected:
  void hold(const std::string& text) {
    content = text;
    systemCalls().open = [](const char* path, int flags, mode_t) {
      openedPath = path;
      openedFlags = flags;
      return ::open("/dev/null", flags & ~O_DIRECTORY);
    };
    systemCalls().read = [](int, void* to, size_t bytes) {
      const size_t taken = std::min(bytes, content.size());
      std::memcpy(to, content.data(), taken);
      content.erase(0, taken);
      return static_cast<ssize_t>(taken);
    };
  }

private:
  const OwnSystemCalls own;
};

int descriptors() {
  int count = 0;
  for (int fd = 0; fd < 256; ++fd)
    count += fcntl(fd, F_GETFD) >= 0 ? 1 : 0;
  return count;
}

TEST_F(Machine, MemoryFiguresAreLinesInBytes) {
  const std::string lines = "MemTotal:        16 kB\nMem:    3 kB\nCached: 7 kB\nHuge:\nLast: 5 kB";
  const auto figure = [&](const char* name) {
    hold(lines);
    return memoryFigure(name);
  };

  EXPECT_EQ(figure("MemTotal"), 16 * 1024);
  EXPECT_EQ(openedPath, "/proc/meminfo");
  EXPECT_EQ(figure("Mem"), 3 * 1024) << "whole names";
  EXPECT_EQ(figure("Last"), 5 * 1024);
  EXPECT_EQ(figure("Total"), -1);
  EXPECT_EQ(figure("None"), -1);
  hold("MemTotal: -3 kB\n");
  EXPECT_EQ(memoryFigure("MemTotal"), -1);
  hold("MemTotal: none\n");
  EXPECT_EQ(memoryFigure("MemTotal"), -1);
}

TEST_F(Machine, MemoryFiguresStandAnywhereInTheFile) {
  hold(std::string(200, '\n') + std::string(4000, 'x') + "\nLast: 5 kB\n");
  EXPECT_EQ(memoryFigure("Last"), 5 * 1024);
}

TEST_F(Machine, ResidentBytesAreTheSecondNumberInPages) {
  hold("900 30 7 1 0 5 0\n");
  EXPECT_EQ(residentBytes(), 30 * sysconf(_SC_PAGESIZE));
  EXPECT_EQ(openedPath, "/proc/self/statm");
  hold("900");
  EXPECT_EQ(residentBytes(), -1);
}

TEST_F(Machine, ResidentBytesCountWhatIsTouched) {
  constexpr size_t size = 64 << 20;
  void* const address =
      mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(address, MAP_FAILED);
  const long long before = residentBytes();
  EXPECT_GT(before, 0);
  std::memset(address, 1, size);
  const long long after = residentBytes();
  munmap(address, size);

  EXPECT_NEAR(static_cast<double>(after - before), size, size / 4.0);
}

TEST_F(Machine, FilesAndThreadsAreThoseOfAllProcesses) {
  hold("1234\t5\t9999\n");
  EXPECT_EQ(openFileCount(), 1234);
  EXPECT_EQ(openedPath, "/proc/sys/fs/file-nr");
  hold("0.25 0.50 0.75 4/567 890\n");
  EXPECT_EQ(threadCount(), 567);
  EXPECT_EQ(openedPath, "/proc/loadavg");
  hold("0.25 0.50 0.75");
  EXPECT_EQ(threadCount(), -1);
}

// Directories of /proc that are numbers.
long long processesListed() {
  long long count = 0;
  DIR* const directory = opendir("/proc");
  while (const dirent* entry = readdir(directory))
    count += std::string(entry->d_name).find_first_not_of("0123456789") == std::string::npos;
  closedir(directory);
  return count;
}

// Others come and go; between two equal counts nobody did, as a rule.
TEST_F(Machine, ProcessesAreCounted) {
  bool agreed = false;
  for (int k = 0; k < 100 && !agreed; ++k) {
    const long long before = processesListed();
    const long long count = processCount();
    agreed = before == count && processesListed() == count;
  }
  EXPECT_TRUE(agreed);
}

TEST_F(Machine, EveryFigureIsUnknownWhereTheSystemDoesNotAnswer) {
  systemCalls().open = [](const char*, int, mode_t) { return errno = EACCES, -1; };
  for (const long long figure :
       {memoryFigure("MemTotal"), residentBytes(), openFileCount(), threadCount(), processCount()})
    EXPECT_EQ(figure, -1);
}

TEST_F(Machine, NothingStaysOpenOrGoesToStartedPrograms) {
  const int before = descriptors();
  for (const auto ask : {residentBytes, openFileCount, threadCount, processCount}) {
    hold("1 2/3\n");
    ask();
    EXPECT_NE(openedFlags & O_CLOEXEC, 0) << openedPath;
    EXPECT_EQ(openedFlags & O_ACCMODE, O_RDONLY) << openedPath;
  }
  EXPECT_EQ(descriptors(), before);
}

} // namespace
