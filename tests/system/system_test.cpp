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
  lseek(fd, 70, SEEK_SET);
  EXPECT_EQ(bytesLeft(fd), 0);
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

TEST(Files, SharedOpenFailsWithErrno) {
  errno = 0;
  EXPECT_EQ(openShared("/nowhere/at/all", "w"), nullptr);
  EXPECT_EQ(errno, ENOENT);
}

TEST(Calls, EndOfFileEndsATransfer) {
  const support::TempDirectory directory;
  support::writeBytes(directory.file("data"), "abc");
  const int fd = systemCalls().open(directory.file("data").c_str(), O_RDONLY, 0);
  char buffer[8];

  EXPECT_EQ(readFully(fd, buffer, 8), 3u);
  EXPECT_EQ(writeFully(fd, buffer, 3), 0u) << "opened for reading";

  close(fd);
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
