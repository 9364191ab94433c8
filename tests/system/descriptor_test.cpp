// Owned descriptors, names for temporary files and mapped ranges.
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <set>
#include <string_view>
#include <sys/mman.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "support/FailingCall.h"
#include "support/Files.h"
#include "system/OwnSystemCalls.h"
#include "system/descriptor.h"
#include "system/mapping.h"

using namespace Zarel;
using support::FailingCall;

namespace {

bool isOpen(int fd) {
  return fcntl(fd, F_GETFD) >= 0;
}

class DescriptorTest : public testing::Test {
protected:
  DescriptorTest() { support::writeBytes(name(), "0123456789"); }
  std::string name() const { return directory.file("data"); }

  support::TempDirectory directory;
};

using MappingTest = DescriptorTest;
using TemporaryName = DescriptorTest;

TEST_F(DescriptorTest, ClosesItself) {
  int fd = -1;
  {
    const Descriptor file = openDescriptor(name(), O_RDONLY);
    fd = file.get();
    EXPECT_TRUE(file);
    EXPECT_TRUE(isOpen(fd));
  }
  EXPECT_FALSE(isOpen(fd));
}

TEST_F(DescriptorTest, MovesAndIsGivenAway) {
  Descriptor one = openDescriptor(name(), O_RDONLY);
  Descriptor two = openDescriptor(name(), O_RDONLY);
  const int first = one.get();
  const int second = two.get();

  Descriptor moved = std::move(one);
  EXPECT_EQ(moved.get(), first);
  moved = std::move(two);
  EXPECT_FALSE(isOpen(first));
  EXPECT_EQ(moved.release(), second);
  EXPECT_TRUE(isOpen(second));
  EXPECT_FALSE(moved);
  close(second);
}

TEST_F(DescriptorTest, TellsOfAFailingCloseAndIsClosedAllTheSame) {
  Descriptor file = openDescriptor(name(), O_RDONLY);
  const int fd = file.get();
  const FailingCall failing(1, "close", EIO);

  EXPECT_EQ(file.close(), -1);
  EXPECT_EQ(errno, EIO);

  EXPECT_FALSE(file);
  EXPECT_FALSE(isOpen(fd));
  EXPECT_EQ(file.close(), 0) << "none is closed already";
}

TEST_F(DescriptorTest, OpenRepeatsAnInterruptedCallAndTellsOfOthers) {
  {
    const FailingCall interrupted(1, "open", EINTR);
    EXPECT_TRUE(openDescriptor(name(), O_RDONLY));
  }
  const FailingCall failing(1, "open", EMFILE);
  EXPECT_FALSE(openDescriptor(name(), O_RDONLY));
  EXPECT_EQ(errno, EMFILE);
}

TEST_F(DescriptorTest, StartedProgramsInheritNothing) {
  const Descriptor file = openDescriptor(name(), O_RDONLY);
  EXPECT_EQ(fcntl(file.get(), F_GETFD), FD_CLOEXEC);
}

TEST_F(TemporaryName, StandsInTheDirectoryAndNothingUnderIt) {
  EXPECT_THAT(unusedPath(directory.path(), "p"), testing::StartsWith(directory.file("p")));
  EXPECT_THAT(unusedPath(directory.path() + "/", "p"), testing::StartsWith(directory.file("p")));
  EXPECT_THAT(unusedPath("/", "p"), testing::StartsWith("/p"));
  EXPECT_EQ(unusedPath("", "p").front(), '/');
}

TEST_F(TemporaryName, IsTriedAgainWhereOneIsTakenButNotForEver) {
  static int taken;
  const OwnSystemCalls own;
  systemCalls().stat = [](const char* path, struct stat* status) {
    return ::stat(taken-- > 0 ? "/" : path, status);
  };
  taken = 3;
  EXPECT_THAT(unusedPath(directory.path(), "p"), testing::StartsWith(directory.file("p")));
  EXPECT_EQ(taken, -1);
  taken = 1000000;
  EXPECT_EQ(unusedPath(directory.path(), "p"), "") << "every name is taken";
  EXPECT_EQ(errno, EEXIST);
}

// Of 32 letters, 1000 draws leave out none but by a chance of 1e-12, and of their 1024 pairs they
// take about 640; characters that hang together take far fewer.
TEST_F(TemporaryName, EndsInTwelveCharactersThatNobodyGuesses) {
  std::set<char> letters[12];
  std::set<std::string> pairs[11];
  for (int k = 0; k < 1000; ++k) {
    const std::string name = unusedPath(directory.path(), "p");
    const std::string end = name.substr(directory.file("p").size());
    ASSERT_EQ(end.size(), 12u);
    for (size_t at = 0; at < 12; ++at) {
      letters[at].insert(end[at]);
      if (at < 11) pairs[at].insert(end.substr(at, 2));
    }
  }
  for (const auto& seen : letters)
    EXPECT_GE(seen.size(), 28u);
  for (const auto& seen : pairs)
    EXPECT_GE(seen.size(), 500u);
}

TEST_F(TemporaryName, DirectoryIsOneThatMayBeWrittenTo) {
  const support::Environment tmpdir("TMPDIR", directory.path().c_str());
  EXPECT_EQ(temporaryDirectory("/"), directory.path());
  static int asked;
  const OwnSystemCalls own;
  systemCalls().access = [](const char* path, int mode) {
    asked = mode;
    return path == std::string_view("/") ? 0 : -1;
  };
  EXPECT_EQ(temporaryDirectory("/"), "/");
  EXPECT_EQ(asked, W_OK | X_OK) << "files are made in it, and opened";
}

TEST_F(TemporaryName, DirectoryIsNoFile) {
  ASSERT_EQ(chmod(name().c_str(), 0700), 0);
  const support::Environment tmpdir("TMPDIR", name().c_str());
  EXPECT_EQ(temporaryDirectory(directory.path()), directory.path());
  const OwnSystemCalls own;
  systemCalls().stat = [](const char*, struct stat* status) {
    status->st_mode = S_IFREG | 0700;
    return 0;
  };
  errno = 0;
  EXPECT_EQ(temporaryDirectory(directory.path()), "");
  EXPECT_EQ(errno, ENOENT);
}

TEST_F(MappingTest, ShowsAndChangesTheFile) {
  const Descriptor file = openDescriptor(name(), O_RDWR);
  {
    const Mapping map = mapFile(file.get(), 0, 10, true);
    ASSERT_TRUE(map);
    EXPECT_EQ(std::string(map.data(), map.size()), "0123456789");
    map.data()[3] = 'x';
  }
  EXPECT_EQ(support::bytesOf(name()), "012x456789");
}

TEST_F(MappingTest, OffsetsAreMultiplesOfThePage) {
  ASSERT_EQ(truncate(name().c_str(), static_cast<off_t>(2 * pageSize())), 0);
  const Descriptor file = openDescriptor(name(), O_RDWR);
  const Mapping second = mapFile(file.get(), static_cast<off_t>(pageSize()), pageSize(), true);
  second.data()[0] = 'x';

  EXPECT_EQ(support::bytesOf(name())[pageSize()], 'x');
  EXPECT_FALSE(mapFile(file.get(), 1, 1, false));
  EXPECT_EQ(errno, EINVAL);
}

TEST_F(MappingTest, MovesAndIsGivenAway) {
  const Descriptor file = openDescriptor(name(), O_RDONLY);
  Mapping one = mapFile(file.get(), 0, 10, false);
  Mapping two = mapFile(file.get(), 0, 5, false);
  char* const address = two.data();

  const auto former = systemCalls().munmap;
  static void* unmapped;
  systemCalls().munmap = [](void* at, size_t bytes) { return unmapped = at, ::munmap(at, bytes); };
  char* const first = one.data();
  one = std::move(two);
  systemCalls().munmap = former;
  EXPECT_EQ(unmapped, first);
  EXPECT_EQ(one.data(), address);
  EXPECT_EQ(one.size(), 5u);
  EXPECT_FALSE(two);
  Mapping three(std::move(one));
  EXPECT_EQ(three.size(), 5u);
  EXPECT_EQ(three.release(), address);
  EXPECT_EQ(three.size(), 0u);
  EXPECT_EQ(munmap(address, 5), 0);
}

TEST_F(MappingTest, TellsOfFailingCalls) {
  const Descriptor file = openDescriptor(name(), O_RDONLY);
  {
    const FailingCall failing(1, "mmap", ENOMEM);
    EXPECT_FALSE(mapFile(file.get(), 0, 10, false));
    EXPECT_EQ(errno, ENOMEM);
  }
  EXPECT_FALSE(mapFile(file.get(), 0, 10, true)) << "opened for reading";
  EXPECT_EQ(errno, EACCES);
  Mapping map = mapFile(file.get(), 0, 10, false);
  const FailingCall failing(1, "munmap", EINVAL);
  EXPECT_EQ(map.unmap(), -1);
  EXPECT_TRUE(map) << "it is still there";
  EXPECT_EQ(map.size(), 10u);
  EXPECT_EQ(map.unmap(), 0);
  EXPECT_EQ(map.unmap(), 0);
  EXPECT_FALSE(map);
}

} // namespace
