// Words and numbers of a text stream.
#ifndef ZAREL_KERNEL_TEXTREADER_H
#define ZAREL_KERNEL_TEXTREADER_H

#include <cstdio>

namespace Zarel::kernel {

// Reads one thing after the other, junk between them skipped. The first thing that is not there
// decides the error; from then on nothing more is read.
class TextReader {
public:
  // `endError` is the number of the error for an input that ends.
  TextReader(FILE* stream, int endError) : _stream(stream), _endError(endError) {}

  // 0, or the number of the error that stopped the reading.
  int error() const { return _error; }
  bool failed() const { return _error != 0; }
  // Fails for a content that can't be right.
  void refuse() { fail(WrongFormat); }

  // Expects these characters, junk before them skipped.
  void expect(const char* text);
  // A number without a sign, up to 2147483647; one with a sign; a real one. An exponent too large
  // gives an infinity.
  unsigned count();
  int integer();
  double real();

private:
  enum { WrongFormat = 6, TokenLength = 64 };

  void fail(int number) {
    if (_error == 0) _error = number;
  }
  bool token(char (&to)[TokenLength], const char* alphabet);
  long long whole(const char* alphabet, long long low, long long high);

  FILE* _stream;
  int _endError;
  int _error = 0;
};

} // namespace Zarel::kernel

#endif
