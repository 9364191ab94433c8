// The choice of OpenBLAS's kernels: the rules as a pure function of what processor and system tell,
// and what a process gets.
#include <array>
#include <cstdio>
#include <map>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include <zarel/blas_info.h>

#include "numerics/blas_core.h"
#include "support/sanitizers.h"

using Zarel::numerics::betterCore;
using Zarel::numerics::CpuWords;
using Zarel::numerics::VectorLevel;
using Zarel::numerics::vectorLevel;

namespace {

constexpr std::uint32_t bits(std::initializer_list<int> positions) {
  std::uint32_t word = 0;
  for (int position : positions)
    word |= std::uint32_t{1} << position;
  return word;
}

// CPUID leaf 1 ECX: FMA 12, OSXSAVE 27, AVX 28. Leaf 7 EBX: AVX2 5, AVX512 F 16, DQ 17, CD 28, BW
// 30, VL 31.
constexpr std::uint32_t allOfLeaf1 = bits({12, 27, 28}), allOfLeaf7 = bits({5, 16, 17, 28, 30, 31});
constexpr std::uint64_t sseState = 0x3, ymmState = 0x7, zmmState = 0xe7;

TEST(VectorLevel, NeedsTheProcessorsWord) {
  EXPECT_EQ(vectorLevel({}), VectorLevel::Sse);
  EXPECT_EQ(vectorLevel({bits({27, 28}), 0, zmmState}), VectorLevel::Avx);
  EXPECT_EQ(vectorLevel({allOfLeaf1, 0, zmmState}), VectorLevel::Avx);
  EXPECT_EQ(vectorLevel({bits({27, 28}), bits({5}), zmmState}), VectorLevel::Avx)
      << "AVX2 without FMA";
  EXPECT_EQ(vectorLevel({allOfLeaf1, bits({5}), zmmState}), VectorLevel::Avx2);
  EXPECT_EQ(vectorLevel({allOfLeaf1, allOfLeaf7, zmmState}), VectorLevel::Avx512);
}

TEST(VectorLevel, NeedsEveryPartOfAvx512) {
  for (int part : {16, 17, 28, 30, 31})
    EXPECT_EQ(vectorLevel({allOfLeaf1, allOfLeaf7 & ~bits({part}), zmmState}), VectorLevel::Avx2)
        << part;
}

TEST(VectorLevel, NeedsTheSystemsWord) {
  EXPECT_EQ(vectorLevel({allOfLeaf1, allOfLeaf7, ymmState}), VectorLevel::Avx2);
  EXPECT_EQ(vectorLevel({allOfLeaf1, allOfLeaf7, sseState}), VectorLevel::Sse);
  EXPECT_EQ(vectorLevel({allOfLeaf1 & ~bits({27}), allOfLeaf7, zmmState}), VectorLevel::Sse)
      << "no XGETBV";
  for (std::uint64_t missing : {0x20, 0x40, 0x80})
    EXPECT_EQ(vectorLevel({allOfLeaf1, allOfLeaf7, zmmState & ~missing}), VectorLevel::Avx2);
}

const auto everything = [](std::string_view) { return true; };

TEST(BetterCore, IsTheBestThatTheMachineOffers) {
  EXPECT_EQ(betterCore("Prescott", VectorLevel::Avx512, everything), "SkylakeX");
  EXPECT_EQ(betterCore("Prescott", VectorLevel::Avx2, everything), "Haswell");
  EXPECT_EQ(betterCore("Nehalem", VectorLevel::Avx, everything), "Sandybridge");
  EXPECT_EQ(betterCore("Haswell", VectorLevel::Avx512, everything), "SkylakeX");
  EXPECT_EQ(betterCore("Zen", VectorLevel::Avx512, everything), "SkylakeX");
  EXPECT_EQ(betterCore("Sandybridge", VectorLevel::Avx2, everything), "Haswell");
}

TEST(BetterCore, IsNeverOlderNorAMereSidestep) {
  EXPECT_EQ(betterCore("Prescott", VectorLevel::Sse, everything), "");
  EXPECT_EQ(betterCore("Zen", VectorLevel::Avx2, everything), "");
  EXPECT_EQ(betterCore("Haswell", VectorLevel::Avx2, everything), "");
  EXPECT_EQ(betterCore("SkylakeX", VectorLevel::Avx512, everything), "");
  EXPECT_EQ(betterCore("Cooperlake", VectorLevel::Avx512, everything), "");
  EXPECT_EQ(betterCore("SapphireRapids", VectorLevel::Avx2, everything), "");
}

TEST(BetterCore, LeavesNamesAloneThatItDoesNotKnow) {
  EXPECT_EQ(betterCore("FutureLake", VectorLevel::Avx512, everything), "");
  EXPECT_EQ(betterCore("", VectorLevel::Avx512, everything), "");
}

TEST(BetterCore, ReadsNamesInAnyCase) {
  EXPECT_EQ(betterCore("PRESCOTT", VectorLevel::Avx2, everything), "Haswell");
  EXPECT_EQ(betterCore("cooperlake", VectorLevel::Avx512, everything), "");
}

TEST(BetterCore, IsOneThatThisOpenBlasHas) {
  const auto noSkylake = [](std::string_view core) { return core != "SkylakeX"; };
  EXPECT_EQ(betterCore("Prescott", VectorLevel::Avx512, noSkylake), "Haswell");
  EXPECT_EQ(betterCore("Haswell", VectorLevel::Avx512, noSkylake), "");
  EXPECT_EQ(betterCore("Prescott", VectorLevel::Avx512, [](std::string_view) { return false; }),
            "");
}

/** It starts a thread before main, so under it the choice is always left alone. */
using support::threadSanitizer;

using Answers = std::map<std::string, std::string>;

/** The lines `key=value` that the probe prints when it runs with these settings. */
Answers probe(const std::string& settings, const std::string& arguments) {
  const std::string command = "env -u OPENBLAS_CORETYPE -u ZAREL_BLAS_CORE " + settings +
                              " " BLAS_PROBE " " + ZAREL_SHARED_LIBRARY " " + arguments;
  std::string output;
  std::array<char, 512> buffer;
  FILE* pipe = popen(command.c_str(), "r");
  if (!pipe) return {};
  while (fgets(buffer.data(), buffer.size(), pipe))
    output += buffer.data();
  EXPECT_EQ(pclose(pipe), 0) << command << '\n' << output;
  Answers answers;
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);)
    if (const auto sign = line.find('='); sign != std::string::npos)
      answers[line.substr(0, sign)] = line.substr(sign + 1);
  return answers;
}

/** Processes with this BLAS, which must choose its kernels at run time for these tests to say
 * anything. */
class BlasCore : public testing::Test {
protected:
  void SetUp() override {
    byItself = probe("ZAREL_BLAS_CORE=keep", "");
    if (byItself["name"] != "OpenBLAS" ||
        byItself["config"].find("DYNAMIC_ARCH") == std::string::npos)
      GTEST_SKIP() << "the BLAS here has one set of kernels: " << byItself["name"];
    if (threadSanitizer) GTEST_SKIP() << "the probe is never alone under ThreadSanitizer";
  }

  Answers byItself;
};

TEST_F(BlasCore, StaysWhenToldToKeep) {
  EXPECT_EQ(byItself["reselected"], "0");
  EXPECT_EQ(byItself["core"], byItself["initial"]);
  EXPECT_EQ(byItself["core"], byItself["host"]);
}

TEST_F(BlasCore, IsByDefaultTheRulesAnswer) {
  const auto better =
      betterCore(byItself["core"], vectorLevel(Zarel::numerics::readCpuWords()), everything);

  auto chosen = probe("", "");

  EXPECT_EQ(chosen["initial"], byItself["core"]);
  EXPECT_EQ(chosen["core"], better.empty() ? byItself["core"] : std::string(better));
  EXPECT_EQ(chosen["reselected"], better.empty() ? "0" : "1");
  EXPECT_EQ(chosen["product"], "right");
}

TEST_F(BlasCore, OfTheUserStands) {
  auto chosen = probe("OPENBLAS_CORETYPE=Prescott", "");

  EXPECT_EQ(chosen["core"], "Prescott");
  EXPECT_EQ(chosen["reselected"], "0");
  EXPECT_EQ(chosen["environment"], "Prescott");
}

// The probe lets OpenBLAS start on its oldest kernels and clears the variable before it loads the
// library: just what OpenBLAS does by itself on a processor that is newer than it knows.
TEST_F(BlasCore, ThatFellBackIsChosenAgain) {
  const auto better =
      betterCore("Prescott", vectorLevel(Zarel::numerics::readCpuWords()), everything);
  if (better.empty()) GTEST_SKIP() << "this machine has nothing newer than SSE";

  auto chosen = probe("OPENBLAS_CORETYPE=Prescott", "forget-variable");

  EXPECT_EQ(chosen["initial"], "Prescott");
  EXPECT_EQ(chosen["core"], better);
  EXPECT_EQ(chosen["host"], better);
  EXPECT_EQ(chosen["reselected"], "1");
  EXPECT_EQ(chosen["environment"], "unset");
  EXPECT_EQ(chosen["product"], "right");
}

TEST_F(BlasCore, IsKeptAlsoAfterAFallBack) {
  auto chosen = probe("ZAREL_BLAS_CORE=keep OPENBLAS_CORETYPE=Prescott", "forget-variable");

  EXPECT_EQ(chosen["core"], "Prescott");
  EXPECT_EQ(chosen["reselected"], "0");
}

TEST_F(BlasCore, IsLeftAloneWhileOtherThreadsRun) {
  auto chosen = probe("OPENBLAS_CORETYPE=Prescott", "forget-variable start-thread");

  EXPECT_EQ(chosen["core"], "Prescott");
  EXPECT_EQ(chosen["reselected"], "0");
}

TEST(BlasInfo, ComesWithTheStaticLibraryToo) {
  const std::string name = zarel_blas_name(), config = zarel_blas_config(),
                    version = zarel_blas_version();
  ASSERT_TRUE(name == "OpenBLAS" || name == "BLAS") << name;
  if (name == "BLAS") {
    EXPECT_EQ(config + version + zarel_blas_core() + zarel_blas_initial_core(), "");
    EXPECT_EQ(zarel_blas_reselected(), 0);
  } else {
    EXPECT_EQ(config.rfind("OpenBLAS " + version, 0), 0u) << config;
    EXPECT_STRNE(zarel_blas_core(), "");
    EXPECT_EQ(zarel_blas_reselected() != 0,
              std::string(zarel_blas_core()) != zarel_blas_initial_core());
  }
}

} // namespace
