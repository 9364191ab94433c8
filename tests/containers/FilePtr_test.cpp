// The stream of values under vectors on a file.
#include "containers/onFile.h"

namespace {

template <class T>
class FilePtr : public ::testing::Test {};
TYPED_TEST_SUITE(FilePtr, MatrixScalars, ScalarNames);

TYPED_TEST(FilePtr, BeginsWhereTheStreamStands) {
  using T = TypeParam;
  ScratchFile file("head" + counted<T>(3));
  lseek(file.handle(), 4, SEEK_SET);
  C_FilePtr<T> values(file.stream());
  T read[2];

  EXPECT_EQ(values.Base(), 4);
  EXPECT_EQ(values.Seek(1, 0), 0);
  EXPECT_EQ(values.Read(read, 2), 0);

  EXPECT_EQ(read[0], valueAt<T>(1));
  EXPECT_EQ(read[1], valueAt<T>(2));
}

TYPED_TEST(FilePtr, SeeksFromTheBaseOrFromHere) {
  using T = TypeParam;
  constexpr long long width = sizeof(T);
  ScratchFile file("head" + counted<T>(9));
  lseek(file.handle(), 4, SEEK_SET);
  C_FilePtr<T> values(file.stream());

  values.Seek(3, 0);
  EXPECT_EQ(position(file), 4 + 3 * width);
  values.Seek(2, 1);
  EXPECT_EQ(position(file), 4 + 5 * width);
  values.Seek(-1, 7);
  EXPECT_EQ(position(file), 4 + 4 * width);
  values.Seek(0, 0);
  EXPECT_EQ(position(file), 4);
}

TYPED_TEST(FilePtr, WritesThePortableForm) {
  using T = TypeParam;
  ScratchFile file(counted<T>(3));
  C_FilePtr<T> values(file.stream());
  T changed[1] = {scalar<T>(7, 8)};

  values.Seek(1, 0);
  EXPECT_EQ(values.Write(changed, 1), 0);

  EXPECT_EQ(file.bytes(), raw(valueAt<T>(0), changed[0], valueAt<T>(2)));
}

TYPED_TEST(FilePtr, TurnsTheWordsOfAnException) {
  using T = TypeParam;
  constexpr std::size_t word = isComplex<T> ? sizeof(T) / 2 : sizeof(T);
  std::string turned = counted<T>(2);
  for (std::size_t at = 0; at < turned.size(); at += word)
    std::reverse(turned.begin() + static_cast<long>(at),
                 turned.begin() + static_cast<long>(at + word));
  ScratchFile file(turned);
  C_FilePtr<T> values(file.stream());
  T read[2];

  AddFileException(file.stream());
  values.Read(read, 2);
  values.Write(read, 2);
  RemFileException(file.stream());

  EXPECT_EQ(read[1], valueAt<T>(1));
  EXPECT_EQ(file.bytes(), turned + turned);
}

// The receiver moves on, and the new object keeps the old base.
TYPED_TEST(FilePtr, LnkMovesTheReceiverAndLeavesTheNewObjectAtTheOldBase) {
  using T = TypeParam;
  ScratchFile file(counted<T>(5));
  C_FilePtr<T> receiver(file.stream());
  const auto link = owned(receiver.Lnk(2));
  const auto same = owned(receiver.Lnk(0));
  T fromLink, fromReceiver, fromSame;

  link->Seek(0, 0);
  link->Read(&fromLink, 1);
  receiver.Seek(0, 0);
  receiver.Read(&fromReceiver, 1);
  same->Seek(0, 0);
  same->Read(&fromSame, 1);

  EXPECT_EQ(fromLink, valueAt<T>(0));
  EXPECT_EQ(fromReceiver, valueAt<T>(2));
  EXPECT_EQ(fromSame, valueAt<T>(2));
}

TYPED_TEST(FilePtr, TellsWhatFailed) {
  using T = TypeParam;
  ScratchFile file(counted<T>(2));
  FILE* readOnly = std::fopen("/dev/zero", "rb");
  C_FilePtr<T> values(file.stream()), zeros(readOnly);
  T read[3];

  EXPECT_EQ(codeOf([&] { values.Read(read, 3); }), 21);
  EXPECT_EQ(codeOf([&] { values.Read(read, 0); }), 21);
  EXPECT_EQ(codeOf([&] { values.Write(read, 0); }), 22);
  EXPECT_EQ(codeOf([&] { zeros.Write(read, 1); }), 22);
  EXPECT_EQ(codeOf([&] { values.Seek(-1, 0); }), 20);
  EXPECT_EQ(codeOf([&] { values.Lnk(-1); }), 20);
  EXPECT_EQ(values.Base(), 0);
  std::fclose(readOnly);
}

TEST(FilePtrStreams, WithoutAPositionThrow34) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  FILE* stream = fdopen(ends[0], "rb");

  EXPECT_EQ(codeOf([&] { C_FilePtr<double> values(stream); }), 34);
  EXPECT_EQ(codeOf([] { C_FilePtr<double> values(nullptr); }), 34);

  std::fclose(stream);
  close(ends[1]);
}

TEST(FilePtrStreams, WithBufferedInputAreSettledAtTheirPosition) {
  ScratchFile file("h" + counted<double>(3));
  ASSERT_EQ(std::fgetc(file.stream()), 'h');
  C_FilePtr<double> values(file.stream());
  double read[3];

  values.Read(read, 3);

  EXPECT_EQ(values.Base(), 1);
  EXPECT_EQ(read[2], 3);
}

TEST(FilePtrStreams, WithBufferedOutputAreSettledBehindIt) {
  ScratchFile file;
  std::fputs("head", file.stream());
  C_FilePtr<double> values(file.stream());
  double one = 1;

  values.Write(&one, 1);

  EXPECT_EQ(values.Base(), 4);
  EXPECT_EQ(file.bytes(), "head" + raw(1.0));
}

TEST(FilePtrStreams, WhoseOutputHasNoRoomThrow34) {
  FILE* full = std::fopen("/dev/full", "wb");
  std::fputs("head", full);

  EXPECT_EQ(codeOf([&] { C_FilePtr<double> values(full); }), 34);

  std::fclose(full);
}

} // namespace
