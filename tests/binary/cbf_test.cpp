// Files by descriptor.
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <fcntl.h>
#include <sys/stat.h>

#include "binary/fixture.h"

namespace binary_test {

class Cbf : public BinaryFile {};

TEST_F(Cbf, OpenCreatesForTheOwnerAlone) {
  const mode_t former = umask(0);
  const std::wstring path(name.begin(), name.end());
  const int opened = CBF_open64((path + L"-\x00e9\x20ac").c_str(), O_RDWR | O_CREAT | O_EXCL);
  umask(former);

  ASSERT_GE(opened, 0);
  struct stat status;
  ASSERT_EQ(stat((name + "-\xc3\xa9\xe2\x82\xac").c_str(), &status), 0) << "UTF-8 on disk";
  EXPECT_EQ(status.st_mode & 07777, 0600u);
  EXPECT_EQ(CBF_close64(opened), 0);
  EXPECT_EQ(CBF_close64(opened), -1);
}

TEST_F(Cbf, FopenTakesWideNames) {
  const std::wstring path(name.begin(), name.end());
  FILE* other = CBF_fopen64((path + L"2").c_str(), L"wb");

  ASSERT_NE(other, nullptr);
  EXPECT_EQ(CBF_fclose64(other), 0);
  EXPECT_EQ(CBF_fopen64((path + L"/none").c_str(), L"rb"), nullptr);
  EXPECT_EQ(CBF_fopen64(nullptr, L"rb"), nullptr);
  EXPECT_EQ(CBF_open64(nullptr, O_RDONLY), -1);
  EXPECT_EQ(CBF_fclose64(nullptr), EOF);
}

TEST_F(Cbf, DescriptorsStayOutOfProgramsThatAreStarted) {
  const std::wstring path(name.begin(), name.end());
  FILE* stream = CBF_fopen64(path.c_str(), L"r+b");
  const int opened = CBF_open64(path.c_str(), O_RDONLY);

  ASSERT_NE(stream, nullptr);
  EXPECT_TRUE(fcntl(fileno(stream), F_GETFD) & FD_CLOEXEC);
  EXPECT_TRUE(fcntl(opened, F_GETFD) & FD_CLOEXEC);
  EXPECT_EQ(CBF_fclose64(stream), 0);
  EXPECT_EQ(CBF_close64(opened), 0);
}

TEST_F(Cbf, TransfersCountWholeElements) {
  char read[16] = {};

  EXPECT_EQ(CBF_write64("0123456789", 3, 3, fd()), 3u);
  EXPECT_EQ(CBF_lseek64(fd(), 0, SEEK_SET), 0);
  EXPECT_EQ(CBF_read64(read, 4, 4, fd()), 2u) << "nine bytes are two elements of four";
  EXPECT_STREQ(read, "012345678");
  EXPECT_EQ(CBF_read64(read, 0, 4, fd()), 0u);
  EXPECT_EQ(CBF_write64(read, 0, 4, fd()), 0u);
  EXPECT_EQ(CBF_read64(read, 4, 0, fd()), 0u);
  errno = 0;
  EXPECT_EQ(CBF_read64(read, SIZE_MAX / 2, 3, fd()), 0u);
  EXPECT_EQ(errno, EINVAL) << "more bytes than memory can hold";
  EXPECT_EQ(CBF_write64(read, 1, 1, -1), 0u);
}

TEST_F(Cbf, StreamFormsGoRoundTheBuffer) {
  EXPECT_EQ(CBF_fwrite64("abcdef", 2, 3, file), 3u);
  EXPECT_EQ(bytes(), "abcdef") << "on disk without a flush";

  char read[3] = {};
  EXPECT_EQ(CBF_fseek64(file, 2, SEEK_SET), 0);
  EXPECT_EQ(CBF_fread64(read, 1, 2, file), 2u);
  EXPECT_STREQ(read, "cd");
  EXPECT_EQ(CBF_ftell64(file), 4);
  EXPECT_EQ(CBF_fread64(read, 1, 2, nullptr), 0u);
  EXPECT_EQ(CBF_fwrite64(read, 1, 2, nullptr), 0u);
}

TEST_F(Cbf, PositionsHave64Bits) {
  const __int64 far = 5'000'000'000;

  EXPECT_EQ(CBF_lseek64(fd(), far, SEEK_SET), far);
  EXPECT_EQ(CBF_tell64(fd()), far);
  EXPECT_EQ(CBF_fseek64(file, 1, SEEK_CUR), 0);
  EXPECT_EQ(CBF_ftell64(file), far + 1);
  EXPECT_EQ(CBF_fseek64(file, -1, SEEK_SET), -1);
  EXPECT_EQ(CBF_fseek64(nullptr, 0, SEEK_SET), -1);
  EXPECT_EQ(CBF_ftell64(nullptr), -1);
  EXPECT_EQ(CBF_tell64(-1), -1);
}

// A system that takes and gives three bytes at a time and is interrupted every other time.
int turn = 0;
Zarel::SystemCalls generous;

template <class Move>
ssize_t grudging(size_t bytes, Move move) {
  if (++turn % 2) {
    errno = EINTR;
    return -1;
  }
  return move(std::min<size_t>(bytes, 3));
}

TEST_F(Cbf, AnInterruptedOpeningIsRepeated) {
  static int turns = 0;
  generous = Zarel::systemCalls();
  Zarel::systemCalls().open = [](const char* path, int flags, mode_t mode) {
    errno = EINTR;
    return ++turns < 3 ? -1 : generous.open(path, flags, mode);
  };
  const int opened = CBF_open64(L"/dev/null", O_RDONLY);
  Zarel::systemCalls() = generous;

  EXPECT_GE(opened, 0);
  EXPECT_EQ(turns, 3);
  CBF_close64(opened);
}

TEST_F(Cbf, PartialAndInterruptedTransfersGoOn) {
  generous = Zarel::systemCalls();
  Zarel::systemCalls().write = [](int d, const void* from, size_t bytes) {
    return grudging(bytes, [=](size_t n) { return generous.write(d, from, n); });
  };
  Zarel::systemCalls().read = [](int d, void* to, size_t bytes) {
    return grudging(bytes, [=](size_t n) { return generous.read(d, to, n); });
  };
  const double values[] = {1.25, -3.5, 1e300};
  double read[3] = {};

  EXPECT_EQ(BF_fwrite_double(file, values, 3), 0);
  rewind();
  EXPECT_EQ(BF_fread_double(file, read, 3), 0);

  for (int k = 0; k < 3; ++k)
    EXPECT_EQ(read[k], values[k]);
}

TEST_F(Cbf, ErrorInMidTransferTellsTheWholeElementsBefore) {
  generous = Zarel::systemCalls();
  turn = 0;
  Zarel::systemCalls().write = [](int d, const void* from, size_t bytes) -> ssize_t {
    if (++turn > 1) {
      errno = ENOSPC;
      return -1;
    }
    return generous.write(d, from, std::min<size_t>(bytes, 10));
  };

  EXPECT_EQ(CBF_write64("0123456789abcdef", 4, 4, fd()), 2u);
  EXPECT_EQ(errno, ENOSPC);
}

} // namespace binary_test
