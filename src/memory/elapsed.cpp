#include "memory/elapsed.h"

#include <chrono>

namespace Zarel {

namespace {

using Clock = std::chrono::steady_clock;

double sinceFirstUse() {
  static const Clock::time_point start = Clock::now();
  return std::chrono::duration<double>(Clock::now() - start).count();
}

ElapsedTime inUse = sinceFirstUse;

} // namespace

ElapsedTime setElapsedTime(ElapsedTime clock) {
  const ElapsedTime former = inUse;
  inUse = clock ? clock : sinceFirstUse;
  return former;
}

double elapsedTime() {
  return inUse();
}

} // namespace Zarel
