// Blocks out of core.
#include <cstring>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <zarel/zarelmem.h>
#include <zarel/zarelmem_ooc.h>

#include "mapping/report.h"
#include "mapping/support.h"
#include "support/FailingAllocation.h"
#include "support/FailingCall.h"

namespace {

#define HERE "test", __FILE__, __LINE__

using support::FailingCall;
using support::TempDirectory;

class Ooc : public testing::Test {
protected:
  ~Ooc() override { free_variables_zarel_mmap(); }

  std::wstring wide(const std::string& file) const { return Zarel::toWide(directory.file(file)); }
  std::string bytes(const std::string& file) const {
    return support::bytesOf(directory.file(file));
  }

  ZAREL_MMAP* make(u64 size, const wchar_t* file) {
    return zarelmem_malloc_ooc(size, file, HERE, &error);
  }
  ZAREL_MMAP* resize(ZAREL_MMAP* unit, u64 size) {
    return zarelmem_realloc_ooc(unit, size, nullptr, HERE, &error);
  }
  ZAREL_MMAP* adopt(u64 size, const std::string& file) {
    return zarelmem_adopt_ooc(size, wide(file).c_str(), HERE, &error);
  }
  void release(ZAREL_MMAP* unit, int mode = ZAREL_OOC_DELETE) {
    zarelmem_free_ooc(unit, mode, HERE, &error);
  }
  u64 sizeOf(const ZAREL_MMAP* unit) {
    return zarelmem_get_mapped_size(unit, __FILE__, __LINE__, &error);
  }
  int descriptorOf(const ZAREL_MMAP* unit) {
    return zarelmem_get_mapped_unit(unit, __FILE__, __LINE__, &error);
  }
  std::wstring nameOf(const ZAREL_MMAP* unit) {
    wchar_t* const name = zarelmem_get_mapped_filename(unit, __FILE__, __LINE__, &error);
    std::wstring result = name;
    if (!result.empty()) zarelmem_free(name, __FILE__, __LINE__);
    return result;
  }
  static char* data(ZAREL_MMAP* unit) { return static_cast<char*>(unit->address); }

  // Runs what fails and expects its report, the text of `message` without texts of a host.
  void expectReport(const std::string& text, const std::function<void()>& operation) {
    error = 77;
    const std::string told = toldBy(operation);
    EXPECT_NE(told.find(text), std::string::npos) << told;
    EXPECT_EQ(error, -1);
  }

  // The same where a system call of `operation`, or its n-th allocation, fails.
  void expectReportOfCall(const std::string& text, const char* call,
                          const std::function<void()>& operation) {
    SCOPED_TRACE(call);
    expectReport(text, [&] {
      const FailingCall failing(1, call);
      operation();
      EXPECT_TRUE(FailingCall::happened());
    });
  }
  void expectReportWithoutMemory(long n, const std::function<void()>& operation) {
    SCOPED_TRACE(n);
    expectReport(kNoMemory, [&] {
      const support::FailingAllocation failing(n);
      operation();
      EXPECT_TRUE(support::FailingAllocation::happened());
    });
  }

  // Makes a unit with each of its allocations failing in turn, until it comes about; shows what was
  // told last.
  std::string toldByTheLastFailure(const std::function<ZAREL_MMAP*()>& operation) {
    release(make(1, nullptr)); // the register of mappings stays from now on
    const u64 booked = zarel_sum_memsize();
    ZAREL_MMAP* unit = nullptr;
    std::string last;
    for (long n = 1; !unit && n < 1000; ++n) {
      const std::string told = toldBy([&] {
        const support::FailingAllocation failing(n);
        unit = operation();
      });
      if (!unit) last = told;
      EXPECT_EQ(error, unit ? 0 : -1);
      EXPECT_EQ(zarel_sum_memsize() > booked, unit != nullptr) << "allocation " << n;
    }
    release(unit, ZAREL_OOC_KEEP);
    return last;
  }

  TempDirectory directory;
  support::Environment temporary{"TMPDIR", directory.path().c_str()};
  int error = 77;
};

TEST_F(Ooc, AUnitIsABlockOfZerosOnAFileOfItsOwn) {
  ZAREL_MMAP* const unit = zarelmem_calloc_ooc(1000, 8, wide("unit").c_str(), HERE, &error);

  ASSERT_NE(unit, nullptr);
  EXPECT_EQ(error, 0);
  EXPECT_EQ(std::string(data(unit), 8000), std::string(8000, '\0'));
  std::memcpy(data(unit) + 7990, "the end", 7);
  EXPECT_EQ(bytes("unit").substr(7990, 7), "the end");
  EXPECT_EQ(sizeOf(unit), 8000u);
  EXPECT_EQ(nameOf(unit), wide("unit"));
  EXPECT_EQ(descriptorOf(unit), -1);
  EXPECT_NE(zarelmem_ismapped(unit), 0);
  release(unit);
  EXPECT_EQ(entriesOf(directory.path()), 0u);
}

TEST_F(Ooc, AUnitWithoutANameHasATemporaryFileForItsOwnerAlone) {
  ZAREL_MMAP* const unit = make(100, nullptr);

  ASSERT_NE(unit, nullptr);
  const std::string name = Zarel::toUtf8(nameOf(unit));
  struct stat status;
  ASSERT_EQ(stat(name.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
  EXPECT_EQ(name.find(directory.file("ZRLVS")), 0u);
  release(unit);
  EXPECT_EQ(entriesOf(directory.path()), 0u);
}

std::vector<std::pair<int, mode_t>> openings;

int notedOpen(const char* path, int flags, mode_t mode) {
  if (std::strstr(path, "ZRLVS")) openings.emplace_back(flags, mode);
  return open(path, flags, mode);
}

// It is opened twice: to be made, and for its mapping, which makes none.
TEST_F(Ooc, ATemporaryFileIsCreatedExclusivelyAndNotInherited) {
  openings.clear();
  const SystemCallsKept kept;
  Zarel::systemCalls().open = notedOpen;

  release(make(100, nullptr));

  ASSERT_EQ(openings.size(), 2u);
  EXPECT_EQ(openings[0].first & (O_ACCMODE | O_CREAT | O_EXCL), O_RDWR | O_CREAT | O_EXCL);
  EXPECT_EQ(openings[0].second, 0600u);
  for (const auto& [flags, mode] : openings)
    EXPECT_NE(flags & O_CLOEXEC, 0);
}

// Address and number together tell a unit.
TEST_F(Ooc, ACopyOfAUnitsRecordIsTheUnitAndAnotherRecordIsNot) {
  ZAREL_MMAP* const unit = make(100, nullptr);
  const ZAREL_MMAP copy = *unit;
  const ZAREL_MMAP otherNumber = {unit->address, unit->id + 1, 'Y', 0};
  const ZAREL_MMAP otherAddress = {&error, unit->id, 'Y', 0};

  EXPECT_NE(zarelmem_ismapped(&copy), 0);
  EXPECT_EQ(zarelmem_ismapped(&otherNumber), 0);
  EXPECT_EQ(zarelmem_ismapped(&otherAddress), 0);

  release(unit);
}

TEST_F(Ooc, AUnitHasItsPlaceOnTheDisk) {
  ZAREL_MMAP* const unit = make(1 << 20, wide("unit").c_str());

  struct stat status;
  ASSERT_EQ(stat(directory.file("unit").c_str(), &status), 0);
  EXPECT_GE(status.st_blocks * 512, 1 << 20);
  release(unit);
}

TEST_F(Ooc, AFileThatExistsIsEmptied) {
  support::writeBytes(directory.file("unit"), std::string(5000, 'x'));

  ZAREL_MMAP* const unit = make(10, wide("unit").c_str());

  EXPECT_EQ(bytes("unit"), std::string(10, '\0'));
  release(unit);
}

TEST_F(Ooc, OneFileBacksOnlyOneUnit) {
  ZAREL_MMAP* const unit = make(4, wide("unit").c_str());
  std::memcpy(data(unit), "mine", 4);

  expectReport(kNotMade, [&] { EXPECT_EQ(make(100, wide("unit").c_str()), nullptr); });

  EXPECT_EQ(bytes("unit"), "mine");
  EXPECT_EQ(std::string(data(unit), 4), "mine");
  release(unit);
}

TEST_F(Ooc, NoBytesCannotBeMappedAndLeaveNoFile) {
  expectReport(kNotMapped, [&] { EXPECT_EQ(make(0, wide("unit").c_str()), nullptr); });

  EXPECT_EQ(entriesOf(directory.path()), 0u);
}

TEST_F(Ooc, SizesThatOverflowAreRefused) {
  expectReport(kNotMade, [&] {
    EXPECT_EQ(zarelmem_calloc_ooc(u64{1} << 33, u64{1} << 33, nullptr, HERE, &error), nullptr);
  });
  expectReport(kNotMade, [&] { EXPECT_EQ(make(~u64{0}, nullptr), nullptr); });

  EXPECT_EQ(entriesOf(directory.path()), 0u);
}

TEST_F(Ooc, AFileThatCannotBeCreatedIsReported) {
  expectReport(kNotMade, [&] { EXPECT_EQ(make(10, L"/no/such/directory/unit"), nullptr); });
}

TEST_F(Ooc, AFullDiskIsAnErrorOfTheCallAndLeavesNoFile) {
  const FileSizeLimit limit(1000);

  expectReport(kNotMade, [&] { EXPECT_EQ(make(2000, wide("unit").c_str()), nullptr); });

  EXPECT_EQ(entriesOf(directory.path()), 0u);
}

TEST_F(Ooc, WithoutMemoryForItsRecordOrItsNameThereIsNoUnit) {
  support::writeBytes(directory.file("old"), "contents");
  const std::wstring file = wide("unit");
  const std::wstring old = wide("old");

  for (const long n : {1, 2}) {
    expectReportWithoutMemory(n, [&] { EXPECT_EQ(make(10, file.c_str()), nullptr); });
    expectReportWithoutMemory(
        n, [&] { EXPECT_EQ(zarelmem_calloc_ooc(1, 8, file.c_str(), HERE, &error), nullptr); });
    expectReportWithoutMemory(
        n, [&] { EXPECT_EQ(zarelmem_adopt_ooc(8, old.c_str(), HERE, &error), nullptr); });
  }

  EXPECT_EQ(bytes("old"), "contents");
  EXPECT_EQ(entriesOf(directory.path()), 1u);
}

TEST_F(Ooc, WithoutATemporaryNameThereIsNoUnit) {
  const SystemCallsKept kept;
  Zarel::systemCalls().access = [](const char*, int) {
    errno = EACCES;
    return -1;
  };

  expectReport(kNotMade, [&] { EXPECT_EQ(make(10, nullptr), nullptr); });

  EXPECT_EQ(entriesOf(directory.path()), 0u);
}

TEST_F(Ooc, AFileThatCannotBeSizedClosedOrMappedIsReportedAndDeleted) {
  const std::wstring file = wide("unit");
  for (const auto& [call, text] : {std::pair<const char*, std::string>{"fallocate", kNotMade},
                                   {"close", kNotMade},
                                   {"mmap", kNotMapped}}) {
    for (const wchar_t* const name : {file.c_str(), static_cast<const wchar_t*>(nullptr)}) {
      expectReportOfCall(text, call, [&, chosen = name] { EXPECT_EQ(make(10, chosen), nullptr); });
      EXPECT_EQ(entriesOf(directory.path()), 0u);
    }
  }
}

TEST_F(Ooc, AUnitThatCannotBeListedIsReportedAndItsFileDeleted) {
  const std::wstring file = wide("unit");

  const std::string told = toldByTheLastFailure([&] {
    ZAREL_MMAP* const unit = make(10, file.c_str());
    const support::Unharmed checks;
    EXPECT_EQ(entriesOf(directory.path()), unit ? 1u : 0u);
    return unit;
  });

  EXPECT_NE(told.find(kNotRegistered), std::string::npos) << told;
}

// A pipe, opened to read and write, keeps nobody waiting.
TEST_F(Ooc, WhatIsNoRegularFileIsRefusedAndStays) {
  ASSERT_EQ(mkfifo(directory.file("pipe").c_str(), 0600), 0);
  std::filesystem::create_symlink(directory.file("pipe"), directory.file("link"));
  std::filesystem::create_directory(directory.file("directory"));
  const size_t descriptors = openDescriptors();

  for (const char* file : {"pipe", "link", "directory"}) {
    expectReport(kNotMade, [&] { EXPECT_EQ(make(10, wide(file).c_str()), nullptr) << file; });
    expectReport(kNotMade, [&] { EXPECT_EQ(make(0, wide(file).c_str()), nullptr) << file; });
    expectReport(kNotMade, [&] { EXPECT_EQ(adopt(10, file), nullptr) << file; });
  }

  EXPECT_TRUE(std::filesystem::is_fifo(directory.file("pipe")));
  EXPECT_TRUE(std::filesystem::is_symlink(directory.file("link")));
  EXPECT_EQ(entriesOf(directory.path()), 3u);
  EXPECT_EQ(openDescriptors(), descriptors);
}

TEST_F(Ooc, AFileThatCannotBeExaminedIsNotDeleted) {
  support::writeBytes(directory.file("unit"), "mine");

  expectReportOfCall(kNotMade, "fstat",
                     [&] { EXPECT_EQ(make(10, wide("unit").c_str()), nullptr); });

  EXPECT_EQ(entriesOf(directory.path()), 1u);
}

TEST_F(Ooc, AGrownUnitKeepsItsBytesAndReadsZeroBehindThem) {
  ZAREL_MMAP* unit = make(4, wide("unit").c_str());
  std::memcpy(data(unit), "abcd", 4);
  const int id = unit->id;

  unit = resize(unit, 10000);

  ASSERT_NE(unit, nullptr);
  EXPECT_EQ(std::string(data(unit), 10000), "abcd" + std::string(9996, '\0'));
  EXPECT_GT(unit->id, id);
  EXPECT_EQ(sizeOf(unit), 10000u);
  EXPECT_EQ(descriptorOf(unit), -1);
  release(unit);
}

TEST_F(Ooc, AShrunkUnitKeepsItsFirstBytesAndGrowsByZeros) {
  ZAREL_MMAP* unit = make(10000, wide("unit").c_str());
  std::memset(data(unit), 'x', 10000);

  unit = resize(unit, 3);
  EXPECT_EQ(bytes("unit"), "xxx");
  unit = resize(unit, 6);

  EXPECT_EQ(std::string(data(unit), 6), std::string("xxx\0\0\0", 6));
  release(unit);
}

TEST_F(Ooc, ResizingWhatIsNoUnitIsReported) {
  ZAREL_MMAP stranger = {&error, 4711, 'Y', 0};

  expectReport(kNotRegistered, [&] { EXPECT_EQ(resize(&stranger, 10), nullptr); });
}

// Numbers of texts that hosts may bring.
TEST(OocReports, HaveTheNumbersThatHostsKnow) {
  EXPECT_EQ(Zarel::outOfMemory, 3103);
  EXPECT_EQ(Zarel::notMapped, 3122);
  EXPECT_EQ(Zarel::notUnmapped, 3123);
  EXPECT_EQ(Zarel::fileNotMade, 3124);
  EXPECT_EQ(Zarel::fileNotDeleted, 3125);
  EXPECT_EQ(Zarel::fileNotClosed, 3126);
  EXPECT_EQ(Zarel::registerFailed, 3127);
}

// Each report names the function that failed and the place that called it.
class OocPlaces : public Ooc {
protected:
  void expectPlace(const std::string& function, const std::function<void()>& operation) {
    const std::string told = toldBy(operation);
    EXPECT_NE(told.find(function + "(), caller.c line 4711"), std::string::npos) << told;
  }
#define THERE "test", "caller.c", 4711
};

TEST_F(OocPlaces, OfUnitsThatDoNotComeAbout) {
  ZAREL_MMAP stranger = {&error, 4711, 'Y', 0};

  expectPlace("zarelmem_calloc_ooc",
              [&] { zarelmem_calloc_ooc(1, 8, L"/no/such/unit", THERE, &error); });
  expectPlace("zarelmem_calloc_ooc",
              [&] { zarelmem_malloc_ooc(8, L"/no/such/unit", THERE, &error); });
  expectPlace("zarelmem_calloc_ooc", [&] { zarelmem_malloc_ooc(0, nullptr, THERE, &error); });
  expectPlace("zarelmem_adopt_ooc",
              [&] { zarelmem_adopt_ooc(8, L"/no/such/unit", THERE, &error); });
  expectPlace("zarelmem_realloc_ooc",
              [&] { zarelmem_realloc_ooc(nullptr, 8, nullptr, THERE, &error); });
  expectPlace("zarelmem_realloc_ooc",
              [&] { zarelmem_realloc_ooc(&stranger, 8, nullptr, THERE, &error); });
}

TEST_F(OocPlaces, OfUnitsWithoutMemory) {
  const std::wstring file = wide("unit");

  expectPlace("zarelmem_calloc_ooc", [&] {
    const support::FailingAllocation failing(1);
    zarelmem_malloc_ooc(8, file.c_str(), THERE, &error);
  });
  expectPlace("zarelmem_adopt_ooc", [&] {
    const support::FailingAllocation failing(1);
    zarelmem_adopt_ooc(8, file.c_str(), THERE, &error);
  });
}

TEST_F(OocPlaces, OfUnitsThatCannotBeChangedOrReleased) {
  ZAREL_MMAP* const unit = make(100, nullptr);
  const auto resizeThere = [&] { zarelmem_realloc_ooc(unit, 8, nullptr, THERE, &error); };
  const auto releaseThere = [&](int mode) { zarelmem_free_ooc(unit, mode, THERE, &error); };

  expectPlace("zarelmem_get_mapped_filename", [&] {
    const support::FailingAllocation failing(1);
    zarelmem_get_mapped_filename(unit, "caller.c", 4711, &error);
  });
  for (const char* const function : {"zarel_munmap_", "zarelmem_realloc_ooc"}) {
    const FailingCall failing(1, "munmap");
    expectPlace(function, resizeThere);
  }
  for (const char* const function : {"zarel_munmap_", "zarelmem_free_ooc"}) {
    const FailingCall failing(1, "munmap");
    expectPlace(function, [&] { releaseThere(ZAREL_OOC_DELETE); });
  }
  {
    const FailingCall failing(1, "ftruncate");
    expectPlace("zarelmem_realloc_ooc", resizeThere);
  }
  {
    const FailingCall failing(1, "close");
    expectPlace("zarelmem_close_mapped_unit",
                [&] { zarelmem_close_mapped_unit(unit, THERE, &error); });
  }
  expectPlace("zarelmem_free_ooc", [&] { releaseThere(3); });
  const FailingCall failing(1, "unlink");
  expectPlace("zarelmem_free_ooc", [&] { releaseThere(ZAREL_OOC_DELETE); });
}

TEST_F(Ooc, AFileThatCannotBeCutTellsWhyOnStandardOutput) {
  ZAREL_MMAP* const unit = make(100, wide("unit").c_str());
  for (const auto& [reason, text] :
       {std::pair<int, std::string>{EACCES, " errno : EACCES\n"}, {EIO, " errno : 5\n"}}) {
    const FailingCall failing(1, "ftruncate", reason);
    support::Captured told;
    told = support::capture([&] { EXPECT_EQ(resize(unit, 10), nullptr); });
    EXPECT_NE(told.out.find(text), std::string::npos) << told.out;
    EXPECT_NE((told.out + told.err).find(kNotMade), std::string::npos);
  }

  EXPECT_GT(descriptorOf(unit), 0) << "the file stays open";
  EXPECT_EQ(zarelmem_close_mapped_unit(unit, HERE, &error), 0);
  EXPECT_EQ(descriptorOf(unit), -1);
  EXPECT_EQ(zarelmem_close_mapped_unit(unit, HERE, &error), 0);
  release(unit);
}

TEST_F(Ooc, AUnitThatCouldNotBeResizedCanBeResizedAgain) {
  ZAREL_MMAP* unit = make(4, wide("unit").c_str());
  std::memcpy(data(unit), "abcd", 4);
  const auto refused = [&] { EXPECT_EQ(resize(unit, 8), nullptr); };

  expectReportOfCall(kNotRegistered, "fstat", refused);
  expectReportOfCall(kNotMade, "fallocate", refused);
  expectReportOfCall(kNotClosed, "close", refused);
  expectReportOfCall(kNotMapped, "mmap", refused);

  unit = resize(unit, 8);

  ASSERT_NE(unit, nullptr);
  EXPECT_EQ(std::string(data(unit), 8), std::string("abcd\0\0\0\0", 8));
  release(unit);
}

TEST_F(Ooc, AUnitWhoseFileIsGoneIsNoUnitAnyMore) {
  ZAREL_MMAP* const unit = make(4, wide("unit").c_str());
  std::filesystem::remove(directory.file("unit"));

  expectReport(kNotMade, [&] { EXPECT_EQ(resize(unit, 8), nullptr); });

  EXPECT_EQ(zarelmem_ismapped(unit), 0);
  zarelmem_free(unit, __FILE__, __LINE__);
}

TEST_F(Ooc, AFileThatCannotBeClosedIsReported) {
  ZAREL_MMAP* const unit = make(100, wide("unit").c_str());
  {
    const FailingCall failing(1, "ftruncate");
    EXPECT_EQ(resize(unit, 10), nullptr);
  }
  expectReport(kNotClosed, [&] {
    const FailingCall failing(1, "close");
    EXPECT_EQ(zarelmem_close_mapped_unit(unit, HERE, &error), -1);
  });

  EXPECT_EQ(descriptorOf(unit), -1);
  release(unit);
}

TEST_F(Ooc, AnExistingFileIsAdoptedWithItsBytes) {
  support::writeBytes(directory.file("old"), "contents and more");

  ZAREL_MMAP* unit = adopt(8, "old");

  ASSERT_NE(unit, nullptr);
  EXPECT_EQ(std::string(data(unit), 8), "contents");
  EXPECT_EQ(sizeOf(unit), 8u);
  unit = resize(unit, 4);
  EXPECT_EQ(bytes("old"), "cont");
  release(unit, ZAREL_OOC_KEEP);
  EXPECT_EQ(bytes("old"), "cont");
}

TEST_F(Ooc, AShorterOrMissingFileIsNotAdopted) {
  support::writeBytes(directory.file("short"), "short");

  expectReport(kNotMade, [&] { EXPECT_EQ(adopt(6, "short"), nullptr); });
  expectReport(kNotMade, [&] { EXPECT_EQ(adopt(6, "missing"), nullptr); });
  expectReport(kNotMapped, [&] { EXPECT_EQ(adopt(0, "short"), nullptr); });
  expectReport(kNoMemory,
               [&] { EXPECT_EQ(zarelmem_adopt_ooc(1, nullptr, HERE, &error), nullptr); });

  EXPECT_EQ(bytes("short"), "short");
  EXPECT_EQ(entriesOf(directory.path()), 1u);
}

TEST_F(Ooc, AUnitsFileIsNotAdoptedOnceMore) {
  const support::WorkingDirectory working(directory.path());
  const std::wstring name(1, wchar_t(0x1F4C4));
  ZAREL_MMAP* const unit = make(4, name.c_str());
  std::memcpy(data(unit), "mine", 4);

  expectReport(kNotMade,
               [&] { EXPECT_EQ(zarelmem_adopt_ooc(4, name.c_str(), HERE, &error), nullptr); });
  expectReport(kNotMade, [&] {
    const auto* const narrow = reinterpret_cast<const char*>(name.c_str());
    EXPECT_EQ(zarelmem_realloc_ooc(nullptr, 4, narrow, HERE, &error), nullptr);
  });

  EXPECT_EQ(std::string(data(unit), 4), "mine");
  EXPECT_EQ(nameOf(unit), name);
  release(unit);
  EXPECT_EQ(entriesOf(directory.path()), 0u);
}

TEST_F(Ooc, AFileThatCannotBeAdoptedIsReportedAndStays) {
  support::writeBytes(directory.file("old"), "contents");
  const std::wstring file = wide("old");
  const auto refused = [&] {
    EXPECT_EQ(zarelmem_adopt_ooc(8, file.c_str(), HERE, &error), nullptr);
  };

  expectReportOfCall(kNotMade, "open", refused);
  expectReportOfCall(kNotMade, "fstat", refused);
  expectReportOfCall(kNotMade, "close", refused);
  expectReportOfCall(kNotMapped, "mmap", refused);
  const std::string told =
      toldByTheLastFailure([&] { return zarelmem_adopt_ooc(8, file.c_str(), HERE, &error); });

  EXPECT_NE(told.find(kNotRegistered), std::string::npos) << told;
  EXPECT_EQ(bytes("old"), "contents");
}

// Odd and kept: the wide name comes through a narrow parameter and ends at its first zero byte, so
// that only a lone character without zero bytes survives.
TEST_F(Ooc, ANameThroughTheNarrowParameterEndsAtItsFirstZeroByte) {
  const support::WorkingDirectory working(directory.path());
  const std::wstring survives(1, wchar_t(0x1F4C4));
  support::writeBytes(Zarel::toUtf8(survives), "paper");
  support::writeBytes("plain", "paper");
  const auto adoptNarrow = [this](const wchar_t* file) {
    return zarelmem_realloc_ooc(nullptr, 5, reinterpret_cast<const char*>(file), HERE, &error);
  };

  ZAREL_MMAP* const unit = adoptNarrow(survives.c_str());
  ASSERT_NE(unit, nullptr);
  EXPECT_EQ(std::string(data(unit), 5), "paper");
  expectReport(kNotMade, [&] { EXPECT_EQ(adoptNarrow(L"plain"), nullptr); });
  expectReport(kNoMemory, [&] { EXPECT_EQ(adoptNarrow(nullptr), nullptr); });

  release(unit, ZAREL_OOC_KEEP);
}

TEST_F(Ooc, ReleasedToKeepTheFileStaysWithItsData) {
  ZAREL_MMAP* const unit = make(4, wide("unit").c_str());
  std::memcpy(data(unit), "kept", 4);

  release(unit, ZAREL_OOC_KEEP);

  EXPECT_EQ(error, 0);
  EXPECT_EQ(bytes("unit"), "kept");
}

TEST_F(Ooc, AnotherModeIsReportedAndLeavesTheUnitUnmapped) {
  ZAREL_MMAP* const unit = make(4, wide("unit").c_str());

  expectReport(kNotClosed, [&] { release(unit, 3); });

  EXPECT_EQ(unit->mapped, 'N');
  EXPECT_NE(zarelmem_ismapped(unit), 0);
  release(unit);
  EXPECT_EQ(entriesOf(directory.path()), 0u);
}

TEST_F(Ooc, ReleasingWhatIsNoUnitDoesNothing) {
  ZAREL_MMAP stranger = {&error, 4711, 'Y', 0};

  release(&stranger);
  EXPECT_EQ(error, 0);
  release(nullptr);

  EXPECT_EQ(error, 0);
}

TEST_F(Ooc, AFileThatCannotBeDeletedIsReportedAndTheUnitIsReleased) {
  ZAREL_MMAP* const unit = make(4, wide("unit").c_str());
  std::filesystem::remove(directory.file("unit"));
  const u64 booked = zarel_sum_memsize();

  expectReport(kNotDeleted, [&] { release(unit); });

  EXPECT_LT(zarel_sum_memsize(), booked);
}

TEST_F(Ooc, AMappingThatCannotBeEndedIsReportedAndStays) {
  ZAREL_MMAP* const unit = make(4, wide("unit").c_str());
  const SystemCallsKept kept;
  Zarel::systemCalls().munmap = cannotUnmap;

  expectReport(kNotUnmapped, [&] { release(unit); });
  expectReport(kNotUnmapped, [&] { EXPECT_EQ(resize(unit, 10), nullptr); });

  Zarel::systemCalls().munmap = munmap;
  EXPECT_EQ(std::string(data(unit), 4), std::string(4, '\0'));
  release(unit);
  EXPECT_EQ(entriesOf(directory.path()), 0u);
}

TEST_F(Ooc, AQuestionIsASuccess) {
  const auto expectSuccess = [this](auto question) {
    error = 77;
    question(nullptr, __FILE__, __LINE__, &error);
    EXPECT_EQ(error, 0);
    question(nullptr, __FILE__, __LINE__, nullptr);
  };

  expectSuccess(zarelmem_get_mapped_filename);
  expectSuccess(zarelmem_get_mapped_size);
  expectSuccess(zarelmem_get_mapped_unit);
}

TEST_F(Ooc, WhatIsNoUnitHasAnEmptyNameNoSizeAndNoDescriptor) {
  ZAREL_MMAP stranger = {&error, 4711, 'Y', 0};

  wchar_t* const name = zarelmem_get_mapped_filename(&stranger, __FILE__, __LINE__, &error);
  EXPECT_STREQ(name, L"");
  EXPECT_EQ(name, zarelmem_get_mapped_filename(&stranger, __FILE__, __LINE__, &error));
  EXPECT_EQ(zarelmem_get_mapped_filename(nullptr, __FILE__, __LINE__, &error), nullptr);
  EXPECT_EQ(sizeOf(&stranger), 0u);
  EXPECT_EQ(descriptorOf(&stranger), -1);
  EXPECT_EQ(zarelmem_ismapped(&stranger), 0);
  EXPECT_EQ(zarelmem_ismapped(nullptr), 0);
}

TEST_F(Ooc, ANameWithoutMemoryIsReported) {
  ZAREL_MMAP* const unit = make(4, wide("unit").c_str());

  expectReport(kNoMemory, [&] {
    const support::FailingAllocation failing(1);
    EXPECT_EQ(zarelmem_get_mapped_filename(unit, __FILE__, __LINE__, &error), nullptr);
  });

  release(unit);
}

// The result is the argument less 1, not the former mode.
TEST_F(Ooc, TheModeIsInCoreUntilItIsSet) {
  EXPECT_EQ(zarelmem_getmode(), 1);

  EXPECT_EQ(zarelmem_setmode(3), 2);
  EXPECT_EQ(zarelmem_getmode(), 1);
  EXPECT_EQ(zarelmem_setmode(2), 1);
  EXPECT_EQ(zarelmem_getmode(), 2);
  EXPECT_EQ(zarelmem_setmode(0), -1);
  EXPECT_EQ(zarelmem_setmode(1), 0);

  EXPECT_EQ(zarelmem_getmode(), 1);
}

TEST_F(Ooc, ManyUnitsStandSideBySide) {
  std::vector<ZAREL_MMAP*> units;
  for (int k = 0; k < 50; ++k) {
    units.push_back(make(100, nullptr));
    std::memset(data(units.back()), k, 100);
  }

  for (int k = 0; k < 50; ++k) {
    EXPECT_EQ(std::string(data(units[size_t(k)]), 100), std::string(100, char(k)));
    release(units[size_t(k)]);
  }
  EXPECT_EQ(entriesOf(directory.path()), 0u);
}

// What a fault may leave: nothing but, where a unit's own file could not be opened or deleted, that
// file.
class OocFaults : public Ooc {
protected:
  // Makes, resizes and releases a unit; false if it was not made.
  bool run() {
    ZAREL_MMAP* unit = make(100, nullptr);
    if (!unit) return false;
    std::memset(data(unit), 'd', 100);
    if (ZAREL_MMAP* const larger = resize(unit, 10000)) unit = larger;
    if (ZAREL_MMAP* const smaller = resize(unit, 50)) unit = smaller;
    if (zarelmem_ismapped(unit) == 0)
      zarelmem_free(unit, __FILE__, __LINE__);
    else
      for (int k = 0; k < 3 && zarelmem_ismapped(unit) != 0; ++k)
        release(unit);
    return true;
  }

  void expectNothingLeft(const std::function<long(const std::function<void()>&)>& forEachFault) {
    free_variables_zarel_mmap();
    const size_t descriptors = openDescriptors();
    const u64 booked = zarel_sum_memsize();

    support::capture([&] {
      EXPECT_GT(forEachFault([&] {
                  const bool made = run();
                  const support::Unharmed checks;
                  if (!made) {
                    EXPECT_EQ(error, -1);
                    EXPECT_EQ(entriesOf(directory.path()), 0u);
                  }
                  mostFilesLeft = std::max(mostFilesLeft, entriesOf(directory.path()));
                  for (const auto& file : std::filesystem::directory_iterator(directory.path()))
                    std::filesystem::remove(file);
                }),
                10);
    });
    free_variables_zarel_mmap();

    EXPECT_EQ(openDescriptors(), descriptors);
    EXPECT_EQ(zarel_sum_memsize(), booked);
    EXPECT_FALSE(isMappedFrom(directory.path()));
  }

  size_t mostFilesLeft = 0;
};

// A unit's file is opened and deleted without memory.
TEST_F(OocFaults, OfExhaustedMemoryLeaveNothing) {
  expectNothingLeft([](const std::function<void()>& operation) {
    return support::forEachFailingAllocation(operation, support::FailingAllocation::FromThenOn);
  });

  EXPECT_EQ(mostFilesLeft, 0u);
}

TEST_F(OocFaults, OfExhaustedMemoryAndTheSystemThrowNothing) {
  support::capture([this] { expectNothingThrown([this] { run(); }); });
}

TEST_F(OocFaults, OfEachSystemCallLeaveNothing) {
  expectNothingLeft([](const std::function<void()>& operation) {
    return support::forEachFailingCall(operation);
  });
}

TEST_F(OocFaults, OfEachAllocationLeaveNothing) {
  expectNothingLeft([](const std::function<void()>& operation) {
    return support::forEachFailingAllocation(operation);
  });
}

} // namespace
