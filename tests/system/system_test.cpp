// The platform under one name.
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

#include "support/Capture.h"
#include "support/Files.h"
#include "system/box.h"
#include "system/calls.h"
#include "system/environment.h"
#include "system/files.h"
#include "system/text.h"

using namespace Zarel;

namespace {

TEST(Environment, TellsUnsetFromEmpty) {
  const support::Environment empty("ZAREL_TEST_EMPTY", "");
  const support::Environment unset("ZAREL_TEST_UNSET", nullptr);

  EXPECT_EQ(environment("ZAREL_TEST_EMPTY"), std::string());
  EXPECT_FALSE(environment("ZAREL_TEST_UNSET"));
}

TEST(Environment, ReadsTheNumberAtTheHead) {
  EXPECT_EQ(numberIn("12abc"), 12);
  EXPECT_EQ(numberIn("  -3"), -3);
  EXPECT_EQ(numberIn("none"), 0);
  EXPECT_EQ(numberIn(""), 0);
  EXPECT_EQ(numberIn("99999999999999999999"), INT_MAX);
  EXPECT_EQ(numberIn("-99999999999999999999"), INT_MIN);
}

// The characters at the ends of each UTF-8 length, after RFC 3629.
TEST(Text, ConvertsEveryLengthOfUtf8) {
  const std::string narrow = "\x01\x7f\xc2\x80\xdf\xbf\xe0\xa0\x80\xef\xbf\xbf\xf0\x90\x80\x80"
                             "\xf4\x8f\xbf\xbf";
  const std::wstring wide = {wchar_t(0x01),  wchar_t(0x7F),   wchar_t(0x80),    wchar_t(0x7FF),
                             wchar_t(0x800), wchar_t(0xFFFF), wchar_t(0x10000), wchar_t(0x10FFFF)};

  EXPECT_EQ(toWide(narrow), wide);
  EXPECT_EQ(toUtf8(wide), narrow);
}

TEST(Text, SurrogatePairsAreOneCharacter) {
  EXPECT_EQ(toUtf8(std::wstring{wchar_t(0xD83D), wchar_t(0xDE00)}), "\xf0\x9f\x98\x80");
  EXPECT_EQ(toUtf8(std::wstring{wchar_t(0xD83D), L'x'}).size(), 4u) << "no pair";
}

TEST(Text, HalvesOfPairsAreCharactersOfTheirOwn) {
  const std::string high = "\xed\xa0\x80", low = "\xed\xbf\xbf";
  EXPECT_EQ(toUtf8(std::wstring{wchar_t(0xD800)}), high);
  EXPECT_EQ(toUtf8(std::wstring{wchar_t(0xD800), wchar_t(0xD800), L'x'}), high + high + "x");
  EXPECT_EQ(toUtf8(std::wstring{wchar_t(0xDFFF), wchar_t(0xD800)}), low + high);
}

TEST(Text, EveryPairIsTheCharacterThatItStandsFor) {
  for (wchar_t c = 0x10000; c <= 0x10FFFF; ++c) {
    const std::wstring pair = {wchar_t(0xD800 + ((c - 0x10000) >> 10)),
                               wchar_t(0xDC00 + (c & 0x3FF))};
    ASSERT_EQ(toUtf8(pair), toUtf8(std::wstring{c})) << std::hex << int(c);
  }
}

TEST(Text, ValuesThatAreNoCharactersAreReplaced) {
  for (const wchar_t value :
       {wchar_t(0x110000), wchar_t(0x200041), wchar_t(0x7FFFFFFF), wchar_t(-1)})
    EXPECT_EQ(toUtf8(std::wstring{value, L'x'}), "\xef\xbf\xbdx");
}

// After the table of RFC 3629, section 4.
bool isOneCharacter(const std::string& bytes) {
  const auto in = [&](size_t at, int from, int to) {
    const int byte = static_cast<unsigned char>(bytes[at]);
    return byte >= from && byte <= to;
  };
  const auto tail = [&](size_t from) {
    bool all = true;
    for (size_t at = from; at < bytes.size(); ++at)
      all = all && in(at, 0x80, 0xBF);
    return all;
  };
  switch (bytes.size()) {
  case 1:
    return in(0, 0, 0x7F);
  case 2:
    return in(0, 0xC2, 0xDF) && tail(1);
  case 3:
    return tail(2) && ((in(0, 0xE0, 0xE0) && in(1, 0xA0, 0xBF)) || (in(0, 0xE1, 0xEC) && tail(1)) ||
                       (in(0, 0xED, 0xED) && in(1, 0x80, 0x9F)) || (in(0, 0xEE, 0xEF) && tail(1)));
  default:
    return tail(2) && ((in(0, 0xF0, 0xF0) && in(1, 0x90, 0xBF)) || (in(0, 0xF1, 0xF3) && tail(1)) ||
                       (in(0, 0xF4, 0xF4) && in(1, 0x80, 0x8F)));
  }
}

TEST(Text, OnlyUtf8IsReadAsOneCharacterAndAllBytesSurvive) {
  const std::string ends[] = {"",         "\x7f",     "\x80",     "\xbf",    "\xc0",
                              "\x80\x80", "\xbf\xbf", "\x80\x7f", "\xc0\x80"};
  for (int first = 0; first < 256; ++first)
    for (int second = 0; second < 256; ++second)
      for (const std::string& end : ends) {
        const std::string bytes = std::string{char(first), char(second)} + end;
        ASSERT_EQ(toWide(bytes).size() == 1, isOneCharacter(bytes)) << first << " " << second;
        ASSERT_EQ(toUtf8(toWide(bytes)), bytes);
      }
}

TEST(Text, BytesThatAreNoUtf8Survive) {
  // Stray followers, overlong forms, surrogates, cut ends and values beyond the last character.
  for (const std::string bytes : {"\x80", "a\xff", "\xc0\xaf", "\xe0\x80\x80", "\xed\xa0\x80",
                                  "\xf4\x90\x80\x80", "\xe2\x82", "\xf5xyz", "\xc3("})
    EXPECT_EQ(toUtf8(toWide(bytes)), bytes);
}

TEST(Files, KnowKinds) {
  const support::TempDirectory directory;
  support::writeBytes(directory.file("plain"), "x");

  EXPECT_TRUE(fileExists(directory.file("plain")));
  EXPECT_TRUE(fileExists(directory.path()));
  EXPECT_FALSE(fileExists(directory.file("none")));
  EXPECT_TRUE(isRegularFile(directory.file("plain")));
  EXPECT_FALSE(isRegularFile(directory.path()));
  EXPECT_TRUE(isDirectory(directory.path()));
  EXPECT_FALSE(isDirectory(directory.file("plain")));
}

TEST(Files, TellWhatIsLeft) {
  const support::TempDirectory directory;
  const std::string name = directory.file("ten");
  support::writeBytes(name, "0123456789");
  const int fd = open(name.c_str(), O_RDONLY);
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);

  EXPECT_EQ(bytesLeft(fd), 10);
  lseek(fd, 7, SEEK_SET);
  EXPECT_EQ(bytesLeft(fd), 3);
  for (const off_t behind : {10, 11, 70}) {
    lseek(fd, behind, SEEK_SET);
    EXPECT_EQ(bytesLeft(fd), 0);
  }
  EXPECT_EQ(bytesLeft(ends[0]), -1);
  EXPECT_EQ(bytesLeft(-1), -1);

  close(fd);
  close(ends[0]);
  close(ends[1]);
}

TEST(Files, SplitNames) {
  EXPECT_EQ(directoryOf("a/b/c.txt"), "a/b");
  EXPECT_EQ(directoryOf("/c.txt"), "/");
  EXPECT_EQ(directoryOf("c.txt"), "");
  EXPECT_EQ(fileNameOf("a/b/c.txt"), "c.txt");
  EXPECT_EQ(fileNameOf("c.txt"), "c.txt");
  EXPECT_EQ(withoutExtension(L"a.b/c.txt"), L"a.b/c");
  EXPECT_EQ(withoutExtension(L"a.b/c"), L"a.b/c");
  EXPECT_EQ(withoutExtension(L"a/.hidden"), L"a/.hidden");
  EXPECT_EQ(withoutExtension(L"c.tar.gz"), L"c.tar");
}

TEST(Files, DevicesHaveNoBytesLeftToTell) {
  const int device = open("/dev/zero", O_RDONLY);
  EXPECT_EQ(bytesLeft(device), -1);
  close(device);
}

TEST(Files, SharedOnesAreClosedInStartedPrograms) {
  const support::TempDirectory directory;
  for (const char* mode : {"w", "a", "r+b", "r"}) {
    FILE* const file = openShared(directory.file("shared"), mode);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(fcntl(fileno(file), F_GETFD), FD_CLOEXEC) << mode;
    fclose(file);
  }
}

TEST(Files, SharedOpenFailsWithErrno) {
  errno = 0;
  EXPECT_EQ(openShared("/nowhere/at/all", "w"), nullptr);
  EXPECT_EQ(errno, ENOENT);
}

std::string shown;

TEST(Box, IsStandardErrorUntilReplaced) {
  const support::Captured standard = support::capture([] { showErrorBox("Error", "text"); });
  EXPECT_EQ(standard.err, "Error: text\n");
  EXPECT_EQ(standard.out, "");

  const ErrorBox own = [](const char* title, const char* text) {
    shown = std::string(title) + "|" + text;
  };
  const ErrorBox former = setErrorBox(own);
  showErrorBox("Error", "other");
  EXPECT_EQ(shown, "Error|other");
  EXPECT_EQ(setErrorBox(nullptr), own);
  EXPECT_EQ(setErrorBox(former), former) << "null brought the standard box back";
}

} // namespace
