#include <zarel/C_RandNum.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <new>

#include "containers/blocks.h"
#include "containers/scalars.h"

namespace {

constexpr int kWords = 624; // the order of the recurrence
constexpr int kShift = 397; // its middle term
constexpr std::uint32_t kUpperBit = 0x80000000U;
constexpr std::uint32_t kLowerBits = 0x7fffffffU;
constexpr std::uint32_t kTwist = 0x9908b0dfU;
constexpr unsigned int kDefaultSeed = 123457;
constexpr std::uint32_t kArraySeed = 19650218;
constexpr int kReady = 100;
constexpr int kNotReady = 101;

std::uint32_t twisted(std::uint32_t here, std::uint32_t next, std::uint32_t shifted) {
  const std::uint32_t y = (here & kUpperBit) | (next & kLowerBits);
  return shifted ^ (y >> 1) ^ (-(y & 1U) & kTwist);
}

std::uint32_t tempered(std::uint32_t y) {
  y ^= y >> 11;
  y ^= (y << 7) & 0x9d2c5680U;
  y ^= (y << 15) & 0xefc60000U;
  return y ^ (y >> 18);
}

/** (y + 0.5) 2^-32; the detour over a signed number is what vector units convert. */
double unitNumber(std::uint32_t y) {
  const double low = static_cast<double>(static_cast<std::int32_t>(y ^ kUpperBit));
  return (low + 2147483648.5) * (1.0 / 4294967296.0);
}

} // namespace

C_RandNum::C_RandNum(C_RandNum& other) {
  other.clear();
  std::exit(0);
}

C_RandNum::~C_RandNum() {
  clear();
}

void C_RandNum::clear() {
  Zarel::freeValues(StateWords);
  StateWords = nullptr;
  NextWord = nullptr;
  NumbersLeft = 0;
  ReadyForNumbers = ReadyForSeeds = kNotReady;
  SeedVector.clear();
}

int C_RandNum::Init() {
  return Init(E_SeedTime, 0);
}

int C_RandNum::Init(E_InitSeedType const& type, unsigned int const& seed) {
  unsigned int s = 0;
  switch (type) {
  case E_SeedTime:
    s = static_cast<unsigned int>(std::time(nullptr));
    break;
  case E_SeedDefault:
    s = kDefaultSeed;
    break;
  case E_SeedUser:
    s = seed;
    break;
  }
  if (s == 0 || freshState(1, &s) != 0) return 1;
  seedWords(s);
  markReady();
  return 0;
}

int C_RandNum::Init(int count, unsigned int const* seeds) {
  if (count <= 0 || seeds == nullptr || std::find(seeds, seeds + count, 0U) != seeds + count)
    return 1;
  if (freshState(count, seeds) != 0) return 1;
  seedWords(kArraySeed);
  mixIn(count, seeds);
  markReady();
  return 0;
}

/** Takes over the seeds and room for the state. */
int C_RandNum::freshState(int count, unsigned int const* seeds) {
  try {
    SeedVector.assign(seeds, seeds + count);
  } catch (const std::bad_alloc&) {
    return 1;
  }
  Zarel::freeValues(StateWords);
  ReadyForNumbers = ReadyForSeeds = kNotReady;
  StateWords = static_cast<std::uint32_t*>(
      zarelmem_malloc(kWords * sizeof(std::uint32_t), "StateWords", 1, __FILE__, __LINE__));
  NextWord = StateWords;
  return StateWords == nullptr ? 1 : 0;
}

void C_RandNum::seedWords(std::uint32_t seed) {
  StateWords[0] = seed;
  for (std::uint32_t i = 1; i < kWords; ++i)
    StateWords[i] = 1812433253U * (StateWords[i - 1] ^ (StateWords[i - 1] >> 30)) + i;
}

/** The published seeding by an array: one pass that adds the seeds, one that spreads them. */
void C_RandNum::mixIn(int count, unsigned int const* seeds) {
  std::uint32_t* w = StateWords;
  int i = 1;
  const auto mix = [&](std::uint32_t factor) {
    return w[i] ^ ((w[i - 1] ^ (w[i - 1] >> 30)) * factor);
  };
  const auto advance = [&] {
    if (++i < kWords) return;
    w[0] = w[kWords - 1];
    i = 1;
  };
  for (int turn = 0; turn < std::max(kWords, count); ++turn) {
    const int j = turn % count;
    w[i] = mix(1664525U) + seeds[j] + static_cast<std::uint32_t>(j);
    advance();
  }
  for (int turn = 1; turn < kWords; ++turn) {
    w[i] = mix(1566083941U) - static_cast<std::uint32_t>(i);
    advance();
  }
  w[0] = kUpperBit;
}

void C_RandNum::markReady() {
  NumbersLeft = 1;
  ReadyForNumbers = ReadyForSeeds = kReady;
}

void C_RandNum::SetRangeValue(double low, double high) {
  RangeLow = low;
  RangeHigh = high;
}

int C_RandNum::GetSeed(unsigned int& seed) const {
  return GetSeed(0, seed);
}

int C_RandNum::GetSeed(int i, unsigned int& seed) const {
  if (ReadyForSeeds != kReady || i < 0 || i >= static_cast<int>(SeedVector.size())) return 1;
  seed = SeedVector[static_cast<std::size_t>(i)];
  return 0;
}

int C_RandNum::GetSeedVectorSize(int& size) const {
  if (ReadyForSeeds != kReady) return 1;
  size = static_cast<int>(SeedVector.size());
  return 0;
}

int C_RandNum::refill() {
  if (ReadyForSeeds != kReady) return 1;
  std::uint32_t* w = StateWords;
  for (int i = 0; i < kWords - kShift; ++i)
    w[i] = twisted(w[i], w[i + 1], w[i + kShift]);
  for (int i = kWords - kShift; i < kWords - 1; ++i)
    w[i] = twisted(w[i], w[i + 1], w[i + kShift - kWords]);
  w[kWords - 1] = twisted(w[kWords - 1], w[0], w[kShift - 1]);
  NextWord = w;
  return 0;
}

/**
 * Draws in runs of words that need no refill. NumbersLeft counts the refill's own number, as if
 * each number first took 1 off and refilled at 0.
 */
template <class T>
int C_RandNum::draw(int count, T* out) {
  if (ReadyForNumbers != kReady) return 1;
  while (count > 0) {
    int words = NumbersLeft - 1;
    if (words == 0) {
      if (refill() != 0) return 1;
      words = kWords;
    }
    const int run = std::min(words, count);
    const double width = RangeHigh - RangeLow;
    const double low = RangeLow;
    const std::uint32_t* word = NextWord;
    for (int i = 0; i < run; ++i) {
      const T unit = Zarel::fromReal<T>(unitNumber(tempered(word[i])));
      out[i] = Zarel::fromReal<T>(width * static_cast<double>(unit) + low);
    }
    NextWord += run;
    NumbersLeft = words - run + 1;
    out += run;
    count -= run;
  }
  return 0;
}

int C_RandNum::GetRandNum(int count, double* const& out) {
  return draw(count, out);
}

template <class T>
int C_RandNum::GetRandNum(int count, T* const& out) {
  return draw(count, out);
}

template ZAREL_API int C_RandNum::GetRandNum<short>(int, short* const&);
template ZAREL_API int C_RandNum::GetRandNum<int>(int, int* const&);
template ZAREL_API int C_RandNum::GetRandNum<float>(int, float* const&);
template ZAREL_API int C_RandNum::GetRandNum<double>(int, double* const&);
