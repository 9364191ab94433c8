// The files of vector sets, byte by byte, and the ways in which they come back.
#include <csignal>
#include <cstring>
#include <type_traits>
#include <utility>

#include <sys/resource.h>

#include <zarel/bf.h>

#include "support/FailingCall.h"
#include "support/Files.h"
#include "system/text.h"
#include "vectorset/files.h"

using namespace vectorset;
using Zarel::C_VSTRUCT;

namespace {

template <class C>
class SetFile : public ::testing::Test {
protected:
  using Scalar = typename C::T;
  static constexpr int kVectors = 3;
  static constexpr int kLength = 5;
  Dense<Scalar> values_ = randomDense<Scalar>(kVectors, kLength);
};
TYPED_TEST_SUITE(SetFile, AllCases, CaseNames);

/** The file of a set with its words turned round. */
template <class T>
std::string turnedFileOf(const Dense<T>& values, int length) {
  constexpr std::size_t word = isComplex<T> ? sizeof(T) / 2 : sizeof(T);
  std::string bytes = fileOf(values, length);
  for (std::size_t at = 0; at < bytes.size(); at += at < 8 ? 4 : word)
    std::reverse(bytes.begin() + static_cast<long>(at),
                 bytes.begin() + static_cast<long>(at + (at < 8 ? 4 : word)));
  return bytes;
}

#define ZAREL_TYPES                                                                                \
  using T [[maybe_unused]] = typename TypeParam::T;                                                \
  constexpr Storage storage [[maybe_unused]] = TypeParam::storage

// Writing.

TYPED_TEST(SetFile, IsTheCountsAndVectorAfterVectorInBothForms) {
  ZAREL_TYPES;
  MadeSet<T> set(storage, this->values_, 5);
  ByteFile portable, same, dumped;

  EXPECT_EQ(set->Write(portable.stream(), true), 0);
  EXPECT_EQ(set->Write(same.stream()), 0);
  EXPECT_EQ(set->Dump(dumped.stream()), 0);

  EXPECT_EQ(portable.bytes(), fileOf(this->values_, 5));
  EXPECT_EQ(same.bytes(), portable.bytes());
  EXPECT_EQ(dumped.bytes(), portable.bytes());
}

TYPED_TEST(SetFile, LeavesOutTheGap) {
  ZAREL_TYPES;
  if (storage == Storage::InCore) return;
  MadeSet<T> set(storage, this->values_, 5, 16);
  ByteFile file;

  set->Write(file.stream());

  EXPECT_EQ(file.bytes(), fileOf(this->values_, 5));
}

TYPED_TEST(SetFile, OfALinkIsItsRectangle) {
  ZAREL_TYPES;
  const Dense<T> values = randomDense<T>(4, 30);
  MadeSet<T> set(storage, values, 30);
  C_VSTRUCT<T> link(*set, 1, 3, 10, 20);
  ByteFile file, rows;

  link.Write(file.stream());
  link.WriteT(rows.stream(), true);

  EXPECT_EQ(file.bytes(), fileOf(partOf(values, 1, 3, 10, 20), 10));
  EXPECT_EQ(rows.bytes(), raw(10, 2) + rowsOf(partOf(values, 1, 3, 10, 20), 10));
}

TYPED_TEST(SetFile, OfALinkWithoutRowsOrVectorsIsTheCountsAlone) {
  ZAREL_TYPES;
  MadeSet<T> set(storage, this->values_, 5);
  C_VSTRUCT<T> flat(*set, 1, 3, 2, 2), none(*set, 2, 2, 0, -1);
  ByteFile file;

  flat.Write(file.stream());
  none.Dump(file.stream());

  EXPECT_EQ(file.bytes(), raw(2, 0, 0, 5));
}

TYPED_TEST(SetFile, ByRowsTellsItsCountsInAnotherOrderInEachForm) {
  ZAREL_TYPES;
  MadeSet<T> set(storage, this->values_, 5);
  ByteFile portable, rawForm;

  EXPECT_EQ(set->WriteT(portable.stream(), true), 0);
  EXPECT_EQ(set->WriteT(rawForm.stream(), false), 0);

  EXPECT_EQ(portable.bytes(), raw(5, 3) + rowsOf(this->values_, 5));
  EXPECT_EQ(rawForm.bytes(), raw(3, 5) + rowsOf(this->values_, 5));
}

TYPED_TEST(SetFile, ByRowsGoesOutInPiecesThatDoNotShow) {
  ZAREL_TYPES;
  const Dense<T> values = randomDense<T>(7, 10001);
  MadeSet<T> set(storage, values, 10001, storage == Storage::InCore ? 0 : 32);
  ByteFile file;

  set->WriteT(file.stream(), true);

  EXPECT_EQ(file.bytes(), raw(10001, 7) + rowsOf(values, 10001));
}

TYPED_TEST(SetFile, WithoutValuesIsTheCountsAlone) {
  ZAREL_TYPES;
  for (const auto& [vectors, length] : {std::pair(0, 5), std::pair(2, 0), std::pair(0, 0)}) {
    ByteFile source(raw(vectors, length)), file, rows, rawRows;
    C_VSTRUCT<T> set;
    readAs(set, source.stream(), storage);
    EXPECT_TRUE(set.isValid());
    EXPECT_EQ(set.getDim(), vectors);
    EXPECT_EQ(set.getDim1(), length);

    set.Write(file.stream());
    set.WriteT(rows.stream(), true);
    set.WriteT(rawRows.stream(), false);

    EXPECT_EQ(file.bytes(), raw(vectors, length));
    EXPECT_EQ(rows.bytes(), raw(length, vectors));
    EXPECT_EQ(rawRows.bytes(), raw(vectors, length));
  }
}

TYPED_TEST(SetFile, LeavesNothingMappedButWhatWas) {
  ZAREL_TYPES;
  if (storage != Storage::Mapped) return;
  MadeSet<T> set(storage, this->values_, 5);
  ByteFile file;
  const auto writeAll = [&] {
    set->Write(file.stream(), true);
    set->Dump(file.stream());
    set->WriteT(file.stream(), true);
    set->WriteT(file.stream(), false);
  };

  writeAll();
  for (unsigned int j = 0; j < 3; ++j)
    EXPECT_FALSE(set->isMapped(j));
  set->MapAllBlocks();
  writeAll();
  EXPECT_TRUE(set->isMapped(0, 2));
}

TYPED_TEST(SetFile, GoesBehindTheDataThatItsOwnStreamHolds) {
  ZAREL_TYPES;
  const std::string bytes = fileOf(this->values_, 5);
  ByteFile file(bytes);
  C_VSTRUCT<T> set;
  readAs(set, file.stream(), storage);

  set.Write(file.stream());
  set.WriteT(file.stream(), true);

  EXPECT_EQ(file.bytes(), bytes + bytes + raw(5, 3) + rowsOf(this->values_, 5));
}

// Reading.

TYPED_TEST(SetFile, ComesBackInEveryStorage) {
  ZAREL_TYPES;
  ByteFile file("headhead" + fileOf(this->values_, 5) + "tail");
  file.moveTo(8);
  C_VSTRUCT<T> set;

  readAs(set, file.stream(), storage);

  EXPECT_TRUE(set.isValid());
  EXPECT_EQ(set.getCoreMode(), storage == Storage::InCore ? 1 : 2);
  EXPECT_EQ(set.GetMapFile(), storage == Storage::Mapped); // as asked for, in core too
  EXPECT_EQ(set.getMemOwner(), storage == Storage::InCore);
  EXPECT_EQ(set.getInitialOffSet(), storage == Storage::Mapped ? 16U : 0U);
  EXPECT_EQ(file.position(), static_cast<long long>(16 + 15 * sizeof(T)));
  EXPECT_EQ(contentOf(set), this->values_);
}

TYPED_TEST(SetFile, TakesCountsFromTheCallerInstead) {
  ZAREL_TYPES;
  const std::string whole = fileOf(this->values_, 5);
  ByteFile bare(whole.substr(8)), half(whole), lengthOnly("head" + raw(3) + whole.substr(8));
  half.moveTo(4);
  lengthOnly.moveTo(4);
  const int mode = storage == Storage::InCore ? 1 : 2;
  const bool map = storage == Storage::Mapped;
  C_VSTRUCT<T> a, b, c;

  a.Read(bare.stream(), mode, map, 3, 5, 0);
  b.Read(half.stream(), mode, map, 3, 0, 0);
  c.Read(lengthOnly.stream(), mode, map, 0, 5, 0);

  EXPECT_EQ(contentOf(a), this->values_);
  EXPECT_EQ(contentOf(b), this->values_);
  EXPECT_EQ(contentOf(c), this->values_);
}

TYPED_TEST(SetFile, WithGapsIsAdoptedAndReadAsIfContiguousInCore) {
  ZAREL_TYPES;
  const int width = static_cast<int>(sizeof(T));
  const std::string gap(sizeof(T), '\0');
  std::string bytes = raw(3, 5);
  for (int j = 0; j < 3; ++j)
    bytes += rawList(this->values_[static_cast<std::size_t>(j)]) + (j < 2 ? gap : "");
  ByteFile file(bytes);
  C_VSTRUCT<T> set;

  readAs(set, file.stream(), storage, width);

  EXPECT_EQ(set.getBlockGap(), sizeof(T));
  if (storage == Storage::InCore) {
    EXPECT_EQ(set.GetVal(0, 1), T(0)); // the gap
    EXPECT_EQ(set.GetVal(1, 1), this->values_[1][0]);
    EXPECT_EQ(set.GetVal(2, 2), this->values_[2][0]);
  } else {
    EXPECT_EQ(contentOf(set), this->values_);
    EXPECT_EQ(file.position(), static_cast<long long>(bytes.size()));
  }
}

TYPED_TEST(SetFile, InCoreKeepsWhatItWasToldWithoutEffect) {
  ZAREL_TYPES;
  if (storage != Storage::InCore) return;
  for (bool map : {false, true}) {
    ByteFile file(fileOf(this->values_, 5));
    C_VSTRUCT<T> set;

    set.Read(file.stream(), 1, map, 0, 0, 3); // no whole number of elements of most scalars

    EXPECT_EQ(set.getBlockGap(), 3U);
    EXPECT_EQ(set.GetMapFile(), map);
    ByteFile told;
    set.Info(told.stream());
    std::fflush(told.stream());
    EXPECT_NE(told.bytes().find(map ? "\tMapFile\t:\t\t1\n" : "\tMapFile\t:\t\t0\n"),
              std::string::npos);
    EXPECT_EQ(contentOf(set), this->values_);
    C_VSTRUCT<T> link(set, 1, 3, 2, 4);
    EXPECT_EQ(contentOf(link), partOf(this->values_, 1, 3, 2, 4));
    set.Resize(5, nullptr);
    set.Resize(3, nullptr);
    EXPECT_EQ(contentOf(set), this->values_);
  }
}

TYPED_TEST(SetFile, InCoreReckonsAsIfThereWereNoGap) {
  ZAREL_TYPES;
  if (storage != Storage::InCore || std::is_integral_v<T>) return;
  ByteFile file(fileOf(this->values_, 5));
  C_VSTRUCT<T> set, plain;
  set.Read(file.stream(), 1, false, 0, 0, 3);
  file.moveTo(0);
  plain.Read(file.stream());

  typename C_VSTRUCT<T>::Vector x(3), y;
  x.Zero(0, -1);
  x[2] = T(1);
  set.Mv(x, y, false, 0, -1);
  EXPECT_EQ(y[4], this->values_[2][4]);
  C_MatMGe<T> gram, same;
  set.MatQtQ(gram);
  plain.MatQtQ(same);
  for (int j = 0; j < 3; ++j)
    for (int i = 0; i < 3; ++i)
      EXPECT_EQ(gram[j][i], same[j][i]);
}

TYPED_TEST(SetFile, RestoresWhatWasDumped) {
  ZAREL_TYPES;
  if (storage == Storage::FileResident) return; // there is no such form
  const int mode = storage == Storage::InCore ? 1 : 2;
  const support::TempDirectory folder;
  const std::string path = folder.file("set");
  support::writeBytes(path, "headhead" + fileOf(this->values_, 5));
  std::wstring name = Zarel::toWide(path);
  FILE* stream = std::fopen(path.c_str(), "r+b");
  lseek(fileno(stream), 8, SEEK_SET);
  C_VSTRUCT<T> byStream, byName;

  EXPECT_EQ(byStream.Restore(name.data(), stream, mode, 0, 0), 0);
  EXPECT_EQ(byName.Restore(name.data(), 16ULL, mode, 3, 5), 0);

  EXPECT_EQ(contentOf(byStream), this->values_);
  EXPECT_EQ(contentOf(byName), this->values_);
  EXPECT_EQ(byStream.getMemOwner(), mode == 1);
  EXPECT_TRUE(byName.getMemOwner());
  if (mode == 2) {
    EXPECT_EQ(byStream.getDataFileName(), name);
    EXPECT_EQ(byName.getInitialOffSet(), 16U);
  }
  const int descriptor = byName.getDataFileDescriptor();
  byName.Release(false);
  EXPECT_TRUE(isOpen(descriptor)); // neither closed nor removed
  EXPECT_TRUE(std::filesystem::exists(path));
  CBF_close64(descriptor);
  byStream.Release(false);
  std::fclose(stream);
}

TYPED_TEST(SetFile, DumpedComesBackWithTheCountsOfTheFile) {
  ZAREL_TYPES;
  MadeSet<T> set(storage, this->values_, 5);
  const support::TempDirectory folder;
  const std::string path = folder.file("set");
  std::wstring name = Zarel::toWide(path);
  FILE* stream = std::fopen(path.c_str(), "w+b");
  set->Dump(stream);
  for (int mode : {1, 2}) {
    C_VSTRUCT<T> byStream, byName;
    lseek(fileno(stream), 0, SEEK_SET);

    byStream.Restore(name.data(), stream, mode, 0, 0);
    byName.Restore(name.data(), 0ULL, mode, 0, 0);

    for (auto* back : {&byStream, &byName}) {
      EXPECT_EQ(back->getDim(), 3);
      EXPECT_EQ(back->getDim1(), 5);
      EXPECT_EQ(contentOf(*back), this->values_);
    }
    const int descriptor = byName.getDataFileDescriptor();
    byName.Release(false);
    CBF_close64(descriptor);
  }
  std::fclose(stream);
}

TYPED_TEST(SetFile, ReadByNameStaysOpenUntilRelease) {
  ZAREL_TYPES;
  const support::TempDirectory folder;
  const std::string path = folder.file("set");
  const std::string bytes = "headhead" + fileOf(this->values_, 5);
  support::writeBytes(path, bytes);
  const long before = openDescriptors();
  C_VSTRUCT<T> set;

  set.Read(Zarel::toWide(path).c_str(), 8, storage == Storage::InCore ? 1 : 2,
           storage == Storage::Mapped, 0, 0, 0);

  EXPECT_EQ(contentOf(set), this->values_);
  EXPECT_EQ(set.getDataFileName(), Zarel::toWide(path));
  EXPECT_EQ(openDescriptors() > before, storage != Storage::InCore);
  set.Release(true);
  EXPECT_EQ(openDescriptors(), before);
  EXPECT_EQ(support::bytesOf(path), bytes); // not the set's to remove
  EXPECT_EQ(set.Allocate(2, 2, 2, nullptr), 0);
  EXPECT_EQ(support::bytesOf(path), bytes); // nor to make anew
  EXPECT_NE(set.getDataFileName(), Zarel::toWide(path));
}

TYPED_TEST(SetFile, OfAnExceptionIsTurned) {
  ZAREL_TYPES;
  if (storage == Storage::Mapped) return; // mapped bytes are as they are
  const std::string turned = turnedFileOf(this->values_, 5);
  ByteFile file(turned);
  C_VSTRUCT<T> set;

  AddFileException(file.stream());
  readAs(set, file.stream(), storage);
  EXPECT_EQ(contentOf(set), this->values_);
  file.moveTo(static_cast<long long>(turned.size()));
  set.Write(file.stream());
  RemFileException(file.stream());

  EXPECT_EQ(file.bytes().substr(turned.size()), turned);
}

TYPED_TEST(SetFile, ThatDoesNotFitMemoryIsAdopted) {
  ZAREL_TYPES;
  if (storage != Storage::InCore) return;
  const Dense<T> values = randomDense<T>(50, 3000); // 300 kB at least, its windows 48 kB at most
  const support::TempDirectory folder;
  const std::string path = folder.file("set");
  support::writeBytes(path, fileOf(values, 3000));
  std::wstring name = Zarel::toWide(path);
  FILE* stream = std::fopen(path.c_str(), "r+b");
  C_VSTRUCT<T> resident, mapped, restored, restoredByName;
  {
    const BlockLimit limit(200000);
    resident.Read(stream);
    lseek(fileno(stream), 0, SEEK_SET);
    mapped.Read(stream, 1, true, 0, 0, 0);
    lseek(fileno(stream), 0, SEEK_SET);
    restored.Restore(name.data(), stream, 1, 0, 0);
    restoredByName.Restore(name.data(), 0ULL, 1, 0, 0);
  }
  EXPECT_FALSE(resident.GetMapFile());
  for (auto* set : {&resident, &mapped, &restored, &restoredByName}) {
    EXPECT_EQ(set->getCoreMode(), 2);
    EXPECT_FALSE(set->getMemOwner());
    EXPECT_EQ(contentOf(*set), values);
    EXPECT_EQ(codeOf([&] { set->Resize(2, nullptr); }), 2870);
  }
  const int descriptor = restoredByName.getDataFileDescriptor();
  restoredByName.Release(true);
  EXPECT_TRUE(std::filesystem::exists(path));
  CBF_close64(descriptor);
  std::fclose(stream);
}

// Mapped bytes are as they are, which is not what the set in core would have held.
TYPED_TEST(SetFile, OfAnExceptionThatDoesNotFitMemoryIsNotMapped) {
  ZAREL_TYPES;
  if (storage != Storage::InCore) return;
  const Dense<T> values = randomDense<T>(50, 3000);
  ByteFile file(turnedFileOf(values, 3000));
  C_VSTRUCT<T> set;
  AddFileException(file.stream());
  {
    const BlockLimit limit(200000);
    set.Read(file.stream(), 1, true, 0, 0, 0);
  }

  EXPECT_EQ(set.getCoreMode(), 2);
  EXPECT_FALSE(set.GetMapFile());
  EXPECT_EQ(contentOf(set), values);
  RemFileException(file.stream());
}

TYPED_TEST(SetFile, OfAnExceptionIsDumpedAndRestoredAsItLies) {
  ZAREL_TYPES;
  MadeSet<T> set(storage, this->values_, 5);
  ByteFile file;
  C_VSTRUCT<T> back;
  AddFileException(file.stream());

  set->Dump(file.stream());
  set->WriteT(file.stream(), false);
  file.moveTo(0);
  back.Restore(nullptr, file.stream(), 1, 0, 0);
  RemFileException(file.stream());

  EXPECT_EQ(file.bytes(), fileOf(this->values_, 5) + raw(3, 5) + rowsOf(this->values_, 5));
  EXPECT_EQ(contentOf(back), this->values_);
}

TYPED_TEST(SetFile, OfAnExceptionByRowsIsTurned) {
  ZAREL_TYPES;
  MadeSet<T> set(storage, Dense<T>(1, this->values_[0]), 5); // one vector: rows are its values
  ByteFile file;
  AddFileException(file.stream());

  set->WriteT(file.stream(), true);
  RemFileException(file.stream());

  const std::string byVectors = turnedFileOf(Dense<T>(1, this->values_[0]), 5);
  EXPECT_EQ(file.bytes(), byVectors.substr(4, 4) + byVectors.substr(0, 4) + byVectors.substr(8));
}

// Bytes by hand.

TEST(SetFileBytes, OfTwoVectorsOfThreeDoubles) {
  double data[] = {1, 1.5, -2, 0, 0.25, 1e300};
  C_VSTRUCT<double> set(2, 3, data);
  ByteFile file, rows, rawRows;

  set.Write(file.stream());
  set.WriteT(rows.stream(), true);
  set.WriteT(rawRows.stream(), false);

  EXPECT_EQ(file.bytes(), support::hex("02 00 00 00  03 00 00 00"
                                       "00 00 00 00 00 00 f0 3f  00 00 00 00 00 00 f8 3f"
                                       "00 00 00 00 00 00 00 c0  00 00 00 00 00 00 00 00"
                                       "00 00 00 00 00 00 d0 3f  9c 75 00 88 3c e4 37 7e"));
  const std::string byRows = support::hex("00 00 00 00 00 00 f0 3f  00 00 00 00 00 00 00 00"
                                          "00 00 00 00 00 00 f8 3f  00 00 00 00 00 00 d0 3f"
                                          "00 00 00 00 00 00 00 c0  9c 75 00 88 3c e4 37 7e");
  EXPECT_EQ(rows.bytes(), support::hex("03 00 00 00  02 00 00 00") + byRows);
  EXPECT_EQ(rawRows.bytes(), support::hex("02 00 00 00  03 00 00 00") + byRows);
}

TEST(SetFileBytes, OfTheOtherScalars) {
  short shorts[] = {1, -2};
  int ints[] = {1, -2};
  float floats[] = {1, -2};
  std::complex<float> complexes[] = {{1, -2}};
  std::complex<double> wides[] = {{1, -2}};
  ByteFile a, b, c, d, e;

  C_VSTRUCT<short>(1, 2, shorts).Write(a.stream());
  C_VSTRUCT<int>(1, 2, ints).Dump(b.stream());
  C_VSTRUCT<float>(2, 1, floats).Write(c.stream());
  C_VSTRUCT<std::complex<float>>(1, 1, complexes).Write(d.stream());
  C_VSTRUCT<std::complex<double>>(1, 1, wides).Dump(e.stream());

  EXPECT_EQ(a.bytes(), support::hex("01 00 00 00 02 00 00 00  01 00 fe ff"));
  EXPECT_EQ(b.bytes(), support::hex("01 00 00 00 02 00 00 00  01 00 00 00 fe ff ff ff"));
  EXPECT_EQ(c.bytes(), support::hex("02 00 00 00 01 00 00 00  00 00 80 3f 00 00 00 c0"));
  EXPECT_EQ(d.bytes(), support::hex("01 00 00 00 01 00 00 00  00 00 80 3f 00 00 00 c0"));
  EXPECT_EQ(e.bytes(), support::hex("01 00 00 00 01 00 00 00"
                                    "00 00 00 00 00 00 f0 3f  00 00 00 00 00 00 00 c0"));
}

// Streams with a buffer.

TEST(SetFileStreams, MayBeReadAndWrittenThroughTheirBufferBefore) {
  const Dense<double> values = randomDense<double>(2, 3);
  ByteFile file("h" + fileOf(values, 3)), out;
  C_VSTRUCT<double> set;

  EXPECT_EQ(std::fgetc(file.stream()), 'h');
  set.Read(file.stream());
  std::fputs("head", out.stream());
  set.Write(out.stream());
  std::fputs("between", out.stream());
  set.WriteT(out.stream(), true);

  EXPECT_EQ(contentOf(set), values);
  EXPECT_EQ(out.bytes(), "head" + fileOf(values, 3) + "between" + raw(3, 2) + rowsOf(values, 3));
}

TEST(SetFileStreams, PipesAreReadIntoCoreAndWritten) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  FILE* in = fdopen(ends[0], "rb");
  FILE* out = fdopen(ends[1], "wb");
  const Dense<double> values = randomDense<double>(2, 3);
  MadeSet<double> set(Storage::FileResident, values, 3);
  C_VSTRUCT<double> back, adopted;

  set->Write(out);
  set->Write(out);
  back.Read(in);
  EXPECT_EQ(toldBy([&] { adopted.Read(in, 2, true, 0, 0, 0); }), (Told{20, 0}));

  EXPECT_EQ(contentOf(back), values);
  EXPECT_FALSE(adopted.isValid());
  std::fclose(in);
  std::fclose(out);
}

// A pipe does not tell beforehand that it ends, and what the system said before is no reason.
TEST(SetFileStreams, PipesThatEndEarlyAreTold) {
  const std::string whole = fileOf(randomDense<double>(2, 3), 3);
  for (const std::size_t length : {3U, 8U, 30U}) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    ASSERT_EQ(write(ends[1], whole.data(), length), static_cast<ssize_t>(length));
    close(ends[1]);
    FILE* const in = fdopen(ends[0], "rb");
    C_VSTRUCT<double> set;

    errno = ENOSPC;
    EXPECT_EQ(toldBy([&] { set.Restore(nullptr, in, 1, 0, 0); }),
              length < 8 ? (Told{21, 0}) : (Told{21, 31}))
        << length;

    EXPECT_FALSE(set.isValid());
    std::fclose(in);
  }
}

// Large sets by rows.

/** A set of `short` whose bytes by rows are a little more than one chunk of 8388608. */
class LargeByRows : public ::testing::Test {
protected:
  static constexpr int kVectors = 3, kChunk = 8388608;

  void make(int length) {
    length_ = length;
    data_.resize(static_cast<std::size_t>(kVectors) * static_cast<std::size_t>(length));
    Noise noise;
    for (short& value : data_)
      value = static_cast<short>(1000 * noise.next());
    set_.LinkTo(kVectors, length, data_.data());
  }
  short at(int i, int j) const {
    return data_[static_cast<std::size_t>(j) * static_cast<std::size_t>(length_) +
                 static_cast<std::size_t>(i)];
  }
  /** The buffer of a chunk, put over what the last one left. */
  void gather(std::vector<short>& buffer, int first, int end) const {
    for (int i = first; i < end - 1; ++i)
      for (int j = 0; j < kVectors; ++j)
        buffer[static_cast<std::size_t>((i - first) * kVectors + j)] = at(i, j);
  }
  static std::string head(const std::vector<short>& buffer, int count) {
    return {reinterpret_cast<const char*>(buffer.data()),
            sizeof(short) * static_cast<std::size_t>(count)};
  }

  int length_ = 0;
  std::vector<short> data_;
  C_VSTRUCT<short> set_;
};

// Each chunk leaves its last row out and brings a whole buffer; the last one as many elements as
// the rest has bytes.
TEST_F(LargeByRows, GoOutInChunksThatReadersKnow) {
  make(1398103); // 8388618 bytes: one chunk and a rest of 10
  ByteFile portable, rawForm;
  std::vector<short> buffer(kChunk);

  set_.WriteT(portable.stream(), true);
  set_.WriteT(rawForm.stream(), false);

  const int rows = length_ / 2;
  gather(buffer, 0, rows);
  std::string expected = raw(length_, 3) + head(buffer, kChunk);
  std::string expectedRaw = raw(3, length_) + head(buffer, 3);
  gather(buffer, rows, length_);
  EXPECT_TRUE(portable.bytes() == expected + head(buffer, 10));
  EXPECT_TRUE(rawForm.bytes() == expectedRaw + head(buffer, 3));
}

TEST_F(LargeByRows, OfEveryStorageAreTheSame) {
  make(1398103);
  const ByteFile source(raw(kVectors, length_) + rawList(data_));
  ByteFile expected, expectedRaw;
  set_.WriteT(expected.stream(), true);
  set_.WriteT(expectedRaw.stream(), false);
  for (const bool map : {true, false}) {
    C_VSTRUCT<short> set;
    ByteFile portable, rawForm;
    source.moveTo(0);
    set.Read(source.stream(), 2, map, 0, 0, 0);

    set.WriteT(portable.stream(), true);
    set.WriteT(rawForm.stream(), false);

    EXPECT_TRUE(portable.bytes() == expected.bytes()) << map;
    EXPECT_TRUE(rawForm.bytes() == expectedRaw.bytes()) << map;
    EXPECT_EQ(set.isMapped(0), !map) << "nothing stays mapped";
  }
}

TEST_F(LargeByRows, OfOneChunkAreStillSimpleRows) {
  make(1398101); // 8388606 bytes
  ByteFile file;

  set_.WriteT(file.stream(), true);

  const std::string bytes = file.bytes();
  EXPECT_EQ(bytes.size(), 8U + 8388606U);
  for (int i : {0, 1, 700000, 1398100}) {
    short row[3];
    std::memcpy(row, bytes.data() + 8 + static_cast<std::size_t>(i) * sizeof row, sizeof row);
    for (int j = 0; j < 3; ++j)
      EXPECT_EQ(row[j], at(i, j));
  }
}

TEST_F(LargeByRows, OfExactlyOneChunkAreStillSimpleRows) {
  constexpr int length = 1048576; // 4 vectors of 2-byte values: 8388608 bytes
  Dense<short> values(4, std::vector<short>(length));
  std::vector<short> data;
  Noise noise;
  for (auto& column : values) {
    for (short& value : column)
      value = static_cast<short>(1000 * noise.next());
    data.insert(data.end(), column.begin(), column.end());
  }
  C_VSTRUCT<short> set(4, length, data.data());
  ByteFile portable, rawForm;

  set.WriteT(portable.stream(), true);
  set.WriteT(rawForm.stream(), false);

  const std::string rows = rowsOf(values, length);
  ASSERT_EQ(rows.size(), 8388608U);
  EXPECT_TRUE(portable.bytes() == raw(length, 4) + rows);
  EXPECT_TRUE(rawForm.bytes() == raw(4, length) + rows);
}

TEST_F(LargeByRows, OfWholeChunksEndWithAWholeBuffer) {
  std::vector<short> data(kChunk, 7); // 4 vectors of 2097152: two chunks and no rest
  C_VSTRUCT<short> set(4, 2097152, data.data());
  ByteFile file;

  set.WriteT(file.stream(), true);

  EXPECT_EQ(file.bytes().size(), 8U + 2U * 2U * kChunk);
}

TEST(SetFileLimits, ByRowsRefuseWhatDoesNotFit32Bits) {
  double small[4] = {};
  std::vector<double> some(1100000);
  C_VSTRUCT<double> beyond(4, 1 << 28, small), wrapped(4, 1 << 29, small);
  C_VSTRUCT<double> wide(1100000, 9, some.data()); // a row is more than a chunk
  for (auto* set : {&beyond, &wrapped, &wide}) {
    ByteFile portable, rawForm;

    EXPECT_EQ(toldBy([&] { set->WriteT(portable.stream(), true); }), (Told{22, 0}));
    EXPECT_EQ(toldBy([&] { set->WriteT(rawForm.stream(), false); }), (Told{35, 0}));

    EXPECT_EQ(portable.bytes(), "");
    EXPECT_EQ(rawForm.bytes(), "");
  }
}

// Failing writes.

TEST(SetFileFaults, AFullDeviceAndNoStreamAreTold) {
  double data[] = {1, 2};
  C_VSTRUCT<double> set(1, 2, data);
  FILE* full = std::fopen("/dev/full", "r+b");
  for (FILE* file : {full, static_cast<FILE*>(nullptr)}) {
    EXPECT_EQ(toldBy([&] { set.Write(file); }), (Told{22, 0}));
    EXPECT_EQ(toldBy([&] { set.Dump(file); }), (Told{22, 0}));
    EXPECT_EQ(toldBy([&] { set.WriteT(file, true); }), (Told{22, 0}));
    EXPECT_EQ(toldBy([&] { set.WriteT(file, false); }), (Told{22, 0}));
  }
  EXPECT_EQ(codeOf([&] { set.Read(static_cast<FILE*>(nullptr)); }), 21);
  std::fclose(full);
}

TEST(SetFileFaults, ADiskThatFillsUpIsTold) {
  double data[] = {1, 2, 3, 4};
  C_VSTRUCT<double> set(2, 2, data);
  ByteFile a, b, c, d;
  rlimit old;
  getrlimit(RLIMIT_FSIZE, &old);
  const rlimit limit = {30, old.rlim_max};
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  setrlimit(RLIMIT_FSIZE, &limit);

  const Told written = toldBy([&] { set.Write(a.stream()); });
  const Told dumped = toldBy([&] { set.Dump(b.stream()); });
  const Told rows = toldBy([&] { set.WriteT(c.stream(), true); });
  const Told rawRows = toldBy([&] { set.WriteT(d.stream(), false); });

  setrlimit(RLIMIT_FSIZE, &old);
  std::signal(SIGXFSZ, handler);
  EXPECT_EQ(written, (Told{22, 0}));
  EXPECT_EQ(dumped, (Told{35, 0}));
  EXPECT_EQ(rows, (Told{22, 0}));
  EXPECT_EQ(rawRows, (Told{35, 0}));
}

TEST(SetFileFaults, AClosedPipeIsTold) {
  double data[] = {1, 2};
  C_VSTRUCT<double> set(1, 2, data);
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  close(ends[0]);
  FILE* out = fdopen(ends[1], "wb");
  const auto handler = std::signal(SIGPIPE, SIG_IGN);

  EXPECT_EQ(toldBy([&] { set.Write(out); }), (Told{22, 0}));
  EXPECT_EQ(toldBy([&] { set.WriteT(out, false); }), (Told{22, 0}));

  std::signal(SIGPIPE, handler);
  std::fclose(out);
}

TEST(SetFileFaults, ASetThatIsNotValidWritesNothing) {
  C_VSTRUCT<double> set;
  ByteFile broken(raw(2, 3, 1.0)), out;
  EXPECT_EQ(codeOf([&] { set.Read(broken.stream(), 2, false, 0, 0, 0); }), 21);

  EXPECT_FALSE(set.isValid());
  EXPECT_EQ(codeOf([&] { set.Write(out.stream()); }), 11);
  EXPECT_EQ(codeOf([&] { set.WriteT(out.stream(), true); }), 11);

  EXPECT_EQ(out.bytes(), "");
}

} // namespace
