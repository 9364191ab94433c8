// The fixture of the tests of views: a file, the descriptor that it is known by, and a record.
#ifndef ZAREL_TESTS_MAPPING_MAPPEDFILE_H
#define ZAREL_TESTS_MAPPING_MAPPEDFILE_H

#include <string>

#include <gtest/gtest.h>
#include <zarel/C_MapManager.h>

#include "mapping/support.h"

namespace mapping_test {

// A file of three pages whose bytes count up, modulo 251.
class MapManager : public testing::Test {
protected:
  MapManager() {
    support::writeBytes(name, bytes(3 * kPage));
    fd = open(name.c_str(), O_RDWR | O_CLOEXEC);
  }
  ~MapManager() override {
    manager->UnMapPtr(&view);
    manager->ReleaseFileHandle(fd);
    if (fd >= 0) close(fd);
  }

  static std::string bytes(size_t count) {
    std::string result(count, '\0');
    for (size_t k = 0; k < count; ++k)
      result[k] = static_cast<char>(k % 251);
    return result;
  }

  C_MapPtr* map(int mode, u64 offset, u64 length) {
    return manager->MapPtr(&view, fd, wideName.c_str(), mode, offset, length);
  }
  std::string shown(u64 length) const { return {view.GetPtrUser(), length}; }

  support::TempDirectory directory;
  std::string name = directory.file("data");
  std::wstring wideName = Zarel::toWide(name);
  C_MapManager* manager = getGlobalMapManager();
  C_MapPtr view;
  int fd = -1;
};

} // namespace mapping_test

#endif
