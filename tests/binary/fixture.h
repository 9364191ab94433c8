// A stream on a fresh file, and silence for the traces of bad arguments.
#ifndef TESTS_BINARY_FIXTURE_H
#define TESTS_BINARY_FIXTURE_H

#include <cstdio>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>
#include <zarel/bf.h>
#include <zarel/erreur.h>

#include "support/Files.h"
#include "system/calls.h"

namespace binary_test {

using support::hex;

// Counts the traces: with no initialized tool each ends in the error box.
inline int traces = 0;
inline void countTrace(const char*, const char*) {
  ++traces;
}

// The sizes of the writes that reached the system.
inline std::vector<size_t> writes;
inline ssize_t (*realWrite)(int, const void*, size_t) = nullptr;
inline ssize_t notedWrite(int fd, const void* buffer, size_t bytes) {
  writes.push_back(bytes);
  return realWrite(fd, buffer, bytes);
}

class BinaryFile : public testing::Test {
protected:
  BinaryFile() : name(directory.file("data")), file(std::fopen(name.c_str(), "w+b")) {
    traces = 0;
    box = zarel_setErrorBox(countTrace);
    writes.clear();
    calls = Zarel::systemCalls();
  }

  ~BinaryFile() override {
    zarel_setErrorBox(box);
    Zarel::systemCalls() = calls;
    RemFileException(file);
    std::fclose(file);
  }

  int fd() const { return fileno(file); }
  std::string bytes() const { return support::bytesOf(name); }
  void rewind() { CBF_fseek64(file, 0, SEEK_SET); }
  // Makes `content` the file's and goes to its start.
  void hold(const std::string& content) {
    support::writeBytes(name, content);
    rewind();
  }
  void noteWrites() {
    realWrite = calls.write;
    Zarel::systemCalls().write = notedWrite;
  }

  support::TempDirectory directory;
  std::string name;
  FILE* file;

private:
  zarel_ErrorBox box;
  Zarel::SystemCalls calls;
};

} // namespace binary_test

#endif
