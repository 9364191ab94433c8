// Peak memory of a fit and of predictions with errors, each against its bound. Every row runs in a
// process of its own, because a peak never goes down.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>

#include <sys/wait.h>
#include <unistd.h>

#include <zarel/Kriging.h>

#include "krigingData.h"

namespace {

/** A line of /proc/self/status, in bytes: VmHWM is the peak of resident memory, VmRSS the present.
 */
double statusBytes(const char* name) {
  std::FILE* const file = std::fopen("/proc/self/status", "r");
  char line[256];
  double kibibytes = 0.0;
  while (file != nullptr && std::fgets(line, sizeof line, file) != nullptr)
    if (std::strncmp(line, name, std::strlen(name)) == 0)
      kibibytes = std::atof(line + std::strlen(name) + 1);
  if (file != nullptr) std::fclose(file);
  return 1024.0 * kibibytes;
}

/** Lets the peak start again from the present. */
void resetPeak() {
  std::FILE* const file = std::fopen("/proc/self/clear_refs", "w");
  if (file == nullptr) return;
  std::fputs("5", file);
  std::fclose(file);
}

constexpr double mebibyte = 1024.0 * 1024.0;

/** The peak of the whole process that fits m samples with a linear trend. */
void fitRow() {
  constexpr int m = 4000;
  Kriging<double> model;
  bench::prepare(model, m, E_PolyLinear, E_CorrGauss);
  if (model.Solve() != 0) std::exit(1);
  std::printf("fit-memory-m4000-linear\t%.0f\t%.0f\n", statusBytes("VmHWM"),
              16.0 * m * m + 64.0 * mebibyte);
}

/** What predictions with errors at N points add to the fitted model, the points and the results,
 *  which are there, and touched, before. */
void predictionRow(int count) {
  constexpr int m = 1000;
  Kriging<double> model;
  bench::prepare(model, m, E_PolyFullQuad, E_CorrGauss);
  C_MatMGe<double> P = bench::uniformPoints(count, 2), Y(count, 1), E(count, 1);
  Y.Init(1.0);
  E.Init(1.0);
  if (model.Solve() != 0) std::exit(1);
  resetPeak();
  const double before = statusBytes("VmRSS");
  if (model.EvalModelAndPredictor(P, Y, E) != 0) std::exit(1);
  std::printf("predict-memory-N%d-m1000\t%.0f\t%.0f\n", count, statusBytes("VmHWM") - before,
              16.0 * m * m + 16.0 * mebibyte);
}

int inChild(const std::function<void()>& row) {
  std::fflush(stdout);
  const pid_t child = fork();
  if (child == 0) {
    row();
    std::fflush(stdout);
    _exit(0);
  }
  int status = 1;
  waitpid(child, &status, 0);
  return status;
}

} // namespace

int main() {
  int failures = inChild(fitRow);
  for (int count : {10000, 200000})
    failures |= inChild([count] { predictionRow(count); });
  return failures == 0 ? 0 : 1;
}
