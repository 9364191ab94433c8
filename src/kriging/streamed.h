/**
 * @file streamed.h
 * Steps of writing and reading a model: each reports its failure with the place where it stands,
 * so that a sequence of steps reads as one condition.
 */
#ifndef ZAREL_KRIGING_STREAMED_H
#define ZAREL_KRIGING_STREAMED_H

#include <cstdio>
#include <new>

#include <zarel/C_ZarelException.h>
#include <zarel/bf.h>

#include "runtime/fail.h"

namespace Zarel {

/// Leaves a trace if a step has failed. @return whether it has.
inline bool failed(int status, char const* file = __builtin_FILE(), int line = __builtin_LINE()) {
  if (status == 0) return false;
  traced(file, line);
  return true;
}

/// Runs the body of a read or a write. What a container throws becomes a trace and a 1.
template <class Body>
int withoutThrowing(Body&& body, char const* file = __builtin_FILE(), int line = __builtin_LINE()) {
  try {
    return body();
  } catch (C_ZarelException const&) {
  } catch (std::bad_alloc const&) {
  }
  traced(file, line);
  return 1;
}

inline int writeInt(FILE* stream, int value) {
  return BF_fwrite_int(stream, &value, 1);
}

inline int readInt(FILE* stream, int& value) {
  return BF_fread_int(stream, &value, 1);
}

/// Writes the bytes of a narrow string. `BF_fwrite_str` writes the same but never tells a failure.
int writeText(FILE* stream, char const* text);

/// Reads a narrow string and lets it go: every version takes the same path.
int skipText(FILE* stream);

/// Makes a stream's pending text and its descriptor agree, before and after writes that go round
/// the buffer. @return 0, or -1 if the stream is in error.
int settle(FILE* stream);

/// @return how many bytes a regular file still holds, or -1 if the stream cannot tell.
long long bytesLeft(FILE* stream);

} // namespace Zarel

#endif
