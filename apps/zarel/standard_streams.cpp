#include "standard_streams.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace app {

namespace {

int data = STDOUT_FILENO;

bool isOpen(int fd) {
  return fcntl(fd, F_GETFD) != -1;
}

} // namespace

void reserveStandardOutput() {
  const bool open1 = isOpen(STDOUT_FILENO);
  for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd)
    if (!isOpen(fd)) open("/dev/null", O_RDWR); // takes the lowest free number, which is fd
  data = open1 ? fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1) : -1;
  dup2(STDERR_FILENO, STDOUT_FILENO);
}

int dataDescriptor() {
  return data;
}

bool closeDataDescriptor() {
  if (data < 0) return true;
  const bool closed = close(data) == 0 || errno == EINTR;
  data = -1;
  return closed;
}

} // namespace app
