// Models and lists written and read: layout, round trips, refusals.
#include <sys/resource.h>

#include <cctype>
#include <csignal>
#include <cstring>
#include <fstream>
#include <sstream>

#include <zarel/bf.h>

#include "kriging/ListFixture.h"
#include "kriging/Traces.h"

using namespace kriging_test;

namespace {

/// The bytes of the n-th hexadecimal example of the page that specifies the files.
std::string documentedBytes(int n) {
  std::ifstream page(ZAREL_SOURCE_DIR "/docs/formats/kriging.md");
  std::string line;
  for (int seen = -1; seen < n && std::getline(page, line);)
    seen += line == "```hex" ? 1 : 0;
  std::string bytes;
  while (std::getline(page, line) && line != "```") {
    std::istringstream words(line);
    std::string word;
    words >> word;
    EXPECT_EQ(std::stoul(word, nullptr, 16), bytes.size()) << "offsets of the example";
    while (words >> word && word.size() == 2 && std::isxdigit(word[0]) && std::isxdigit(word[1]))
      bytes += static_cast<char>(std::stoi(word, nullptr, 16));
  }
  return bytes;
}

void makeDocumented(OpenModel<double>& model) {
  C_MatMGe<double> x = matrix<double>({{0.0}, {1.0}});
  C_MatMGe<double> y = matrix<double>({{2.0}, {4.0}});
  RealVec theta = vector<double>({0.5});
  ASSERT_EQ(model.PutNumVar(1), 0);
  ASSERT_EQ(model.PutNumSol(1, 1, nullptr), 0);
  ASSERT_EQ(model.PutInpSampMtx(x), 0);
  ASSERT_EQ(model.PutOutSampMtx(y), 0);
  ASSERT_EQ(model.PutKernVec(theta), 0);
  ASSERT_EQ(model.PutPolynomType(E_PolyConst), 0);
  ASSERT_EQ(model.PutKrigingKernOptType(E_KernOptPattern), 0);
  C_MatMGe<double> gamma = matrix<double>({{1.0}, {-1.0}});
  C_MatMGe<double> beta = matrix<double>({{3.0}});
  model.CorrCoeff.Copy(gamma);
  model.PolyCoeff.Copy(beta);
  model.Status = E_KrigingStatusSolved;
}

template <class T>
void expectSameContents(OpenModel<T>& actual, OpenModel<T>& expected) {
  expectEqual(actual.InpSampMtx, expected.InpSampMtx);
  expectEqual(actual.OutSampMtx, expected.OutSampMtx);
  expectEqual(actual.CorrCoeff, expected.CorrCoeff);
  if (expected.PolynomType != E_PolyNone) expectEqual(actual.PolyCoeff, expected.PolyCoeff);
  EXPECT_EQ(values(actual.KernVec), values(expected.KernVec));
  EXPECT_EQ(actual.groups(), expected.groups());
  for (auto option :
       {&Kriging<T>::GetCorrFuncType, &Kriging<T>::GetPolynomType, &Kriging<T>::GetScalingType,
        &Kriging<T>::GetSolnType, &Kriging<T>::GetKrigingKernOptType,
        &Kriging<T>::GetKrigingKernVarType, &Kriging<T>::GetNumSamp, &Kriging<T>::GetNumVar,
        &Kriging<T>::GetNumSol, &Kriging<T>::GetNumKern}) {
    int read = -1;
    int written = -2;
    (actual.*static_cast<int (Kriging<T>::*)(int&) const>(option))(read);
    (expected.*static_cast<int (Kriging<T>::*)(int&) const>(option))(written);
    EXPECT_EQ(read, written);
  }
}

} // namespace

// ----- the layout --------------------------------------------------------------------------------

TEST(KrigingFile, HoldsTheDocumentedBytes) {
  OpenModel<double> model;
  makeDocumented(model);

  EXPECT_EQ(written(model), documentedBytes(0));
}

TEST(KrigingFile, OfDocumentedBytesPredictsAsDocumented) {
  OpenModel<double> model;
  ASSERT_EQ(readFrom(model, documentedBytes(0)), 0);
  C_MatMGe<double> x = matrix<double>({{0.0}, {0.25}, {3.0}});
  C_MatMGe<double> y;

  ASSERT_EQ(model.EvalModel(x, y), 0);

  for (int i = 0; i < 3; ++i) {
    double const at = x(i, 0);
    EXPECT_NEAR(y(i, 0), 3.0 + std::exp(-0.5 * at * at) - std::exp(-0.5 * (at - 1) * (at - 1)),
                1e-14);
  }
}

TEST(KrigingFile, OfAListHoldsTheDocumentedBytes) {
  OpenModel<double> model;
  makeDocumented(model);
  KrigingList<double> list;
  int sizes[] = {1};
  ASSERT_EQ(list.PutNumKriging(1), 0);
  ASSERT_EQ(list.PutNumVar(1), 0);
  ASSERT_EQ(list.PutNumSol(1, 1, sizes), 0);
  ASSERT_EQ(list.PutNumSamp(2), 0);
  ASSERT_EQ(list.GetItemKriging(0)->Copy(&model), 0);

  EXPECT_EQ(written(list), documentedBytes(1) + documentedBytes(0));
}

TEST(KrigingFile, BeginsWithTheVersionAsTheBinaryLayerWritesTexts) {
  OpenModel<double> model;
  makeDocumented(model);
  MemoryFile text;
  ASSERT_EQ(BF_fwrite_str(text.get(), model.Version()), 0);

  std::string const head = text.bytes();

  EXPECT_EQ(written(model).substr(0, head.size()), head);
}

TEST(KrigingFile, StoresComplexNumbersAsPairs) {
  OpenModel<std::complex<double>> model;
  makeSolved(model, 2, 1, 1, E_ScaleBoth, E_PolyConst);
  OpenModel<double> real;
  makeSolved(real, 2, 1, 1, E_ScaleBoth, E_PolyConst);

  // Samples 2 + 2, coefficients 2 + 1 and intercepts 1 + 1 are scalars; scales and kernel are not.
  EXPECT_EQ(written(model).size(), written(real).size() + 9 * sizeof(double));
}

template <class T>
class KrigingFiles : public ::testing::Test {
protected:
  Traces traces_;
  OpenModel<T> model_;
};
TYPED_TEST_SUITE(KrigingFiles, Scalars);

TYPED_TEST(KrigingFiles, HoldScaleVectorsOnlyWhenScaled) {
  std::size_t const real = sizeof(double);
  std::size_t const scalar = sizeof(TypeParam);
  std::size_t sizes[4];
  for (int scaling = E_ScaleNone; scaling <= E_ScaleBoth; ++scaling) {
    OpenModel<TypeParam> model;
    makeSolved(model, 5, 2, 3, scaling);
    sizes[scaling] = written(model).size();
  }

  EXPECT_EQ(sizes[E_ScaleInputs] - sizes[E_ScaleNone], 8 + 2 * (real + scalar));
  EXPECT_EQ(sizes[E_ScaleOutputs] - sizes[E_ScaleNone], 8 + 3 * (real + scalar));
  EXPECT_EQ(sizes[E_ScaleBoth] - sizes[E_ScaleNone], 16 + 5 * (real + scalar));
}

TYPED_TEST(KrigingFiles, HoldNoTrendWhenThereIsNone) {
  OpenModel<TypeParam> with;
  makeSolved(with, 5, 2, 3, E_ScaleNone, E_PolyConst);
  makeSolved(this->model_, 5, 2, 3, E_ScaleNone, E_PolyNone);

  EXPECT_EQ(written(with).size() - written(this->model_).size(), 12 + 3 * sizeof(TypeParam));
}

// ----- round trips -------------------------------------------------------------------------------

TYPED_TEST(KrigingFiles, GiveBackWhatWasWritten) {
  for (int scaling = E_ScaleNone; scaling <= E_ScaleBoth; ++scaling) {
    for (int trend = E_PolyNone; trend <= E_PolyFullQuad; ++trend) {
      for (int variation : {E_KernIsotropic, E_KernAnisotropic}) {
        OpenModel<TypeParam> model;
        makeSolved(model, 7, 2, 3, scaling, trend, variation);
        model.CorrFuncType = E_CorrSpline;
        model.KernOptType = 5;
        std::string const bytes = written(model);
        OpenModel<TypeParam> read;

        ASSERT_EQ(readFrom(read, bytes), 0);

        expectSameContents(read, model);
        EXPECT_TRUE(read.CoefficientsFit());
        EXPECT_EQ(written(read), bytes);
      }
    }
  }
}

TYPED_TEST(KrigingFiles, MakeAModelSolvedWithAFitDueForItsErrors) {
  makeSolved(this->model_, 5, 2, 3, E_ScaleBoth, E_PolyLinear, E_KernAnisotropic);
  OpenModel<TypeParam> read;
  read.clearStale();
  read.SolveRequired = false;

  ASSERT_EQ(readFrom(read, written(this->model_)), 0);

  EXPECT_EQ(read.Status, E_KrigingStatusSolved);
  EXPECT_TRUE(read.ISSolveRequired());
  EXPECT_TRUE(read.InpSampSet);
  EXPECT_TRUE(read.OutSampSet);
  EXPECT_EQ(read.KernStartPending, 0);
  EXPECT_EQ(read.NumKern, 2);
  EXPECT_EQ(read.DiffWorkVec.Dim(), 2);
  EXPECT_TRUE(read.TestCorrStale) << "caches of another model must not be used";
  EXPECT_TRUE(read.TestPolyStale);
  expectEqual(read.OutputRanges, this->model_.OutputRanges);
  EXPECT_EQ(values(read.OutputGlobalRange), values(this->model_.OutputGlobalRange));
}

TYPED_TEST(KrigingFiles, LeaveWhatIsNotInThem) {
  makeSolved(this->model_, 5, 2, 1);
  OpenModel<TypeParam> read;
  read.PutDropToler(0.125);
  read.PutLowerKernelMultiplierBound(0.5);
  read.PutUpperKernelMultiplierBound(4.0);
  read.NuggetFactor = 1e-3;
  read.SetStep(3);
  read.NumSolves = 7;

  ASSERT_EQ(readFrom(read, written(this->model_)), 0);

  EXPECT_EQ(read.DropToler, 0.125);
  EXPECT_EQ(read.LowerKernelMultiplierBound, 0.5);
  EXPECT_EQ(read.UpperKernelMultiplierBound, 4.0);
  EXPECT_EQ(read.NuggetFactor, 1e-3);
  EXPECT_EQ(read.SolveStep, 3);
  EXPECT_EQ(read.NumSolves, 7);
}

TYPED_TEST(KrigingFiles, WithoutTrendLeaveTheTrendOfTheReader) {
  makeSolved(this->model_, 5, 2, 1, E_ScaleNone, E_PolyNone);
  OpenModel<TypeParam> read;
  makeSolved(read, 5, 2, 1, E_ScaleNone, E_PolyConst);

  ASSERT_EQ(readFrom(read, written(this->model_)), 0);

  EXPECT_EQ(read.PolynomType, E_PolyNone);
  EXPECT_EQ(read.PolyCoeff.NbRow(), 1);
}

TYPED_TEST(KrigingFiles, OfOldStreamsBeginWithTheSamples) {
  makeSolved(this->model_, 5, 2, 3, E_ScaleBoth);
  std::string const bytes = written(this->model_);
  MemoryFile old(bytes.substr(7));
  OpenModel<TypeParam> read;

  EXPECT_EQ(read.ReadOld(old.get()), 0);

  expectSameContents(read, this->model_);
  EXPECT_EQ(read.Status, E_KrigingStatusSolved);
  MemoryFile current(bytes);
  OpenModel<TypeParam> confused;
  EXPECT_EQ(confused.ReadOld(current.get()), 1);
}

TYPED_TEST(KrigingFiles, MayBePartsOfALargerFile) {
  makeSolved(this->model_, 5, 2, 3);
  OpenModel<TypeParam> other;
  makeSolved(other, 4, 1, 2, E_ScaleBoth);
  MemoryFile file;
  std::fputs("heading", file.get()); // still in the stream's buffer when the model is written

  ASSERT_EQ(this->model_.Write(file.get()), 0);
  ASSERT_EQ(other.Write(file.get()), 0);

  std::string const bytes = file.bytes();
  EXPECT_EQ(bytes, "heading" + written(this->model_) + written(other));
  MemoryFile again(bytes);
  lseek(fileno(again.get()), 7, SEEK_SET);
  OpenModel<TypeParam> first;
  OpenModel<TypeParam> second;
  EXPECT_EQ(first.Read(again.get()), 0);
  EXPECT_EQ(second.Read(again.get()), 0);
  expectSameContents(first, this->model_);
  expectSameContents(second, other);
  EXPECT_EQ(again.position(), static_cast<long long>(bytes.size()));
}

TYPED_TEST(KrigingFiles, PredictToTheLastBit) {
  C_MatMGe<TypeParam> x = pattern<TypeParam>(12, 2, 0.3);
  C_MatMGe<TypeParam> y = pattern<TypeParam>(12, 2, 1.9);
  auto& model = this->model_;
  model.PutNumVar(2);
  model.PutNumSol(2, 2, nullptr);
  model.PutInpSampMtx(x);
  model.PutOutSampMtx(y);
  model.PutScalingType(E_ScaleBoth);
  model.PutPolynomType(E_PolyLinear);
  ASSERT_EQ(model.Solve(), 0);
  OpenModel<TypeParam> read;
  ASSERT_EQ(readFrom(read, written(model)), 0);
  C_MatMGe<TypeParam> points = pattern<TypeParam>(9, 2, 3.3);
  C_MatMGe<TypeParam> expected;
  C_MatMGe<TypeParam> actual;

  ASSERT_EQ(model.EvalModel(points, expected), 0);
  ASSERT_EQ(read.EvalModel(points, actual), 0);

  expectEqual(actual, expected);
  EXPECT_TRUE(read.ISSolveRequired()) << "a prediction alone asks for no fit";
  double absolute = 0.0;
  double relative = 0.0;
  int count = 0;
  EXPECT_EQ(read.GetPredictorError(points, absolute, relative, count), 0);
  EXPECT_FALSE(read.ISSolveRequired());
}

// ----- what is not written -----------------------------------------------------------------------

TYPED_TEST(KrigingFiles, AreNotWrittenOfModelsThatAreNotSolved) {
  makeSolved(this->model_, 5, 2, 1);
  for (int status : {E_KrigingStatusInit, E_KrigingStatusReady, E_KrigingStatusIncomplete}) {
    this->model_.Status = status;
    MemoryFile file;

    EXPECT_EQ(this->model_.Write(file.get()), 1);
    EXPECT_EQ(file.bytes(), "");
  }
}

TYPED_TEST(KrigingFiles, AreNotWrittenOfModelsWhosePartsDoNotFit) {
  auto const refuses = [](auto&& spoil) {
    OpenModel<TypeParam> model;
    makeSolved(model, 5, 2, 3, E_ScaleBoth, E_PolyLinear, E_KernAnisotropic);
    spoil(model);
    MemoryFile file;
    return model.Write(file.get()) == 1 && file.bytes().empty();
  };
  using Model = OpenModel<TypeParam>;

  EXPECT_FALSE(refuses([](Model&) {}));
  EXPECT_TRUE(refuses([](Model& m) { m.PutNumSamp(6); }));
  EXPECT_TRUE(refuses([](Model& m) { m.PutNumVar(3); }));
  EXPECT_TRUE(refuses([](Model& m) { m.PutNumSol(4, 4, nullptr); }));
  EXPECT_TRUE(refuses([](Model& m) { m.VecGlobalSol.reset(); }));
  EXPECT_TRUE(refuses([](Model& m) { m.KernVec.Resize(1); }));
  EXPECT_TRUE(refuses([](Model& m) { m.OutScaleVec.Resize(1); }));
  EXPECT_TRUE(refuses([](Model& m) { m.PolyCoeff.Resize(3, 2); }));
}

TYPED_TEST(KrigingFiles, NeedAStream) {
  makeSolved(this->model_, 5, 2, 1);
  KrigingList<TypeParam> list;

  EXPECT_EQ(this->model_.Write(nullptr), 1);
  EXPECT_EQ(this->model_.Read(nullptr), 1);
  EXPECT_EQ(this->model_.ReadOld(nullptr), 1);
  EXPECT_EQ(list.Write(nullptr), 1);
  EXPECT_EQ(list.Read(nullptr), 1);
}

namespace {

/// Files may grow to that many bytes while this lives.
class FileSizeLimit {
public:
  explicit FileSizeLimit(std::size_t bytes) {
    former_ = std::signal(SIGXFSZ, SIG_IGN);
    getrlimit(RLIMIT_FSIZE, &limit_);
    rlimit lower = limit_;
    lower.rlim_cur = bytes;
    setrlimit(RLIMIT_FSIZE, &lower);
  }
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &limit_);
    std::signal(SIGXFSZ, former_);
  }

private:
  rlimit limit_{};
  void (*former_)(int);
};

} // namespace

TYPED_TEST(KrigingFiles, TellThatTheyCannotGrowWhereverThatIs) {
  makeSolved(this->model_, 3, 1, 1, E_ScaleBoth, E_PolyConst);
  std::size_t const size = written(this->model_).size();
  for (std::size_t limit = 0; limit <= size; ++limit) {
    MemoryFile file;
    int result = -1;
    {
      FileSizeLimit const full(limit);
      result = this->model_.Write(file.get());
    }
    EXPECT_EQ(result, limit < size ? 1 : 0) << "at " << limit << " of " << size;
  }
}

TYPED_TEST(KrigingFiles, LeaveATraceOfEachFailure) {
  makeSolved(this->model_, 3, 1, 1);
  std::string const whole = written(this->model_);
  ASSERT_EQ(this->traces_.count(), 0);
  {
    MemoryFile file;
    FileSizeLimit const full(10);
    EXPECT_EQ(this->model_.Write(file.get()), 1);
  }
  EXPECT_GT(this->traces_.count(), 0) << "a write that could not go on";
  for (std::size_t length : {std::size_t{0}, std::size_t{12}, whole.size() - 2}) {
    Traces const ofRead;
    OpenModel<TypeParam> read;
    EXPECT_EQ(readFrom(read, whole.substr(0, length)), 1);
    EXPECT_GT(ofRead.count(), 0) << "a read that ended at " << length;
  }
  for (std::size_t length : {std::size_t{0}, std::size_t{8}, std::size_t{16}}) {
    Traces const ofList;
    KrigingList<TypeParam> list;
    EXPECT_EQ(readFrom(list, whole.substr(0, length)), 1);
    EXPECT_GT(ofList.count(), 0) << "a list that ended at " << length;
  }
}

TYPED_TEST(KrigingFiles, TellOfFullDevicesAndClosedPipes) {
  makeSolved(this->model_, 3, 1, 1);
  FILE* full = std::fopen("/dev/full", "wb");
  ASSERT_NE(full, nullptr);
  EXPECT_EQ(this->model_.Write(full), 1);
  std::fclose(full);

  auto* const former = std::signal(SIGPIPE, SIG_IGN);
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  close(ends[0]);
  FILE* closed = fdopen(ends[1], "wb");
  EXPECT_EQ(this->model_.Write(closed), 1);
  std::fclose(closed);
  std::signal(SIGPIPE, former);
}

TYPED_TEST(KrigingFiles, TellOfTextThatCannotGoOutBeforeThem) {
  makeSolved(this->model_, 3, 1, 1);
  FILE* full = std::fopen("/dev/full", "wb");
  ASSERT_NE(full, nullptr);
  std::fputs("heading", full);
  EXPECT_EQ(this->model_.Write(full), 1);
  std::fclose(full);
}

TYPED_TEST(KrigingFiles, GoThroughPipes) {
  makeSolved(this->model_, 5, 2, 1);
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  FILE* in = fdopen(ends[1], "wb");
  FILE* out = fdopen(ends[0], "rb");
  OpenModel<TypeParam> read;

  EXPECT_EQ(this->model_.Write(in), 0);
  std::fclose(in);
  EXPECT_EQ(read.Read(out), 0);
  std::fclose(out);

  expectSameContents(read, this->model_);
}

// ----- lists -------------------------------------------------------------------------------------

TYPED_TEST(KrigingFiles, OfListsGiveBackAllModels) {
  OpenList<TypeParam> list;
  makeSolvedList(list, {1, 3}, 5, 2, E_ScaleBoth, E_PolyLinear);
  std::string const bytes = written(list);
  OpenList<TypeParam> read;
  makeList(read, {2, 2, 2}, 4, 3);
  C_MatMGe<TypeParam> points = pattern<TypeParam>(6, 3, 0.4);
  ASSERT_EQ(read.PutInpTestMtx(points, -1), 0);
  read.NumNewPoints = 1;
  read.NewPointIds[0] = 5;

  ASSERT_EQ(readFrom(read, bytes), 0);

  EXPECT_EQ(read.NumKriging, 2);
  EXPECT_EQ(read.NumSamp, 5);
  EXPECT_EQ(read.NumVar, 2);
  EXPECT_EQ(read.NumSol, 4) << "the sum of the models' outputs";
  EXPECT_EQ(read.sizes(), (std::vector<int>{1, 3}));
  EXPECT_EQ(written(read), bytes);
  expectEqual(read.InpTestMtx, points);
  int id = -1;
  EXPECT_EQ(read.GetIdOfNewPoint(0, id), 0);
  EXPECT_EQ(id, 5);
}

TYPED_TEST(KrigingFiles, OfListsStopAtTheFirstModelThatCannotBeWritten) {
  OpenList<TypeParam> list;
  makeSolvedList(list, {1, 3}, 5, 2);
  list.GetItemKriging(1)->PutSolnType(7); // takes it back to ready
  MemoryFile file;

  EXPECT_EQ(list.Write(file.get()), 1);
}

TYPED_TEST(KrigingFiles, OfListsTellThatTheyCannotGrow) {
  OpenList<TypeParam> list;
  makeSolvedList(list, {1}, 3, 1);
  std::size_t const size = written(list).size();
  for (std::size_t limit : {0, 3, 6, 7, 12, 18, 19, 40}) {
    ASSERT_LT(limit, size);
    MemoryFile file;
    FileSizeLimit const full(limit);
    EXPECT_EQ(list.Write(file.get()), 1) << "at " << limit;
  }
}
