// Broken and hostile files of vector sets: told codes, nothing else.
#include <climits>

#include <zarel/bf.h>

#include "support/FailingAllocation.h"
#include "support/FailingCall.h"
#include "support/Files.h"
#include "system/text.h"
#include "vectorset/files.h"

using namespace vectorset;
using Zarel::C_VSTRUCT;

namespace {

template <class C>
class BrokenSetFile : public ::testing::Test {
protected:
  using Scalar = typename C::T;
  Dense<Scalar> values_ = randomDense<Scalar>(3, 2);
  std::string bytes_ = fileOf(values_, 2);
};
TYPED_TEST_SUITE(BrokenSetFile, AllCases, CaseNames);

#define ZAREL_TYPES                                                                                \
  using T [[maybe_unused]] = typename TypeParam::T;                                                \
  constexpr Storage storage [[maybe_unused]] = TypeParam::storage

/** Reads every value of a set; returns the code of what stops it, 0 if nothing does. */
template <class T>
int codeOfUse(C_VSTRUCT<T>& set, Dense<T>& content) {
  return codeOf([&] { content = contentOf(set); });
}

TYPED_TEST(BrokenSetFile, CutAnywhereIsTold) {
  ZAREL_TYPES;
  for (std::size_t length = 0; length < this->bytes_.size(); ++length) {
    ByteFile file(this->bytes_.substr(0, length));
    C_VSTRUCT<T> set;
    Dense<T> content;

    const int code = codeOf([&] { readAs(set, file.stream(), storage); });

    // A mapped set does not look at its vectors before they are used.
    if (storage == Storage::Mapped && length >= 8) {
      EXPECT_EQ(code, 0) << length;
      EXPECT_EQ(codeOfUse(set, content), 13) << length;
      const std::size_t whole = (length - 8) / (2 * sizeof(T));
      for (std::size_t j = 0; j < whole; ++j)
        EXPECT_EQ(set.GetVal(1, static_cast<int>(j)), this->values_[j][1]);
    } else {
      EXPECT_EQ(code, 21) << length;
      EXPECT_FALSE(set.isValid());
    }
    set.Release(true);
    EXPECT_EQ(set.getDim(), 0);
  }
}

TYPED_TEST(BrokenSetFile, CutAnywhereIsNotRestored) {
  ZAREL_TYPES;
  if (storage != Storage::InCore) return;
  for (std::size_t length = 0; length < this->bytes_.size(); ++length) {
    ByteFile file(this->bytes_.substr(0, length));
    C_VSTRUCT<T> set;

    const Told told = toldBy([&] { set.Restore(nullptr, file.stream(), 1, 0, 0); });

    EXPECT_EQ(told, length < 8 ? (Told{21, 0}) : (Told{21, 31})) << length;
    EXPECT_FALSE(set.isValid());
  }
}

TYPED_TEST(BrokenSetFile, WithAFlippedByteIsTheSameButForIt) {
  ZAREL_TYPES;
  for (std::size_t at = 0; at < this->bytes_.size(); ++at) {
    std::string bytes = this->bytes_;
    bytes[at] = static_cast<char>(~bytes[at]);
    ByteFile file(bytes);
    C_VSTRUCT<T> set;
    Dense<T> content;
    const BlockLimit limit(1 << 20);

    const int code = codeOf([&] { readAs(set, file.stream(), storage); });

    if (at >= 8) {
      ASSERT_EQ(code, 0) << at;
      ASSERT_EQ(codeOfUse(set, content), 0) << at;
      EXPECT_EQ(fileOf(content, 2), bytes) << at;
    } else if (code == 0) {
      EXPECT_EQ(set.getDim() == 3, at >= 4);
      EXPECT_EQ(codeOfUse(set, content), 13) << at; // the vectors are not there
    } else {
      EXPECT_EQ(code, 21) << at;
      EXPECT_FALSE(set.isValid());
    }
  }
}

TYPED_TEST(BrokenSetFile, ThatPromisesTooMuchTakesNoMemory) {
  ZAREL_TYPES;
  const int counts[][2] = {{-1, 2},      {3, -1},           {-1, -1},       {INT_MIN, 1},
                           {1, INT_MIN}, {INT_MAX, 0},      {INT_MAX, 1},   {INT_MAX, INT_MAX},
                           {1 << 17, 0}, {1 << 30, 1 << 2}, {1 << 17, 100}, {INT_MAX, 1 << 30}};
  for (const auto& count : counts) {
    ByteFile file(raw(count[0], count[1]) + this->bytes_.substr(8));
    C_VSTRUCT<T> set;
    const BlockLimit limit(1 << 24);

    EXPECT_EQ(codeOf([&] { readAs(set, file.stream(), storage); }), 21)
        << count[0] << " " << count[1];

    EXPECT_FALSE(set.isValid());
    EXPECT_LE(BlockLimit::largestAsked(), 1U << 16);
  }
}

// More vectors than a head may promise without anything behind it.
TYPED_TEST(BrokenSetFile, OfManyVectorsThatIsCutHasTheOnesThatAreThere) {
  ZAREL_TYPES;
  if (storage != Storage::Mapped) return;
  constexpr int promised = 100000, held = 20000;
  const Dense<T> values = randomDense<T>(held, 2);
  ByteFile file(raw(promised, 2) + fileOf(values, 2).substr(8));
  C_VSTRUCT<T> set;

  readAs(set, file.stream(), storage);

  EXPECT_EQ(set.getDim(), promised);
  for (int j : {0, 1, 12345, held - 1})
    EXPECT_EQ(set.GetVal(1, j), values[static_cast<std::size_t>(j)][1]) << j;
  EXPECT_EQ(codeOf([&] { set.GetVal(0, promised - 1); }), 13);
}

TYPED_TEST(BrokenSetFile, WithAHeadAloneMayPromiseSomeVectorsYetNotMany) {
  ZAREL_TYPES;
  if (storage != Storage::Mapped) return;
  const auto codeWith = [](int vectors, int held) {
    ByteFile file(raw(vectors, 3) +
                  std::string(3 * sizeof(T) * static_cast<std::size_t>(held), 'x') + "x");
    C_VSTRUCT<T> set;
    return codeOf([&] { readAs(set, file.stream(), Storage::Mapped); });
  };

  EXPECT_EQ(codeWith(65536, 0), 0);
  EXPECT_EQ(codeWith(65536 + 1, 0), 21);
  EXPECT_EQ(codeWith(65536 + 32, 2), 0); // 16 for each that is there
  EXPECT_EQ(codeWith(65536 + 33, 2), 21);
}

// The first eight bytes of many forms are large numbers, and the file behind them may be large too.
TYPED_TEST(BrokenSetFile, OfAnotherFormTakesNoMemoryHoweverLargeItIs) {
  ZAREL_TYPES;
  const std::string heads[] = {
      std::string("\x93NUMPY\x01\x00\x76\x00{'descr': '<f8', 'fortran_order': True}\n", 48),
      std::string("\x93NUMPY\x02\x00\x76\x00\x00\x00{'descr': '<f8'}", 28),
      "x1,x2,y\n0.5,0.25,1\n",
      std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16),
      std::string("\x7f"
                  "ELF\x02\x01\x01\0\0\0\0\0\0\0\0\0",
                  16),
      raw(INT_MAX, 100000)};
  constexpr off_t sizes[] = {64, 1LL << 20, 5LL << 30}; // holes, which take no place
  for (const std::string& head : heads)
    for (const off_t size : sizes) {
      ByteFile file(head);
      ASSERT_EQ(ftruncate(file.handle(), size), 0);
      C_VSTRUCT<T> read, restored;
      const BlockLimit limit(1 << 24);

      EXPECT_EQ(codeOf([&] { readAs(read, file.stream(), storage); }), 21) << head << size;
      file.moveTo(0);
      const int mode = storage == Storage::InCore ? 1 : 2;
      EXPECT_EQ(codeOf([&] { restored.Restore(nullptr, file.stream(), mode, 0, 0); }), 21) << head;

      EXPECT_LE(BlockLimit::largestAsked(), 1U << 16);
      EXPECT_FALSE(read.isValid());
      EXPECT_FALSE(restored.isValid());
    }
}

// What follows such vectors is none of theirs.
TYPED_TEST(BrokenSetFile, WithEmptyVectorsHoldsNoMoreForWhatFollows) {
  ZAREL_TYPES;
  const auto codeWith = [](int vectors) {
    ByteFile file(raw(vectors, 0) + "something else");
    C_VSTRUCT<T> set;
    return codeOf([&] { readAs(set, file.stream(), storage); });
  };

  EXPECT_EQ(codeWith(65536), 0);
  EXPECT_EQ(codeWith(65536 + 1), 21);
}

TYPED_TEST(BrokenSetFile, WithLongVectorsThatAreNotThereTakesNoMemory) {
  ZAREL_TYPES;
  for (int vectors : {1, 2, 100}) {
    ByteFile file(raw(vectors, INT_MAX) + this->bytes_.substr(8));
    C_VSTRUCT<T> set;
    Dense<T> content;
    const BlockLimit limit(1 << 24);

    int code = codeOf([&] { readAs(set, file.stream(), storage); });
    if (code == 0) code = codeOf([&] { set.MapBlock(0, 0); });

    EXPECT_EQ(code, storage == Storage::Mapped ? 13 : 21);
    EXPECT_LE(BlockLimit::largestAsked(), 1U << 18);
  }
}

// The first window is there, the rest is not: that is found out before memory is taken for it.
TYPED_TEST(BrokenSetFile, WithALongVectorThatEndsEarlyTakesNoMemory) {
  ZAREL_TYPES;
  if (storage != Storage::FileResident) return;
  ByteFile file(raw(1, INT_MAX) + std::string(5000 * sizeof(T), 'x')), out;
  C_VSTRUCT<T> set;
  const BlockLimit limit(1 << 24);
  readAs(set, file.stream(), storage);

  EXPECT_EQ(codeOf([&] { set.GetVal(0, 0); }), 21);
  EXPECT_EQ(codeOf([&] { set.Write(out.stream()); }), 21);

  EXPECT_LE(BlockLimit::largestAsked(), 1U << 18);
}

TYPED_TEST(BrokenSetFile, WithAGapBeyondReasonIsTold) {
  ZAREL_TYPES;
  const auto codeWith = [&](__int64 gap) {
    ByteFile file(this->bytes_);
    C_VSTRUCT<T> set;
    const int mode = storage == Storage::InCore ? 1 : 2;
    const int code =
        codeOf([&] { set.Read(file.stream(), mode, storage == Storage::Mapped, 0, 0, gap); });
    if (code == 0 && mode == 2) return codeOf([&] { set.MapBlock(2, 2); });
    return code;
  };

  EXPECT_EQ(codeWith(-1), 12);
  EXPECT_EQ(codeWith(LLONG_MIN), 12);
  EXPECT_EQ(codeWith(LLONG_MAX), storage == Storage::InCore ? 0 : 20);
  EXPECT_EQ(codeWith(LLONG_MAX / 2), storage == Storage::InCore ? 0 : 20);
  EXPECT_EQ(codeWith(1 << 30), storage == Storage::InCore   ? 0
                               : storage == Storage::Mapped ? 13
                                                            : 21);
}

// Arguments.

TEST(SetFileArguments, NegativeCountsAreNone) {
  ByteFile file;
  C_VSTRUCT<double> set;

  EXPECT_EQ(set.Read(file.stream(), 1, false, -3, -2, 0), 0);

  EXPECT_TRUE(set.isValid());
  EXPECT_EQ(set.getDim(), 0);
  EXPECT_EQ(set.getDim1(), 0);
}

TEST(SetFileArguments, AnUnknownModeThrows3) {
  const support::TempDirectory folder;
  const std::string path = folder.file("set");
  support::writeBytes(path, fileOf(randomDense<double>(1, 1), 1));
  std::wstring name = Zarel::toWide(path);
  ByteFile file(support::bytesOf(path));
  const long before = openDescriptors();
  C_VSTRUCT<double> set;

  EXPECT_EQ(codeOf([&] { set.Read(file.stream(), 3, true, 0, 0, 0); }), 3);
  EXPECT_EQ(codeOf([&] { set.Read(name.c_str(), 0, 0, true, 0, 0, 0); }), 3);
  EXPECT_EQ(codeOf([&] { set.Restore(name.data(), file.stream(), -1, 0, 0); }), 3);
  EXPECT_EQ(codeOf([&] { set.Restore(name.data(), 0ULL, 4, 0, 0); }), 3);

  EXPECT_EQ(openDescriptors(), before);
}

TEST(SetFileArguments, ANameThatCannotBeOpenedThrows19) {
  const support::TempDirectory folder;
  std::wstring absent = Zarel::toWide(folder.file("absent"));
  std::wstring directory = Zarel::toWide(folder.path());
  C_VSTRUCT<double> set;

  EXPECT_EQ(codeOf([&] { set.Read(absent.c_str(), 0, 1, true, 0, 0, 0); }), 19);
  EXPECT_EQ(codeOf([&] { set.Read(directory.c_str(), 0, 2, true, 0, 0, 0); }), 19);
  EXPECT_EQ(codeOf([&] { set.Restore(absent.data(), 0ULL, 1, 0, 0); }), 19);
  EXPECT_EQ(codeOf([&] { set.Restore(directory.data(), 0ULL, 2, 0, 0); }), 19);
  EXPECT_EQ(toldBy([&] { set.Read(nullptr, 0, 1, true, 0, 0, 0); }), (Told{19, 18}));
  EXPECT_EQ(toldBy([&] { set.Restore(nullptr, 0ULL, 1, 0, 0); }), (Told{19, 18}));
}

TEST(SetFileArguments, OffsetsOutsideTheFileAreTold) {
  const support::TempDirectory folder;
  const std::string path = folder.file("set");
  support::writeBytes(path, fileOf(randomDense<double>(1, 1), 1));
  std::wstring name = Zarel::toWide(path);
  const long before = openDescriptors();
  C_VSTRUCT<double> set;

  EXPECT_EQ(toldBy([&] { set.Read(name.c_str(), -1, 1, true, 0, 0, 0); }), (Told{20, 18}));
  EXPECT_EQ(toldBy([&] { set.Restore(name.data(), ULLONG_MAX, 1, 0, 0); }), (Told{20, 18}));
  for (int mode : {1, 2}) {
    EXPECT_EQ(toldBy([&] { set.Read(name.c_str(), 100, mode, true, 0, 0, 0); }), (Told{21, 0}));
    EXPECT_EQ(toldBy([&] { set.Restore(name.data(), 100ULL, mode, 0, 0); }), (Told{21, 0}));
  }
  EXPECT_EQ(toldBy([&] { set.Read(name.c_str(), 100, 1, true, 1, 1, 0); }), (Told{21, 0}));
  EXPECT_EQ(toldBy([&] { set.Restore(name.data(), 100ULL, 1, 1, 1); }), (Told{21, 31}));
  EXPECT_EQ(openDescriptors(), before);
  set.Read(name.c_str(), 100, 2, true, 1, 1, 0);
  EXPECT_EQ(codeOf([&] { set.MapBlock(0, 0); }), 13);
}

TEST(SetFileArguments, AFailedReadLeavesASetThatCanBeUsedAgain) {
  const Dense<double> values = randomDense<double>(2, 3);
  ByteFile good(fileOf(values, 3)), bad(raw(2, 3, 1.0));
  C_VSTRUCT<double> set;
  set.Read(good.stream());

  EXPECT_EQ(codeOf([&] { set.Read(bad.stream()); }), 21);
  EXPECT_FALSE(set.isValid());
  good.moveTo(0);
  set.Read(good.stream(), 2, true, 0, 0, 0);

  EXPECT_EQ(contentOf(set), values);
}

// Faults.

/** Everything that files of sets are for; what is told of the content must hold where no fault
 * came. */
void useFiles(const std::string& path, const std::string& bytes) {
  support::writeBytes(path, bytes);
  std::wstring name = Zarel::toWide(path);
  ByteFile file(bytes), out;
  C_VSTRUCT<double> inCore, mapped, resident, byName, dumped, restored;
  struct Close { // the caller's part of a set that was restored by name
    C_VSTRUCT<double>& set;
    ~Close() {
      if (set.getDataFileDescriptor() > 0) CBF_close64(set.getDataFileDescriptor());
    }
  };
  inCore.Read(file.stream());
  file.moveTo(0);
  mapped.Read(file.stream(), 2, true, 0, 0, 0);
  file.moveTo(0);
  resident.Read(file.stream(), 2, false, 0, 0, 0);
  byName.Read(name.c_str(), 0, 2, true, 0, 0, 0);
  EXPECT_EQ(inCore.GetVal(2, 1), mapped.GetVal(2, 1));
  EXPECT_EQ(resident.GetVal(2, 1), byName.GetVal(2, 1));
  for (auto* set : {&inCore, &mapped, &resident, &byName}) {
    set->Write(out.stream());
    set->WriteT(out.stream(), false);
  }
  dumped.Restore(name.data(), file.stream(), 2, 2, 3);
  const Close close{restored};
  restored.Restore(name.data(), 0ULL, 2, 0, 0);
  EXPECT_EQ(restored.GetVal(2, 1), inCore.GetVal(2, 1));
  restored.Release(false);
}

TEST(SetFileFaults, EveryAllocationMayFail) {
  const support::TempDirectory folder;
  const std::string bytes = fileOf(randomDense<double>(2, 3), 3);
  const long before = openDescriptors();
  const auto use = [&] {
    std::string path;
    {
      const support::Unharmed preparing;
      path = folder.file("set");
      support::writeBytes(path, bytes);
    }
    useFiles(path, bytes);
  };

  EXPECT_GT(support::forEachFailingAllocation(use), 40);

  EXPECT_EQ(openDescriptors(), before);
}

TEST(SetFileFaults, EverySystemCallMayFail) {
  const support::TempDirectory folder;
  const std::string bytes = fileOf(randomDense<double>(2, 3), 3);
  const long before = openDescriptors();

  EXPECT_GT(support::forEachFailingCall([&] { useFiles(folder.file("set"), bytes); }), 40);

  EXPECT_EQ(openDescriptors(), before);
}

TEST(SetFileFaults, ASeekOverVectorsOfAFileByNameIsTold) {
  const support::TempDirectory folder;
  const std::string path = folder.file("set");
  support::writeBytes(path, fileOf(randomDense<double>(2, 3), 3));
  std::wstring name = Zarel::toWide(path);
  const long before = openDescriptors();
  // To the offset; to learn how much the file holds comes between; where the vectors begin; over
  // them.
  for (long n : {1, 3, 4}) {
    C_VSTRUCT<double> set;
    const support::FailingCall failing(n, "lseek", ENOSPC);

    EXPECT_EQ(toldBy([&] { set.Restore(name.data(), 0ULL, 2, 0, 0); }), (Told{20, 5})) << n;

    EXPECT_TRUE(support::FailingCall::happened()) << n;
    EXPECT_FALSE(set.isValid());
  }
  EXPECT_EQ(openDescriptors(), before);
  EXPECT_TRUE(std::filesystem::exists(path));
}

/** What reading a good file tells when its n-th call of a name fails. */
Told toldWhenReading(const char* call, long n, int mode, bool map, bool restore) {
  ByteFile file(fileOf(randomDense<double>(2, 3), 3));
  C_VSTRUCT<double> set;
  const support::FailingCall failing(n, call, ENOSPC);
  const Told told = toldBy([&] {
    if (restore)
      set.Restore(nullptr, file.stream(), mode, 0, 0);
    else
      set.Read(file.stream(), mode, map, 0, 0, 0);
  });
  EXPECT_TRUE(support::FailingCall::happened());
  EXPECT_FALSE(set.isValid());
  return told;
}

TEST(SetFileFaults, HaveTheirCodes) {
  EXPECT_EQ(toldWhenReading("read", 1, 1, false, false), (Told{21, 0}));
  EXPECT_EQ(toldWhenReading("read", 2, 1, false, false), (Told{21, 0}));
  EXPECT_EQ(toldWhenReading("read", 3, 1, false, false), (Told{21, 0}));
  EXPECT_EQ(toldWhenReading("read", 3, 2, false, false), (Told{21, 0}));
  EXPECT_EQ(toldWhenReading("read", 2, 1, false, true), (Told{21, 0}));
  EXPECT_EQ(toldWhenReading("read", 3, 1, false, true), (Told{21, 5}));
  for (long n : {2, 3}) // the first one is made to learn how much the file holds
    EXPECT_EQ(toldWhenReading("lseek", n, 2, true, false), (Told{20, 0})) << n;
  EXPECT_EQ(toldWhenReading("lseek", 3, 2, true, true), (Told{20, 0}));
  EXPECT_EQ(toldWhenReading("lseek", 3, 2, false, false), (Told{20, 0}));
}

} // namespace
