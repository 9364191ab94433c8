// The table of system calls, and transfers through it.
#include <cerrno>
#include <fcntl.h>
#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

#include "support/FailingCall.h"
#include "support/Files.h"
#include "system/OwnSystemCalls.h"
#include "system/descriptor.h"

using namespace Zarel;

namespace {

class Calls : public testing::Test {
protected:
  Calls() { support::writeBytes(name, "0123456789"); }
  Descriptor file(int flags = O_RDWR) const { return openDescriptor(name, flags); }

  support::TempDirectory directory;
  const std::string name = directory.file("data");
};

TEST_F(Calls, EndOfFileEndsATransfer) {
  const Descriptor reader = file(O_RDONLY);
  char buffer[16];

  EXPECT_EQ(readFully(reader.get(), buffer, 16), 10u);
  EXPECT_EQ(readFully(reader.get(), buffer, 16), 0u);
  EXPECT_EQ(writeFully(reader.get(), buffer, 3), 0u) << "opened for reading";
  EXPECT_EQ(errno, EBADF);
}

// Calls that take one byte at a time and are interrupted before each.
TEST_F(Calls, TransfersGoOnUntilAllIsDone) {
  static bool interrupts;
  const auto interrupted = [] {
    interrupts = !interrupts;
    if (interrupts) errno = EINTR;
    return interrupts;
  };
  static const auto isInterrupted = interrupted;
  const OwnSystemCalls own;
  systemCalls().read = [](int fd, void* to, size_t) -> ssize_t {
    return isInterrupted() ? -1 : ::read(fd, to, 1);
  };
  systemCalls().write = [](int fd, const void* from, size_t) -> ssize_t {
    return isInterrupted() ? -1 : ::write(fd, from, 1);
  };
  const Descriptor both = file();
  char buffer[4] = {};

  EXPECT_EQ(readFully(both.get(), buffer, 4), 4u);
  EXPECT_EQ(std::string(buffer, 4), "0123");
  EXPECT_EQ(writeFully(both.get(), "wxyz", 4), 4u);
  EXPECT_EQ(support::bytesOf(name), "0123wxyz89");
}

TEST_F(Calls, AnErrorEndsATransferAndIsTold) {
  static int good;
  const OwnSystemCalls own;
  systemCalls().write = [](int fd, const void* from, size_t) -> ssize_t {
    return good-- > 0 ? ::write(fd, from, 1) : (errno = ENOSPC, -1);
  };
  const Descriptor both = file();

  good = 2;
  EXPECT_EQ(writeFully(both.get(), "wxyz", 4), 2u);
  EXPECT_EQ(errno, ENOSPC);
  EXPECT_EQ(support::bytesOf(name), "wx23456789");
}

TEST_F(Calls, AccessModeIsTheModeAlone) {
  for (const int mode : {O_RDONLY, O_WRONLY, O_RDWR}) {
    const Descriptor plain = file(mode), other = file(mode | O_APPEND | O_NONBLOCK);
    EXPECT_EQ(systemCalls().accessMode(plain.get()), mode);
    EXPECT_EQ(systemCalls().accessMode(other.get()), mode);
  }
  EXPECT_EQ(systemCalls().accessMode(-1), -1);
  EXPECT_EQ(errno, EBADF);
}

TEST_F(Calls, DuplicatesAreTheSameOpenFileClosedInStartedPrograms) {
  const Descriptor one = file();
  const Descriptor other(systemCalls().duplicate(one.get()));
  char buffer[4];

  ASSERT_TRUE(other);
  EXPECT_NE(other.get(), one.get());
  EXPECT_EQ(fcntl(other.get(), F_GETFD), FD_CLOEXEC);
  EXPECT_EQ(readFully(one.get(), buffer, 4), 4u);
  EXPECT_EQ(lseek(other.get(), 0, SEEK_CUR), 4) << "one position for both";
  EXPECT_EQ(systemCalls().duplicate(-1), -1);
}

TEST_F(Calls, ReservingGivesPlaceAndKeepsBytes) {
  const Descriptor both = file();

  EXPECT_EQ(systemCalls().fallocate(both.get(), 0, 4), 0);
  EXPECT_EQ(support::bytesOf(name), "0123456789") << "never shorter";
  EXPECT_EQ(systemCalls().fallocate(both.get(), 10, 100000), 0);

  EXPECT_EQ(support::bytesOf(name), "0123456789" + std::string(100000, '\0'));
  struct stat status;
  ASSERT_EQ(systemCalls().fstat(both.get(), &status), 0);
  EXPECT_GE(status.st_blocks * 512, 100010);
}

TEST_F(Calls, ReservingTellsOfARefusalInErrno) {
  const Descriptor reader = file(O_RDONLY), both = file();
  errno = 0;
  EXPECT_EQ(systemCalls().fallocate(reader.get(), 0, 100), -1);
  EXPECT_EQ(errno, EBADF);
  EXPECT_EQ(systemCalls().fallocate(both.get(), 0, -1), -1);
  EXPECT_EQ(errno, EINVAL);
}

// A file of the system's own stands for a file system that cannot reserve. Nobody is to write to it
// instead where writing would append.
TEST_F(Calls, ReservingTellsOfAFileSystemThatCannot) {
  const char own[] = "/proc/self/comm";
  const Descriptor anywhere = openDescriptor(own, O_RDWR);
  const Descriptor appending = openDescriptor(own, O_RDWR | O_APPEND);
  EXPECT_EQ(systemCalls().fallocate(anywhere.get(), 0, 100), -1);
  EXPECT_EQ(errno, EOPNOTSUPP);
  EXPECT_EQ(systemCalls().fallocate(appending.get(), 0, 100), -1);
  EXPECT_EQ(errno, EBADF);
}

} // namespace
