// Decompositions of mapped sets in processes that may not have the memory, or not even the
// addresses, for the set.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "decomposition/sets.h"
#include "support/Files.h"
#include "support/sanitizers.h"

namespace {

using namespace sets;

using Set = C_VSTRUCT<double>;

constexpr rlim_t mebibyte = 1 << 20;
constexpr int vectors = 64, length = 3 << 16; // 1.5 MiB a vector, 96 MiB in all

/** A line of /proc/self/status, in bytes. */
rlim_t used(const char* line) {
  std::FILE* const file = std::fopen("/proc/self/status", "r");
  char text[256];
  rlim_t kibibytes = 0;
  while (std::fgets(text, sizeof text, file) != nullptr)
    if (std::strncmp(text, line, std::strlen(line)) == 0)
      kibibytes = std::strtoull(text + std::strlen(line) + 1, nullptr, 10);
  std::fclose(file);
  return 1024 * kibibytes;
}

double valueOf(int j) {
  return 1.0 / (1 + j);
}

/** A wave in 4 * length steps: the places of a vector are at the odd ones of half a wave. */
const std::vector<double>& wave() {
  static const std::vector<double> steps = [] {
    std::vector<double> values(4 * length);
    const double step = std::acos(-1.0) / (2 * length);
    for (std::size_t i = 0; i < values.size(); ++i)
      values[i] = std::sqrt(2.0 / length) * std::cos(step * static_cast<double>(i));
    return values;
  }();
  return steps;
}

/** Vector j is a cosine of j + 1 half waves, of length valueOf(j); all are orthogonal. */
void fillWithWaves(Set& set) {
  const std::vector<double>& steps = wave();
  for (std::size_t j = 0; j < vectors; ++j) {
    double* const v = set.GetVector(static_cast<int>(j), nullptr)->Adr(0);
    for (std::size_t i = 0; i < length; ++i)
      v[i] = valueOf(static_cast<int>(j)) * steps[(2 * i + 1) * (j + 1) % steps.size()];
  }
  set.UnmapAllBlocks();
}

enum Lengths { asFilled, ones };

/** Whether the vectors of a set are the first waves, of either sign. */
bool isWaves(Set& set, Lengths lengths) {
  Set waves(onFile, vectors, length, nullptr);
  fillWithWaves(waves);
  for (int j = 0; j < set.getDim(); ++j) {
    const double part = *waves.GetVector(j, nullptr) * *set.GetVector(j, nullptr);
    const double expected = valueOf(j) * (lengths == ones ? 1 : valueOf(j));
    if (!(std::abs(std::abs(part) - expected) < 1e-9)) return false;
  }
  return true;
}

/** Whether the values are those of the waves. */
bool areValues(C_AlgoSvd<double>& svd, int count) {
  const std::vector<double> s = valuesOf<double>(svd);
  if (static_cast<int>(s.size()) != count) return false;
  for (int j = 0; j < count; ++j)
    if (!(std::abs(s[static_cast<std::size_t>(j)] - valueOf(j)) < 1e-10)) return false;
  return true;
}

/** What the libraries below keep once they have been used is not the set's. */
void warmUp() {
  C_MatMGe<double> a = withSpectrum<double>(300, graded(vectors, 1, 0.9)), b = a;
  Set set(inCore, vectors, 300, nullptr);
  fillFrom(set, a);
  C_AlgoSvdArpack restarted;
  C_AlgoSvdLapack<double> direct;
  restarted.Run(set, 0, -1);
  direct.Run(b, 0);
}

/** Runs `body` on the set, in a process of its own that may have `more` beyond what it has. */
class SvdMemory : public ::testing::Test {
protected:
  void SetUp() override {
    if (support::addressSanitizer || support::threadSanitizer)
      GTEST_SKIP() << "sanitizers need memory of their own";
  }

  /** What `body` returns; a process that died gives its signal, negative. */
  static int within(int resource, const char* line, rlim_t more,
                    const std::function<int(Set&)>& body) {
    const pid_t child = ::fork();
    if (child == 0) {
      int result = 99;
      {
        Set set(onFile, vectors, length, nullptr);
        fillWithWaves(set);
        warmUp();
        const rlim_t most = used(line) + more;
        const rlimit limit{most, most};
        if (::setrlimit(static_cast<__rlimit_resource>(resource), &limit) == 0) result = body(set);
      }
      std::fflush(nullptr);
      ::_exit(result);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }
  static int withMemory(rlim_t more, const std::function<int(Set&)>& body) {
    return within(RLIMIT_DATA, "VmData:", more, body);
  }
  static int withAddresses(rlim_t more, const std::function<int(Set&)>& body) {
    return within(RLIMIT_AS, "VmSize:", more, body);
  }

  support::TempDirectory directory;
  support::Environment place{"TMPDIR", directory.path().c_str()};
};

constexpr int asExpected = 0, setTaken = 1, noDecomposition = 2, wrongValues = 3, wrongVectors = 4;

int decomposed(C_AlgoSvd<double>& svd, Set& set, int found, int kept) {
  if (svd.Run(set, 0, -1) != 0 || set.getDim() != kept) return noDecomposition;
  if (!areValues(svd, found)) return wrongValues;
  return isWaves(set, ones) ? asExpected : wrongVectors;
}

int restarted(Set& set) {
  int nev = 6;
  C_AlgoSvdArpack svd;
  svd.SetNbEigenValuesToFind(nev);
  svd.SetThresholdValue(0);
  return decomposed(svd, set, nev, nev);
}

bool fitsInCore() {
  return codeOf([] { const Set copy(inCore, vectors, length, nullptr); }) != 1;
}

TEST_F(SvdMemory, TheRestartedSolverNeedsATwelfthOfAMappedSetAtMost) {
  EXPECT_EQ(
      withMemory(8 * mebibyte, [](Set& set) { return fitsInCore() ? setTaken : restarted(set); }),
      asExpected);
}

TEST_F(SvdMemory, SoDoesTheDirectOne) {
  EXPECT_EQ(withMemory(8 * mebibyte,
                       [](Set& set) {
                         C_AlgoSvdLapack<double> svd;
                         svd.SetThresholdValue(0);
                         return fitsInCore() ? setTaken : decomposed(svd, set, vectors, vectors);
                       }),
            asExpected);
}

/** Whether there is room for a view of the whole set. */
bool fitsInAView(Set& set) {
  const int code = codeOf([&] { set.MapAllBlocks(); });
  set.UnmapAllBlocks();
  return code != 13;
}

TEST_F(SvdMemory, TheRestartedSolverGoesInPartsWhereTheAddressesDoNotReach) {
  EXPECT_EQ(withAddresses(84 * mebibyte,
                          [](Set& set) { return fitsInAView(set) ? setTaken : restarted(set); }),
            asExpected);
}

/** The set as it was, and no results, after a run that threw 13. */
template <class Algorithm>
int refused(Set& set) {
  if (fitsInAView(set)) return setTaken;
  Algorithm svd;
  svd.SetThresholdValue(0);
  if (codeOf([&] { svd.Run(set, 0, -1); }) != 13 || svd.GetNbRetained() != 0)
    return noDecomposition;
  return set.getDim() == vectors && isWaves(set, asFilled) ? asExpected : wrongVectors;
}

TEST_F(SvdMemory, WhereNotEvenAPartFitsTheSetStaysAsItWas) {
  const rlim_t few = 20 * mebibyte;

  EXPECT_EQ(withAddresses(few, refused<C_AlgoSvdArpack>), asExpected);
  EXPECT_EQ(withAddresses(few, refused<C_AlgoSvdLapack<double>>), asExpected);
}

} // namespace
