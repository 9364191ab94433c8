// A file system that soon runs full.
#ifndef TESTS_SUPPORT_SMALLDISK_H
#define TESTS_SUPPORT_SMALLDISK_H

#include <string>

#include "support/Files.h"

namespace support {

// A directory on a file system of its own, of 1 MiB in memory, unmounted with all that is in it.
// It lies in a namespace that the test process enters with the first disk and never leaves: give
// such tests a process of their own. Where the system allows no namespaces `mounted` is false.
class SmallDisk {
public:
  static constexpr long long bytes = 1 << 20;

  SmallDisk();
  ~SmallDisk();
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;

  bool mounted() const { return _mounted; }
  const std::string& path() const { return _directory.path(); }
  std::string file(const std::string& name) const { return _directory.file(name); }
  // Takes all the place that is left, with a file of that name.
  void fillUp(const std::string& name) const;

private:
  TempDirectory _directory;
  bool _mounted = false;
};

} // namespace support

#endif
