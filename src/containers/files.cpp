#include "containers/files.h"

#include <climits>

#include <sys/stat.h>
#include <unistd.h>

long long Zarel::remainingBytes(int descriptor) {
  struct stat status;
  if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) return LLONG_MAX;
  const off_t position = lseek(descriptor, 0, SEEK_CUR);
  if (position < 0) return LLONG_MAX;
  return status.st_size > position ? status.st_size - position : 0;
}
