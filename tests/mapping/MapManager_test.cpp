// Views of files, and the manager that opens a file once for all of them.
#include <array>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <memory>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <zarel/C_MapManager.h>

#include "mapping/MappedFile.h"
#include "support/Capture.h"
#include "support/FailingAllocation.h"
#include "support/FailingCall.h"

namespace mapping_test {

namespace {

using support::FailingCall;

TEST(MapManagerOfTheProcess, IsOne) {
  C_MapManager* const manager = getGlobalMapManager();

  EXPECT_EQ(manager, C_MapManager::Instance());
  EXPECT_EQ(manager->GetGranularity(), kPage);
}

TEST_F(MapManager, AnOffsetAtTheGranularityStartsItsView) {
  map(0, kPage, 100);

  EXPECT_EQ(view.GetOffsetUser(), kPage);
  EXPECT_EQ(view.GetLength(), 100u);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(view.GetPtrUser()) % kPage, 0u);
  EXPECT_EQ(shown(100), bytes(2 * kPage).substr(kPage, 100));
}

TEST_F(MapManager, AnOffsetOneByteFurtherLengthensTheViewByOne) {
  map(0, kPage + 1, 100);

  EXPECT_EQ(view.GetLength(), 101u);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(view.GetPtrUser()) % kPage, 1u);
  EXPECT_EQ(shown(100), bytes(2 * kPage).substr(kPage + 1, 100));
}

TEST_F(MapManager, OffsetsBeyond4GiBPassUnchanged) {
  const u64 far = (u64{5} << 30) + 17;
  ASSERT_EQ(ftruncate(fd, static_cast<off_t>(far + 8)), 0);
  ASSERT_EQ(pwrite(fd, "far away", 8, static_cast<off_t>(far)), 8);

  map(0, far, 8);

  EXPECT_EQ(shown(8), "far away");
  EXPECT_EQ(view.GetOffsetUser(), far);
}

TEST_F(MapManager, WhatIsWrittenToAViewIsInTheFile) {
  map(2, 5000, 3);

  std::memcpy(view.GetPtrUser(), "xyz", 3);

  EXPECT_EQ(support::bytesOf(name).substr(5000, 3), "xyz");
}

TEST_F(MapManager, MakesANewRecordForTheCaller) {
  const std::unique_ptr<C_MapPtr> made(manager->MapPtr(nullptr, fd, wideName.c_str(), 0, 10, 5));

  EXPECT_EQ(std::string(made->GetPtrUser(), 5), bytes(15).substr(10));
  manager->UnMapPtr(made.get());
}

TEST_F(MapManager, UnmappingClearsTheRecord) {
  map(2, 5000, 3);

  manager->UnMapPtr(&view);

  EXPECT_EQ(view.GetOffsetUser(), 0u);
  EXPECT_EQ(view.GetLength(), 0u);
  EXPECT_EQ(view.GetPtrUser(), nullptr);
  EXPECT_FALSE(isMappedFrom(name));
  manager->UnMapPtr(&view);
  manager->UnMapPtr(nullptr);
}

// Seven words: offset and length asked for, the byte's address, where the view starts, its length,
// the mode in the upper half of a word, the handles.
using Words = std::array<u64, 7>;

Words wordsOf(const C_MapPtr& record) {
  static_assert(sizeof(C_MapPtr) == sizeof(Words));
  Words words;
  std::memcpy(words.data(), &record, sizeof words);
  return words;
}

u64 addressOf(const char* byte) {
  return reinterpret_cast<std::uintptr_t>(byte);
}

TEST_F(MapManager, ARecordHasItsFieldsInOrderAndKeepsItsHandlesUnmapped) {
  map(2, kPage + 5, 3);
  const Words mapped = wordsOf(view);
  const u64 handles = mapped[6];
  const u64 start = addressOf(view.GetPtrUser());
  EXPECT_EQ(mapped, (Words{kPage + 5, 3, start, start - 5, 8, u64{2} << 32, handles}));
  EXPECT_NE(handles, 0u);

  view.UnMap();

  EXPECT_EQ(wordsOf(view), (Words{0, 0, 0, 0, 0, 0, handles}));
}

TEST(MapPtr, IsZeroAtFirst) {
  EXPECT_EQ(wordsOf(C_MapPtr()), Words{});
}

TEST_F(MapManager, OpensAFileOnceForAllItsViews) {
  C_MapPtr others[5];
  map(2, 0, 10);
  const size_t before = openDescriptors();

  for (C_MapPtr& other : others)
    manager->MapPtr(&other, fd, wideName.c_str(), 0, 0, 10);

  EXPECT_EQ(openDescriptors(), before);
  for (C_MapPtr& other : others)
    manager->UnMapPtr(&other);
}

TEST_F(MapManager, MapsThroughTheDescriptorSoThatAFileNeedsNoName) {
  unlink(name.c_str());

  manager->MapPtr(&view, fd, nullptr, 2, 0, 10);

  EXPECT_EQ(shown(10), bytes(10));
}

TEST_F(MapManager, MapsByTheNameWhereTheDescriptorMayNotWrite) {
  close(fd);
  fd = open(name.c_str(), O_RDONLY | O_CLOEXEC);

  map(2, 0, 10);
  view.GetPtrUser()[0] = 'w';

  EXPECT_EQ(support::bytesOf(name)[0], 'w');
}

TEST_F(MapManager, MapsByTheNameWhereTheDescriptorMayNotRead) {
  close(fd);
  fd = open(name.c_str(), O_WRONLY | O_CLOEXEC);

  map(0, 0, 10);

  EXPECT_EQ(shown(10), bytes(10));
}

TEST_F(MapManager, MapsByTheNameWithoutADescriptor) {
  int none = -1;
  manager->MapPtr(&view, none, wideName.c_str(), 0, 0, 10);

  EXPECT_EQ(shown(10), bytes(10));
  manager->UnMapPtr(&view);
  manager->ReleaseFileHandle(none);
}

TEST_F(MapManager, NoDescriptorAndNoNameIs13) {
  int none = -1;

  expectFailure(13, 0, [&] { manager->MapPtr(&view, none, nullptr, 0, 0, 10); });
  manager->ReleaseFileHandle(none);
}

TEST_F(MapManager, AViewStaysAfterItsFileIsReleasedAndClosed) {
  map(0, 0, 10);

  manager->CloseDataFile(fd);

  EXPECT_EQ(shown(10), bytes(10));
}

// The first opening decides: a later view does not open the file anew.
TEST_F(MapManager, AViewToWriteOnAFileOpenedToReadIsRefused) {
  int reading = open(name.c_str(), O_RDONLY | O_CLOEXEC);
  manager->MapPtr(&view, reading, wideName.c_str(), 0, 0, 10);
  manager->UnMapPtr(&view);

  expectFailure(13, 2828, [&] { manager->MapPtr(&view, reading, wideName.c_str(), 2, 0, 10); });

  EXPECT_EQ(view.GetPtrUser(), nullptr);
  manager->CloseDataFile(reading);
}

TEST_F(MapManager, ADescriptorThatHasBecomeAnotherFilesShowsThatFile) {
  map(0, 0, 4);
  view.UnMap();
  const size_t before = openDescriptors();
  support::writeBytes(directory.file("other"), "other file");
  const int other = open(directory.file("other").c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_EQ(dup2(other, fd), fd);
  close(other);

  manager->MapPtr(&view, fd, nullptr, 0, 0, 5);

  EXPECT_EQ(shown(5), "other");
  EXPECT_EQ(openDescriptors(), before);
}

// No name is given, so that nothing but what was opened at first can show it.
TEST_F(MapManager, ADescriptorThatIsClosedStillShowsItsFile) {
  map(0, 0, 4);
  view.UnMap();
  close(fd);

  manager->MapPtr(&view, fd, nullptr, 0, 5, 4);

  EXPECT_EQ(shown(4), bytes(9).substr(5));
  manager->ReleaseFileHandle(fd);
  fd = -1;
}

// Files of two devices may have the same number: here all files have it, each on its own device.
int statusOfItsOwnDevice(int file, struct stat* status) {
  const int result = fstat(file, status);
  status->st_dev = status->st_ino;
  status->st_ino = 7;
  return result;
}

TEST_F(MapManager, AFileOfTheSameNumberOnAnotherDeviceIsAnotherFile) {
  const SystemCallsKept kept;
  Zarel::systemCalls().fstat = statusOfItsOwnDevice;
  map(0, 0, 4);
  view.UnMap();
  support::writeBytes(directory.file("other"), "other file");
  const int other = open(directory.file("other").c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_EQ(dup2(other, fd), fd);
  close(other);

  manager->MapPtr(&view, fd, nullptr, 0, 0, 5);

  EXPECT_EQ(shown(5), "other");
}

TEST_F(MapManager, ProgramsThatAreStartedInheritNoFile) {
  map(2, 0, 10);
  close(fd);

  const std::vector<int> opened = descriptorsOf(name);

  ASSERT_EQ(opened.size(), 1u);
  EXPECT_EQ(fcntl(opened[0], F_GETFD), FD_CLOEXEC);
}

TEST_F(MapManager, AFileThatIsNotThereIsCreatedToWriteForItsOwnerAlone) {
  int none = -1;
  const std::string made = directory.file("made");

  expectFailure(13, 0, [&] { manager->MapPtr(&view, none, Zarel::toWide(made).c_str(), 2, 0, 1); });

  struct stat status;
  ASSERT_EQ(stat(made.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0600u);
  EXPECT_EQ(status.st_size, 0);
  manager->ReleaseFileHandle(none);
}

TEST_F(MapManager, AFileThatIsNotThereIsNotCreatedToRead) {
  int none = -1;
  const std::string missing = directory.file("missing");

  expectFailure(13, 0,
                [&] { manager->MapPtr(&view, none, Zarel::toWide(missing).c_str(), 0, 0, 1); });

  EXPECT_FALSE(std::filesystem::exists(missing));
  manager->ReleaseFileHandle(none);
}

TEST_F(MapManager, AnEmptyFileIs13ThenStaysInTheTableUntilReleased) {
  support::writeBytes(name, "");
  expectFailure(13, 0, [this] { map(2, 0, 1); });
  manager->SetDataFileSize(fd, 100);

  expectFailure(13, 17, [this] { map(2, 0, 1); });
  manager->ReleaseFileHandle(fd);

  map(2, 0, 1);
  EXPECT_EQ(view.GetPtrUser()[0], 0);
}

TEST_F(MapManager, AFileThatIsNoneIs13) {
  int missing = -1;
  expectFailure(13, 0, [&] { manager->MapPtr(&view, missing, L"/no/such/file", 0, 0, 1); });
  manager->ReleaseFileHandle(missing);

  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  expectFailure(13, 0, [&] { manager->MapPtr(&view, ends[0], nullptr, 0, 0, 1); });
  for (int& end : ends)
    manager->CloseDataFile(end);
}

// A pipe by its name would keep its reader waiting.
TEST_F(MapManager, APipeOrADirectoryByItsNameIs13) {
  ASSERT_EQ(mkfifo(directory.file("pipe").c_str(), 0600), 0);
  for (const std::string& none : {directory.file("pipe"), directory.path()}) {
    for (const int mode : {0, 2}) {
      int number = -1;
      expectFailure(
          13, 0, [&] { manager->MapPtr(&view, number, Zarel::toWide(none).c_str(), mode, 0, 1); });
      manager->ReleaseFileHandle(number);
    }
  }
  int opened = open(directory.path().c_str(), O_RDONLY | O_CLOEXEC);
  expectFailure(13, 0, [&] { manager->MapPtr(&view, opened, nullptr, 0, 0, 1); });
  manager->CloseDataFile(opened);
}

TEST_F(MapManager, ARangePastTheEndIs13) {
  expectFailure(13, 17, [this] { map(0, 0, 3 * kPage + 1); });
  expectFailure(13, 17, [this] { map(0, 3 * kPage, 1); });
  expectFailure(13, 17, [this] { map(0, 10, ~u64{0}); });
  expectFailure(13, 17, [this] { map(2, ~u64{0}, 2); });

  EXPECT_EQ(view.GetPtrUser(), nullptr);
}

TEST_F(MapManager, NoBytesAtTheGranularityAre13) {
  expectFailure(13, 18, [this] { map(0, kPage, 0); });
}

TEST_F(MapManager, AFileThatBecameShorterIs13AndNoSignal) {
  map(0, 0, 1);
  manager->UnMapPtr(&view);
  support::truncateTo(name, kPage + 10);

  expectFailure(13, 17, [this] { map(0, kPage, 11); });

  map(0, kPage, 10);
  EXPECT_EQ(shown(10), bytes(kPage + 10).substr(kPage));
}

TEST_F(MapManager, AFileThatGrewIsSeenAfterARelease) {
  map(2, 0, 1);
  manager->UnMapPtr(&view);
  manager->SetDataFileSize(fd, 4 * kPage);

  expectFailure(13, 17, [this] { map(2, 3 * kPage, 10); });
  manager->ReleaseFileHandle(fd);

  map(2, 3 * kPage, 10);
  EXPECT_EQ(shown(10), std::string(10, '\0'));
}

TEST_F(MapManager, OtherModesAreRefused) {
  for (const int mode : {1, 3, -1})
    expectFailure(13, 18, [&] { map(mode, 0, 10); });
}

TEST_F(MapManager, AGranularityOfNothingOrOfNoWholePagesIsRefused) {
  __2Handles handles;
  handles.file = fd;
  handles.size = 3 * kPage;
  view.Init(0);

  expectFailure(13, 18, [&] { view.MapToFile(0, 10, 0, &handles); });
  expectFailure(13, 18, [&] { view.MapToFile(150, 10, 100, &handles); });
}

TEST_F(MapManager, ARecordIsCopiedWordByWord) {
  map(0, 7, 5);
  C_MapPtr copy = view;

  view = C_MapPtr();

  EXPECT_EQ(std::string(copy.GetPtrUser(), 5), bytes(12).substr(7));
  copy.UnMap();
}

TEST_F(MapManager, ARangeThatCannotBeMappedIsStoredWithNothingMapped) {
  expectFailure(13, 17, [this] { map(0, kPage, 3 * kPage); });

  EXPECT_EQ(view.GetOffsetUser(), kPage);
  EXPECT_EQ(view.GetPtrUser(), nullptr);
  EXPECT_EQ(view.GetLength(), 0u);
}

// Else the new length would tell where the former view ends, and advice would go past it.
TEST_F(MapManager, ARecordForgetsItsViewWhenTheNextOneFails) {
  map(2, 0, 10);
  C_MapPtr former = view;

  expectFailure(13, 17, [this] { map(2, 0, 5 * kPage); });

  EXPECT_EQ(view.GetPtrUser(), nullptr);
  EXPECT_FALSE(view.Advise(E_MapDontNeed));
  EXPECT_EQ(std::string(former.GetPtrUser(), 10), bytes(10));
  former.UnMap();
}

TEST_F(MapManager, AViewThatCannotBeUnmappedIsReportedAsAnErrorAndStays) {
  map(0, 0, 10);
  const Words mapped = wordsOf(view);

  int reason = 0;
  const support::Captured told = support::capture([&] {
    const FailingCall failing(1, "munmap", EINVAL);
    view.UnMap();
    reason = errno;
  });

  EXPECT_EQ(reason, EINVAL);
  EXPECT_NE(told.err.find("message ID=14"), std::string::npos) << told.err;
  EXPECT_EQ(told.err.find("Warning"), std::string::npos) << told.err;
  EXPECT_EQ(wordsOf(view), mapped);
  EXPECT_EQ(shown(10), bytes(10));
}

// Views end in destructors, and the system may lack memory for the same reason as the process.
TEST_F(MapManager, AViewThatCannotBeUnmappedStaysWithoutMemoryForTheReportToo) {
  map(0, 0, 10);
  bool thrown = false;

  support::capture([&] {
    const long failed = support::forEachFailingAllocation(
        [&] {
          const FailingCall failing(1, "munmap", ENOMEM);
          thrown = thrown || throwsAnything([this] { view.UnMap(); });
        },
        support::FailingAllocation::FromThenOn);
    EXPECT_GT(failed, 3);
  });

  EXPECT_FALSE(thrown);
  EXPECT_EQ(shown(10), bytes(10));
}

TEST_F(MapManager, ReleasingAnUnknownDescriptorDoesNothing) {
  int unknown = 12345;

  manager->ReleaseFileHandle(unknown);

  EXPECT_EQ(unknown, 12345);
}

TEST_F(MapManager, ReleasingLeavesTheDescriptorOpen) {
  const size_t before = openDescriptors();
  map(0, 0, 10);

  manager->ReleaseFileHandle(fd);

  EXPECT_EQ(openDescriptors(), before);
  EXPECT_EQ(lseek(fd, 0, SEEK_CUR), 0);
}

TEST_F(MapManager, AHandleThatCannotBeClosedIs14AndForgotten) {
  map(0, 0, 10);
  const size_t before = openDescriptors();
  {
    const FailingCall failing(1, "close");
    expectFailure(14, 0, [this] { manager->ReleaseFileHandle(fd); });
  }

  EXPECT_EQ(openDescriptors(), before - 1);
  manager->ReleaseFileHandle(fd);
}

TEST_F(MapManager, ClosingADataFileTakesItsDescriptor) {
  const size_t before = openDescriptors();
  map(0, 0, 10);

  manager->CloseDataFile(fd);

  EXPECT_EQ(fd, -1);
  EXPECT_EQ(openDescriptors(), before - 1);
}

TEST_F(MapManager, ADescriptorOf0IsNone) {
  int input = 0;

  manager->CloseDataFile(input);

  EXPECT_EQ(input, 0);
  EXPECT_NE(fcntl(0, F_GETFD), -1);
}

TEST_F(MapManager, ADescriptorThatCannotBeClosedIs27) {
  int stale = 12345;

  expectFailure(27, 16, [&] { manager->CloseDataFile(stale); });

  EXPECT_EQ(stale, -1);
}

// Its number is free for other files at once, which a second close must not hit.
TEST_F(MapManager, ADescriptorWhoseCloseFailsIsGoneAllTheSame) {
  map(0, 0, 10);
  const size_t before = openDescriptors();
  const int number = fd;
  {
    const FailingCall failing(2, "close", EBADF);
    expectFailure(27, 16, [this] { manager->CloseDataFile(fd); });
  }

  EXPECT_EQ(fd, -1);
  EXPECT_EQ(openDescriptors(), before - 2);
  const int other = dup2(STDIN_FILENO, number);
  manager->CloseDataFile(fd);
  EXPECT_NE(fcntl(other, F_GETFD), -1);
  close(other);
}

TEST_F(MapManager, ADescriptorStaysWhereItsHandleCannotBeClosed) {
  map(0, 0, 10);
  const int number = fd;
  {
    const FailingCall failing(1, "close");
    expectFailure(14, 0, [this] { manager->CloseDataFile(fd); });
  }

  EXPECT_EQ(fd, number);
  EXPECT_NE(fcntl(fd, F_GETFD), -1);
  manager->CloseDataFile(fd);
  EXPECT_EQ(fd, -1);
}

TEST_F(MapManager, RemovingAFileEmptiesItsName) {
  std::wstring file = wideName;

  manager->RemoveDataFile(true, file);

  EXPECT_TRUE(file.empty());
  EXPECT_FALSE(std::filesystem::exists(name));
  manager->RemoveDataFile(true, file);
}

TEST_F(MapManager, AFileThatCannotBeRemovedKeepsItsNameIfStrict) {
  std::wstring strict = L"/no/such/file";
  std::wstring lax = strict;

  manager->RemoveDataFile(true, strict);
  manager->RemoveDataFile(false, lax);

  EXPECT_EQ(strict, L"/no/such/file");
  EXPECT_TRUE(lax.empty());
}

TEST_F(MapManager, SizesGrowByZerosAndShrink) {
  manager->SetDataFileSize(fd, 3 * kPage + 5);
  EXPECT_EQ(support::bytesOf(name), bytes(3 * kPage) + std::string(5, '\0'));

  manager->SetDataFileSize(fd, 7);
  EXPECT_EQ(support::bytesOf(name), bytes(7));
}

TEST_F(MapManager, AGrownFileHasItsPlaceOnTheDisk) {
  manager->SetDataFileSize(fd, 1 << 20);

  struct stat status;
  ASSERT_EQ(fstat(fd, &status), 0);
  EXPECT_GE(status.st_blocks * 512, 1 << 20);
}

TEST_F(MapManager, ASizeThatCannotBeSetIs24) {
  expectFailure(24, 16, [this] { manager->SetDataFileSize(-1, 10); });
  expectFailure(24, 9, [this] { manager->SetDataFileSize(fd, ~u64{0}); });
  expectFailure(24, 9, [this] { manager->SetDataFileSize(fd, u64{1} << 63); });
  int reading = open(name.c_str(), O_RDONLY | O_CLOEXEC);
  expectFailure(24, 18, [&] { manager->SetDataFileSize(reading, 1); });
  close(reading);
}

TEST_F(MapManager, AFileBeyondTheLimitIs24AndStaysAsItWas) {
  {
    const FileSizeLimit limit(4 * kPage);
    expectFailure(24, 9, [this] { manager->SetDataFileSize(fd, 5 * kPage); });
  }

  EXPECT_EQ(support::bytesOf(name), bytes(3 * kPage));
}

TEST_F(MapManager, AFullDiskIs24Reason5AndTheFileStaysAsItWas) {
  const SystemCallsKept kept;
  // As file systems do that run full half way: part of the range is already there.
  Zarel::systemCalls().fallocate = [](int file, off_t offset, off_t) {
    if (ftruncate(file, offset + 100) != 0) return -1;
    errno = ENOSPC;
    return -1;
  };

  expectFailure(24, 5, [this] { manager->SetDataFileSize(fd, 1 << 20); });

  EXPECT_EQ(support::bytesOf(name), bytes(3 * kPage));
}

// ---- advice ----

TEST_F(MapManager, TakesAdvice) {
  for (const int mode : {0, 2}) {
    map(mode, 100, 2 * kPage);
    for (const E_MapAdvice advice : {E_MapNormal, E_MapSequential, E_MapRandom, E_MapWillNeed,
                                     E_MapPopulate, E_MapReadAll, E_MapDontNeed})
      EXPECT_TRUE(view.Advise(advice)) << advice;
    EXPECT_EQ(shown(2 * kPage), bytes(3 * kPage).substr(100, 2 * kPage));
    view.UnMap();
  }
}

TEST_F(MapManager, AdviceIsForWholePagesInsideTheView) {
  map(2, kPage + 100, kPage);
  static std::string asked;
  asked.clear();
  const SystemCallsKept kept;
  static const char* start = nullptr;
  start = view.GetPtrUser() - 100;
  Zarel::systemCalls().madvise = [](void* address, size_t count, int) {
    asked +=
        std::to_string(static_cast<char*>(address) - start) + "+" + std::to_string(count) + " ";
    return 0;
  };

  EXPECT_TRUE(view.Advise(E_MapWillNeed));
  EXPECT_TRUE(view.Advise(E_MapWillNeed, kPage - 100, 1));
  EXPECT_TRUE(view.Advise(E_MapWillNeed, 0, 5));
  EXPECT_FALSE(view.Advise(E_MapWillNeed, kPage));
  EXPECT_FALSE(view.Advise(static_cast<E_MapAdvice>(99)));

  const std::string page = std::to_string(kPage);
  EXPECT_EQ(asked, "0+" + std::to_string(kPage + 100) + " " + page + "+1 0+105 ");
}

TEST_F(MapManager, NothingMappedTakesNoAdvice) {
  EXPECT_FALSE(view.Advise(E_MapWillNeed));
}

std::vector<int> given; // the advice that the system was given

TEST_F(MapManager, GivesEachAdviceAsTheSystemHasIt) {
  const SystemCallsKept kept;
  Zarel::systemCalls().madvise = [](void*, size_t, int advice) {
    given.push_back(advice);
    return 0;
  };
  const auto giveAll = [this](int mode) {
    given.clear();
    map(mode, 0, kPage);
    for (int advice = E_MapNormal; advice <= E_MapReadAll; ++advice)
      EXPECT_TRUE(view.Advise(static_cast<E_MapAdvice>(advice)));
    view.UnMap();
    return given;
  };

  EXPECT_EQ(giveAll(0), (std::vector<int>{MADV_NORMAL, MADV_SEQUENTIAL, MADV_RANDOM, MADV_WILLNEED,
                                          MADV_DONTNEED, MADV_HUGEPAGE, MADV_POPULATE_READ,
                                          MADV_POPULATE_READ}));
  EXPECT_EQ(giveAll(2), (std::vector<int>{MADV_NORMAL, MADV_SEQUENTIAL, MADV_RANDOM, MADV_WILLNEED,
                                          MADV_DONTNEED, MADV_HUGEPAGE, MADV_POPULATE_WRITE,
                                          MADV_POPULATE_READ}));
}

TEST_F(MapManager, AdviceThatTheSystemRefusesIsFalse) {
  map(0, 0, 10);
  const FailingCall failing(1, "madvise");

  EXPECT_FALSE(view.Advise(E_MapWillNeed));
}

TEST_F(MapManager, PagesThatAreNotNeededKeepWhatWasWritten) {
  map(2, 0, 2 * kPage);
  view.GetPtrUser()[5] = 'k';

  view.Advise(E_MapDontNeed);

  EXPECT_EQ(view.GetPtrUser()[5], 'k');
}

// ---- every fault in turn ----

// What a call that fails for a reason without a number of its own (31) makes of the first view to
// write, on a file with a hole. The first status says which file it is, the second one how long it
// was when it was opened, the third one how long it is now.
TEST_F(MapManager, EachSystemCallThatFailsHasItsCodeAndReason) {
  struct Fault {
    const char* call;
    long nth;
    int reason;
  };
  ASSERT_EQ(ftruncate(fd, 1 << 20), 0);
  const size_t before = openDescriptors();

  for (const auto& [call, nth, reason] :
       {Fault{"duplicate", 1, 0}, Fault{"fstat", 2, 0}, Fault{"fstat", 3, 31},
        Fault{"fallocate", 1, 31}, Fault{"mmap", 1, 31}}) {
    SCOPED_TRACE(call);
    {
      const FailingCall failing(nth, call);
      expectFailure(13, reason, [this] { map(2, 100, 100000); });
      EXPECT_TRUE(FailingCall::happened());
    }
    EXPECT_EQ(view.GetPtrUser(), nullptr);
    manager->ReleaseFileHandle(fd);
  }

  EXPECT_EQ(openDescriptors(), before);
}

// Without the descriptor's access the name serves, without knowledge of holes all of the range gets
// its place, and what the descriptor is of plays no part for the first view.
TEST_F(MapManager, AViewDoesWithoutSomeSystemCalls) {
  ASSERT_EQ(ftruncate(fd, 1 << 20), 0);
  for (const auto& [call, nth] :
       {std::pair{"accessMode", 1}, {"lseek", 1}, {"lseek", 2}, {"fstat", 1}}) {
    SCOPED_TRACE(call);
    const FailingCall failing(nth, call);
    map(2, 100, 100000);
    EXPECT_TRUE(FailingCall::happened());
    EXPECT_NE(view.GetPtrUser(), nullptr);
    view.UnMap();
    manager->ReleaseFileHandle(fd);
  }
}

TEST_F(MapManager, AReasonIsThatOfTheSystem) {
  ASSERT_EQ(ftruncate(fd, 1 << 20), 0);
  for (const auto& [error, reason] :
       {std::pair{ENOMEM, 1}, {ENOSPC, 5}, {EFBIG, 9}, {ENXIO, 17}, {EACCES, 2828}, {EDQUOT, 31}}) {
    {
      const FailingCall failing(1, "mmap", error);
      expectFailure(13, reason, [this] { map(2, 0, 10); });
    }
    const FailingCall failing(1, "fallocate", error);
    expectFailure(24, reason, [this] { manager->SetDataFileSize(fd, 2 << 20); });
  }
}

TEST_F(MapManager, EachSystemCallThatFailsLeavesNothingBehind) {
  ASSERT_EQ(ftruncate(fd, 1 << 20), 0);
  const size_t before = openDescriptors();

  const long failed = support::forEachFailingCall([this] {
    try {
      map(2, 100, 100000);
      manager->UnMapPtr(&view);
      manager->ReleaseFileHandle(fd);
    } catch (const C_ZarelException& e) {
      EXPECT_EQ(e.getExceptionCode(), FailingCall::failed() == "close" ? 14 : 13);
      EXPECT_EQ(view.GetPtrUser(), nullptr);
    }
    EXPECT_EQ(view.GetPtrUser() != nullptr, FailingCall::failed() == "munmap");
    manager->UnMapPtr(&view);
    manager->ReleaseFileHandle(fd);
  });

  EXPECT_GT(failed, 5);
  EXPECT_EQ(openDescriptors(), before);
  EXPECT_FALSE(isMappedFrom(name));
}

TEST_F(MapManager, EachAllocationThatFailsLeavesNothingBehind) {
  const size_t before = openDescriptors();

  const auto mapAndRelease = [this] {
    C_MapPtr* made = nullptr;
    int none = -1;
    try {
      made = manager->MapPtr(nullptr, none, wideName.c_str(), 0, 0, 10);
    } catch (const std::bad_alloc&) {
    }
    EXPECT_EQ(made == nullptr, support::FailingAllocation::happened());
    const support::Unharmed checks;
    if (!made) // what failed is forgotten, so that it can be tried again
      made = manager->MapPtr(nullptr, none, wideName.c_str(), 0, 0, 10);
    manager->UnMapPtr(made);
    delete made;
    manager->ReleaseFileHandle(none);
  };

  for (const auto duration :
       {support::FailingAllocation::Once, support::FailingAllocation::FromThenOn})
    EXPECT_GT(support::forEachFailingAllocation(mapAndRelease, duration), 1);
  EXPECT_EQ(openDescriptors(), before);
}

// The file is open by then, and there may be no memory to tell what is wrong with it.
TEST_F(MapManager, AFileThatCannotBeMappedLeavesNothingOpenWithoutMemoryEither) {
  support::writeBytes(name, "");
  const size_t before = openDescriptors();

  support::forEachFailingAllocation(
      [this] {
        int none = -1;
        try {
          manager->MapPtr(&view, none, wideName.c_str(), 2, 0, 1);
        } catch (...) {
        }
        manager->ReleaseFileHandle(none);
      },
      support::FailingAllocation::FromThenOn);

  EXPECT_EQ(openDescriptors(), before);
}

TEST(MapManagerOfTheProcess, ClosesAtItsEndWhatIsLeft) {
  const support::TempDirectory directory;
  support::writeBytes(directory.file("data"), "some bytes");
  const size_t before = openDescriptors();
  C_MapPtr view;
  getGlobalMapManager()->MapPtr(&view, -1, Zarel::toWide(directory.file("data")).c_str(), 0, 0, 4);
  EXPECT_EQ(openDescriptors(), before + 1);

  C_MapManager::Kill();

  EXPECT_EQ(openDescriptors(), before);
  EXPECT_EQ(std::string(view.GetPtrUser(), 4), "some");
  view.UnMap();
}

} // namespace

} // namespace mapping_test
