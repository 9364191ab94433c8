// The services of the system under one name.
#include <cerrno>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <thread>
#include <utime.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <zarel/zarelmem.h>
#include <zarel/zarelsys.h>

#include "support/FailingAllocation.h"
#include "support/FailingCall.h"
#include "support/Files.h"
#include "system/OwnSystemCalls.h"
#include "system/descriptor.h"
#include "system/text.h"

using Zarel::toUtf8;
using Zarel::toWide;

namespace {

constexpr __int64 fiveGiB = 5LL << 30;

class Paths : public testing::Test {
protected:
  std::wstring file(const std::string& name) const { return toWide(directory.file(name)); }
  // A name beyond ASCII, which is UTF-8 on disk.
  const std::string accented = "mod\xc3\xa8le";

  support::TempDirectory directory;
};

using Descriptors = Paths;
using TemporaryNames = Paths;

// The text of a new block, which is released.
template <class Char>
std::basic_string<Char> taken(Char* text) {
  EXPECT_NE(text, nullptr);
  std::basic_string<Char> copy = text ? text : std::basic_string<Char>().c_str();
  zarelmem_free(text, __FILE__, __LINE__);
  return copy;
}

TEST_F(Paths, ExistIfAnythingStandsThere) {
  support::writeBytes(directory.file(accented), "x");

  EXPECT_EQ(zarel_file_exist(file(accented).c_str()), 1);
  EXPECT_EQ(zarel_file_exist(toWide(directory.path()).c_str()), 1) << "a directory too";
  EXPECT_EQ(zarel_file_exist(file("none").c_str()), 0);
  EXPECT_EQ(zarel_file_exist(L""), 0);
  EXPECT_EQ(zarel_file_exist(nullptr), 0);
}

TEST_F(Paths, TellTheTimeOfTheLastChange) {
  support::writeBytes(directory.file("old"), "x");
  const utimbuf times = {1000000000, 1234567890};
  ASSERT_EQ(utime(directory.file("old").c_str(), &times), 0);

  EXPECT_EQ(zarel_file_mod_time(file("old").c_str()), 1234567890);
  EXPECT_EQ(zarel_file_mod_time(file("none").c_str()), 0);
  EXPECT_EQ(zarel_file_mod_time(nullptr), 0);
}

TEST_F(Paths, AccessTestsForExistenceAndRights) {
  support::writeBytes(directory.file("plain"), "x");

  for (const int mode : {0, 2, 4, 6})
    EXPECT_EQ(zarel_access(file("plain").c_str(), mode), 0) << mode;
  errno = 0;
  EXPECT_EQ(zarel_access(file("none").c_str(), 0), -1);
  EXPECT_EQ(errno, ENOENT);
}

// Whoever runs the tests may have all rights.
TEST_F(Paths, AccessAsksForTheModeGiven) {
  static int asked;
  const OwnSystemCalls own;
  Zarel::systemCalls().access = [](const char*, int mode) {
    asked = mode;
    return errno = EACCES, -1;
  };
  for (const int mode : {0, 2, 4, 6}) {
    EXPECT_EQ(zarel_access(file("plain").c_str(), mode), -1);
    EXPECT_EQ(asked, mode);
    EXPECT_EQ(errno, EACCES);
  }
}

TEST_F(Paths, RenameTakesThePlaceOfAFile) {
  support::writeBytes(directory.file("new"), "new");
  support::writeBytes(directory.file(accented), "old");

  EXPECT_EQ(zarel_rename(file("new").c_str(), file(accented).c_str()), 0);
  EXPECT_EQ(support::bytesOf(directory.file(accented)), "new");
  EXPECT_EQ(zarel_file_exist(file("new").c_str()), 0);
  errno = 0;
  EXPECT_EQ(zarel_rename(file("new").c_str(), file("other").c_str()), -1);
  EXPECT_EQ(errno, ENOENT);
}

TEST_F(Paths, UnlinkRemoves) {
  support::writeBytes(directory.file(accented), "x");

  EXPECT_EQ(zarel_unlink(file(accented).c_str()), 0);
  EXPECT_EQ(zarel_unlink(file(accented).c_str()), -1);
  EXPECT_EQ(errno, ENOENT);
}

TEST_F(Paths, NullPathsAreRefused) {
  const std::wstring name = file("any");
  for (const auto refused : {zarel_access(nullptr, 0), zarel_rename(nullptr, name.c_str()),
                             zarel_rename(name.c_str(), nullptr), zarel_unlink(nullptr)})
    EXPECT_EQ(refused, -1);
  EXPECT_EQ(errno, EINVAL);
}

TEST_F(Paths, PathsWithoutMemoryAreRefused) {
  support::writeBytes(directory.file("plain"), "x");
  const std::wstring name = file("plain");

  const long failures = support::forEachFailingAllocation([&] {
    errno = 0;
    const int result = zarel_access(name.c_str(), 0);
    EXPECT_EQ(errno, result == 0 ? 0 : ENOMEM);
  });

  EXPECT_GT(failures, 0);
}

TEST_F(Paths, StreamsHaveADescriptor) {
  EXPECT_EQ(zarel_fileno(stdout), STDOUT_FILENO);
  errno = 0;
  EXPECT_EQ(zarel_fileno(nullptr), -1);
  EXPECT_EQ(errno, EBADF);
}

TEST_F(Descriptors, AreTruncatedBothWays) {
  const std::string name = directory.file("data");
  support::writeBytes(name, "0123456789");
  Zarel::Descriptor fd = Zarel::openDescriptor(name, O_RDWR);

  EXPECT_EQ(zarel_ftruncate(fd.get(), 4), 0);
  EXPECT_EQ(support::bytesOf(name), "0123");
  EXPECT_EQ(lseek(fd.get(), 0, SEEK_CUR), 4) << "the position is the new end";
  EXPECT_EQ(zarel_ftruncate(fd.get(), 6), 0);
  EXPECT_EQ(support::bytesOf(name), std::string("0123\0\0", 6));
  EXPECT_EQ(lseek(fd.get(), 0, SEEK_CUR), 6);
}

TEST_F(Descriptors, AreTruncatedBeyondFourGiB) {
  const std::string name = directory.file("large");
  Zarel::Descriptor fd = Zarel::openDescriptor(name, O_RDWR | O_CREAT);

  ASSERT_EQ(zarel_ftruncate(fd.get(), fiveGiB + 1), 0);

  EXPECT_EQ(lseek(fd.get(), 0, SEEK_END), fiveGiB + 1);
}

TEST_F(Descriptors, RefuseBadSizesAndBadDescriptors) {
  const std::string name = directory.file("data");
  support::writeBytes(name, "0123");
  EXPECT_EQ(zarel_ftruncate(-1, 0), -1);
  EXPECT_EQ(errno, EBADF);
  Zarel::Descriptor reader = Zarel::openDescriptor(name, O_RDONLY);
  EXPECT_EQ(zarel_ftruncate(reader.get(), 2), -1);
  EXPECT_EQ(zarel_ftruncate(reader.get(), -1), -1);
  EXPECT_EQ(errno, EINVAL);
  EXPECT_EQ(support::bytesOf(name), "0123");
}

TEST_F(Descriptors, TruncationReportsEachFailingCallAndRepeatsInterruptedOnes) {
  const std::string name = directory.file("data");
  support::writeBytes(name, "0123");
  Zarel::Descriptor fd = Zarel::openDescriptor(name, O_RDWR);
  {
    const support::FailingCall failing(1, "lseek", EIO);
    EXPECT_EQ(zarel_ftruncate(fd.get(), 2), -1);
  }
  {
    const support::FailingCall failing(1, "ftruncate", EFBIG);
    EXPECT_EQ(zarel_ftruncate(fd.get(), 2), -1);
    EXPECT_EQ(errno, EFBIG);
  }
  EXPECT_EQ(support::bytesOf(name), "0123");
  const support::FailingCall interrupted(1, "ftruncate", EINTR);
  EXPECT_EQ(zarel_ftruncate(fd.get(), 2), 0);
  EXPECT_EQ(support::bytesOf(name), "01");
}

TEST(EnvironmentText, IsNarrowOrWide) {
  const support::Environment set("ZAREL_TEST_TEXT", "mod\xc3\xa8le");
  const support::Environment unset("ZAREL_TEST_UNSET", nullptr);

  EXPECT_STREQ(zarel_getenv("ZAREL_TEST_TEXT"), "mod\xc3\xa8le");
  EXPECT_STREQ(zarel_wgetenv(L"ZAREL_TEST_TEXT"), L"mod\u00e8le");
  EXPECT_EQ(zarel_getenv("ZAREL_TEST_UNSET"), nullptr);
  EXPECT_EQ(zarel_wgetenv(L"ZAREL_TEST_UNSET"), nullptr);
  EXPECT_EQ(zarel_getenv(nullptr), nullptr);
  EXPECT_EQ(zarel_wgetenv(nullptr), nullptr);
}

TEST(EnvironmentText, StaysWhileOthersAreAskedFor) {
  const support::Environment one("ZAREL_TEST_ONE", "1");
  const support::Environment two("ZAREL_TEST_TWO", "2");

  const wchar_t* const first = zarel_wgetenv(L"ZAREL_TEST_ONE");
  const wchar_t* const second = zarel_wgetenv(L"ZAREL_TEST_TWO");

  EXPECT_STREQ(first, L"1");
  EXPECT_STREQ(second, L"2");
}

TEST(EnvironmentText, StaysWhileItsValueDoes) {
  const support::Environment set("ZAREL_TEST_LONG", "a value that needs a block");
  const wchar_t* const text = zarel_wgetenv(L"ZAREL_TEST_LONG");

  EXPECT_EQ(zarel_wgetenv(L"ZAREL_TEST_LONG"), text) << "the same text for the same question";
  EXPECT_STREQ(text, L"a value that needs a block");

  const support::Environment changed("ZAREL_TEST_LONG", "another");
  EXPECT_STREQ(zarel_wgetenv(L"ZAREL_TEST_LONG"), L"another");
}

TEST(EnvironmentText, BelongsToTheThread) {
  const support::Environment set("ZAREL_TEST_THREAD", "a value that needs a block");
  const wchar_t* const here = zarel_wgetenv(L"ZAREL_TEST_THREAD");
  const wchar_t* there = nullptr;
  std::thread([&] { there = zarel_wgetenv(L"ZAREL_TEST_THREAD"); }).join();

  EXPECT_NE(there, here);
  EXPECT_STREQ(here, L"a value that needs a block");
}

TEST(EnvironmentText, WithoutMemoryIsNull) {
  const support::Environment set("ZAREL_TEST_MEMORY_OF_A_LONG_NAME", "a value that needs a block");
  EXPECT_GT(support::forEachFailingAllocation([] {
              const wchar_t* const value = zarel_wgetenv(L"ZAREL_TEST_MEMORY_OF_A_LONG_NAME");
              EXPECT_TRUE(!value || value == std::wstring_view(L"a value that needs a block"));
            }),
            0);
}

TEST(Process, HasANumberAndAShell) {
  EXPECT_EQ(zarel_getpid(), getpid());
  EXPECT_EQ(zarel_system(0, "exit 0"), 0);
  EXPECT_EQ(WEXITSTATUS(zarel_system(99, "exit 3")), 3);
}

TEST(TextAndNumbers, CompareWhateverTheCase) {
  EXPECT_EQ(zarel_strncasecmp("KRIGING", "kriging", 7), 0);
  EXPECT_EQ(zarel_strncasecmp("abX", "ABy", 2), 0);
  EXPECT_LT(zarel_strncasecmp("abX", "ABy", 3), 0);
  EXPECT_GT(zarel_strncasecmp("b", "A", 1), 0);
  EXPECT_EQ(zarel_strncasecmp("a", "b", 0), 0);
}

TEST(TextAndNumbers, AnglesLieInFourQuadrants) {
  const double pi = std::acos(-1.0);
  EXPECT_DOUBLE_EQ(zarel_atan2(1, 1), pi / 4);
  EXPECT_DOUBLE_EQ(zarel_atan2(1, -1), 3 * pi / 4);
  EXPECT_DOUBLE_EQ(zarel_atan2(-1, -1), -3 * pi / 4);
  EXPECT_DOUBLE_EQ(zarel_atan2(0, -1), pi);
  EXPECT_EQ(zarel_atan2(0, 0), 0);
}

TEST(NewTexts, ConvertBothWays) {
  const std::string narrow = "mod\xc3\xa8le \xf0\x9f\x98\x80";

  const std::wstring wide = taken(zarel_char2Tchar(narrow.c_str()));
  EXPECT_EQ(wide, L"mod\u00e8le \U0001F600");
  EXPECT_EQ(taken(zarel_Tchar2char(wide.c_str())), narrow);
  EXPECT_EQ(taken(zarel_Tchar2char(L"")), "");
  EXPECT_EQ(zarel_char2Tchar(nullptr), nullptr);
  EXPECT_EQ(zarel_Tchar2char(nullptr), nullptr);
}

TEST(NewTexts, DoNotDependOnTheLocale) {
  const std::string former = std::setlocale(LC_ALL, nullptr);
  for (const char* locale : {"C", "C.UTF-8"}) {
    ASSERT_NE(std::setlocale(LC_ALL, locale), nullptr) << locale;
    EXPECT_EQ(taken(zarel_char2Tchar("mod\xc3\xa8le")), L"mod\u00e8le");
    EXPECT_EQ(taken(zarel_Tchar2char(L"mod\u00e8le")), "mod\xc3\xa8le");
  }
  std::setlocale(LC_ALL, former.c_str());
}

TEST(NewTexts, BytesThatAreNoUtf8ComeBack) {
  const std::wstring wide = taken(zarel_char2Tchar("a\xff"));
  EXPECT_EQ(taken(zarel_Tchar2char(wide.c_str())), "a\xff");
}

TEST(NewTexts, AreDuplicates) {
  const char* const text = "text";
  char* const copy = zarel_strdup(text, "label");
  EXPECT_NE(copy, text);
  EXPECT_EQ(taken(copy), "text");
  EXPECT_EQ(zarel_strdup(nullptr, "label"), nullptr);
}

TEST(NewTexts, AreNullWithoutMemory) {
  EXPECT_GE(support::forEachFailingAllocation([] {
              zarelmem_free(zarel_char2Tchar("a text that needs a block"), __FILE__, __LINE__);
            }),
            2);
  EXPECT_GE(support::forEachFailingAllocation([] {
              zarelmem_free(zarel_Tchar2char(L"a text that needs a block"), __FILE__, __LINE__);
            }),
            2);
  EXPECT_EQ(support::forEachFailingAllocation(
                [] { zarelmem_free(zarel_strdup("text", "label"), __FILE__, __LINE__); }),
            1);
}

TEST_F(TemporaryNames, StandInTmpdirWhateverDirectoryIsGiven) {
  const support::Environment tmpdir("TMPDIR", directory.path().c_str());

  const std::string name = toUtf8(taken(zarel_tempnam(L"/", L"ZRLVS")));

  EXPECT_EQ(name.rfind(directory.file("ZRLVS"), 0), 0u) << name;
  EXPECT_EQ(zarel_file_exist(toWide(name).c_str()), 0) << "nothing is created";
}

TEST_F(TemporaryNames, StandInTheDirectoryWhereTmpdirIsNoneToWriteTo) {
  for (const char* tmpdir : {static_cast<const char*>(nullptr), "", "/nowhere/at/all"}) {
    const support::Environment variable("TMPDIR", tmpdir);
    const std::string name =
        toUtf8(taken(zarel_tempnam(toWide(directory.path()).c_str(), nullptr)));
    EXPECT_EQ(name.rfind(directory.path() + "/", 0), 0u) << name;
  }
}

TEST_F(TemporaryNames, StandInTmpAtLast) {
  const support::Environment unset("TMPDIR", nullptr);
  EXPECT_THAT(toUtf8(taken(zarel_tempnam(nullptr, L"p"))), testing::StartsWith("/tmp/p"));
  EXPECT_THAT(toUtf8(taken(zarel_tempnam(L"/nowhere", L"p"))), testing::StartsWith("/tmp/p"));
}

TEST_F(TemporaryNames, AreNoTwoTheSame) {
  EXPECT_NE(taken(zarel_tempnam(nullptr, L"p")), taken(zarel_tempnam(nullptr, L"p")));
}

TEST_F(TemporaryNames, NeedADirectoryAndMemory) {
  {
    const OwnSystemCalls own;
    Zarel::systemCalls().access = [](const char*, int) { return errno = EACCES, -1; };
    errno = 0;
    EXPECT_EQ(zarel_tempnam(nullptr, L"p"), nullptr);
    EXPECT_NE(errno, 0);
  }
  const std::wstring path = toWide(directory.path());
  EXPECT_GE(support::forEachFailingAllocation(
                [&] { zarelmem_free(zarel_tempnam(path.c_str(), L"prefix"), __FILE__, __LINE__); }),
            2);
}

} // namespace
