// The binary form of vectors, byte by byte, and what broken files do.
#include <sys/resource.h>

#include "containers/support.h"

namespace {

template <class C>
class VecFile : public ::testing::Test {};
TYPED_TEST_SUITE(VecFile, StorageCases, ScalarNames);

#define ZAREL_TYPES                                                                                \
  using T [[maybe_unused]] = typename TypeParam::T;                                                \
  using I [[maybe_unused]] = typename TypeParam::I;                                                \
  using V = typename TypeParam::Vec

TYPED_TEST(VecFile, IsTheDimensionAndTheValues) {
  ZAREL_TYPES;
  V v(2);
  count(v);
  ScratchFile byStream, byHandle, empty;
  V none;

  EXPECT_EQ(v.Write(byStream.stream()), 0);
  EXPECT_EQ(v.Write(byHandle.handle()), 0);
  EXPECT_EQ(none.Write(empty.stream()), 0);

  const std::string expected = raw(I(2), scalar<T>(1, 2), scalar<T>(2, 1));
  EXPECT_EQ(byStream.bytes(), expected);
  EXPECT_EQ(byHandle.bytes(), expected);
  EXPECT_EQ(empty.bytes(), raw(I(0)));
}

TYPED_TEST(VecFile, ComesBackByStreamAndByHandle) {
  ZAREL_TYPES;
  ScratchFile file(raw(I(2), scalar<T>(1, 2), scalar<T>(2, 1)));
  V a(9, scalar<T>(7)), b;

  EXPECT_EQ(a.Read(file.stream()), 0);
  file.rewind();
  EXPECT_EQ(b.Read(file.handle()), 0);

  EXPECT_EQ(a.Dim(), 2);
  EXPECT_EQ(a[0], scalar<T>(1, 2));
  EXPECT_EQ(b[1], scalar<T>(2, 1));
  file.rewind();
  EXPECT_EQ(b.Read(file.stream(), 5), 0);
  file.rewind();
  EXPECT_EQ(b.Read(file.handle(), 5), 0);
}

TYPED_TEST(VecFile, VectorsFollowOneAnother) {
  ZAREL_TYPES;
  V first(3), second(1, scalar<T>(9)), none, a, b, c;
  count(first);
  ScratchFile file;
  first.Write(file.stream());
  none.Write(file.stream());
  second.Write(file.stream());
  file.rewind();

  a.Read(file.stream());
  b.Read(file.stream());
  c.Read(file.stream());

  EXPECT_TRUE(a == first);
  EXPECT_EQ(b.Dim(), 0);
  EXPECT_TRUE(c == second);
}

TYPED_TEST(VecFile, WithoutAFileThrows12) {
  ZAREL_TYPES;
  V v(1);

  EXPECT_EQ(codeOf([&] { v.Write(0); }), 12);
  EXPECT_EQ(codeOf([&] { v.Write(static_cast<FILE*>(nullptr)); }), 12);
  EXPECT_EQ(codeOf([&] { v.Read(0); }), 12);
  EXPECT_EQ(codeOf([&] { v.Read(static_cast<FILE*>(nullptr)); }), 12);
}

TYPED_TEST(VecFile, CutAnywhereThrows21AndLeavesTheVector) {
  ZAREL_TYPES;
  const std::string whole = raw(I(2), scalar<T>(1), scalar<T>(2));
  for (std::size_t length = 0; length < whole.size(); ++length) {
    ScratchFile file(whole.substr(0, length));
    V v(3, scalar<T>(5));

    EXPECT_EQ(codeOf([&] { v.Read(file.stream()); }), 21) << length;

    EXPECT_EQ(v.Dim(), 3);
    EXPECT_EQ(v[2], scalar<T>(5));
  }
}

TYPED_TEST(VecFile, ADimensionThatTheFileCannotHoldTakesNoMemory) {
  ZAREL_TYPES;
  for (I dimension : {I(-1), I(3), std::numeric_limits<I>::max(), std::numeric_limits<I>::min()}) {
    ScratchFile file(raw(dimension, scalar<T>(1), scalar<T>(2)));
    V v;
    const AllocatorProbe probe;

    EXPECT_EQ(codeOf([&] { v.Read(file.stream()); }), 21) << dimension;

    EXPECT_EQ(probe.count(), 0);
    EXPECT_EQ(v.Dim(), 0);
  }
}

TYPED_TEST(VecFile, AFailingAllocationThrows1001) {
  ZAREL_TYPES;
  ScratchFile file(raw(I(2), scalar<T>(1), scalar<T>(2)));
  V v;
  const AllocatorProbe none(0);

  EXPECT_EQ(codeOf([&] { v.Read(file.stream()); }), 1001);

  EXPECT_EQ(v.Dim(), 0);
}

TYPED_TEST(VecFile, AFailingWriteThrows22) {
  ZAREL_TYPES;
  V v(4);
  const int full = open("/dev/full", O_WRONLY);
  ASSERT_GE(full, 1);

  EXPECT_EQ(codeOf([&] { v.Write(full); }), 22);

  close(full);
}

TEST(VecFileLimits, TheValuesMayFailToo) {
  VecOf<double> v(4, 1.0);
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_NONBLOCK), 0);
  // Leave room for the head only.
  const std::string block(4096, 'x');
  while (::write(ends[1], block.data(), block.size()) > 0) {
  }
  std::string drain(4096, ' ');
  ASSERT_EQ(::read(ends[0], drain.data(), drain.size()), 4096);
  ASSERT_EQ(::write(ends[1], block.data(), 4092), 4092);

  EXPECT_EQ(codeOf([&] { v.Write(ends[1]); }), 22);

  close(ends[0]);
  close(ends[1]);
}

TEST(VecFilePipes, AreReadWithoutASize) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const std::string bytes = raw(2, 1.5, 2.5);
  ASSERT_EQ(::write(ends[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  close(ends[1]);
  VecOf<double> v;

  EXPECT_EQ(v.Read(ends[0]), 0);

  EXPECT_EQ(v[1], 2.5);
  EXPECT_EQ(codeOf([&] { v.Read(ends[0]); }), 21);
  close(ends[0]);
}

TEST(VecFileViews, ReadThroughButDoNotGrow) {
  double block[2] = {};
  VecOf<double> v(2, block);
  ScratchFile two(raw(2, 1.5, 2.5)), three(raw(3, 1.5, 2.5, 3.5));

  EXPECT_EQ(v.Read(two.stream()), 0);
  EXPECT_EQ(block[1], 2.5);
  EXPECT_EQ(codeOf([&] { v.Read(three.stream()); }), 2870);
}

} // namespace
