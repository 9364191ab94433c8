// The clock of the memory samples, which a time manager replaces by its own.
#ifndef ZAREL_MEMORY_ELAPSED_H
#define ZAREL_MEMORY_ELAPSED_H

namespace Zarel {

// Seconds since some moment before the first sample.
using ElapsedTime = double (*)();

// Replaces the clock and returns the former one; null brings back the memory room's own, whose
// moment is its first use.
ElapsedTime setElapsedTime(ElapsedTime clock);
double elapsedTime();

} // namespace Zarel

#endif
