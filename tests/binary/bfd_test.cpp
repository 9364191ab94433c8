// The templates: byte order as an argument, 64-bit counts.
#include <complex>

#include <gmock/gmock.h>
#include <zarel/C_ZarelException.h>
#include <zarel/C_bfd.h>

#include "binary/chunks.h"
#include "binary/fixture.h"
#include "support/Scalars.h"

namespace binary_test {

template <class T>
class Bfd : public BinaryFile {
protected:
  // Three values whose bytes all differ.
  static std::vector<T> values() {
    return {Sample<T>::make(1), Sample<T>::make(2), Sample<T>::make(3)};
  }

private:
  template <class S>
  struct Sample {
    static S make(int k) {
      if constexpr (std::is_floating_point_v<S>) return static_cast<S>(k * 37.5 + 0x1234);
      return static_cast<S>(k * 37 + 0x1234);
    }
  };
  template <class R>
  struct Sample<std::complex<R>> {
    static std::complex<R> make(int k) { return {R(k * 1.37), R(-k * 2.61)}; }
  };
};

// The bytes of values in the host's order, and reversed word by word.
template <class T>
std::string imageOf(const std::vector<T>& values, bool reversed) {
  std::string image(reinterpret_cast<const char*>(values.data()), values.size() * sizeof(T));
  constexpr size_t width = sizeof(support::Real<T>);
  for (size_t at = 0; reversed && at < image.size(); at += width)
    std::reverse(image.begin() + at, image.begin() + at + width);
  return image;
}

using Scalars = testing::Types<char, short, int, float, double, __int64, std::complex<float>,
                               std::complex<double>>;
TYPED_TEST_SUITE(Bfd, Scalars, );

TYPED_TEST(Bfd, DescriptorFormsFollowTheArgument) {
  const auto values = this->values();
  for (const bool big : {false, true}) {
    support::truncateTo(this->name, 0);
    this->rewind();
    EXPECT_EQ(T_BF_write(this->fd(), values.data(), 3, big), 0);
    EXPECT_EQ(this->bytes(), imageOf(values, big));
    if (big && sizeof(TypeParam) == 1) continue;
    std::vector<TypeParam> read(3);
    this->rewind();
    EXPECT_EQ(T_BF_read(this->fd(), read.data(), 3, big), 0);
    EXPECT_EQ(read, values);
  }
}

TYPED_TEST(Bfd, StreamFormsFollowTheArgument) {
  const auto values = this->values();
  for (const bool big : {false, true}) {
    support::truncateTo(this->name, 0);
    this->rewind();
    EXPECT_EQ(T_BF_write(this->file, values.data(), 3, big), 0);
    EXPECT_EQ(this->bytes(), imageOf(values, big));
    std::vector<TypeParam> read(3);
    this->rewind();
    EXPECT_EQ(T_BF_read(this->file, read.data(), 3, big), 0);
    EXPECT_EQ(read, values);
  }
}

// On an exception stream all writes are reversed, but reading inverts its decision: with
// `bigEndian` true what was written reversed is read as it stands.
TYPED_TEST(Bfd, ExceptionStreamsReadAndWriteByTwoRules) {
  const auto values = this->values();
  AddFileException(this->file);
  for (const bool big : {false, true}) {
    support::truncateTo(this->name, 0);
    this->rewind();
    EXPECT_EQ(T_BF_write(this->file, values.data(), 3, big), 0);
    EXPECT_EQ(this->bytes(), imageOf(values, true));
    std::vector<TypeParam> read(3);
    this->rewind();
    EXPECT_EQ(T_BF_read(this->file, read.data(), 3, big), 0);
    EXPECT_EQ(imageOf(read, false), imageOf(values, big));
  }
}

TYPED_TEST(Bfd, DescriptorsAreNoExceptions) {
  const auto values = this->values();
  AddFileException(this->file);

  EXPECT_EQ(T_BF_write(this->fd(), values.data(), 3, false), 0);

  EXPECT_EQ(this->bytes(), imageOf(values, false));
}

TYPED_TEST(Bfd, BadArgumentsLeaveATrace) {
  TypeParam value{};
  const TypeParam* none = nullptr;
  FILE* noFile = nullptr;
  EXPECT_EQ(T_BF_read(noFile, &value, 1, false), -1);
  EXPECT_EQ(T_BF_read(this->file, none, 1, false), -1);
  EXPECT_EQ(T_BF_read(this->file, &value, 0, false), -1);
  EXPECT_EQ(T_BF_read(this->fd(), none, 1, false), -1);
  EXPECT_EQ(T_BF_read(this->fd(), &value, 0, false), -1);
  EXPECT_EQ(T_BF_write(noFile, &value, 1, false), -1);
  EXPECT_EQ(T_BF_write(this->file, none, 1, false), -1);
  EXPECT_EQ(T_BF_write(this->file, &value, 0, false), -1);
  EXPECT_EQ(T_BF_write(this->fd(), none, 1, false), -1);
  EXPECT_EQ(T_BF_write(this->fd(), &value, -3, false), -1);
  EXPECT_EQ(traces, 10);
}

TYPED_TEST(Bfd, ShortReadsFail) {
  const auto values = this->values();
  T_BF_write(this->fd(), values.data(), 3, false);
  std::vector<TypeParam> read(4);

  this->rewind();
  EXPECT_EQ(T_BF_read(this->fd(), read.data(), 4, false), -1);
  this->rewind();
  EXPECT_EQ(T_BF_read(this->file, read.data(), 4, false), -1);
  EXPECT_EQ(traces, 0);
}

TYPED_TEST(Bfd, ReversedWordsAreStaged) {
  const std::vector<TypeParam> values(300, TypeParam(1));
  this->noteWrites();

  EXPECT_EQ(T_BF_write(this->file, values.data(), 300, true), 0);

  const size_t words = 300 * sizeof(TypeParam) / sizeof(support::Real<TypeParam>);
  const size_t width = sizeof(support::Real<TypeParam>);
  EXPECT_EQ(writes.front(), 256 * width);
  EXPECT_EQ(writes.back(), (words - 256 * (writes.size() - 1)) * width);
  EXPECT_EQ(this->bytes(), imageOf(values, true));
}

TYPED_TEST(Bfd, LongCountsOfAFewElements) {
  const auto values = this->values();
  std::vector<TypeParam> read(3);

  EXPECT_EQ(T_BF_write(this->file, values.data(), 3LL, false), 0);
  EXPECT_EQ(T_BF_write(this->fd(), values.data(), 3LL, false), 0);
  this->rewind();
  EXPECT_EQ(T_BF_read(this->file, read.data(), 3LL, false), 0);
  EXPECT_EQ(read, values);
  read.assign(3, TypeParam());
  EXPECT_EQ(T_BF_read(this->fd(), read.data(), 3LL, false), 0);
  EXPECT_EQ(read, values);
}

template <class Call>
int codeOf(Call call) {
  try {
    call();
  } catch (const C_ZarelException& e) {
    EXPECT_STREQ(e.getErrorLocation().GetFunction(), "Throwing");
    EXPECT_STREQ(e.getErrorLocation().GetFile(), "src/binary/C_bfd.cpp");
    EXPECT_EQ(e.getKey(), "DefaultMessageTool");
    EXPECT_EQ(e.getReasonCode(), 0);
    return e.getExceptionCode();
  }
  return 0;
}

TYPED_TEST(Bfd, LongCountOfZeroTracesOnReadingAndThrowsOnWriting) {
  TypeParam value{};

  EXPECT_EQ(T_BF_read(this->file, &value, 0LL, false), 0);
  EXPECT_EQ(T_BF_read(this->fd(), &value, 0LL, false), 0);
  EXPECT_EQ(traces, 2);
  EXPECT_EQ(codeOf([&] { T_BF_write(this->file, &value, 0LL, false); }), 22);
  EXPECT_EQ(codeOf([&] { T_BF_write(this->fd(), &value, -1LL, false); }), 22);
  EXPECT_EQ(traces, 4);
}

TYPED_TEST(Bfd, LongReadsDoNotLookAtTheResult) {
  TypeParam value{};
  EXPECT_EQ(T_BF_read(this->file, &value, 1LL, false), 0) << "the file is empty";
}

class BfdBytes : public BinaryFile {};

TEST_F(BfdBytes, ReadOnADescriptorRefusesToReverseAfterTheRead) {
  hold("ab");
  char read[3] = {};

  EXPECT_EQ(codeOf([&] { T_BF_read(fd(), read, 2, true); }), 2871);

  EXPECT_STREQ(read, "ab");
}

TEST_F(BfdBytes, ReadOnAStreamJustReturns) {
  hold("ab");
  char read[3] = {};

  EXPECT_EQ(T_BF_read(file, read, 2, true), 0);

  EXPECT_STREQ(read, "ab");
}

TEST_F(BfdBytes, WritesStayAsTheyAre) {
  EXPECT_EQ(T_BF_write(file, "ab", 2, true), 0);
  EXPECT_EQ(T_BF_write(fd(), "cd", 2, true), 0);
  EXPECT_EQ(bytes(), "abcd");
}

TEST_F(BfdBytes, ComplexIsTheRealPartFirst) {
  const std::complex<double> value(1.0, -2.0);

  T_BF_write(file, &value, 1, true);

  EXPECT_EQ(bytes(), hex("3ff0000000000000 c000000000000000"));
}

TEST_F(BfdBytes, ShortIsTwoBytes) {
  const short value = 0x0102;

  T_BF_write(file, &value, 1, false);
  T_BF_write(file, &value, 1, true);

  EXPECT_EQ(bytes(), hex("0201 0102"));
}

TEST_F(BfdBytes, FullDiskThrowsForLongCountsAndFailsForOthers) {
  FILE* full = std::fopen("/dev/full", "wb");
  if (!full) GTEST_SKIP() << "no /dev/full";
  const int words[300] = {};

  EXPECT_EQ(T_BF_write(full, words, 300, false), -1);
  EXPECT_EQ(T_BF_write(full, words, 300, true), -1);
  EXPECT_EQ(codeOf([&] { T_BF_write(full, words, 300LL, false); }), 22);

  std::fclose(full);
}

TEST(Chunks, AreTheLimitAndTheRest) {
  using Zarel::F_Chunks;
  EXPECT_EQ(F_Chunks(0, 10).number, 1);
  EXPECT_EQ(F_Chunks(0, 10).size(0), 0);
  EXPECT_EQ(F_Chunks(10, 10).number, 1);
  EXPECT_EQ(F_Chunks(10, 10).size(0), 10);
  EXPECT_EQ(F_Chunks(11, 10).number, 2);
  EXPECT_EQ(F_Chunks(11, 10).size(0), 10);
  EXPECT_EQ(F_Chunks(11, 10).size(1), 1);
  EXPECT_EQ(F_Chunks(30, 10).number, 3);
  EXPECT_EQ(F_Chunks(30, 10).size(2), 10);
  EXPECT_EQ(F_Chunks(0x7FFFFFFFLL).number, 1);
  EXPECT_EQ(F_Chunks(0x80000000LL).number, 2);
  EXPECT_EQ(F_Chunks(0x80000000LL).size(1), 1);
  EXPECT_EQ(F_Chunks(-5000000000LL).number, 1);
  EXPECT_LT(F_Chunks(-5000000000LL).size(0), 1);
}

// More bytes than an int can count, to a system that only notes where they come from.
const char* firstByte = nullptr;
__int64 noted = 0;

TEST_F(BfdBytes, CountsBeyondAnIntGoOutChunkByChunk) {
  const __int64 count = 0x7FFFFFFFLL + 5;
  Zarel::systemCalls().write = [](int, const void* from, size_t size) -> ssize_t {
    EXPECT_EQ(static_cast<const char*>(from) - firstByte, noted);
    noted += static_cast<__int64>(size);
    writes.push_back(size);
    return static_cast<ssize_t>(size);
  };
  // Nobody reads these bytes; only their addresses matter.
  std::vector<char> some(1);
  firstByte = some.data();
  noted = 0;

  EXPECT_EQ(T_BF_write(fd(), firstByte, count, false), 0);

  EXPECT_EQ(writes, (std::vector<size_t>{0x7FFFFFFF, 5}));
  EXPECT_EQ(noted, count);
}

} // namespace binary_test
