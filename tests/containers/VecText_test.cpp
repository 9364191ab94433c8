// The text forms of vectors, to the letter.
#include "containers/files.h"
#include "containers/support.h"

namespace {

template <class C>
class VecText : public ::testing::Test {};
TYPED_TEST_SUITE(VecText, StorageCases, ScalarNames);

#define ZAREL_TYPES                                                                                \
  using T [[maybe_unused]] = typename TypeParam::T;                                                \
  using V = typename TypeParam::Vec

template <class T>
std::string nameOf() {
  if (std::is_same_v<T, short>) return "Short";
  if (std::is_same_v<T, int>) return "Integer";
  if (std::is_same_v<T, __int64>) return "Hyper";
  if (std::is_same_v<T, float>) return "Float";
  if (std::is_same_v<T, double>) return "Double";
  if (std::is_same_v<T, std::complex<float>>) return "Float complex";
  return std::is_same_v<T, std::complex<double>> ? "Double complex" : "Unknown";
}

/** The text of 2 - 0.5 i, or of its real part. */
template <class T>
std::string two() {
  return isComplex<T> ? " 2.000E+00 -5.000E-01 " : " 2.000e+00 ";
}

template <class T>
std::string headOf(const std::string& dimension) {
  return "- Object : C_VecPi Vector\n- Scalar : " + nameOf<T>() + "\n- Dim : " + dimension +
         "\n- In Core : 1\n- Values : \n";
}

TYPED_TEST(VecText, NamesItsClassAndScalar) {
  ZAREL_TYPES;
  V v;

  EXPECT_STREQ(v.AffType(), "C_VecPi Vector");
  const C_Type::E_Type types[] = {C_Type::E_TypeUnknown,      C_Type::E_TypeShort,
                                  C_Type::E_TypeInteger,      C_Type::E_TypeHyper,
                                  C_Type::E_TypeFloat,        C_Type::E_TypeDouble,
                                  C_Type::E_TypeFloatComplex, C_Type::E_TypeDoubleComplex};
  const std::string names[] = {"Unknown", "Short",  "Integer",       "Hyper",
                               "Float",   "Double", "Float complex", "Double complex"};
  for (int i = 0; i < 8; ++i)
    EXPECT_EQ(v.Type() == types[i], nameOf<T>() == names[i]);
}

TYPED_TEST(VecText, PrintsFiveValuesALine) {
  ZAREL_TYPES;
  V v(7, scalar<T>(2, -0.5));
  const std::string t = two<T>();

  EXPECT_EQ(printed([&](FILE* f) { EXPECT_EQ(v.Print(f), 0); }), headOf<T>("7") + t + " " + t +
                                                                     " " + t + " " + t + " " + t +
                                                                     "\n" + t + " " + t + " \n");
}

TYPED_TEST(VecText, TenValuesEndWithTheLineFeedAfterTheTenth) {
  ZAREL_TYPES;
  V v(10, scalar<T>(2, -0.5)), none;
  const std::string t = two<T>();
  const std::string line = t + " " + t + " " + t + " " + t + " " + t + "\n";

  EXPECT_EQ(printed([&](FILE* f) { v.Print(f); }), headOf<T>("10") + line + line);
  EXPECT_EQ(printed([&](FILE* f) { none.Print(f); }), headOf<T>("0"));
}

TYPED_TEST(VecText, MatlabFormIsOneLine) {
  ZAREL_TYPES;
  V v(6, scalar<T>(2, -0.5));
  std::string values;
  for (int i = 0; i < 6; ++i)
    values += two<T>() + " ";

  EXPECT_EQ(printed([&](FILE* f) { EXPECT_EQ(v.WriteMatlab(f), 0); }),
            "C_VecPi Vector\n" + nameOf<T>() + "\n6\n" + values + "\n");
}

TYPED_TEST(VecText, FormatsOneValue) {
  ZAREL_TYPES;
  V v(1, scalar<T>(2, -0.5));
  std::string text;

  EXPECT_EQ(v.GetVal(0, text), 0);

  EXPECT_EQ(text, two<T>());
}

TEST(VecTextForm, HasThreeDecimalsAndRoomForASign) {
  auto v = vecOf<double>({-12345.678, 1e-300, 0});

  EXPECT_EQ(printed([&](FILE* f) { v.WriteMatlab(f); }),
            "C_VecPi Vector\nDouble\n3\n-1.235e+04   1.000e-300   0.000e+00  \n");
}

TEST(VecTextFiles, AreWrittenAnewOrAppendedTo) {
  ScratchFolder folder;
  const std::string path = folder.file("v.txt");
  auto v = vecOf<double>({1});
  const std::string once = printed([&](FILE* f) { v.Print(f); });

  EXPECT_EQ(v.Print(path.c_str(), true), 0);
  EXPECT_EQ(v.Print(path.c_str(), true), 0);
  EXPECT_EQ(contentOf(path), once + once);
  EXPECT_EQ(v.Print(path.c_str(), false), 0);
  EXPECT_EQ(contentOf(path), once);
  EXPECT_EQ(v.WriteMatlab(path.c_str()), 0);
  EXPECT_EQ(contentOf(path), "C_VecPi Vector\nDouble\n1\n 1.000e+00  \n");
}

TEST(VecTextFiles, StayOutOfProgramsThatAreStarted) {
  ScratchFolder folder;
  const std::string path = folder.file("v.txt");

  for (char const* mode : {"w", "a"}) {
    const Zarel::TextFile file(path.c_str(), mode);
    ASSERT_NE(file.get(), nullptr);
    EXPECT_TRUE(fcntl(fileno(file.get()), F_GETFD) & FD_CLOEXEC) << mode;
  }
}

TEST(VecTextFiles, WithoutAFilePrintSaysNothingAndMatlabThrows12) {
  auto v = vecOf<double>({1});

  EXPECT_EQ(v.Print(nullptr, false), 0);
  EXPECT_EQ(v.Print("/nowhere/at/all", true), 0);
  EXPECT_EQ(v.Print(static_cast<FILE*>(nullptr)), 0);
  EXPECT_EQ(codeOf([&] { v.WriteMatlab("/nowhere/at/all"); }), 12);
  EXPECT_EQ(codeOf([&] { v.WriteMatlab(static_cast<FILE*>(nullptr)); }), 12);
}

} // namespace
