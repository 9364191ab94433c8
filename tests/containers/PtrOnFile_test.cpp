// Values on a file: the stream of values, the window over it, and vectors of both.
#include <algorithm>
#include <climits>
#include <csignal>
#include <new>

#include <sys/resource.h>

#include <zarel/C_PtrOnFile.h>
#include <zarel/bf.h>
#include <zarel/zarelmem.h>

#include "containers/support.h"
#include "support/FailingAllocation.h"
#include "support/FailingCall.h"

namespace {

/** Value i of the test files: 1, 2, 3 ... with imaginary parts 0, -1, -2 ... */
template <class T>
T valueAt(int i) {
  return scalar<T>(i + 1, -i);
}

template <class T>
std::string counted(int n) {
  std::string bytes;
  for (int i = 0; i < n; ++i)
    bytes += raw(valueAt<T>(i));
  return bytes;
}

/** The value that the bytes of a file hold at a place. */
template <class T>
T inFile(ScratchFile& file, int i) {
  T value;
  const std::string bytes = file.bytes();
  std::memcpy(&value, bytes.data() + static_cast<std::size_t>(i) * sizeof(T), sizeof(T));
  return value;
}

long long position(ScratchFile& file) {
  return lseek(file.handle(), 0, SEEK_CUR);
}

/** Owns what Lnk gives. */
template <class Object>
std::unique_ptr<Object> owned(Object* object) {
  return std::unique_ptr<Object>(object);
}

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

template <class T>
class PtrOnFile : public ::testing::Test {
protected:
  using Ptr = C_PtrOnFile<T, int>;

  static constexpr int kCount = 10;

  PtrOnFile() : file_(counted<T>(kCount)) {}
  void attach(int window) { p_.Attach(file_.stream(), kCount, window); }
  static void expectWindow(const Ptr& p, int start, int end) {
    EXPECT_EQ(p.WindowStart(), start);
    EXPECT_EQ(p.WindowEnd(), end);
  }
  /** Every value of a storage that shows the test file from `first` on. */
  static void expectValues(Ptr& p, int first) {
    for (int i = p.Count() - 1; i >= 0; --i)
      EXPECT_EQ(p.GetVal(i), valueAt<T>(first + i));
  }

  ScratchFile file_;
  Ptr p_;
};
TYPED_TEST_SUITE(PtrOnFile, MatrixScalars, ScalarNames);

TYPED_TEST(PtrOnFile, StartsWithNothingAttached) {
  using T = TypeParam;
  C_PtrOnFile<T, int> none, sized(7);
  T value;

  EXPECT_EQ(none.Count(), 0);
  EXPECT_EQ(sized.Count(), 7);
  for (auto* p : {&none, &sized}) {
    EXPECT_EQ(p->InCore(), 0);
    EXPECT_EQ(p->Adr(0), nullptr);
    EXPECT_EQ(p->BufferSize(), 0);
    this->expectWindow(*p, 0, 0);
    EXPECT_EQ(codeOf([&] { p->SetVal(0, T(0)); }), 12);
    EXPECT_EQ(codeOf([&] { p->Lnk(0); }), 12);
    EXPECT_EQ(codeOf([&] { p->InitBuff(1); }), 12);
    EXPECT_EQ(codeOf([&] { p->Extract(0, 1, &value); }), 12);
    EXPECT_EQ(p->Release(), 0);
  }
  EXPECT_EQ(codeOf([&] { none.GetVal(0); }), 21);
  EXPECT_EQ(codeOf([&] { C_PtrOnFile<T, int>(7).GetVal(0); }), 12);
}

TYPED_TEST(PtrOnFile, CannotLieInABlockOfMemory) {
  using T = TypeParam;
  T block[1] = {};

  EXPECT_EQ(codeOf([&] { C_PtrOnFile<T, int> p(block); }), 2871);
  EXPECT_EQ(codeOf([&] { this->p_.Attach(block); }), 2871);
}

TYPED_TEST(PtrOnFile, OffersNeitherLoadingNorAnotherSize) {
  this->attach(4);

  EXPECT_EQ(codeOf([&] { this->p_.Load(); }), 2871);
  EXPECT_EQ(codeOf([&] { this->p_.UnLoad(); }), 2871);
  EXPECT_EQ(codeOf([&] { this->p_.Resize(20); }), 2871);
}

TYPED_TEST(PtrOnFile, AttachReadsTheFirstWindowAndEndsBehindTheLastValue) {
  using T = TypeParam;

  this->attach(4);

  EXPECT_EQ(this->p_.Count(), 10);
  EXPECT_EQ(this->p_.BufferSize(), 4);
  this->expectWindow(this->p_, 0, 4);
  EXPECT_EQ(this->p_.Adr(0)[3], valueAt<T>(3));
  EXPECT_EQ(this->p_.Adr(7), this->p_.Adr(0));
  EXPECT_EQ(position(this->file_), static_cast<long long>(10 * sizeof(T)));
}

TYPED_TEST(PtrOnFile, CutsABufferAboveTheCount) {
  this->attach(4096);

  EXPECT_EQ(this->p_.BufferSize(), 10);
  this->expectWindow(this->p_, 0, 10);
}

TYPED_TEST(PtrOnFile, OfNoValuesHasNoBuffer) {
  using T = TypeParam;

  EXPECT_EQ(this->p_.Attach(this->file_.stream(), 0, 4), 0);

  EXPECT_EQ(this->p_.Adr(0), nullptr);
  EXPECT_EQ(this->p_.BufferSize(), 0);
  EXPECT_EQ(position(this->file_), 0);
  EXPECT_EQ(this->p_.Sum(0, 0), T(0));
  EXPECT_EQ(codeOf([&] { this->p_.GetVal(0); }), 21);
}

TYPED_TEST(PtrOnFile, OfANegativeCountHoldsNothing) {
  EXPECT_EQ(this->p_.Attach(this->file_.stream(), -3, 4), 0);

  EXPECT_EQ(this->p_.Count(), -3);
  EXPECT_EQ(this->p_.BufferSize(), 0);
  EXPECT_EQ(position(this->file_), 0);
  EXPECT_EQ(codeOf([&] { this->p_.GetVal(0); }), 21);
}

TYPED_TEST(PtrOnFile, WithoutAWindowReadsSingleValues) {
  using T = TypeParam;
  for (int window : {0, -1}) {
    lseek(this->file_.handle(), 0, SEEK_SET);
    this->attach(window);

    EXPECT_EQ(this->p_.BufferSize(), 0);
    EXPECT_EQ(position(this->file_), static_cast<long long>(10 * sizeof(T)));
    this->expectValues(this->p_, 0);
    EXPECT_EQ(this->p_.Sum(0, 10), scalar<T>(55, -45));
  }
}

TYPED_TEST(PtrOnFile, AttachedAgainShowsOtherValues) {
  using T = TypeParam;
  this->attach(4);
  lseek(this->file_.handle(), 5 * sizeof(T), SEEK_SET);

  this->p_.Attach(this->file_.stream(), 5, 2);

  EXPECT_EQ(this->p_.Count(), 5);
  this->expectValues(this->p_, 5);
}

TYPED_TEST(PtrOnFile, AValueJustPastTheWindowMakesTheWindowStartThere) {
  using T = TypeParam;
  this->attach(4);

  EXPECT_EQ(this->p_.GetVal(4), valueAt<T>(4));
  this->expectWindow(this->p_, 4, 8);
  EXPECT_EQ(this->p_.GetVal(9), valueAt<T>(9));
  this->expectWindow(this->p_, 9, 10);
  EXPECT_EQ(this->p_.GetVal(8), valueAt<T>(8));
  this->expectWindow(this->p_, 8, 10);
  EXPECT_EQ(this->p_[1], valueAt<T>(1));
  this->expectWindow(this->p_, 1, 5);
}

TYPED_TEST(PtrOnFile, AStoredValueShowsWhenTheWindowMoved) {
  using T = TypeParam;
  this->attach(4);

  EXPECT_EQ(this->p_.SetVal(2, scalar<T>(77)), 0);

  EXPECT_EQ(this->p_.GetVal(2), valueAt<T>(2));
  EXPECT_EQ(inFile<T>(this->file_, 2), scalar<T>(77));
  EXPECT_EQ(this->p_.GetVal(4), valueAt<T>(4));
  EXPECT_EQ(this->p_.GetVal(2), scalar<T>(77));
}

TYPED_TEST(PtrOnFile, AReferenceChangesTheBufferAndNotTheFile) {
  using T = TypeParam;
  this->attach(4);

  this->p_[5] = scalar<T>(77);

  EXPECT_EQ(this->p_.GetVal(5), scalar<T>(77));
  EXPECT_EQ(this->p_.Adr(0)[0], scalar<T>(77));
  EXPECT_EQ(this->file_.bytes(), counted<T>(10));
}

TYPED_TEST(PtrOnFile, ExtractWithoutABufferGivesABlockAndLeavesTheWindow) {
  using T = TypeParam;
  this->attach(4);

  T* block = this->p_.Extract(5, 3, nullptr);

  EXPECT_NE(block, this->p_.Adr(0));
  EXPECT_EQ(block[0], valueAt<T>(5));
  EXPECT_EQ(block[2], valueAt<T>(7));
  this->expectWindow(this->p_, 0, 4);
  EXPECT_EQ(this->p_.GetVal(0), valueAt<T>(0));
  zarelmem_free(block, __FILE__, __LINE__);
}

TYPED_TEST(PtrOnFile, ExtractIntoAForeignBufferLeavesTheWindow) {
  using T = TypeParam;
  this->attach(4);
  T block[3] = {};

  EXPECT_EQ(this->p_.Extract(6, 3, block), block);
  EXPECT_EQ(this->p_.Extract(6, 0, block), block);

  EXPECT_EQ(block[1], valueAt<T>(7));
  this->expectWindow(this->p_, 0, 4);
}

TYPED_TEST(PtrOnFile, ExtractIntoItsOwnBufferIsTheWindow) {
  using T = TypeParam;
  this->attach(4);

  EXPECT_EQ(this->p_.Extract(6, 3, this->p_.Adr(0)), this->p_.Adr(0));

  this->expectWindow(this->p_, 6, 9);
  EXPECT_EQ(this->p_.GetVal(7), valueAt<T>(7));
}

TYPED_TEST(PtrOnFile, ExtractGrowsItsOwnBuffer) {
  using T = TypeParam;
  ScratchFile big(counted<T>(6000));
  C_PtrOnFile<T, int> p;
  p.Attach(big.stream(), 6000, 10);

  T* block = p.Extract(0, 6000, p.Adr(0));

  EXPECT_EQ(block, p.Adr(0));
  EXPECT_EQ(block[5999], valueAt<T>(5999));
  this->expectWindow(p, 0, 6000);
  EXPECT_EQ(p.BufferSize(), 10);
}

TYPED_TEST(PtrOnFile, SumsThroughTheWindowWhichIsTheLastPart) {
  using T = TypeParam;
  this->attach(4);

  EXPECT_EQ(this->p_.Sum(1, 9), scalar<T>(54, -45));

  this->expectWindow(this->p_, 9, 10);
  EXPECT_EQ(this->p_.Sum(3, 0), T(0));
  EXPECT_EQ(this->p_.Sum(3, -1), T(0));
  EXPECT_EQ(this->p_.Sum(3, -8), T(0));
}

TYPED_TEST(PtrOnFile, ScalesOnTheFile) {
  using T = TypeParam;
  this->attach(4);

  EXPECT_EQ(this->p_.SMlt(scalar<T>(3), 1, 8), 0);

  for (int i = 0; i < 10; ++i) {
    const T factor = i < 1 || i > 8 ? scalar<T>(1) : scalar<T>(3);
    EXPECT_EQ(inFile<T>(this->file_, i), static_cast<T>(valueAt<T>(i) * factor)) << i;
  }
  this->expectWindow(this->p_, 5, 9);
  EXPECT_EQ(this->p_.GetVal(6), static_cast<T>(valueAt<T>(6) * scalar<T>(3)));
}

TYPED_TEST(PtrOnFile, ScalingByNextToNothingWritesZeros) {
  using T = TypeParam;
  for (double alpha : {0.0, 1e-15, -1e-15}) {
    ScratchFile file(counted<T>(4));
    C_PtrOnFile<T, int> p;
    p.Attach(file.stream(), 4, 4);

    EXPECT_EQ(p.SMlt(scalar<T>(alpha), 1, 2), 0);

    EXPECT_EQ(file.bytes(), raw(valueAt<T>(0), T(0), T(0), valueAt<T>(3)));
    EXPECT_EQ(p.GetVal(1), valueAt<T>(1)); // the window does not follow a fill
  }
}

TYPED_TEST(PtrOnFile, FillsARangeAndLeavesTheWindow) {
  using T = TypeParam;
  this->attach(4);

  EXPECT_EQ(this->p_.Init(scalar<T>(5, 1), 0, 2), 0);
  EXPECT_EQ(this->p_.Zero(8, 2), 0);
  EXPECT_EQ(this->p_.Zero(3, 0), 0);
  EXPECT_EQ(this->p_.Zero(3, -1), 0);

  const T five = scalar<T>(5, 1);
  EXPECT_EQ(this->file_.bytes(),
            raw(five, five) + counted<T>(8).substr(2 * sizeof(T)) + raw(T(0), T(0)));
  EXPECT_EQ(this->p_.GetVal(0), valueAt<T>(0));
}

TYPED_TEST(PtrOnFile, FillsMoreThanGoesOutAtOnce) {
  using T = TypeParam;
  ScratchFile file(counted<T>(1300));
  C_PtrOnFile<T, int> p;
  p.Attach(file.stream(), 1300, 10);

  p.Init(scalar<T>(5), 1, 1298);

  std::string expected = raw(valueAt<T>(0));
  for (int i = 0; i < 1298; ++i)
    expected += raw(scalar<T>(5));
  EXPECT_EQ(file.bytes(), expected + raw(valueAt<T>(1299)));
}

// The general norm of a storage begins at value 0 whatever it is told.
TYPED_TEST(PtrOnFile, NormBeginsAtValueZero) {
  using T = TypeParam;
  ScratchFile file(raw(scalar<T>(3), scalar<T>(4), scalar<T>(12)));
  C_PtrOnFile<T, int> p;
  p.Attach(file.stream(), 3, 1);
  T norm;

  EXPECT_EQ(p.Nrm2(1, 2, norm), 0);

  EXPECT_EQ(norm, scalar<T>(5));
  this->expectWindow(p, 0, 1);
}

TYPED_TEST(PtrOnFile, LnkIsTheRestAndLeavesTheReceiver) {
  this->attach(4);

  const auto rest = owned(this->p_.Lnk(3));
  const auto last = owned(rest->Lnk(6));
  const auto none = owned(this->p_.Lnk(10));

  EXPECT_EQ(rest->Count(), 7);
  EXPECT_EQ(rest->BufferSize(), 4);
  EXPECT_EQ(last->Count(), 1);
  EXPECT_EQ(none->Count(), 0);
  this->expectValues(*rest, 3);
  this->expectValues(*last, 9);
  this->expectValues(this->p_, 0);
}

TYPED_TEST(PtrOnFile, LnkSeesTheSameFile) {
  using T = TypeParam;
  this->attach(4);
  const auto rest = owned(this->p_.Lnk(3));

  rest->SetVal(5, scalar<T>(77));

  EXPECT_EQ(this->p_.GetVal(8), scalar<T>(77));
}

TYPED_TEST(PtrOnFile, CopyShowsTheSameValues) {
  this->attach(4);
  C_PtrOnFile<TypeParam, int> copy, shorter, longer;
  longer.Attach(this->file_.stream(), 0, 1);

  EXPECT_EQ(copy.Copy(this->p_, 10), 0);
  EXPECT_EQ(shorter.Copy(this->p_, 2), 0);
  EXPECT_EQ(this->p_.Copy(this->p_, 10), 0);

  EXPECT_EQ(copy.Count(), 10);
  EXPECT_EQ(copy.BufferSize(), 4);
  EXPECT_EQ(shorter.Count(), 2);
  EXPECT_EQ(shorter.BufferSize(), 2);
  this->expectValues(copy, 0);
  this->expectValues(shorter, 0);
  this->expectValues(this->p_, 0);
}

TYPED_TEST(PtrOnFile, CopyOfWhatIsNotOnAFileThrows2871) {
  using T = TypeParam;
  C_PtrInCore<T, int> inCore(3);
  C_PtrOnFile<T, int> none, copy;
  this->attach(4);

  EXPECT_EQ(codeOf([&] { this->p_.Copy(inCore, 3); }), 2871);
  this->expectValues(this->p_, 0);
  EXPECT_EQ(copy.Copy(none, 3), 0);
  EXPECT_EQ(copy.Count(), 3);
  EXPECT_EQ(copy.Adr(0), nullptr);
}

TYPED_TEST(PtrOnFile, CopyConstructionTakesTheFieldsAsTheyAre) {
  using Storage = C_PtrOnFile<TypeParam, int>;
  this->attach(4);
  alignas(Storage) unsigned char place[sizeof(Storage)];
  Storage* copy = new (place) Storage(this->p_); // never destroyed: it owns what the other owns

  EXPECT_EQ(copy->Adr(0), this->p_.Adr(0));
  EXPECT_EQ(copy->Count(), 10);
  this->expectWindow(*copy, 0, 4);
}

TYPED_TEST(PtrOnFile, ReleaseLeavesTheStreamOpen) {
  using T = TypeParam;
  this->attach(4);

  EXPECT_EQ(this->p_.Release(), 0);
  EXPECT_EQ(this->p_.Release(), 0);

  EXPECT_EQ(this->p_.Adr(0), nullptr);
  EXPECT_EQ(this->p_.Count(), 0);
  EXPECT_EQ(this->file_.bytes(), counted<T>(10));
}

TYPED_TEST(PtrOnFile, NeitherReadsNorWritesPastItsValues) {
  using T = TypeParam;
  lseek(this->file_.handle(), sizeof(T), SEEK_SET);
  this->p_.Attach(this->file_.stream(), 8, 4);
  T block[9];

  for (int outside : {-1, 8, 9, INT_MAX, INT_MIN}) {
    EXPECT_EQ(codeOf([&] { this->p_.GetVal(outside); }), 21) << outside;
    EXPECT_EQ(codeOf([&] { this->p_.SetVal(outside, T(0)); }), 22) << outside;
  }
  EXPECT_EQ(codeOf([&] { this->p_.Extract(0, 9, block); }), 21);
  EXPECT_EQ(codeOf([&] { this->p_.Extract(7, INT_MAX, this->p_.Adr(0)); }), 21);
  EXPECT_EQ(codeOf([&] { this->p_.Extract(-1, 2, block); }), 21);
  EXPECT_EQ(codeOf([&] { this->p_.Sum(5, 4); }), 21);
  EXPECT_EQ(codeOf([&] { this->p_.Zero(8, 1); }), 22);
  EXPECT_EQ(codeOf([&] { this->p_.Init(T(0), -1, 1); }), 22);
  EXPECT_EQ(codeOf([&] { this->p_.Extract(0, -1, nullptr); }), 1001);

  EXPECT_EQ(this->file_.bytes(), counted<T>(10));
}

TYPED_TEST(PtrOnFile, OfAShortFileThrows21WhereItEnds) {
  using T = TypeParam;
  for (int length = 0; length < 10; ++length) {
    ScratchFile file(counted<T>(10).substr(0, static_cast<std::size_t>(length) * sizeof(T) + 1));
    C_PtrOnFile<T, int> windowed, single;

    EXPECT_EQ(codeOf([&] { windowed.Attach(file.stream(), 10, 4); }), length < 4 ? 21 : 0);
    file.rewind();
    single.Attach(file.stream(), 10, 0);
    for (int i = 0; i < 10; ++i)
      EXPECT_EQ(codeOf([&] { EXPECT_EQ(single.GetVal(i), valueAt<T>(i)); }), i < length ? 0 : 21);
  }
}

TYPED_TEST(PtrOnFile, AFailedWindowIsNoWindow) {
  using T = TypeParam;
  this->attach(4);
  ASSERT_EQ(ftruncate(this->file_.handle(), 6 * sizeof(T)), 0);

  EXPECT_EQ(codeOf([&] { this->p_.GetVal(5); }), 21);

  this->expectWindow(this->p_, 0, 0);
  EXPECT_EQ(this->p_.GetVal(0), valueAt<T>(0));
}

TYPED_TEST(PtrOnFile, OnAFullDeviceThrows22AndShowsTheTruth) {
  using T = TypeParam;
  FILE* full = std::fopen("/dev/full", "r+b");
  C_PtrOnFile<T, int> p;
  p.Attach(full, 10, 4);

  EXPECT_EQ(codeOf([&] { p.SetVal(0, scalar<T>(1)); }), 22);
  EXPECT_EQ(codeOf([&] { p.Init(scalar<T>(1), 0, 10); }), 22);
  EXPECT_EQ(codeOf([&] { p.SMlt(scalar<T>(2), 0, 10); }), 22);
  this->expectWindow(p, 0, 0);
  EXPECT_EQ(p.GetVal(0), T(0));

  p.Release();
  std::fclose(full);
}

TYPED_TEST(PtrOnFile, WithoutMemoryForTheBufferReadsSingleValues) {
  using T = TypeParam;
  {
    const AllocatorProbe none(0);
    this->attach(4);
  }

  EXPECT_EQ(this->p_.BufferSize(), 0);
  EXPECT_EQ(position(this->file_), 0); // the stream is left where it is
  this->expectValues(this->p_, 0);
  EXPECT_EQ(this->p_.Sum(0, 10), scalar<T>(55, -45));
}

TYPED_TEST(PtrOnFile, WithoutAnyMemoryThrows1001) {
  const AllocatorProbe none(0);
  this->attach(4);

  EXPECT_EQ(codeOf([&] { this->p_.GetVal(0); }), 1001);
  EXPECT_EQ(codeOf([&] { this->p_.Adr(0); }), 1001);
  EXPECT_EQ(codeOf([&] { this->p_.Extract(0, 3, nullptr); }), 1001);
}

// Vectors.

template <class T>
using FileVec = C_VecPi<T, int, C_PtrOnFile<T, int>>;

/** A file with one vector after another, and the same values in core. */
template <class T>
class VecOnFile : public ::testing::Test {
protected:
  static constexpr int kCount = 5000;

  VecOnFile() : file_(pattern(1) + pattern(2)), a_(kCount), b_(kCount) {
    for (int i = 0; i < kCount; ++i) {
      a_[i] = patternAt(i, 1);
      b_[i] = patternAt(i, 2);
    }
  }
  /** Both vectors, with windows that are shorter than the blocks of the vectors. */
  void attach(int window = 100) {
    x_.Attach(kCount, file_.stream(), window);
    y_.Attach(kCount, file_.stream(), window);
  }
  static T patternAt(int i, int step) { return scalar<T>((i * step) % 3, (i * step) % 2); }
  static std::string pattern(int step) {
    std::string bytes;
    for (int i = 0; i < kCount; ++i)
      bytes += raw(patternAt(i, step));
    return bytes;
  }
  /** Expects the values that the file holds from `first` on. */
  template <class Expected>
  void expectOnFile(int first, int n, Expected expected) {
    const std::string bytes = file_.bytes();
    for (int i = 0; i < n; ++i) {
      T value;
      std::memcpy(&value, bytes.data() + static_cast<std::size_t>(first + i) * sizeof(T),
                  sizeof(T));
      ASSERT_EQ(value, static_cast<T>(expected(i))) << i;
    }
  }

  ScratchFile file_;
  VecOf<T> a_, b_;
  FileVec<T> x_, y_;
};
TYPED_TEST_SUITE(VecOnFile, MatrixScalars, ScalarNames);

TYPED_TEST(VecOnFile, FindsTheVectorBehindTheLastOne) {
  this->attach();

  EXPECT_EQ(this->x_.Dim(), 5000);
  EXPECT_EQ(this->y_.Capacity(), 0);
  EXPECT_EQ(this->x_.InCore(), 0);
  EXPECT_EQ(this->x_.Full(), 1);
  EXPECT_EQ(this->x_.MemSize(), static_cast<int>(5000 * sizeof(TypeParam)));
  for (int i = 0; i < 5000; ++i) {
    ASSERT_EQ(this->x_.GetVal(i), this->a_[i]) << i;
    ASSERT_EQ(this->y_[i], this->b_[i]) << i;
  }
}

TYPED_TEST(VecOnFile, DoesNotChangeItsSize) {
  using T = TypeParam;
  T block[3] = {};
  this->attach();

  EXPECT_EQ(this->x_.Resize(5000), 0);
  EXPECT_EQ(this->x_.Resize(10), 0);
  EXPECT_EQ(this->x_.Dim(), 10);
  EXPECT_EQ(codeOf([&] { this->x_.Resize(11); }), 2871);
  EXPECT_EQ(codeOf([&] { this->x_.Resize(0); }), 2871);
  EXPECT_EQ(codeOf([&] { this->x_.Resize(-1); }), 2);
  EXPECT_EQ(codeOf([&] { this->x_.Release(); }), 2871);
  EXPECT_EQ(codeOf([&] { this->x_.Attach(3, block); }), 2871);
  EXPECT_EQ(codeOf([&] { FileVec<T> made(3, block); }), 2871);
  EXPECT_EQ(codeOf([&] { FileVec<T> copy(this->x_); }), 2871);
  EXPECT_EQ(this->x_.Dim(), 10);
  EXPECT_EQ(this->x_.GetVal(1), this->a_[1]);
}

TYPED_TEST(VecOnFile, AxpyReadsItByBlocks) {
  using T = TypeParam;
  this->attach();
  VecOf<T> y(5000, scalar<T>(1));

  EXPECT_EQ(this->x_.Axpy(y, scalar<T>(2)), 0);

  for (int i = 0; i < 5000; ++i)
    ASSERT_EQ(y[i], static_cast<T>(scalar<T>(1) + scalar<T>(2) * this->a_[i]));
}

// An argument on a file is changed in its buffer alone.
TYPED_TEST(VecOnFile, AxpyOntoItChangesTheBufferAndNotTheFile) {
  using T = TypeParam;
  this->attach();
  const std::string before = this->file_.bytes();

  EXPECT_EQ(this->a_.Axpy(this->x_, scalar<T>(2)), 0);
  EXPECT_EQ(this->y_.Axpy(this->x_, scalar<T>(2)), 0);

  EXPECT_EQ(this->file_.bytes(), before);
  EXPECT_EQ(this->x_.Adr(0)[903], static_cast<T>(this->a_[4999] + scalar<T>(2) * this->b_[4999]));
}

TYPED_TEST(VecOnFile, DotProductsAreThoseInCore) {
  using T = TypeParam;
  this->attach();
  const T expected = this->a_ * this->b_;

  EXPECT_EQ(this->x_ * this->y_, expected);
  EXPECT_EQ(this->x_ * this->b_, expected);
  // With only the receiver in core the other vector is the first operand.
  EXPECT_EQ(this->a_ * this->y_, this->b_ * this->a_);
}

TYPED_TEST(VecOnFile, HadamardSquaresTheFirstFactor) {
  using T = TypeParam;
  this->attach();
  VecOf<T> z;

  EXPECT_EQ(z.Had(this->x_, this->y_), 0);

  for (int i = 0; i < 5000; ++i)
    ASSERT_EQ(z[i], static_cast<T>(this->a_[i] * this->a_[i]));
}

TYPED_TEST(VecOnFile, CopiesIntoCore) {
  this->attach();
  VecOf<TypeParam> copy;

  EXPECT_EQ(copy.Copy(this->y_), 0);

  EXPECT_TRUE(copy == this->b_);
}

TYPED_TEST(VecOnFile, CopyOntoItFillsTheBufferAndNotTheFile) {
  this->attach();
  const std::string before = this->file_.bytes();

  EXPECT_EQ(this->x_.Copy(this->b_), 0);
  EXPECT_EQ(this->x_.Copy(this->y_), 0);

  EXPECT_EQ(this->file_.bytes(), before);
  EXPECT_EQ(this->x_.Adr(0)[903], this->b_[4999]);
}

TYPED_TEST(VecOnFile, CopyOntoOneWithoutAFileThrows38) {
  FileVec<TypeParam> none(5000);

  EXPECT_EQ(codeOf([&] { none.Copy(this->a_); }), 38);
}

TYPED_TEST(VecOnFile, NormsAreThoseInCore) {
  this->attach();

  // Two orders of summing as many terms differ by as many roundings at most.
  const double one = this->a_.Nrm(E_Nrm1), two = this->a_.Nrm2();
  EXPECT_NEAR(this->x_.Nrm(E_Nrm1), one, 5000 * epsilon<double>() * one);
  EXPECT_NEAR(this->x_.Nrm2(), two, 5000 * epsilon<TypeParam>() * two);
  EXPECT_EQ(codeOf([&] { this->x_.NrmInf(); }), 38);
}

TYPED_TEST(VecOnFile, WhatNeedsAllValuesInMemoryThrows) {
  using T = TypeParam;
  this->attach();
  double result;

  EXPECT_EQ(codeOf([&] { EXPECT_TRUE(this->x_ == this->a_); }), 38);
  EXPECT_EQ(codeOf([&] { this->x_ += T(1); }), 38);
  EXPECT_EQ(codeOf([&] { this->x_.Diff(this->a_, result); }), 14014);
  EXPECT_EQ(codeOf([&] { this->x_.IMax(0, -1); }), 38);
  EXPECT_EQ(codeOf([&] { this->x_.IMin(0, -1); }), 38);
}

TYPED_TEST(VecOnFile, ChangesRangesOnTheFile) {
  using T = TypeParam;
  this->attach();

  EXPECT_EQ(this->x_.Init(scalar<T>(5), 1, 4998), 0);
  EXPECT_EQ(this->x_.SMlt(scalar<T>(2), 1, 10), 0);
  EXPECT_EQ(this->x_.Zero(4990, -1), 0);
  this->y_ *= scalar<T>(2);

  this->expectOnFile(0, 5000, [&](int i) {
    return i == 0 ? this->a_[0] : i <= 10 ? scalar<T>(10) : i < 4990 ? scalar<T>(5) : T(0);
  });
  this->expectOnFile(5000, 5000, [&](int i) { return this->b_[i] * scalar<T>(2); });
  EXPECT_EQ(this->x_.Sum(1, 20), scalar<T>(150));
}

TYPED_TEST(VecOnFile, NormalizesOnTheFile) {
  using T = TypeParam;
  if (std::is_integral_v<T>) return;
  ScratchFile file(raw(scalar<T>(3), scalar<T>(4)));
  FileVec<T> x;
  x.Attach(2, file.stream(), 1);
  double norm = 0;

  EXPECT_EQ(x.Normalize(E_Nrm2, &norm), 0);

  EXPECT_EQ(norm, 5);
  expectClose(inFile<T>(file, 1), 0.8);
}

TYPED_TEST(VecOnFile, LnkIsTheRestOnTheSameFile) {
  using T = TypeParam;
  this->attach();
  const auto rest = owned(this->x_.Lnk(10));
  const auto none = owned(this->x_.Lnk(5000));

  EXPECT_EQ(rest->Dim(), 4990);
  EXPECT_EQ(rest->InCore(), 0);
  EXPECT_EQ(none->Dim(), 0);
  for (int i : {0, 1, 99, 100, 4989})
    EXPECT_EQ(rest->GetVal(i), this->a_[i + 10]) << i;
  for (int i : {0, 9, 4999})
    EXPECT_EQ(this->x_.GetVal(i), this->a_[i]) << i;
  rest->SetVal(0, scalar<T>(77));
  EXPECT_EQ(inFile<T>(this->file_, 10), scalar<T>(77));
  EXPECT_EQ(codeOf([&] { this->x_.Lnk(5001); }), 2872);
  EXPECT_EQ(codeOf([&] { this->x_.Lnk(-1); }), 2872);
}

TYPED_TEST(VecOnFile, WritesTheBytesOfOneInCore) {
  this->attach();
  ScratchFile byStream, byHandle, inCore;

  EXPECT_EQ(this->x_.Write(byStream.stream()), 0);
  EXPECT_EQ(this->x_.Write(byHandle.handle()), 0);
  this->a_.Write(inCore.stream());

  EXPECT_EQ(byStream.bytes(), raw(5000) + this->pattern(1));
  EXPECT_EQ(byHandle.bytes(), byStream.bytes());
  EXPECT_EQ(inCore.bytes(), byStream.bytes());
}

TYPED_TEST(VecOnFile, WritesBehindItselfOnItsOwnStream) {
  this->attach();
  const std::string before = this->file_.bytes();

  EXPECT_EQ(this->x_.Write(this->file_.stream()), 0);

  EXPECT_EQ(this->file_.bytes(), before + raw(5000) + this->pattern(1));
}

TYPED_TEST(VecOnFile, ReadsAVectorOfItsSize) {
  this->attach();
  ScratchFile other(raw(5000) + this->pattern(2)),
      longer(raw(5001) + this->pattern(2) + this->pattern(2));

  EXPECT_EQ(this->x_.Read(other.stream()), 0);

  this->expectOnFile(0, 5000, [&](int i) { return this->b_[i]; });
  EXPECT_EQ(this->x_.GetVal(1), this->b_[1]);
  EXPECT_EQ(codeOf([&] { this->x_.Read(longer.stream()); }), 2871);
}

TYPED_TEST(VecOnFile, ReadsFromItsOwnStream) {
  this->attach();
  this->y_.Write(this->file_.stream());
  lseek(this->file_.handle(), static_cast<off_t>(10000 * sizeof(TypeParam)), SEEK_SET);

  EXPECT_EQ(this->x_.Read(this->file_.stream()), 0);

  this->expectOnFile(0, 5000, [&](int i) { return this->b_[i]; });
}

TYPED_TEST(VecOnFile, PrintsItsValues) {
  using T = TypeParam;
  ScratchFile file(raw(scalar<T>(1), scalar<T>(2)));
  FileVec<T> x;
  x.Attach(2, file.stream(), 1);
  VecOf<T> inCore = vecOf({scalar<T>(1), scalar<T>(2)});

  std::string text = printed([&](FILE* f) { x.Print(f); });
  const std::string expected = printed([&](FILE* f) { inCore.Print(f); });

  const std::size_t place = text.find("In Core : 0");
  ASSERT_NE(place, std::string::npos);
  text[place + 10] = '1';
  EXPECT_EQ(text, expected);
  EXPECT_EQ(printed([&](FILE* f) { x.WriteMatlab(f); }),
            printed([&](FILE* f) { inCore.WriteMatlab(f); }));
}

// Faults.

TEST(VecOnFileFaults, EveryAllocationMayFail) {
  const auto use = [] {
    ScratchFile file(counted<double>(6000));
    FileVec<double> x, y;
    VecOf<double> z(3000, 1.0);
    x.Attach(3000, file.stream(), 1000);
    lseek(file.handle(), 3000 * sizeof(double), SEEK_SET);
    y.Attach(3000, file.stream(), 4096);
    EXPECT_EQ(x.GetVal(2999), 3000);
    EXPECT_EQ(y.GetVal(0), 3001);
    z += x;
    EXPECT_EQ(z[2500], 2502);
    x.SMlt(2.0, 0, -1);
    EXPECT_EQ(x.Sum(0, 1), 6);
    const auto rest = owned(y.Lnk(2000));
    EXPECT_EQ(rest->GetVal(999), 6000);
    EXPECT_EQ(rest->Sum(0, 1), 10003);
    ScratchFile copy;
    x.Write(copy.stream());
  };

  EXPECT_GT(support::forEachFailingAllocation(use), 8);
}

TEST(VecOnFileFaults, EverySystemCallMayFail) {
  const auto use = [] {
    ScratchFile file(counted<double>(6000)), copy;
    FileVec<double> x, y;
    VecOf<double> z(3000, 1.0);
    x.Attach(3000, file.stream(), 1000);
    y.Attach(3000, file.stream(), 4096);
    EXPECT_EQ(x.GetVal(2999), 3000);
    x.SetVal(2999, 1.0);
    z += x;
    x.SMlt(2.0, 0, -1);
    x.Zero(5, 20);
    const auto rest = owned(y.Lnk(2000));
    EXPECT_EQ(rest->GetVal(999), 6000);
    x.Write(copy.stream());
    copy.rewind();
    x.Read(copy.stream());
    EXPECT_EQ(x.GetVal(30), 62);
  };

  EXPECT_GT(support::forEachFailingCall(use), 30);
}

/** The code with which an operation on a vector of a good file ends when its n-th call fails. */
template <class Operation>
int codeWithFailing(const char* call, long n, Operation operation) {
  ScratchFile file(counted<double>(100));
  FileVec<double> x;
  x.Attach(100, file.stream(), 10);
  int code;
  {
    const support::FailingCall failing(n, call);
    code = codeOf([&] { operation(x); });
    EXPECT_TRUE(support::FailingCall::happened());
  }
  for (int i = 0; i < 100; ++i) // the truth, whatever failed
    EXPECT_EQ(x.GetVal(i), inFile<double>(file, i));
  return code;
}

TEST(VecOnFileFaults, HaveTheirCodes) {
  using X = FileVec<double>;

  EXPECT_EQ(codeWithFailing("lseek", 1, [](X& x) { x.GetVal(50); }), 20);
  EXPECT_EQ(codeWithFailing("lseek", 2, [](X& x) { x.GetVal(50); }), 20);
  EXPECT_EQ(codeWithFailing("read", 1, [](X& x) { x.GetVal(50); }), 21);
  EXPECT_EQ(codeWithFailing("read", 2, [](X& x) { x.Sum(0, -1); }), 21);
  EXPECT_EQ(codeWithFailing("write", 1, [](X& x) { x.SetVal(50, 3.0); }), 22);
  EXPECT_EQ(codeWithFailing("write", 2, [](X& x) { x.SMlt(3.0, 0, -1); }), 22);
  EXPECT_EQ(codeWithFailing("write", 1, [](X& x) { x.Zero(20, 30); }), 22);
  EXPECT_EQ(codeWithFailing("read", 1, [](X& x) { x.Lnk(5); }), 21);
  EXPECT_EQ(codeWithFailing("lseek", 1, [](X& x) { x.Lnk(5); }), 20);
  EXPECT_EQ(codeWithFailing("lseek", 3, [](X& x) { x.Lnk(5); }), 34);
}

TEST(VecOnFileFaults, AFileAtItsLimitThrows22AndKeepsWhatWasThere) {
  ScratchFile file(counted<double>(10));
  FileVec<double> x;
  x.Attach(10, file.stream(), 4);
  rlimit old, small;
  getrlimit(RLIMIT_FSIZE, &old);
  small = {16, old.rlim_max};
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  setrlimit(RLIMIT_FSIZE, &small);

  const int code = codeOf([&] { x.SetVal(9, 1.0); });

  setrlimit(RLIMIT_FSIZE, &old);
  std::signal(SIGXFSZ, handler);
  EXPECT_EQ(code, 22);
  EXPECT_EQ(file.bytes(), counted<double>(10));
}

} // namespace
