// Where the vectors of a set lie: making, sizing, linking and ending it.
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/Capture.h"
#include "support/Files.h"
#include "system/text.h"
#include "vectorset/support.h"

using namespace vectorset;

namespace {

using Set = Zarel::C_VSTRUCT<double>;

std::string narrow(const std::wstring& name) {
  return std::string(name.begin(), name.end());
}
std::wstring wideName(const std::string& name) {
  return std::wstring(name.begin(), name.end());
}
bool exists(const std::string& name) {
  return ::access(name.c_str(), F_OK) == 0;
}
long long sizeOf(const std::string& name) {
  struct stat status;
  return ::stat(name.c_str(), &status) == 0 ? static_cast<long long>(status.st_size) : -1;
}
std::string fileOf(const Set& set) {
  return narrow(set.getDataFileName());
}

template <class P>
class AnySet : public ::testing::Test {
protected:
  using Scalar = typename P::T;
  static constexpr int mode = P::storage == Storage::InCore ? 1 : 2;
};
// clang-format off
#define ZAREL_OWN_CASES(T) , Case<T, Storage::InCore>, Case<T, Storage::Mapped>
// clang-format on
using OwnCases = TypesAfter<void ZAREL_MATRIX_SCALARS(ZAREL_OWN_CASES)>;
TYPED_TEST_SUITE(AnySet, OwnCases, CaseNames);

TYPED_TEST(AnySet, BeginsWithZeros) {
  using T = typename TestFixture::Scalar;
  Zarel::C_VSTRUCT<T> set(TestFixture::mode, 3, 4, nullptr);

  EXPECT_TRUE(set.isValid());
  EXPECT_EQ(contentOf(set), Dense<T>(3, std::vector<T>(4, T(0))));
}

TYPED_TEST(AnySet, KeepsTheFirstVectorsWhenResized) {
  using T = typename TestFixture::Scalar;
  const auto values = randomDense<T>(3, 5);
  Zarel::C_VSTRUCT<T> set(TestFixture::mode, 3, 5, nullptr);
  fillSet(set, values);
  int err = 7;

  set.Resize(5, &err);
  EXPECT_EQ(err, 0);
  auto expected = values;
  expected.resize(5, std::vector<T>(5, T(0)));
  EXPECT_EQ(contentOf(set), expected) << "new vectors read as zeros";

  set.Resize(2, nullptr);
  EXPECT_EQ(contentOf(set), partOf(values, 0, 2, 0, 5));

  set.Resize(3, nullptr);
  EXPECT_EQ(contentOf(set)[2], std::vector<T>(5, T(0))) << "a shrunk tail is gone";
}

TYPED_TEST(AnySet, SurvivesHavingNoVectors) {
  using T = typename TestFixture::Scalar;
  Zarel::C_VSTRUCT<T> set(TestFixture::mode, 2, 3, nullptr);

  set.Resize(0, nullptr);
  EXPECT_EQ(set.getDim(), 0);
  EXPECT_TRUE(set.isValid());
  set.Resize(1, nullptr);

  EXPECT_EQ(contentOf(set), (Dense<T>{{T(0), T(0), T(0)}}));
}

TYPED_TEST(AnySet, IsAMatrixOfItsVectors) {
  using T = typename TestFixture::Scalar;
  Zarel::C_VSTRUCT<T> set(TestFixture::mode, 3, 4, nullptr);
  C_Mat<T>& matrix = set;

  EXPECT_EQ(matrix.NbRow(), 4);
  EXPECT_EQ(matrix.NbCol(), 3);
  EXPECT_EQ(matrix.NbVal(), 12);
  EXPECT_EQ(matrix.InCore(), TestFixture::mode == 1);
  EXPECT_EQ(matrix.MemSize(), TestFixture::mode == 1 ? static_cast<int>(12 * sizeof(T)) : 0);
  EXPECT_FALSE(matrix.Sym());
  EXPECT_STREQ(matrix.AffType(), "C_VSTRUCT");
}

TYPED_TEST(AnySet, TakesAnotherMatrix) {
  using T = typename TestFixture::Scalar;
  Zarel::C_VSTRUCT<T> set(TestFixture::mode, 1, 2, nullptr);
  C_MatMGe<T> matrix(2, 2);
  matrix(1, 0) = T(3);
  matrix(0, 1) = T(4);

  set.GenCopy(matrix);

  EXPECT_EQ(contentOf(set), (Dense<T>{{T(0), T(3)}, {T(4), T(0)}}));
  C_MatMGe<T> taller(3, 2);
  EXPECT_EQ(codeOf([&] { set.GenCopy(taller); }), 2872) << "vectors have one length";
}

TYPED_TEST(AnySet, ColumnIsAView) {
  using T = typename TestFixture::Scalar;
  Zarel::C_VSTRUCT<T> set(TestFixture::mode, 2, 2, nullptr);
  Vec<T> column;

  set.GetCol(1, column);
  column[0] = T(5);

  EXPECT_EQ(set.GetVal(0, 1), T(5));
}

TYPED_TEST(AnySet, CanBeMadeAnew) {
  using T = typename TestFixture::Scalar;
  Zarel::C_VSTRUCT<T> set(TestFixture::mode, 2, 3, nullptr);
  set.SetVal(0, 0, T(1));

  set.Allocate(3 - TestFixture::mode, 1, 2, nullptr);

  EXPECT_EQ(contentOf(set), (Dense<T>{{T(0), T(0)}}));
}

TEST(VectorSet, EmptySetIsNotValid) {
  Set set;
  C_MatMGe<double> M;
  Vec<double> v;

  EXPECT_FALSE(set.isValid());
  EXPECT_EQ(set.getDataFileDescriptor(), -1);
  EXPECT_EQ(codeOf([&] { set.Resize(1, nullptr); }), 11);
  EXPECT_EQ(codeOf([&] { set.MatQtQ(M); }), 11);
  EXPECT_EQ(codeOf([&] { set.Mv(v, v, false, 0, -1); }), 11);
  set.MapAllBlocks();
  set.UnmapAllBlocks();
}

TEST(VectorSet, ModesAreOneAndTwo) {
  for (const int mode : {0, 3, -1}) {
    Set set;
    EXPECT_EQ(codeOf([&] { set.Allocate(mode, 1, 1, nullptr); }), 3);
    EXPECT_EQ(codeOf([&] { set[0]; }), 11);
    EXPECT_EQ(codeOf([&] { set.SetVal(0, 0, 1); }), 11);
    EXPECT_FALSE(set.isValid());
  }
}

TEST(VectorSet, NegativeCountsAreZero) {
  for (const int mode : {1, 2}) {
    Set set(mode, -2, -3, nullptr);
    EXPECT_TRUE(set.isValid());
    EXPECT_EQ(set.getDim(), 0);
    EXPECT_EQ(set.getDim1(), 0);
  }
}

TEST(VectorSet, ForeignMemoryIsUsedInPlace) {
  std::vector<double> data{1, 2, 3, 4, 5, 6};
  Set set(2, 3, data.data());

  EXPECT_EQ(contentOf(set), (Dense<double>{{1, 2, 3}, {4, 5, 6}}));
  set.SetVal(0, 1, 9);
  EXPECT_EQ(data[3], 9);
  EXPECT_EQ(set.Adr(), data.data());
  EXPECT_EQ(codeOf([&] { set.Resize(1, nullptr); }), 2870);
}

TEST(VectorSet, SetWithDataBecomesALink) {
  std::vector<double> data{1, 2};
  for (const int mode : {1, 2}) {
    Set set(mode, 3, 3, nullptr);
    const std::string file = fileOf(set);
    set.LinkTo(1, 2, data.data());
    EXPECT_EQ(contentOf(set), (Dense<double>{{1, 2}}));
    EXPECT_FALSE(!file.empty() && exists(file)) << "the former data file is gone";
  }
}

TEST(VectorSet, LinkIsNoOwner) {
  for (const int mode : {1, 2}) {
    Set set(mode, 3, 4, nullptr);
    Set link(set, 0, 2, 1, 3);
    EXPECT_EQ(codeOf([&] { link.Resize(1, nullptr); }), 2870);
    link.Resize(2, nullptr); // the same size asks for nothing
    EXPECT_EQ(link.LeadDim(), 4);
  }
}

TEST(VectorSet, LinkLeavesWithoutTheFile) {
  Set set(2, 3, 4, nullptr);
  { Set link(set, 0, -1, 0, -1); }
  set.SetVal(1, 1, 5);
  EXPECT_EQ(set.GetVal(1, 1), 5);
  EXPECT_TRUE(exists(fileOf(set)));
}

TEST(VectorSet, LinkLiesWithinItsSet) {
  Set set(1, 3, 4, nullptr);
  Set link;
  EXPECT_EQ(codeOf([&] { link.LinkTo(set, 0, 4, 0, -1); }), 12);
  EXPECT_EQ(codeOf([&] { link.LinkTo(set, -1, 2, 0, -1); }), 12);
  EXPECT_EQ(codeOf([&] { link.LinkTo(set, 2, 1, 0, -1); }), 12);
  EXPECT_EQ(codeOf([&] { link.LinkTo(set, 0, -1, 0, 5); }), 12);
  EXPECT_EQ(codeOf([&] { link.LinkTo(set, 0, -1, 3, 2); }), 12);
  Set none;
  EXPECT_EQ(codeOf([&] { link.LinkTo(none, 0, -1, 0, -1); }), 11);
}

TEST(VectorSet, LinkShowsTheMaskFromItsFirstRow) {
  Set set(1, 1, 3, nullptr);
  fillSet<double>(set, {{1, 2, 3}});
  int mask[] = {0, 1, 0};
  set.setMasterDof(mask);
  Set link(set, 0, -1, 1, -1);

  link.ZeroNonMasterDof(nullptr);

  EXPECT_EQ(contentOf(set), (Dense<double>{{1, 2, 0}}));
}

TEST(VectorSet, ResizeTellsWhatItCannotDo) {
  for (const int mode : {1, 2}) {
    Set set(mode, 3, 4, nullptr);
    EXPECT_EQ(codeOf([&] { set.Resize(-1, nullptr); }), 12);
    EXPECT_EQ(set.getDim(), 3);
  }
}

TEST(VectorSet, IndicesAreTested) {
  for (const int mode : {1, 2}) {
    Set set(mode, 2, 3, nullptr);
    int err = 5;
    EXPECT_EQ(codeOf([&] { set.GetVal(3, 0); }), 12);
    EXPECT_EQ(codeOf([&] { set.GetVal(-1, 0); }), 12);
    EXPECT_EQ(codeOf([&] { set.GetVal(0, 2); }), 12);
    EXPECT_EQ(codeOf([&] { set.SetVal(0, -1, 1); }), 12);
    EXPECT_EQ(codeOf([&] { set.GetVector(2, &err); }), 12);
    EXPECT_EQ(err, 0);
    EXPECT_EQ(codeOf([&] { set[2]; }), 12);
  }
}

TEST(VectorSet, FirstBadVectorIsNamed) {
  for (const int mode : {1, 2}) {
    Set set(mode, 4, 3, nullptr);
    EXPECT_EQ(set.FirstNotFinite(), -1);
    set.SetVal(2, 3, std::numeric_limits<double>::infinity());
    set.SetVal(0, 1, std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(set.FirstNotFinite(), 1);
    EXPECT_EQ(set.FirstNotFinite(2), 3);
    EXPECT_EQ(set.FirstNotFinite(2, 2), -1);
  }
  Zarel::C_VSTRUCT<std::complex<float>> complex(1, 1, 2, nullptr);
  complex.SetVal(1, 0, {0, std::numeric_limits<float>::quiet_NaN()});
  EXPECT_EQ(complex.FirstNotFinite(), 0);
}

TEST(VectorSet, PrintsItsState) {
  Set set(1, 2, 3, nullptr);
  Set link(set, 0, 2, 0, 1);
  const auto text = [](Set& s) {
    return support::capture([&] {
             s.Info(stdout);
             std::fflush(stdout);
           })
        .out;
  };

  const std::string own = text(set);
  EXPECT_EQ(own.substr(0, own.find("\tBase")),
            "\tValid\t:\t\t1\n\tNbVec\t:\t\t2\n\tDimVec\t:\t\t3\n\tFileDescriptor\t:\t-1\n"
            "\tInitialOffSet\t:\t0\n\tFileName\t:\t\t\n\tFileSize\t:\t\t0\n\tMemOwner\t:\t1\n"
            "\tMapFile\t:\t\t1\n\tCoreMode\t:\t1\n");
  EXPECT_NE(own.find("\tBase\t:\t\t0x"), std::string::npos);
  EXPECT_NE(text(link).find("\tDimVec\t:\t\t1\n\tLead Dimension\t:\t\t3\n"), std::string::npos);
}

TEST(VectorSet, PrintsItsFile) {
  support::TempDirectory directory;
  const std::string file = directory.file("données.bin");
  Set set;
  set.setDataFileName(Zarel::toWide(file));
  set.Allocate(2, 2, 3, nullptr);
  Set link(set, 1, -1, 1, -1);
  const auto text = [](Set& s) {
    return support::capture([&] {
             s.Info(stdout);
             std::fflush(stdout);
           })
        .out;
  };
  const auto state = [&](Set& s, const char* counts, int offset, int owner) {
    return std::string("\tValid\t:\t\t1\n") + counts + "\tFileDescriptor\t:\t" +
           std::to_string(s.getDataFileDescriptor()) + "\n\tInitialOffSet\t:\t" +
           std::to_string(offset) + "\n\tFileName\t:\t\t" + file +
           "\n\tFileSize\t:\t\t48\n\tMemOwner\t:\t" + std::to_string(owner) +
           "\n\tMapFile\t:\t\t1\n\tCoreMode\t:\t2\n\tBase\t:\t\t(nil)\n";
  };

  EXPECT_EQ(text(set), state(set, "\tNbVec\t:\t\t2\n\tDimVec\t:\t\t3\n", 0, 1));
  EXPECT_EQ(text(link), state(link,
                              "\tNbVec\t:\t\t1\n\tDimVec\t:\t\t2\n"
                              "\tLead Dimension\t:\t\t3\n",
                              32, 0));
}

// The data file.

TEST(VectorSetFile, TemporaryFileIsPrivateAndGoesWithTheSet) {
  support::TempDirectory directory;
  support::Environment place("TMPDIR", directory.path().c_str());
  std::string file;
  {
    Set set(2, 3, 100, nullptr);
    file = fileOf(set);
    EXPECT_EQ(file.rfind(directory.path() + "/ZRLVS", 0), 0U) << file;
    EXPECT_EQ(sizeOf(file), 2400);
    EXPECT_EQ(set.getDataFileSize(), 2400U);
    struct stat status;
    ASSERT_EQ(::stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
    EXPECT_NE(::fcntl(set.getDataFileDescriptor(), F_GETFD) & FD_CLOEXEC, 0);
  }
  EXPECT_FALSE(exists(file));
}

TEST(VectorSetFile, PrefixBeginsTheName) {
  support::TempDirectory directory;
  support::Environment place("TMPDIR", directory.path().c_str());
  Set set(2, 1, 1, "run7");
  EXPECT_EQ(fileOf(set).rfind(directory.path() + "/run7", 0), 0U);
}

TEST(VectorSetFile, PresetNameIsUsedAndItsFileEmptied) {
  support::TempDirectory directory;
  const std::string file = directory.file("data.bin");
  support::writeBytes(file, "something longer than one number");
  {
    Set set;
    set.setDataFileName(wideName(file));
    set.Allocate(2, 1, 1, nullptr);
    EXPECT_EQ(set.GetVal(0, 0), 0);
    EXPECT_EQ(sizeOf(file), 8);
  }
  EXPECT_FALSE(exists(file));
}

TEST(VectorSetFile, NamePresetForTheNextFileLeavesThePresentOne) {
  support::TempDirectory directory;
  const std::string next = directory.file("next.bin");
  Set set(2, 1, 1, nullptr);
  const std::string first = fileOf(set);

  set.setDataFileName(wideName(next));
  set.Allocate(2, 2, 2, nullptr);

  EXPECT_FALSE(exists(first));
  EXPECT_EQ(sizeOf(next), 32);
}

TEST(VectorSetFile, NamePresetForTheNextFileIsNotThatOfALink) {
  support::TempDirectory directory;
  Set set(2, 2, 2, nullptr);
  const std::string present = fileOf(set);
  set.setDataFileName(wideName(directory.file("next.bin")));

  Set link(set, 0, -1, 0, -1);

  EXPECT_EQ(fileOf(link), present);
  EXPECT_EQ(link.GetVal(1, 1), 0);
}

TEST(VectorSetFile, NamePresetForTheNextFileIsNotMapped) {
  support::TempDirectory directory;
  const std::string file = directory.file("data.bin");
  const std::string next = directory.file("next.bin");
  support::writeBytes(file, std::string(16, '\0'));
  FILE* const stream = std::fopen(file.c_str(), "rb"); // by which nothing can be mapped to write
  Set set;
  set.Read(stream, 2, true, 1, 2, 0);
  set.setDataFileName(wideName(next));
  Set link(set, 0, -1, 0, -1);

  EXPECT_EQ(codeOf([&] { set.MapBlock(0, 0); }), 13);
  EXPECT_EQ(codeOf([&] { link.MapBlock(0, 0); }), 13);

  EXPECT_FALSE(exists(next));
  set.Release(true);
  std::fclose(stream);
}

TEST(VectorSetFile, ReleaseLeavesTheFileWhenAsked) {
  support::TempDirectory directory;
  const std::string file = directory.file("kept.bin");
  {
    Set set;
    set.setDataFileName(wideName(file));
    set.Allocate(2, 1, 2, nullptr);
    set.SetVal(1, 0, 1);
    set.Release(false);
    EXPECT_FALSE(set.isValid());
    EXPECT_EQ(set.getDim(), 0);
    EXPECT_EQ(set.getDataFileDescriptor(), -1);
    EXPECT_EQ(fileOf(set), file);
  }
  const double values[2] = {0, 1};
  EXPECT_EQ(support::bytesOf(file),
            std::string(reinterpret_cast<const char*>(values), sizeof values));
}

TEST(VectorSetFile, FileOfOthersThatCannotBeOpenedStays) {
  support::TempDirectory directory;
  const std::string file = directory.file("directory");
  ASSERT_EQ(::mkdir(file.c_str(), 0700), 0);
  Set set;
  set.setDataFileName(wideName(file));

  EXPECT_EQ(codeOf([&] { support::capture([&] { set.Allocate(2, 1, 1, nullptr); }); }), 19);

  EXPECT_TRUE(exists(file));
  EXPECT_FALSE(set.isValid());
}

TEST(VectorSetFile, NoPlaceForTemporaryFilesIsTold) {
  Set set;
  set.setDataFileName(L"/nowhere/at/all/data.bin");
  EXPECT_EQ(codeOf([&] { support::capture([&] { set.Allocate(2, 1, 1, nullptr); }); }), 19);
}

TEST(VectorSetFile, SizeFollowsTheVectors) {
  Set set(2, 2, 10, nullptr);
  const std::string file = fileOf(set);

  set.Resize(5, nullptr);
  EXPECT_EQ(sizeOf(file), 400);
  set.Resize(1, nullptr);
  EXPECT_EQ(sizeOf(file), 80);
  EXPECT_EQ(set.getDataFileSize(), 80U);
}

} // namespace
