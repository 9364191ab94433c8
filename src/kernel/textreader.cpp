#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <zarel/lm_io.h>

#include "kernel/textreader.h"

int skipjunk(FILE* stream) {
  if (!stream) return -1;
  bool comment = false;
  for (int c = std::getc(stream); c != EOF; c = std::getc(stream)) {
    if (c == '#') comment = true;
    if (c == '\n') comment = false;
    if (comment || std::isspace(c)) continue;
    std::ungetc(c, stream);
    return 0;
  }
  return -1;
}

namespace Zarel::kernel {

namespace {

const char* const digits = "0123456789";
const char* const signedDigits = "+-0123456789";
// Digits, signs, point and exponent, and the letters of nan, infinity and hexadecimal numbers.
const char* const realCharacters = "+-.0123456789abcdefABCDEFxXpPnNiItTyY";

} // namespace

void TextReader::expect(const char* text) {
  if (failed()) return;
  if (skipjunk(_stream) != 0) return fail(_endError);
  for (; *text; ++text) {
    const int c = std::getc(_stream);
    if (c == EOF) return fail(_endError);
    if (c != *text) {
      std::ungetc(c, _stream);
      return fail(WrongFormat);
    }
  }
}

// Takes the characters of the alphabet; what follows a number has to separate it.
bool TextReader::token(char (&to)[TokenLength], const char* alphabet) {
  if (failed()) return false;
  if (skipjunk(_stream) != 0) {
    fail(_endError);
    return false;
  }
  int length = 0;
  int c = std::getc(_stream);
  for (; c != EOF && std::strchr(alphabet, c) && c != '\0'; c = std::getc(_stream)) {
    if (length == TokenLength - 1) break;
    to[length++] = static_cast<char>(c);
  }
  to[length] = '\0';
  if (c != EOF) std::ungetc(c, _stream);
  const bool separated = c == EOF || std::isspace(c) || c == '#' || c == ':' || c == '-';
  if (length == 0 || !separated) fail(WrongFormat);
  return !failed();
}

long long TextReader::whole(const char* alphabet, long long low, long long high) {
  char text[TokenLength];
  if (!token(text, alphabet)) return 0;
  char* end = nullptr;
  errno = 0;
  const long long value = std::strtoll(text, &end, 10);
  if (errno != 0 || *end != '\0' || value < low || value > high) fail(WrongFormat);
  return failed() ? 0 : value;
}

unsigned TextReader::count() {
  return static_cast<unsigned>(whole(digits, 0, 2147483647));
}

int TextReader::integer() {
  return static_cast<int>(whole(signedDigits, -2147483647LL - 1, 2147483647));
}

double TextReader::real() {
  char text[TokenLength];
  if (!token(text, realCharacters)) return 0.0;
  char* end = nullptr;
  const double value = std::strtod(text, &end);
  if (*end != '\0') fail(WrongFormat);
  return failed() ? 0.0 : value;
}

} // namespace Zarel::kernel
