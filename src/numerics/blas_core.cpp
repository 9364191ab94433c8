#include "numerics/blas_core.h"

#include <dlfcn.h>
#include <sys/stat.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

#include <zarel/blas_info.h>

#include "numerics/keep_blas_core.h"

// OpenBLAS's own entry points. Weak, so that they are null with any other BLAS; what is linked
// behind a wrapper library is found by name at run time. A static OpenBLAS brings only the ones
// that its own start needs, so no more than these decide.
extern "C" {
[[gnu::weak]] char* openblas_get_config();
[[gnu::weak]] char* gotoblas_corename();
[[gnu::weak]] int openblas_get_parallel();
[[gnu::weak]] int openblas_get_num_threads();
[[gnu::weak]] void gotoblas_dynamic_init();
[[gnu::weak]] void gotoblas_dynamic_quit();
[[gnu::weak]] extern const char gotoblas_SKYLAKEX;
[[gnu::weak]] extern const char gotoblas_HASWELL;
[[gnu::weak]] extern const char gotoblas_SANDYBRIDGE;
}

namespace Zarel::numerics {

const char blasCoreIsChosen = 0;

namespace {

using Text = std::string_view;

constexpr std::array<std::pair<Text, VectorLevel>, 27> knownCores = {{
    {"Unknown", VectorLevel::Sse},
    {"Katmai", VectorLevel::Sse},
    {"Coppermine", VectorLevel::Sse},
    {"Northwood", VectorLevel::Sse},
    {"Prescott", VectorLevel::Sse},
    {"Banias", VectorLevel::Sse},
    {"Atom", VectorLevel::Sse},
    {"Core2", VectorLevel::Sse},
    {"Penryn", VectorLevel::Sse},
    {"Dunnington", VectorLevel::Sse},
    {"Nehalem", VectorLevel::Sse},
    {"Athlon", VectorLevel::Sse},
    {"Opteron", VectorLevel::Sse},
    {"Opteron_SSE3", VectorLevel::Sse},
    {"Barcelona", VectorLevel::Sse},
    {"Nano", VectorLevel::Sse},
    {"Bobcat", VectorLevel::Sse},
    {"Sandybridge", VectorLevel::Avx},
    {"Bulldozer", VectorLevel::Avx},
    {"Piledriver", VectorLevel::Avx},
    {"Steamroller", VectorLevel::Avx},
    {"Haswell", VectorLevel::Avx2},
    {"Zen", VectorLevel::Avx2},
    {"Excavator", VectorLevel::Avx2},
    {"SkylakeX", VectorLevel::Avx512},
    {"Cooperlake", VectorLevel::Avx512},
    {"SapphireRapids", VectorLevel::Avx512},
}};

/** What to take at each level, best first. */
constexpr std::array<std::pair<Text, VectorLevel>, 3> choices = {{
    {"SkylakeX", VectorLevel::Avx512},
    {"Haswell", VectorLevel::Avx2},
    {"Sandybridge", VectorLevel::Avx},
}};

bool equalNames(Text a, Text b) {
  return a.size() == b.size() && strncasecmp(a.data(), b.data(), a.size()) == 0;
}

/** The entry point as it was linked, or as it is found by name in the process; null if neither. */
template <class Symbol>
Symbol* entry(Symbol* linked, const char* name) {
  return linked ? linked : reinterpret_cast<Symbol*>(dlsym(RTLD_DEFAULT, name));
}
#define ZAREL_ENTRY(name) entry(&name, #name)

/** What OpenBLAS exports, as far as it is there. */
struct OpenBlas {
  decltype(&openblas_get_config) config = ZAREL_ENTRY(openblas_get_config);
  decltype(&gotoblas_corename) core = ZAREL_ENTRY(gotoblas_corename);
  decltype(&openblas_get_parallel) parallel = ZAREL_ENTRY(openblas_get_parallel);
  decltype(&openblas_get_num_threads) threads = ZAREL_ENTRY(openblas_get_num_threads);
  decltype(&gotoblas_dynamic_init) choose = ZAREL_ENTRY(gotoblas_dynamic_init);
  decltype(&gotoblas_dynamic_quit) forget = ZAREL_ENTRY(gotoblas_dynamic_quit);

  bool chooses() const { return core && choose && forget; }
  bool present() const { return config || core; }
  int ownThreads() const { return parallel && threads && parallel() == 1 ? threads() : 1; }
};

bool isBuilt(Text core) {
  if (core == "SkylakeX") return ZAREL_ENTRY(gotoblas_SKYLAKEX) != nullptr;
  if (core == "Haswell") return ZAREL_ENTRY(gotoblas_HASWELL) != nullptr;
  return core == "Sandybridge" && ZAREL_ENTRY(gotoblas_SANDYBRIDGE) != nullptr;
}

/** The threads of the process: the system lists each as a folder. */
int threadsOfProcess() {
  struct stat tasks;
  return stat("/proc/self/task", &tasks) == 0 ? static_cast<int>(tasks.st_nlink) - 2 : 1;
}

bool userDecides() {
  const char* ours = std::getenv("ZAREL_BLAS_CORE");
  return std::getenv("OPENBLAS_CORETYPE") || (ours && std::strcmp(ours, "keep") == 0);
}

/** What was found and done at load. */
struct Choice {
  OpenBlas blas;
  std::string initialCore;
  bool reselected = false;

  Choice() {
    if (blas.core) initialCore = blas.core();
    if (!blas.chooses() || userDecides() || threadsOfProcess() > blas.ownThreads()) return;
    if (initialCore == "Unknown") startBlas();
    const Text better = betterCore(initialCore, vectorLevel(readCpuWords()), isBuilt);
    if (!better.empty()) reselect(std::string(better));
  }

  /** In a static program this may run before OpenBLAS's own start. */
  void startBlas() {
    blas.choose();
    initialCore = blas.core();
  }

  void reselect(const std::string& core) {
    chooseAs(core);
    reselected = equalNames(blas.core(), core);
    if (!reselected) chooseAs(initialCore);
  }

  /** OpenBLAS reads the core's name from the environment, here for this one moment. */
  void chooseAs(const std::string& core) {
    if (setenv("OPENBLAS_CORETYPE", core.c_str(), 1) != 0) return;
    blas.forget();
    blas.choose();
    unsetenv("OPENBLAS_CORETYPE");
  }
};

const Choice& choice() {
  static const Choice made;
  return made;
}

[[gnu::constructor]] void chooseAtLoad() {
  choice();
}

/** The second word of "OpenBLAS 0.3.21 ...". */
std::string versionIn(Text config) {
  const auto start = config.find(' ');
  if (start == Text::npos) return {};
  return std::string(config.substr(start + 1, config.find(' ', start + 1) - start - 1));
}

} // namespace

std::string_view betterCore(Text current, VectorLevel offered,
                            const std::function<bool(Text)>& isCoreBuilt) {
  for (const auto& [name, level] : knownCores) {
    if (!equalNames(name, current)) continue;
    for (const auto& [candidate, candidateLevel] : choices)
      if (candidateLevel <= offered && candidateLevel > level && isCoreBuilt(candidate))
        return candidate;
  }
  return {};
}

} // namespace Zarel::numerics

using Zarel::numerics::choice;

const char* zarel_blas_name() {
  return choice().blas.present() ? "OpenBLAS" : "BLAS";
}

const char* zarel_blas_version() {
  static const std::string version = Zarel::numerics::versionIn(zarel_blas_config());
  return version.c_str();
}

const char* zarel_blas_config() {
  return choice().blas.config ? choice().blas.config() : "";
}
const char* zarel_blas_core() {
  return choice().blas.core ? choice().blas.core() : "";
}
const char* zarel_blas_initial_core() {
  return choice().initialCore.c_str();
}
int zarel_blas_reselected() {
  return choice().reselected ? 1 : 0;
}
