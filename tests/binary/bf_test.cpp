// Numbers on a stream, byte by byte.
#include <cmath>
#include <cstring>
#include <limits>

#include "binary/fixture.h"
#include "support/FailingAllocation.h"

namespace binary_test {

class Bf : public BinaryFile {};

TEST_F(Bf, IntIsFourBytesLittleEndian) {
  const int one = 1, mixed[] = {0x01020304, -2};

  EXPECT_EQ(BF_fwrite_int(file, &one, 1), 0);
  EXPECT_EQ(BF_fwrite_int(file, mixed, 2), 0);

  EXPECT_EQ(bytes(), hex("01000000 04030201 feffffff"));
}

TEST_F(Bf, ExceptionIsBigEndianAsLongAsItIsOne) {
  const int one = 1;
  int read = 0;

  AddFileException(file);
  EXPECT_EQ(BF_fwrite_int(file, &one, 1), 0);
  EXPECT_EQ(bytes(), hex("00000001"));

  rewind();
  EXPECT_EQ(BF_fread_int(file, &read, 1), 0);
  EXPECT_EQ(read, 1);

  RemFileException(file);
  rewind();
  EXPECT_EQ(BF_fread_int(file, &read, 1), 0);
  EXPECT_EQ(read, 0x01000000);
}

// Every primitive: its bytes in both orders, and what comes back.
template <class T>
struct Primitive {
  int (*write)(FILE*, const T*, int);
  int (*read)(FILE*, T*, int);
  std::vector<T> values;
  std::string little;
  std::string big;
};

template <class T>
void check(FILE* file, const std::string& name, const Primitive<T>& p) {
  const int count = static_cast<int>(p.values.size());
  for (const bool exception : {false, true}) {
    support::truncateTo(name, 0);
    CBF_fseek64(file, 0, SEEK_SET);
    if (exception) AddFileException(file);
    const std::vector<T> before = p.values;
    EXPECT_EQ(p.write(file, p.values.data(), count), 0);
    EXPECT_EQ(p.values, before) << "the caller's data stay";
    EXPECT_EQ(support::bytesOf(name), exception ? p.big : p.little);
    CBF_fseek64(file, 0, SEEK_SET);
    std::vector<T> read(p.values.size());
    EXPECT_EQ(p.read(file, read.data(), count), 0);
    EXPECT_EQ(read, p.values);
    RemFileException(file);
  }
}

TEST_F(Bf, CharIsOneByteInAnyOrder) {
  check<char>(file, name,
              {BF_fwrite_char, BF_fread_char, {'a', '\0', '\xff'}, hex("6100ff"), hex("6100ff")});
}

TEST_F(Bf, TcharIsTwoBytes) {
  check<wchar_t>(file, name,
                 {BF_fwrite_tchar,
                  BF_fread_tchar,
                  {L'a', L'\x20ac', L'\xd83d'},
                  hex("6100 ac20 3dd8"),
                  hex("0061 20ac d83d")});
}

TEST_F(Bf, IntIsFourBytes) {
  check<int>(file, name,
             {BF_fwrite_int,
              BF_fread_int,
              {258, -1, std::numeric_limits<int>::min()},
              hex("02010000 ffffffff 00000080"),
              hex("00000102 ffffffff 80000000")});
}

TEST_F(Bf, LongIsFourBytesOnEveryHost) {
  check<long>(file, name,
              {BF_fwrite_long,
               BF_fread_long,
               {258, -1, -2147483647L - 1},
               hex("02010000 ffffffff 00000080"),
               hex("00000102 ffffffff 80000000")});
}

TEST_F(Bf, HyperIsEightBytes) {
  check<__int64>(file, name,
                 {BF_fwrite_hyper,
                  BF_fread_hyper,
                  {0x0102030405060708, -2},
                  hex("0807060504030201 feffffffffffffff"),
                  hex("0102030405060708 fffffffffffffffe")});
}

// 1.0f is 3f800000 and -2.0f is c0000000 in IEEE 754 single precision.
TEST_F(Bf, FloatIsFourBytes) {
  check<float>(file, name,
               {BF_fwrite_float,
                BF_fread_float,
                {1.0f, -2.0f},
                hex("0000803f 000000c0"),
                hex("3f800000 c0000000")});
}

// 1.0 is 3ff0000000000000 and -2.0 is c000000000000000 in IEEE 754 double precision.
TEST_F(Bf, DoubleIsEightBytes) {
  check<double>(file, name,
                {BF_fwrite_double,
                 BF_fread_double,
                 {1.0, -2.0},
                 hex("000000000000f03f 00000000000000c0"),
                 hex("3ff0000000000000 c000000000000000")});
}

TEST_F(Bf, LongBeyondFourBytesKeepsItsLowHalf) {
  const long wide = 0x1234567880000001L;
  long read = 0;

  BF_fwrite_long(file, &wide, 1);
  rewind();
  BF_fread_long(file, &read, 1);

  EXPECT_EQ(bytes(), hex("01000080"));
  EXPECT_EQ(read, -0x7fffffffL);
}

TEST_F(Bf, TcharBeyondSixteenBitsKeepsItsLowHalf) {
  const wchar_t wide = 0x1F600;
  wchar_t read = 0;

  BF_fwrite_tchar(file, &wide, 1);
  rewind();
  BF_fread_tchar(file, &read, 1);

  EXPECT_EQ(bytes(), hex("00f6"));
  EXPECT_EQ(read, wchar_t(0xF600));
}

TEST_F(Bf, ManyNarrowWordsSpreadInPlace) {
  std::vector<long> longs(1000), read(1000);
  for (int k = 0; k < 1000; ++k)
    longs[k] = 7 * k - 3000;

  EXPECT_EQ(BF_fwrite_long(file, longs.data(), 1000), 0);
  rewind();
  EXPECT_EQ(BF_fread_long(file, read.data(), 1000), 0);

  EXPECT_EQ(bytes().size(), 4000u);
  EXPECT_EQ(read, longs);
}

TEST_F(Bf, ReversedWordsGoOutThroughAStageOf256) {
  std::vector<double> values(300);
  for (int k = 0; k < 300; ++k)
    values[k] = std::sqrt(k);
  const std::vector<double> before = values;
  noteWrites();

  AddFileException(file);
  EXPECT_EQ(BF_fwrite_double(file, values.data(), 300), 0);

  EXPECT_EQ(writes, (std::vector<size_t>{256 * 8, 44 * 8}));
  EXPECT_EQ(values, before);
  std::vector<double> read(300);
  rewind();
  EXPECT_EQ(BF_fread_double(file, read.data(), 300), 0);
  EXPECT_EQ(read, values);
}

TEST_F(Bf, BytesOfAnExceptionTakeTheSameStagedLoop) {
  const std::string text(300, 'x');
  noteWrites();

  AddFileException(file);
  EXPECT_EQ(BF_fwrite_char(file, text.data(), 300), 0);

  EXPECT_EQ(writes, (std::vector<size_t>{256, 44}));
  EXPECT_EQ(bytes(), text);
}

TEST_F(Bf, WordsInTheHostsOrderGoOutInOneCall) {
  const std::vector<double> values(100000, 1.5);
  noteWrites();

  EXPECT_EQ(BF_fwrite_double(file, values.data(), 100000), 0);

  EXPECT_EQ(writes, (std::vector<size_t>{800000}));
}

template <class T>
void refusesBadArguments(FILE* file, int (*read)(FILE*, T*, int),
                         int (*write)(FILE*, const T*, int)) {
  T value{};
  traces = 0;
  EXPECT_EQ(read(nullptr, &value, 1), -1);
  EXPECT_EQ(read(file, nullptr, 1), -1);
  EXPECT_EQ(read(file, &value, 0), -1);
  EXPECT_EQ(read(file, &value, -1), -1);
  EXPECT_EQ(write(nullptr, &value, 1), -1);
  EXPECT_EQ(write(file, nullptr, 1), -1);
  EXPECT_EQ(write(file, &value, 0), -1);
  EXPECT_EQ(write(file, &value, -1), -1);
  EXPECT_EQ(traces, 8);
}

TEST_F(Bf, BadArgumentsLeaveATraceEach) {
  refusesBadArguments(file, BF_fread_char, BF_fwrite_char);
  refusesBadArguments(file, BF_fread_tchar, BF_fwrite_tchar);
  refusesBadArguments(file, BF_fread_int, BF_fwrite_int);
  refusesBadArguments(file, BF_fread_long, BF_fwrite_long);
  refusesBadArguments(file, BF_fread_hyper, BF_fwrite_hyper);
  refusesBadArguments(file, BF_fread_float, BF_fwrite_float);
  refusesBadArguments(file, BF_fread_double, BF_fwrite_double);
  EXPECT_EQ(bytes(), "");
}

TEST_F(Bf, ShortReadFailsAndLeavesWhatArrived) {
  hold(hex("00000001 00000002 00000003"));
  int read[4] = {9, 9, 9, 9};

  AddFileException(file);
  EXPECT_EQ(BF_fread_int(file, read, 4), -1);

  EXPECT_EQ(read[0], 0x01000000) << "not reversed";
  EXPECT_EQ(read[2], 0x03000000);
  EXPECT_EQ(read[3], 9);
  EXPECT_EQ(traces, 0) << "the end of a file is no bad argument";
}

TEST_F(Bf, WriteOnAFullDiskFails) {
  FILE* full = std::fopen("/dev/full", "wb");
  if (!full) GTEST_SKIP() << "no /dev/full";
  const int words[300] = {};

  EXPECT_EQ(BF_fwrite_int(full, words, 300), -1);
  AddFileException(full);
  EXPECT_EQ(BF_fwrite_int(full, words, 300), -1);
  EXPECT_EQ(BF_fwrite_long(full, reinterpret_cast<const long*>(words), 100), -1);

  RemFileException(full);
  std::fclose(full);
}

TEST_F(Bf, ExceptionsAreASet) {
  EXPECT_FALSE(IsFileException(file));
  AddFileException(file);
  AddFileException(file);
  AddFileException(stdout);
  EXPECT_TRUE(IsFileException(file));
  EXPECT_FALSE(IsFileException(stderr));

  RemFileException(file);
  EXPECT_FALSE(IsFileException(file));
  EXPECT_TRUE(IsFileException(stdout));

  RemFileException(stdout);
  RemFileException(stdout);
  EXPECT_FALSE(IsFileException(stdout));
}

TEST_F(Bf, SetLivesFromTheFirstExceptionToTheLast) {
  // A first exception takes the set and its entry, a further one an entry alone.
  const auto allocations = [&] {
    return support::forEachFailingAllocation([&] {
      AddFileException(stdout);
      RemFileException(stdout);
    });
  };
  EXPECT_EQ(allocations(), 2);
  EXPECT_EQ(allocations(), 2) << "the set went with its last entry";
  AddFileException(file);
  EXPECT_EQ(allocations(), 1);
  RemFileException(file);

  const support::FailingAllocation failing(1);
  const int known = IsFileException(file);
  RemFileException(file);
  EXPECT_FALSE(support::FailingAllocation::happened()) << "asking takes no memory";
  EXPECT_FALSE(known);
}

TEST_F(Bf, OrderIsToldForTheNullStream) {
  EXPECT_TRUE(BF_EndianIsCorrect());
  AddFileException(file);
  EXPECT_TRUE(BF_EndianIsCorrect());
  AddFileException(nullptr);
  EXPECT_FALSE(BF_EndianIsCorrect());
  RemFileException(nullptr);
  EXPECT_TRUE(BF_EndianIsCorrect());
}

TEST_F(Bf, SwapBytesReversesTwoAndMore) {
  char five[] = "abcde";
  SwapBytes(five, 5);
  EXPECT_STREQ(five, "edcba");
  SwapBytes(five, 2);
  EXPECT_STREQ(five, "decba");
  SwapBytes(five, 1);
  SwapBytes(five, 0);
  EXPECT_STREQ(five, "decba");
}

} // namespace binary_test
