#include "support/SmallDisk.h"

#include <fcntl.h>
#include <fstream>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

namespace support {

namespace {

bool write(const char* path, const std::string& text) {
  std::ofstream file(path);
  file << text;
  return static_cast<bool>(file.flush());
}

// Makes this process the owner of a namespace in which it may mount; false where that is not
// allowed.
bool enterNamespace() {
  const std::string user = std::to_string(getuid());
  const std::string group = std::to_string(getgid());
  if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
  write("/proc/self/setgroups", "deny");
  return write("/proc/self/uid_map", "0 " + user + " 1") &&
         write("/proc/self/gid_map", "0 " + group + " 1");
}

} // namespace

SmallDisk::SmallDisk() {
  static const bool allowed = enterNamespace();
  _mounted = allowed && mount("none", path().c_str(), "tmpfs", 0, "size=1m") == 0;
}

SmallDisk::~SmallDisk() {
  if (_mounted) umount2(path().c_str(), MNT_DETACH);
}

void SmallDisk::fillUp(const std::string& name) const {
  const int filler = open(file(name).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  const std::string page(4096, 'f');
  while (::write(filler, page.data(), page.size()) > 0) {
  }
  close(filler);
}

} // namespace support
