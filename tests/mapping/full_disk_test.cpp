// Maps and units on a file system that runs full: a small one of memory, in a namespace of the test
// process. Where the system allows no namespaces these tests are skipped; the limit of the size of
// files in the other tests stands in for it.
#include <cstring>

#include <gtest/gtest.h>
#include <zarel/C_MapManager.h>
#include <zarel/zarelmem_ooc.h>

#include "mapping/support.h"
#include "support/SmallDisk.h"

namespace {

constexpr u64 kDisk = support::SmallDisk::bytes;

class FullDisk : public testing::Test {
protected:
  void SetUp() override {
    if (!directory.mounted()) GTEST_SKIP() << "no small file system to be had here";
    fd = open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  }
  ~FullDisk() override {
    if (fd >= 0) getGlobalMapManager()->CloseDataFile(fd);
  }

  support::SmallDisk directory;
  std::string name = directory.file("data");
  int fd = -1;
};

TEST_F(FullDisk, IsAnErrorOfTheCallThatGrowsAFile) {
  C_MapManager* const manager = getGlobalMapManager();
  manager->SetDataFileSize(fd, kDisk / 2);
  ASSERT_EQ(pwrite(fd, "stays", 5, 1000), 5);

  expectFailure(24, 5, [&] { manager->SetDataFileSize(fd, 2 * kDisk); });

  struct stat status;
  ASSERT_EQ(fstat(fd, &status), 0);
  EXPECT_EQ(static_cast<u64>(status.st_size), kDisk / 2);
  EXPECT_EQ(support::bytesOf(name).substr(1000, 5), "stays");
}

TEST_F(FullDisk, IsAnErrorOfTheCallThatMapsAHole) {
  ASSERT_EQ(ftruncate(fd, 2 * kDisk), 0);
  C_MapPtr view;

  expectFailure(13, 5, [&] { getGlobalMapManager()->MapPtr(&view, fd, nullptr, 2, 0, 2 * kDisk); });

  EXPECT_EQ(view.GetPtrUser(), nullptr);
}

TEST_F(FullDisk, IsNoSignalForWhatWasMapped) {
  C_MapManager* const manager = getGlobalMapManager();
  manager->SetDataFileSize(fd, kDisk / 2);
  C_MapPtr view;
  manager->MapPtr(&view, fd, nullptr, 2, 0, kDisk / 2);
  directory.fillUp("filler");

  std::memset(view.GetPtrUser(), 'd', kDisk / 2);

  EXPECT_EQ(support::bytesOf(name), std::string(kDisk / 2, 'd'));
  view.UnMap();
}

TEST_F(FullDisk, LeavesNoFileOfAUnit) {
  int error = 0;
  const std::wstring unit = Zarel::toWide(directory.file("unit"));

  EXPECT_EQ(zarelmem_malloc_ooc(2 * kDisk, unit.c_str(), "test", __FILE__, __LINE__, &error),
            nullptr);

  EXPECT_EQ(error, -1);
  EXPECT_FALSE(std::filesystem::exists(directory.file("unit")));
}

TEST_F(FullDisk, LeavesAUnitThatCouldNotGrowWithItsBytes) {
  int error = 0;
  const std::wstring file = Zarel::toWide(directory.file("unit"));
  ZAREL_MMAP* unit =
      zarelmem_malloc_ooc(kDisk / 2, file.c_str(), "test", __FILE__, __LINE__, &error);
  std::memcpy(unit->address, "kept", 4);

  EXPECT_EQ(zarelmem_realloc_ooc(unit, 2 * kDisk, nullptr, "test", __FILE__, __LINE__, &error),
            nullptr);
  unit = zarelmem_realloc_ooc(unit, kDisk / 4, nullptr, "test", __FILE__, __LINE__, &error);

  ASSERT_NE(unit, nullptr);
  EXPECT_EQ(std::string(static_cast<char*>(unit->address), 4), "kept");
  zarelmem_free_ooc(unit, ZAREL_OOC_DELETE, "test", __FILE__, __LINE__, &error);
}

} // namespace
