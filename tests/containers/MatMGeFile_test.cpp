// Files and text of dense matrices, to the byte and to the letter.
#include "containers/support.h"

namespace {

template <class T>
class MatMGeFile : public ::testing::Test {};
TYPED_TEST_SUITE(MatMGeFile, MatrixScalars, ScalarNames);

template <class T>
std::string nameOf() {
  if (std::is_same_v<T, short>) return "Short";
  if (std::is_same_v<T, int>) return "Integer";
  if (std::is_same_v<T, float>) return "Float";
  if (std::is_same_v<T, double>) return "Double";
  return std::is_same_v<T, std::complex<float>> ? "Float complex" : "Double complex";
}

/** 1.5 or, for what cannot hold it, 1; 2 i is added for complex scalars. */
template <class T>
T sample() {
  return scalar<T>(1.5, 2);
}
template <class T>
std::string sampleText() {
  if (isComplex<T>) return " 1.500E+00  2.000E+00 ";
  return std::is_integral_v<T> ? " 1.000e+00 " : " 1.500e+00 ";
}

TYPED_TEST(MatMGeFile, IsShapeCountAndColumns) {
  using T = TypeParam;
  C_MatMGe<T> m = countedMatrix<T>(2, 2), none;
  ScratchFile file, empty;

  EXPECT_EQ(m.Write(file.stream()), 0);
  EXPECT_EQ(none.Write(empty.stream()), 0);

  EXPECT_EQ(file.bytes(),
            raw(2, 2, 4, scalar<T>(11), scalar<T>(21, 1), scalar<T>(12, -1), scalar<T>(22)));
  EXPECT_EQ(empty.bytes(), raw(0, 0, 0));
}

TYPED_TEST(MatMGeFile, DropsTheGap) {
  using T = TypeParam;
  C_MatMGe<T> gap = countedMatrix<T>(4, 3), tight = countedMatrix<T>(2, 3), back(9, 1);
  gap.ResizeAndKeepValues(2, 3);
  ScratchFile a, b;
  gap.Write(a.stream());
  tight.Write(b.stream());

  EXPECT_EQ(a.bytes(), b.bytes());
  a.rewind();
  EXPECT_EQ(back.Read(a.stream()), 0);
  EXPECT_EQ(back.LeadDim(), 2);
  for (int i = 0; i < 2; ++i)
    for (int j = 0; j < 3; ++j)
      EXPECT_EQ(back(i, j), tight(i, j));
  a.rewind();
  EXPECT_EQ(gap.Read(a.stream()), 0); // the gap is closed
  EXPECT_EQ(gap.LeadDim(), 2);
  EXPECT_EQ(gap(1, 2), tight(1, 2));
}

TYPED_TEST(MatMGeFile, CutAnywhereThrows21AndLeavesTheMatrix) {
  using T = TypeParam;
  ScratchFile whole;
  countedMatrix<T>(2, 2).Write(whole.stream());
  const std::string bytes = whole.bytes();
  for (std::size_t length = 0; length < bytes.size(); ++length) {
    ScratchFile file(bytes.substr(0, length));
    C_MatMGe<T> m = countedMatrix<T>(3, 1);

    EXPECT_EQ(codeOf([&] { m.Read(file.stream()); }), 21) << length;

    EXPECT_EQ(m.NbRow(), 3);
    EXPECT_EQ(m(2, 0), scalar<T>(31, 2));
  }
}

TYPED_TEST(MatMGeFile, AShapeThatTheFileCannotHoldTakesNoMemory) {
  using T = TypeParam;
  const int huge = std::numeric_limits<int>::max();
  const std::string heads[] = {raw(-1, 2, -2),
                               raw(-1, -1, 1),
                               raw(2, 2, 3),
                               raw(2, 2, -4),
                               raw(1000, 1000, 1000000),
                               raw(huge, 1, huge),
                               raw(huge, huge, 1LL * huge * huge),
                               raw(65536, 65536, 0, 1),
                               raw(65536, 65536, 5LL)};
  for (const std::string& head : heads) {
    ScratchFile file(head + std::string(64, '\1'));
    C_MatMGe<T> m;
    const AllocatorProbe probe;

    EXPECT_EQ(codeOf([&] { m.Read(file.stream()); }), 21);

    EXPECT_EQ(probe.count(), 0);
    EXPECT_EQ(m.NbRow(), 0);
  }
}

// They take no bytes of the file, yet a pointer each in memory.
TYPED_TEST(MatMGeFile, ColumnsWithoutRowsAreReadUpTo65536) {
  using T = TypeParam;
  ScratchFile most(raw(0, 65536, 0)), more(raw(0, 65537, 0));
  C_MatMGe<T> m, refused;

  EXPECT_EQ(m.Read(most.stream()), 0);
  EXPECT_EQ(m.NbCol(), 65536);
  EXPECT_EQ(codeOf([&] { refused.Read(more.stream()); }), 21);
  EXPECT_EQ(refused.NbCol(), 0);
}

TYPED_TEST(MatMGeFile, EveryFlippedByteIsReadOrRefused) {
  using T = TypeParam;
  ScratchFile whole;
  countedMatrix<T>(2, 3).Write(whole.stream());
  const std::string bytes = whole.bytes();
  for (std::size_t at = 0; at < bytes.size(); ++at) {
    std::string flipped = bytes;
    flipped[at] = static_cast<char>(flipped[at] ^ 0xff);
    ScratchFile file(flipped);
    C_MatMGe<T> m;

    const int code = codeOf([&] { m.Read(file.stream()); });

    EXPECT_EQ(code, at < 12 ? 21 : 0) << at;
  }
}

TYPED_TEST(MatMGeFile, FailuresOfTheFileAreTold) {
  using T = TypeParam;
  C_MatMGe<T> m(2, 2);
  FILE* full = std::fopen("/dev/full", "w");

  EXPECT_EQ(codeOf([&] { m.Write(full); }), 22);
  EXPECT_EQ(codeOf([&] { m.Write(nullptr); }), 12);
  EXPECT_EQ(codeOf([&] { m.Read(nullptr); }), 12);
  EXPECT_EQ(codeOf([&] { m.WriteMatlab(static_cast<FILE*>(nullptr)); }), 12);
  EXPECT_EQ(codeOf([&] { m.WriteMatlab("/nowhere/at/all"); }), 12);
  std::fclose(full);
}

TYPED_TEST(MatMGeFile, PrintsEveryRow) {
  using T = TypeParam;
  C_MatMGe<T> m(2, 6);
  m.Init(sample<T>());
  const std::string t = sampleText<T>();
  const auto row = [&](const std::string& i) {
    std::string text;
    for (int j = 1; j <= 6; ++j)
      text += "[" + i + "," + std::to_string(j) + "]:" + t + (j == 5 ? "\n" : "");
    return text + "\n";
  };
  const std::string head =
      " Type: " + nameOf<T>() + "\n Rows: 2\n Columns: 6\n In Core: 1\n Sym: NO\n Values: \n";

  EXPECT_EQ(printed([&](FILE* f) { EXPECT_EQ(m.Print(f, -1), 0); }), head + row("1") + row("2"));
  EXPECT_EQ(printed([&](FILE* f) { m.Print(f, 1); }), head + row("2"));
  EXPECT_EQ(printed([&](FILE* f) { m.Print(f, 2); }), head);
  EXPECT_EQ(printed([&](FILE* f) { m.Print(f, -2); }), head) << "no such row";
  EXPECT_EQ(m.Print(static_cast<FILE*>(nullptr), -1), 0);
}

TYPED_TEST(MatMGeFile, FiveColumnsGiveTwoLineFeeds) {
  using T = TypeParam;
  C_MatMGe<T> m(1, 5);

  const std::string text = printed([&](FILE* f) { m.Print(f, -1); });

  EXPECT_EQ(text.substr(text.size() - 2), "\n\n");
}

TYPED_TEST(MatMGeFile, MatlabFormIsARowALine) {
  using T = TypeParam;
  C_MatMGe<T> m(2, 2);
  m.Init(sample<T>());
  const std::string line = sampleText<T>() + " " + sampleText<T>() + " \n";

  EXPECT_EQ(printed([&](FILE* f) { EXPECT_EQ(m.WriteMatlab(f), 0); }),
            "C_MatMGe Type\n" + nameOf<T>() + "\n2 2\n" + line + line);
}

TEST(MatMGeTextFiles, AreWrittenAnewOrAppendedTo) {
  ScratchFolder folder;
  const std::string path = folder.file("m.txt");
  C_MatMGe<double> m(1, 1);
  const std::string once = printed([&](FILE* f) { m.Print(f, -1); });

  EXPECT_EQ(m.Print(path.c_str(), -1, true), 0);
  EXPECT_EQ(m.Print(path.c_str(), -1, true), 0);
  EXPECT_EQ(contentOf(path), once + once);
  EXPECT_EQ(m.Print(path.c_str(), -1, false), 0);
  EXPECT_EQ(contentOf(path), once);
  EXPECT_EQ(m.WriteMatlab(path.c_str()), 0);
  EXPECT_EQ(contentOf(path), "C_MatMGe Type\nDouble\n1 1\n 0.000e+00  \n");
}

/** A pipe with room for a few bytes; what was written last can be read back. */
class NarrowPipe {
public:
  explicit NarrowPipe(int room) {
    if (pipe2(ends_, O_NONBLOCK) != 0) std::abort();
    const std::string block(4096, 'x');
    std::string drain(4096, ' ');
    while (::write(ends_[1], block.data(), block.size()) > 0) {
    }
    if (::read(ends_[0], drain.data(), 4096) != 4096 ||
        ::write(ends_[1], block.data(), static_cast<std::size_t>(4096 - room)) != 4096 - room)
      std::abort();
    stream_ = fdopen(ends_[1], "w");
  }
  NarrowPipe(const NarrowPipe&) = delete;
  NarrowPipe& operator=(const NarrowPipe&) = delete;
  ~NarrowPipe() {
    std::fclose(stream_);
    close(ends_[0]);
  }
  FILE* stream() const { return stream_; }
  std::string last(std::size_t count) {
    std::string all, part(4096, ' ');
    for (ssize_t n; (n = ::read(ends_[0], part.data(), part.size())) > 0;)
      all.append(part, 0, static_cast<std::size_t>(n));
    return all.substr(all.size() - count);
  }

private:
  int ends_[2];
  FILE* stream_;
};

// The count of values is computed in 32 bits. A view whose columns are all the same (leading
// dimension 0) has a shape that no owner can have; the pipe ends the writing behind the head.
TEST(MatMGeWideCount, IsWrittenIn32Bits) {
  std::vector<short> column(65536, 1);
  C_MatMGe<short> wide(65536, 32768, column.data(), 0);
  NarrowPipe pipe(12);

  EXPECT_EQ(codeOf([&] { wide.Write(pipe.stream()); }), 22);

  EXPECT_EQ(pipe.last(12), raw(65536, 32768, std::numeric_limits<int>::min()));
}

} // namespace
