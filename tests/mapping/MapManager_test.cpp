#include <fcntl.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <zarel/C_MapManager.h>
#include <zarel/C_ZarelException.h>

#include "support/Files.h"
#include "system/text.h"

namespace {

using support::TempDirectory;

TEST(MapManager, IsOneForTheProcess) {
  C_MapManager* const manager = getGlobalMapManager();

  EXPECT_EQ(manager, C_MapManager::Instance());
}

TEST(MapManager, WritesThroughAView) {
  const TempDirectory directory;
  const std::string name = directory.file("data");
  int fd = open(name.c_str(), O_RDWR | O_CREAT, 0600);
  C_MapManager* const manager = getGlobalMapManager();
  manager->SetDataFileSize(fd, 10000);

  C_MapPtr view;
  manager->MapPtr(&view, fd, nullptr, 2, 5000, 3);
  view.GetPtrUser()[0] = 'x';
  manager->UnMapPtr(&view);
  manager->CloseDataFile(fd);

  EXPECT_EQ(fd, -1);
  EXPECT_EQ(support::bytesOf(name).size(), 10000u);
  EXPECT_EQ(support::bytesOf(name)[5000], 'x');
}

} // namespace
