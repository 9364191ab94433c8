#include "support/Capture.h"

#include <cstdio>
#include <stdexcept>
#include <unistd.h>

namespace support {

namespace {

// Sends what goes to a stream's descriptor into an unnamed file for as long as it lives.
class Redirected {
public:
  explicit Redirected(FILE* stream) : _stream(stream), _file(std::tmpfile()) {
    if (!_file) throw std::runtime_error("no temporary file");
    std::fflush(stream);
    _former = dup(fileno(stream));
    dup2(fileno(_file), fileno(stream));
  }

  ~Redirected() {
    restore();
    std::fclose(_file);
  }
  Redirected(const Redirected&) = delete;
  Redirected& operator=(const Redirected&) = delete;

  std::string text() {
    restore();
    std::string all;
    std::rewind(_file);
    char piece[4096];
    for (size_t n; (n = std::fread(piece, 1, sizeof piece, _file)) > 0;)
      all.append(piece, n);
    return all;
  }

private:
  void restore() {
    if (_former < 0) return;
    std::fflush(_stream);
    dup2(_former, fileno(_stream));
    close(_former);
    _former = -1;
  }

  FILE* _stream;
  FILE* _file;
  int _former = -1;
};

} // namespace

Captured capture(const std::function<void()>& code) {
  Redirected out(stdout);
  Redirected err(stderr);
  code();
  return {out.text(), err.text()};
}

} // namespace support
