// Registered mappings.
#include <cstring>
#include <set>
#include <string>

#include <gtest/gtest.h>
#include <zarel/zarel_mmap.h>
#include <zarel/zarelmem.h>

#include "mapping/support.h"
#include "support/FailingAllocation.h"
#include "support/FailingCall.h"

namespace {

#define HERE "test", __FILE__, __LINE__

using support::FailingCall;
using support::TempDirectory;

// The trace of a failing call at that location.
const std::string kLocation = "fct_Trace( aff_lieu, 4711, caller.c)";

class Mmap : public testing::Test {
protected:
  Mmap() {
    support::writeBytes(name, std::string(kPage, 'a') + "bcdefgh");
    free_variables_zarel_mmap();
  }
  ~Mmap() override { free_variables_zarel_mmap(); }

  ZAREL_MMAP* map(int mode, u64 offset, u64 length, ZAREL_MMAP* record = nullptr) {
    return zarel_mmap(record, -1, wideName.c_str(), mode, offset, length, HERE, &error);
  }
  int unmap(ZAREL_MMAP* record) { return zarel_munmap(record, HERE, &error); }

  TempDirectory directory;
  std::string name = directory.file("data");
  std::wstring wideName = Zarel::toWide(name);
  int error = 77;
};

TEST_F(Mmap, ShowsARangeOfAFile) {
  ZAREL_MMAP* const record = map(0, kPage + 2, 3);

  ASSERT_NE(record, nullptr);
  EXPECT_EQ(std::string(static_cast<char*>(record->address), 3), "def");
  EXPECT_EQ(record->mapped, 'Y');
  EXPECT_EQ(record->error, 0);
  EXPECT_EQ(error, 0);
  EXPECT_EQ(unmap(record), 0);
  EXPECT_EQ(record->mapped, 'N');
  zarelmem_free(record, __FILE__, __LINE__);
}

TEST_F(Mmap, WritesToTheFile) {
  ZAREL_MMAP record;
  ASSERT_EQ(map(2, kPage, 7, &record), &record);

  std::memcpy(record.address, "BCD", 3);

  EXPECT_EQ(support::bytesOf(name).substr(kPage), "BCDefgh");
  EXPECT_EQ(unmap(&record), 0);
}

TEST_F(Mmap, CountsItsMappings) {
  ZAREL_MMAP first;
  ZAREL_MMAP second;
  map(0, 0, 1, &first);
  map(0, 0, 1, &second);

  EXPECT_EQ(second.id, first.id + 1);
  unmap(&first);
  EXPECT_EQ(*static_cast<char*>(second.address), 'a');
  unmap(&second);
}

TEST_F(Mmap, UnmappingTwiceIsASuccess) {
  ZAREL_MMAP record;
  map(0, 0, 1, &record);

  EXPECT_EQ(unmap(&record), 0);
  error = 77;
  EXPECT_EQ(unmap(&record), 0);

  EXPECT_EQ(error, 0);
}

TEST_F(Mmap, UnmappingWhatIsNotRegisteredIsASuccess) {
  int here = 0;
  ZAREL_MMAP record = {&here, 4711, 'Y', 0};

  EXPECT_EQ(unmap(&record), 0);
  EXPECT_EQ(error, 0);
}

TEST_F(Mmap, UnmappingNothingIsAnError) {
  ZAREL_MMAP record = {nullptr, 1, 'Y', 0};

  EXPECT_EQ(unmap(nullptr), -1);
  EXPECT_EQ(error, -1);
  error = 77;
  EXPECT_EQ(unmap(&record), -1);
  EXPECT_EQ(error, -1);
}

TEST_F(Mmap, WhatCannotBeMappedLeavesNothingOpen) {
  const u64 booked = zarel_sum_memsize();
  const size_t before = openDescriptors();
  const auto refused = [this](const wchar_t* file, int mode, u64 offset, u64 length) {
    error = 77;
    EXPECT_EQ(zarel_mmap(nullptr, -1, file, mode, offset, length, HERE, &error), nullptr);
    EXPECT_EQ(error, -1);
  };

  refused(wideName.c_str(), 0, kPage, 8);
  refused(wideName.c_str(), 1, 0, 1);
  refused(wideName.c_str(), 0, 0, 0);
  refused(wideName.c_str(), 2, ~u64{0}, 2);
  refused(L"/no/such/file", 0, 0, 1);
  refused(L"/no/such/file", 2, 0, 1);
  refused(nullptr, 0, 0, 1);
  ASSERT_EQ(mkfifo(directory.file("pipe").c_str(), 0600), 0);
  refused(Zarel::toWide(directory.file("pipe")).c_str(), 0, 0, 1);
  refused(Zarel::toWide(directory.path()).c_str(), 0, 0, 1);

  EXPECT_EQ(openDescriptors(), before);
  EXPECT_EQ(zarel_sum_memsize(), booked);
}

TEST_F(Mmap, WhatCannotBeMappedIsToldByItsResultAlone) {
  const std::set<std::string> needed = {"open", "fstat", "fallocate", "mmap"};
  std::set<std::string> refused;
  ASSERT_EQ(truncate(name.c_str(), 1 << 20), 0);
  ZAREL_MMAP record;
  bool failed = true;

  for (long n = 1; failed; ++n) {
    std::string call;
    const std::string told = toldBy([&] {
      const FailingCall failing(n);
      map(2, 0, 1 << 20, &record);
      failed = FailingCall::happened();
      call = FailingCall::failed();
    });
    EXPECT_EQ(told, "") << call;
    EXPECT_EQ(error, needed.count(call) == 0 ? 0 : -1) << call;
    if (error != 0)
      refused.insert(call);
    else
      unmap(&record);
  }

  EXPECT_EQ(refused, needed);
}

TEST_F(Mmap, TheErrorMayBeLeftOut) {
  EXPECT_EQ(zarel_mmap(nullptr, -1, nullptr, 0, 0, 1, HERE, nullptr), nullptr);
  EXPECT_EQ(zarel_munmap(nullptr, HERE, nullptr), -1);
}

TEST_F(Mmap, TheRouteToReadServesWhat32BitsExpress) {
  const u64 limit = 0xFFFFFFFF;
  ASSERT_EQ(truncate(name.c_str(), static_cast<off_t>(limit + 3 * kPage)), 0);
  ZAREL_MMAP record;

  ASSERT_NE(map(0, kPage, limit, &record), nullptr);
  EXPECT_EQ(*static_cast<char*>(record.address), 'b');
  EXPECT_EQ(unmap(&record), 0);
  EXPECT_EQ(map(0, kPage + 1, limit, &record), nullptr);
  EXPECT_EQ(map(0, kPage, limit + 1, &record), nullptr);

  ASSERT_NE(map(0, limit + kPage, 8, &record), nullptr) << "the range may start anywhere";
  EXPECT_EQ(unmap(&record), 0);
}

TEST_F(Mmap, AMappingWithoutTheRegisterIsEndedByItsView) {
  ZAREL_MMAP_VIEW record;
  ASSERT_EQ(zarel_mmap_(&record, -1, wideName.c_str(), 0, kPage + 1, 2, HERE, &error), &record);

  EXPECT_EQ(static_cast<char*>(record.address) - static_cast<char*>(record.view), 1);
  EXPECT_EQ(record.length, 3u);
  EXPECT_EQ(zarel_munmap_(&record, HERE), 0);
  EXPECT_EQ(zarel_munmap_(&record, HERE), 0);
  EXPECT_EQ(zarel_munmap_(nullptr, HERE), 0);
  ZAREL_MMAP_VIEW* const made = zarel_mmap_(nullptr, -1, wideName.c_str(), 2, 0, 2, HERE, &error);
  EXPECT_EQ(zarel_munmap_(made, HERE), 0);
  zarelmem_free(made, __FILE__, __LINE__);
}

TEST_F(Mmap, AViewThatCannotBeEndedStaysRegistered) {
  ZAREL_MMAP record;
  map(0, 0, 1, &record);

  const std::string told = toldBy([&] {
    const SystemCallsKept kept;
    Zarel::systemCalls().munmap = cannotUnmap;
    EXPECT_EQ(zarel_munmap(&record, "test", "caller.c", 4711, &error), -1);
  });

  EXPECT_EQ(error, -1);
  EXPECT_NE(told.find(kNotRegistered), std::string::npos) << told;
  EXPECT_NE(told.find(kLocation), std::string::npos) << told;
  EXPECT_EQ(record.mapped, 'Y');
  EXPECT_EQ(*static_cast<char*>(record.address), 'a');
  EXPECT_EQ(unmap(&record), 0);
  EXPECT_FALSE(isMappedFrom(name));
}

TEST_F(Mmap, AFileThatCannotBeClosedIsAnErrorOnce) {
  ZAREL_MMAP record;
  map(0, 0, 1, &record);

  const std::string told = toldBy([&] {
    const FailingCall failing(1, "close");
    EXPECT_EQ(zarel_munmap(&record, "test", "caller.c", 4711, &error), -1);
  });

  EXPECT_NE(told.find(kNotRegistered), std::string::npos) << told;
  EXPECT_NE(told.find(kLocation), std::string::npos) << told;
  EXPECT_FALSE(isMappedFrom(name));
  EXPECT_EQ(unmap(&record), 0);
  EXPECT_EQ(record.mapped, 'N');
}

TEST_F(Mmap, AViewWithoutTheRegisterThatCannotBeEndedIsReported) {
  ZAREL_MMAP_VIEW record;
  zarel_mmap_(&record, -1, wideName.c_str(), 0, 0, 1, HERE, &error);
  const auto refused = [&] { EXPECT_EQ(zarel_munmap_(&record, HERE), -1); };

  const std::string unmapping = toldBy([&] {
    const SystemCallsKept kept;
    Zarel::systemCalls().munmap = cannotUnmap;
    refused();
  });
  EXPECT_NE(unmapping.find(kNotRegistered), std::string::npos) << unmapping;
  EXPECT_EQ(*static_cast<char*>(record.address), 'a');
  const std::string closing = toldBy([&] {
    const FailingCall failing(1, "close");
    refused();
  });

  EXPECT_NE(closing.find(kNotRegistered), std::string::npos) << closing;
  EXPECT_EQ(record.file, -1);
  EXPECT_EQ(zarel_munmap_(&record, HERE), 0);
}

// A record that changes while its mapping is being ended is not under its key any more. The
// register then still has the former key, so that this is tried in a process that ends with it.
ZAREL_MMAP* changing = nullptr;

int closeAndChange(int fd) {
  ++changing->id;
  return close(fd);
}

TEST_F(Mmap, AKeyThatCannotBeDeletedIsReportedAndItsViewReleased) {
  const auto unmapChanging = [this] {
    ZAREL_MMAP record;
    const size_t before = openDescriptors();
    map(0, 0, 1, changing = &record);
    const u64 booked = zarel_sum_memsize();
    Zarel::systemCalls().close = closeAndChange;
    const bool failed = unmap(&record) == -1 && error == -1 && record.mapped == 'N';
    Zarel::systemCalls().close = close;
    const bool released = booked - zarel_sum_memsize() >= sizeof(ZAREL_MMAP_VIEW);
    _exit(failed && released && openDescriptors() == before ? 0 : 1);
  };

  EXPECT_EXIT(unmapChanging(), testing::ExitedWithCode(0),
              kNotRegistered + ".*zarel_munmap\\(\\), .*mmap_test.cpp line");
}

TEST_F(Mmap, ForgettingAllClosesTheirFilesAndLeavesTheirBytes) {
  const size_t before = openDescriptors();
  ZAREL_MMAP record;
  map(0, 0, 1, &record);

  free_variables_zarel_mmap();

  EXPECT_EQ(openDescriptors(), before);
  EXPECT_EQ(*static_cast<char*>(record.address), 'a');
  EXPECT_EQ(unmap(&record), 0);
  EXPECT_EQ(munmap(record.address, 1), 0);
}

TEST_F(Mmap, EachFaultLeavesNothingBehind) {
  ASSERT_EQ(truncate(name.c_str(), 1 << 20), 0);
  const size_t before = openDescriptors();
  const u64 booked = zarel_sum_memsize();
  const auto run = [this] {
    ZAREL_MMAP* const record = map(2, 5, 100000);
    {
      const support::Unharmed checks;
      EXPECT_EQ(error, record ? 0 : -1);
    }
    if (record && unmap(record) != 0) unmap(record);
    zarelmem_free(record, __FILE__, __LINE__);
  };

  EXPECT_GT(support::forEachFailingCall(run), 5);
  EXPECT_GT(support::forEachFailingAllocation(run), 4);
  EXPECT_GT(support::forEachFailingAllocation(run, support::FailingAllocation::FromThenOn), 4);
  free_variables_zarel_mmap();

  EXPECT_EQ(openDescriptors(), before);
  EXPECT_EQ(zarel_sum_memsize(), booked);
  EXPECT_FALSE(isMappedFrom(name));
}

TEST_F(Mmap, ExhaustedMemoryAndAFaultOfTheSystemThrowNothing) {
  expectNothingThrown([this] {
    ZAREL_MMAP* const record = map(2, 5, 1000);
    if (record && unmap(record) != 0) unmap(record);
    zarelmem_free(record, __FILE__, __LINE__);
  });
}

} // namespace
