// Owned descriptors, temporary files and mapped ranges.
#include <cerrno>
#include <cstring>
#include <fcntl.h>
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
using TemporaryFile = DescriptorTest;

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

TEST_F(DescriptorTest, ReservesSpaceAndKeepsBytes) {
  const Descriptor file = openDescriptor(name(), O_RDWR);

  EXPECT_EQ(reserveSpace(file.get(), 0), 0);
  EXPECT_EQ(reserveSpace(file.get(), 4), 0);
  EXPECT_EQ(support::bytesOf(name()), "0123456789") << "never shorter";
  EXPECT_EQ(reserveSpace(file.get(), 100000), 0);

  EXPECT_EQ(support::bytesOf(name()), "0123456789" + std::string(99990, '\0'));
  struct stat status;
  ASSERT_EQ(fstat(file.get(), &status), 0);
  EXPECT_GE(status.st_blocks * 512, 100000);
}

TEST_F(DescriptorTest, ReservingReportsAFullDisk) {
  const Descriptor file = openDescriptor(name(), O_RDWR);
  {
    const FailingCall failing(1, "fallocate", ENOSPC);
    EXPECT_EQ(reserveSpace(file.get(), 100), -1);
    EXPECT_EQ(errno, ENOSPC);
  }
  const FailingCall interrupted(1, "fallocate", EINTR);
  EXPECT_EQ(reserveSpace(file.get(), 100), 0);
}

TEST_F(DescriptorTest, ReservingReportsTheSystemsRefusal) {
  const Descriptor reader = openDescriptor(name(), O_RDONLY);
  EXPECT_EQ(reserveSpace(reader.get(), 100), -1);
  EXPECT_EQ(errno, EBADF);
  const Descriptor file = openDescriptor(name(), O_RDWR);
  EXPECT_EQ(reserveSpace(file.get(), -1), -1);
  EXPECT_EQ(errno, EINVAL);
}

TEST_F(DescriptorTest, TransfersAtAnOffsetLeaveThePosition) {
  const Descriptor file = openDescriptor(name(), O_RDWR);
  char buffer[4] = {};

  EXPECT_EQ(readFullyAt(file.get(), buffer, 4, 3), 4u);
  EXPECT_EQ(std::string(buffer, 4), "3456");
  EXPECT_EQ(writeFullyAt(file.get(), "ab", 2, 9), 2u);
  EXPECT_EQ(support::bytesOf(name()), "012345678ab");
  EXPECT_EQ(readFullyAt(file.get(), buffer, 4, 9), 2u) << "the file ends";
  EXPECT_EQ(lseek(file.get(), 0, SEEK_CUR), 0);
}

TEST_F(DescriptorTest, TransfersAtAnOffsetGoOnUntilAllIsDone) {
  const Descriptor file = openDescriptor(name(), O_RDWR);
  const OwnSystemCalls own;
  systemCalls().pread = [](int fd, void* to, size_t, off_t at) { return ::pread(fd, to, 1, at); };
  systemCalls().pwrite = [](int fd, const void* from, size_t, off_t at) {
    return ::pwrite(fd, from, 1, at);
  };
  char buffer[4] = {};

  EXPECT_EQ(writeFullyAt(file.get(), "wxyz", 4, 2), 4u);
  EXPECT_EQ(readFullyAt(file.get(), buffer, 4, 1), 4u);
  EXPECT_EQ(std::string(buffer, 4), "1wxy");
}

TEST_F(TemporaryFile, IsNewAndItsOwnersAlone) {
  std::string path;
  const Descriptor file = createTemporary(directory.path(), "ZRLVS", path);

  ASSERT_TRUE(file);
  EXPECT_THAT(path, testing::StartsWith(directory.file("ZRLVS")));
  struct stat status;
  ASSERT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0600u);
  EXPECT_EQ(fcntl(file.get(), F_GETFD), FD_CLOEXEC);
  EXPECT_EQ(fcntl(file.get(), F_GETFL) & O_ACCMODE, O_RDWR);
}

TEST_F(TemporaryFile, TakesAnotherNameWhereOneIsTaken) {
  std::string path;
  {
    const FailingCall taken(1, "open", EEXIST);
    EXPECT_TRUE(createTemporary(directory.path(), "p", path));
  }
  const OwnSystemCalls own;
  systemCalls().open = [](const char*, int flags, mode_t) {
    EXPECT_EQ(flags & (O_CREAT | O_EXCL), O_CREAT | O_EXCL);
    return errno = EEXIST, -1;
  };
  EXPECT_FALSE(createTemporary(directory.path(), "p", path)) << "not for ever";
}

TEST_F(TemporaryFile, FailsWithTheSystem) {
  std::string path;
  EXPECT_FALSE(createTemporary("/nowhere/at/all", "p", path));
  EXPECT_EQ(errno, ENOENT);
}

TEST_F(TemporaryFile, UnusedPathIsNotThere) {
  EXPECT_THAT(unusedPath(directory.path(), "p"), testing::StartsWith(directory.file("p")));
  const OwnSystemCalls own;
  systemCalls().stat = [](const char* path, struct stat* status) {
    return ::stat(path[0] == '/' ? "/" : path, status);
  };
  EXPECT_EQ(unusedPath(directory.path(), "p"), "") << "every name is taken";
  EXPECT_EQ(errno, EEXIST);
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

  one = std::move(two);
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
  EXPECT_EQ(map.unmap(), 0);
  EXPECT_EQ(map.unmap(), 0);
  EXPECT_FALSE(map);
}

} // namespace
