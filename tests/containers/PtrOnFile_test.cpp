// The window over values on a file.
#include "containers/onFile.h"

namespace {

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
  for (int outside : {-1, 9, INT_MAX, INT_MIN})
    EXPECT_EQ(codeOf([&] { this->p_.Lnk(outside); }), 21) << outside;
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

} // namespace
