#include "containers/files.h"

#include <climits>

#include "system/files.h"

long long Zarel::remainingBytes(int descriptor) {
  const long long left = bytesLeft(descriptor);
  return left < 0 ? LLONG_MAX : left;
}
