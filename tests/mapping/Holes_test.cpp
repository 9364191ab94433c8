// Place on the disk for what is written through a view, and for what a file grows by.
#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

#include "mapping/MappedFile.h"
#include "mapping/reserve.h"
#include "support/FailingCall.h"

namespace mapping_test {

namespace {

using support::FailingCall;

TEST_F(MapManager, HolesGetTheirPlaceBeforeTheyAreWritten) {
  ASSERT_EQ(ftruncate(fd, 0), 0);
  ASSERT_EQ(ftruncate(fd, 1 << 20), 0);

  map(2, 0, 1 << 20);

  struct stat status;
  ASSERT_EQ(fstat(fd, &status), 0);
  EXPECT_GE(status.st_blocks * 512, 1 << 20);
}

TEST_F(MapManager, HolesStayHolesForReaders) {
  ASSERT_EQ(ftruncate(fd, 0), 0);
  ASSERT_EQ(ftruncate(fd, 1 << 20), 0);

  map(0, 0, 1 << 20);

  struct stat status;
  ASSERT_EQ(fstat(fd, &status), 0);
  EXPECT_EQ(status.st_blocks, 0);
}

TEST_F(MapManager, AFullDiskUnderAHoleIs13Reason5) {
  ASSERT_EQ(ftruncate(fd, 1 << 20), 0);
  const FailingCall failing(1, "fallocate", ENOSPC);

  expectFailure(13, 5, [this] { map(2, 0, 1 << 20); });

  EXPECT_EQ(view.GetPtrUser(), nullptr);
}

TEST_F(MapManager, AWrittenFileIsNotTouchedByAView) {
  ASSERT_EQ(fsync(fd), 0);
  const FailingCall counting(0, "fallocate");

  map(2, 0, 3 * kPage);

  EXPECT_EQ(FailingCall::count(), 0);
}

TEST_F(MapManager, WhatIsKnownToHaveItsPlaceIsAskedForOnce) {
  ASSERT_EQ(ftruncate(fd, 1 << 20), 0);
  map(2, 0, 1 << 20);
  view.UnMap();
  const FailingCall counting(0, "lseek");

  for (u64 offset = 0; offset < 1 << 20; offset += 3000) {
    map(2, offset, 8);
    view.UnMap();
  }

  EXPECT_EQ(FailingCall::count(), 0);
}

// The ranges that the system was asked to give their place, in pages.
using Range = std::pair<u64, u64>;
std::vector<Range> reserved;

int notedReserve(int fd, off_t offset, off_t bytes) {
  const u64 from = static_cast<u64>(offset);
  reserved.emplace_back(from / kPage, (from + static_cast<u64>(bytes)) / kPage);
  return posix_fallocate(fd, offset, bytes);
}

class KnownPlace : public MapManager {
protected:
  KnownPlace() {
    EXPECT_EQ(ftruncate(fd, 0), 0);
    EXPECT_EQ(ftruncate(fd, static_cast<off_t>(100 * kPage)), 0);
    Zarel::systemCalls().fallocate = notedReserve;
  }

  // What has to get its place when pages are mapped for writing.
  std::vector<Range> mapPages(u64 from, u64 to) {
    reserved.clear();
    map(2, from * kPage + 1, (to - from) * kPage - 1);
    view.UnMap();
    return reserved;
  }

  using Ranges = std::vector<Range>;
  SystemCallsKept kept;
};

TEST_F(KnownPlace, IsNotBeforeIt) {
  EXPECT_EQ(mapPages(40, 50), (Ranges{{40, 50}}));
  EXPECT_EQ(mapPages(10, 20), (Ranges{{10, 20}}));
  EXPECT_EQ(mapPages(30, 35), (Ranges{{30, 35}})) << "between the two";
}

TEST_F(KnownPlace, IsNotBehindIt) {
  EXPECT_EQ(mapPages(10, 20), (Ranges{{10, 20}}));
  EXPECT_EQ(mapPages(40, 50), (Ranges{{40, 50}}));
  EXPECT_EQ(mapPages(30, 35), (Ranges{{30, 35}})) << "between the two";
}

TEST_F(KnownPlace, GrowsByWhatTouchesIt) {
  EXPECT_EQ(mapPages(10, 20), (Ranges{{10, 20}}));
  EXPECT_EQ(mapPages(20, 30), (Ranges{{20, 30}}));
  EXPECT_EQ(mapPages(5, 10), (Ranges{{5, 10}}));
  EXPECT_EQ(mapPages(25, 40), (Ranges{{25, 40}}));
  const FailingCall looking(0, "lseek");

  EXPECT_EQ(mapPages(5, 40), Ranges{});
  EXPECT_EQ(mapPages(7, 12), Ranges{});

  EXPECT_EQ(FailingCall::count(), 0);
}

TEST_F(KnownPlace, EndsWhereTheNextHoleStarts) {
  const std::string data(2 * kPage, 'd');
  ASSERT_EQ(pwrite(fd, data.data(), data.size(), 0), static_cast<ssize_t>(data.size()));

  EXPECT_EQ(mapPages(0, 1), Ranges{});
  EXPECT_EQ(mapPages(1, 2), Ranges{});
  EXPECT_EQ(mapPages(1, 4), (Ranges{{1, 4}}));
}

TEST_F(MapManager, LookingForHolesLeavesThePositionOfTheDescriptor) {
  ASSERT_EQ(lseek(fd, 77, SEEK_SET), 77);

  map(2, 0, 100);

  EXPECT_EQ(lseek(fd, 0, SEEK_CUR), 77);
}

class NoReserve : public MapManager {
protected:
  NoReserve() { Zarel::systemCalls().fallocate = cannotReserve; }

  long long placed() const {
    struct stat status;
    fstat(fd, &status);
    return status.st_blocks * 512LL;
  }

  SystemCallsKept kept;
};

TEST_F(NoReserve, AFileGrowsByWrittenZeros) {
  manager->SetDataFileSize(fd, 300000);

  EXPECT_EQ(support::bytesOf(name), bytes(3 * kPage) + std::string(300000 - 3 * kPage, '\0'));
  EXPECT_GE(placed(), 300000);
}

TEST_F(NoReserve, HolesAreFilledAndDataStays) {
  ASSERT_EQ(ftruncate(fd, 300000), 0);
  ASSERT_EQ(pwrite(fd, "middle", 6, 150000), 6);
  const std::string before = support::bytesOf(name);

  map(2, 0, 300000);

  EXPECT_EQ(support::bytesOf(name), before);
  EXPECT_GE(placed(), 300000);
}

TEST_F(NoReserve, WhatLiesBehindTheEndIsFilledWithZeros) {
  EXPECT_TRUE(Zarel::reserveRange(fd, 0, 100000));

  EXPECT_EQ(support::bytesOf(name), bytes(3 * kPage) + std::string(100000 - 3 * kPage, '\0'));
}

TEST_F(NoReserve, AFullDiskIsAnErrorOfTheCallThatGrows) {
  {
    const FailingCall failing(2, "pwrite", ENOSPC);
    Zarel::systemCalls().fallocate = cannotReserve;
    expectFailure(24, 5, [this] { manager->SetDataFileSize(fd, 300000); });
  }
  EXPECT_EQ(support::bytesOf(name), bytes(3 * kPage));
  {
    const FailingCall failing(1, "fsync", ENOSPC);
    Zarel::systemCalls().fallocate = cannotReserve;
    expectFailure(24, 5, [this] { manager->SetDataFileSize(fd, 300000); });
  }
  EXPECT_EQ(support::bytesOf(name), bytes(3 * kPage));
}

TEST_F(NoReserve, ASystemWithoutTheCallIsServedToo) {
  Zarel::systemCalls().fallocate = [](int, off_t, off_t) {
    errno = ENOSYS;
    return -1;
  };
  ASSERT_EQ(ftruncate(fd, 300000), 0);

  map(2, 0, 300000);
  EXPECT_GE(placed(), 300000);
  manager->SetDataFileSize(fd, 400000);

  EXPECT_GE(placed(), 400000);
}

TEST_F(NoReserve, AFileThatCannotBeReadOrLengthenedIs24) {
  for (const char* const call : {"pread", "ftruncate"}) {
    const FailingCall failing(1, call, EDQUOT);
    Zarel::systemCalls().fallocate = cannotReserve;
    expectFailure(24, 31, [this] { manager->SetDataFileSize(fd, 300000); });
    EXPECT_EQ(support::bytesOf(name), bytes(3 * kPage)) << call;
  }
}

TEST_F(NoReserve, TransfersInPiecesAndInterruptedOnesGoOn) {
  static int turn = 0;
  Zarel::systemCalls().pwrite = [](int file, const void* from, size_t count, off_t at) -> ssize_t {
    if (++turn % 3 == 0) {
      errno = EINTR;
      return -1;
    }
    return pwrite(file, from, std::min<size_t>(count, 1000), at);
  };
  Zarel::systemCalls().pread = [](int file, void* into, size_t count, off_t at) -> ssize_t {
    if (++turn % 3 == 0) {
      errno = EINTR;
      return -1;
    }
    return pread(file, into, std::min<size_t>(count, 777), at);
  };

  manager->SetDataFileSize(fd, 100000);

  EXPECT_EQ(support::bytesOf(name), bytes(3 * kPage) + std::string(100000 - 3 * kPage, '\0'));
}

TEST_F(NoReserve, AWriteThatTakesNothingIsAFullDisk) {
  Zarel::systemCalls().pwrite = [](int, const void*, size_t, off_t) -> ssize_t { return 0; };

  expectFailure(24, 5, [this] { manager->SetDataFileSize(fd, 100000); });
}

TEST_F(MapManager, AnInterruptedReserveIsRepeated) {
  ASSERT_EQ(ftruncate(fd, 1 << 20), 0);
  {
    const FailingCall failing(1, "fallocate", EINTR);
    map(2, 0, 1 << 20);
    EXPECT_TRUE(FailingCall::happened());
  }
  const FailingCall failing(1, "fallocate", EINTR);

  manager->SetDataFileSize(fd, 2 << 20);

  EXPECT_TRUE(FailingCall::happened());
}

// The file is taken back to its former size; that this fails too must not hide the first reason.
TEST_F(MapManager, TheFirstReasonIsTold) {
  const SystemCallsKept kept;
  Zarel::systemCalls().fallocate = [](int, off_t, off_t) {
    errno = ENOSPC;
    return -1;
  };
  Zarel::systemCalls().ftruncate = [](int, off_t) {
    errno = EINVAL;
    return -1;
  };

  expectFailure(24, 5, [this] { manager->SetDataFileSize(fd, 1 << 20); });
}

TEST(Reserve, AnEmptyRangeNeedsNothing) {
  EXPECT_TRUE(Zarel::reserveRange(-1, 5, 5));
}

} // namespace

} // namespace mapping_test
