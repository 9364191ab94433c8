// What the tests of values on a file share.
#ifndef ZAREL_TESTS_CONTAINERS_ONFILE_H
#define ZAREL_TESTS_CONTAINERS_ONFILE_H

#include <algorithm>
#include <climits>
#include <csignal>
#include <new>

#include <sys/resource.h>

#include <zarel/C_PtrOnFile.h>
#include <zarel/bf.h>
#include <zarel/zarelmem.h>

#include "containers/support.h"
#include "support/FailingAllocation.h"
#include "support/FailingCall.h"

/** Value i of the test files: 1, 2, 3 ... with imaginary parts 0, -1, -2 ... */
template <class T>
T valueAt(int i) {
  return scalar<T>(i + 1, -i);
}

template <class T>
std::string counted(int n) {
  std::string bytes;
  for (int i = 0; i < n; ++i)
    bytes += raw(valueAt<T>(i));
  return bytes;
}

/** The value that the bytes of a file hold at a place. */
template <class T>
T inFile(ScratchFile& file, int i) {
  T value;
  const std::string bytes = file.bytes();
  std::memcpy(&value, bytes.data() + static_cast<std::size_t>(i) * sizeof(T), sizeof(T));
  return value;
}

inline long long position(ScratchFile& file) {
  return lseek(file.handle(), 0, SEEK_CUR);
}

/** Owns what Lnk gives. */
template <class Object>
std::unique_ptr<Object> owned(Object* object) {
  return std::unique_ptr<Object>(object);
}

#endif
