// Damaged files: cut at every byte, every byte changed, sizes that promise what is not there. A
// reader refuses or gets a model that may be used: nothing crashes, hangs, or takes memory that
// the file cannot fill.
#include <cstdint>
#include <cstring>

#include "kriging/ListFixture.h"
#include "kriging/Traces.h"
#include "kriging/exercise.h"

using namespace kriging_test;

namespace {

/// Where the ints of a model file stand: those that are sizes, and those that are options.
struct Ints {
  std::vector<std::size_t> sizes;
  std::vector<std::size_t> options;
};

/// Walks a model's bytes by the documented layout.
template <class T>
class LayoutWalk {
public:
  explicit LayoutWalk(std::string const& bytes) : bytes_(bytes) {}

  Ints walk() {
    at_ = 0;
    text();
    matrix();
    matrix();
    int const groups = size();
    for (int g = 0; g < groups; ++g)
      size();
    // The kernel's type decides the length behind it and is a size in that.
    size();
    vector(sizeof(double));
    int const scaling = option();
    if (scaling == E_ScaleInputs || scaling == E_ScaleBoth) scales();
    if (scaling == E_ScaleOutputs || scaling == E_ScaleBoth) scales();
    option();
    matrix();
    if (option() != E_PolyNone) matrix();
    option();
    option();
    EXPECT_EQ(at_, bytes_.size());
    return ints_;
  }

private:
  int word() {
    std::int32_t value = 0;
    std::memcpy(&value, bytes_.data() + at_, sizeof value);
    at_ += sizeof value;
    return value;
  }
  int size() {
    ints_.sizes.push_back(at_);
    return word();
  }
  int option() {
    ints_.options.push_back(at_);
    return word();
  }
  void text() { at_ += static_cast<std::size_t>(size()); }
  void vector(std::size_t width) { at_ += static_cast<std::size_t>(size()) * width; }
  void scales() {
    vector(sizeof(double));
    vector(sizeof(T));
  }
  void matrix() {
    size();
    size();
    at_ += static_cast<std::size_t>(size()) * sizeof(T);
  }

  std::string const& bytes_;
  std::size_t at_ = 0;
  Ints ints_;
};

std::string withInt(std::string bytes, std::size_t at, std::int32_t value) {
  std::memcpy(&bytes[at], &value, sizeof value);
  return bytes;
}

std::int32_t intAt(std::string const& bytes, std::size_t at) {
  std::int32_t value = 0;
  std::memcpy(&value, bytes.data() + at, sizeof value);
  return value;
}

/// Model files of all shapes that the layout has, small enough to damage at every byte.
template <class T>
std::vector<std::string> modelFiles() {
  std::vector<std::string> files;
  for (auto shape : {std::make_tuple(E_ScaleNone, E_PolyNone, E_KernIsotropic),
                     std::make_tuple(E_ScaleInputs, E_PolyConst, E_KernAnisotropic),
                     std::make_tuple(E_ScaleOutputs, E_PolyLinear, E_KernIsotropic),
                     std::make_tuple(E_ScaleBoth, E_PolyLinear, E_KernAnisotropic)}) {
    OpenModel<T> model;
    makeSolved(model, 5, 2, 2, std::get<0>(shape), std::get<1>(shape), std::get<2>(shape));
    files.push_back(written(model));
  }
  return files;
}

} // namespace

template <class T>
class DamagedFile : public ::testing::Test {
  Traces traces_;
};
TYPED_TEST_SUITE(DamagedFile, Scalars);

TYPED_TEST(DamagedFile, CutAnywhereIsRefused) {
  for (std::string const& whole : modelFiles<TypeParam>()) {
    for (std::size_t length = 0; length < whole.size(); ++length) {
      OpenModel<TypeParam> model;

      EXPECT_EQ(readFrom(model, whole.substr(0, length)), 1) << "at " << length;

      EXPECT_EQ(model.Status, E_KrigingStatusInit) << "the state word stays";
      exercise(model);
      EXPECT_EQ(readFrom(model, whole), 0) << "and the model may be read again";
    }
  }
}

TYPED_TEST(DamagedFile, ReadIntoASolvedModelLeavesNothingThatOverruns) {
  std::string const whole = modelFiles<TypeParam>().back();
  for (std::size_t length = 0; length < whole.size(); ++length) {
    OpenModel<TypeParam> model;
    makeSolved(model, 9, 3, 1, E_ScaleBoth, E_PolyConst, E_KernAnisotropic);

    EXPECT_EQ(readFrom(model, whole.substr(0, length)), 1);

    EXPECT_EQ(model.Status, E_KrigingStatusSolved);
    exercise(model);
  }
}

TYPED_TEST(DamagedFile, ChangedInAnyByteIsRefusedOrMayBeUsed) {
  for (std::string const& whole : modelFiles<TypeParam>()) {
    for (std::size_t at = 0; at < whole.size(); ++at) {
      for (int mask : {0xff, 0x01, 0x80}) {
        std::string damaged = whole;
        damaged[at] = static_cast<char>(damaged[at] ^ mask);
        OpenModel<TypeParam> model;

        int const result = readFrom(model, damaged);

        EXPECT_TRUE(result == 0 || result == 1);
        exercise(model);
      }
    }
  }
}

TYPED_TEST(DamagedFile, WithAWrongSizeIsRefused) {
  for (std::string const& whole : modelFiles<TypeParam>()) {
    Ints const ints = LayoutWalk<TypeParam>(whole).walk();
    for (std::size_t at : ints.sizes) {
      for (std::int32_t wrong : {-1, 1000, 0x10000000, 0x7fffffff, INT32_MIN}) {
        OpenModel<TypeParam> model;

        int const result = readFrom(model, withInt(whole, at, wrong));

        // The kernel's type may be any number, as long as the kernel has one multiplier a variable.
        bool const anisotropic = at == ints.sizes[9] && intAt(whole, at) != 0;
        EXPECT_EQ(result, anisotropic ? 0 : 1) << wrong << " at " << at;
        exercise(model);
      }
      std::int32_t const right = intAt(whole, at);
      for (std::int32_t near : {right - 1, right + 1}) {
        OpenModel<TypeParam> model;
        int const result = readFrom(model, withInt(whole, at, near));
        EXPECT_TRUE(result == 0 || result == 1);
        exercise(model);
      }
    }
  }
}

TYPED_TEST(DamagedFile, WithUnknownOptionsMayBeUsed) {
  for (std::string const& whole : modelFiles<TypeParam>()) {
    for (std::size_t at : LayoutWalk<TypeParam>(whole).walk().options) {
      for (std::int32_t odd : {-1, 4, 5, 12, 99, 0x7fffffff, INT32_MIN}) {
        OpenModel<TypeParam> model;
        int const result = readFrom(model, withInt(whole, at, odd));
        EXPECT_TRUE(result == 0 || result == 1);
        exercise(model);
      }
    }
  }
}

namespace {

/// What reading a model gives that was written in two parts with a change between: the field must
/// be refused though the file is long enough.
template <class T, class Change>
int readChanged(Change&& change) {
  OpenModel<T> model;
  makeSolved(model, 5, 2, 2, E_ScaleNone, E_PolyConst, E_KernAnisotropic);
  std::string bytes = written(model);
  change(bytes, LayoutWalk<T>(bytes).walk());
  bytes += std::string(4096, '\0');
  OpenModel<T> read;
  int const result = readFrom(read, bytes);
  exercise(read);
  return result;
}

} // namespace

TYPED_TEST(DamagedFile, WithGroupsThatAreNotTheOutputsIsRefused) {
  // Sizes in order: text, 3 of the inputs, 3 of the outputs, number of groups, the one group.
  std::size_t const groups = 7;
  auto const withGroup = [&](int value) {
    return readChanged<TypeParam>([&](std::string& bytes, Ints ints) {
      bytes = withInt(bytes, ints.sizes[groups + 1], value);
    });
  };

  EXPECT_EQ(withGroup(2), 0);
  EXPECT_EQ(withGroup(1), 1);
  EXPECT_EQ(withGroup(3), 1);
  EXPECT_EQ(withGroup(-2), 1);
  EXPECT_EQ(readChanged<TypeParam>([&](std::string& bytes, Ints ints) {
              bytes = withInt(bytes, ints.sizes[groups], 0);
            }),
            1);
  EXPECT_EQ(readChanged<TypeParam>([&](std::string& bytes, Ints ints) {
              bytes = withInt(bytes, ints.sizes[groups], 3);
            }),
            1);
}

TYPED_TEST(DamagedFile, WithAKernelOfAnotherLengthIsRefused) {
  OpenModel<TypeParam> isotropic;
  makeSolved(isotropic, 5, 2, 1);
  OpenModel<TypeParam> anisotropic;
  makeSolved(anisotropic, 5, 2, 1, E_ScaleNone, E_PolyLinear, E_KernAnisotropic);
  std::string const one = written(isotropic);
  std::string const two = written(anisotropic);
  std::size_t const type = LayoutWalk<TypeParam>(one).walk().sizes[9];
  OpenModel<TypeParam> model;

  EXPECT_EQ(readFrom(model, two), 0);
  EXPECT_EQ(readFrom(model, withInt(one, type, E_KernAnisotropic)), 1);
  EXPECT_EQ(readFrom(model, withInt(two, type, E_KernIsotropic)), 1);
  EXPECT_EQ(readFrom(model, withInt(one, type, 7)), 1);
  EXPECT_EQ(readFrom(model, withInt(two, type, 7)), 0);
  exercise(model);
}

TYPED_TEST(DamagedFile, WithMorePointsInTheInputsThanInTheOutputsIsRefused) {
  OpenModel<TypeParam> model;
  makeSolved(model, 5, 2, 1);
  model.InpSampMtx.ResizeAndKeepValues(6, 2);
  model.NumSamp = 6;
  model.OutSampMtx.ResizeAndKeepValues(6, 1);
  model.CorrCoeff.ResizeAndKeepValues(6, 1);
  std::string const six = written(model);
  OpenModel<TypeParam> five;
  makeSolved(five, 5, 2, 1);
  std::string const bytes = written(five);
  std::size_t const inputs = 7 + 12 + 5 * 2 * sizeof(TypeParam);
  std::size_t const inputsOfSix = 7 + 12 + 6 * 2 * sizeof(TypeParam);
  OpenModel<TypeParam> read;

  EXPECT_EQ(readFrom(read, six), 0);
  EXPECT_EQ(readFrom(read, six.substr(0, inputsOfSix) + bytes.substr(inputs)), 1);
  exercise(read);
}

TYPED_TEST(DamagedFile, WithATrendOfNoKnownLengthAnswersOne) {
  OpenModel<TypeParam> model;
  makeSolved(model, 5, 2, 1);
  C_MatMGe<TypeParam> odd = pattern<TypeParam>(4, 1, 0.2); // no trend of two variables has 4 terms
  model.PolyCoeff.Copy(odd);
  OpenModel<TypeParam> read;
  ASSERT_EQ(readFrom(read, written(model)), 0);
  C_MatMGe<TypeParam> x = pattern<TypeParam>(3, 2, 0.1);
  C_MatMGe<TypeParam> y;

  EXPECT_EQ(read.EvalModel(x, y), 1);
  exercise(read);
}

// ----- lists -------------------------------------------------------------------------------------

TYPED_TEST(DamagedFile, OfAListCutAnywhereIsRefused) {
  OpenList<TypeParam> list;
  makeSolvedList(list, {1, 2}, 4, 2);
  std::string const whole = written(list);
  for (std::size_t length = 0; length < whole.size(); ++length) {
    OpenList<TypeParam> read;
    makeSolvedList(read, {1, 1, 1}, 3, 1);

    EXPECT_EQ(readFrom(read, whole.substr(0, length)), 1) << "at " << length;

    exercise(read);
    EXPECT_EQ(readFrom(read, whole), 0);
  }
}

TYPED_TEST(DamagedFile, OfAListChangedInAnyByteIsRefusedOrMayBeUsed) {
  OpenList<TypeParam> list;
  makeSolvedList(list, {1, 2}, 4, 2);
  std::string const whole = written(list);
  for (std::size_t at = 0; at < whole.size(); ++at) {
    std::string damaged = whole;
    damaged[at] = static_cast<char>(~damaged[at]);
    OpenList<TypeParam> read;
    int const result = readFrom(read, damaged);
    EXPECT_TRUE(result == 0 || result == 1);
    exercise(read);
  }
}

TYPED_TEST(DamagedFile, OfAListWithWrongCountsIsRefused) {
  OpenList<TypeParam> list;
  makeSolvedList(list, {1, 2}, 4, 2);
  std::string const whole = written(list);
  for (std::size_t at : {7, 11, 15}) {
    for (std::int32_t wrong : {0, -1, INT32_MIN}) {
      OpenList<TypeParam> read;
      EXPECT_EQ(readFrom(read, withInt(whole, at, wrong)), 1);
      exercise(read);
    }
  }
  for (std::int32_t wrong : {3, 1000, 0x10000000, 0x7fffffff}) {
    OpenList<TypeParam> read;
    EXPECT_EQ(readFrom(read, withInt(whole, 7, wrong)), 1);
    exercise(read);
  }
}

TYPED_TEST(DamagedFile, ThatPromisesModelsWithoutEndIsRefusedBeforeTheyAreMade) {
  OpenList<TypeParam> list;
  makeSolvedList(list, {1}, 4, 2);
  OpenList<TypeParam> read;
  makeSolvedList(read, {2}, 3, 1);
  Kriging<TypeParam>* const before = read.GetItemKriging(0);

  EXPECT_EQ(readFrom(read, withInt(written(list), 7, 1000000)), 1);

  EXPECT_EQ(read.NumKriging, 1);
  EXPECT_EQ(read.GetItemKriging(0), before);
}

TYPED_TEST(DamagedFile, WithALongVersionIsReadAllTheSame) {
  OpenModel<TypeParam> model;
  makeSolved(model, 4, 2, 1);
  std::string const body = written(model).substr(7);
  for (int length : {0, 1, 255, 256, 257, 1000}) {
    std::string head(4, '\0');
    std::memcpy(&head[0], &length, 4);
    OpenModel<TypeParam> read;
    EXPECT_EQ(readFrom(read, head + std::string(length, 'v') + body), 0);
  }
}
