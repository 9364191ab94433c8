/**
 * @file C_RandNum.h
 * Uniform random numbers in a range.
 */
#ifndef ZAREL_C_RANDNUM_H
#define ZAREL_C_RANDNUM_H

#include <cstdint>
#include <vector>

#include <zarel/export.h>

/** Where a seed comes from. */
enum E_InitSeedType : int {
  E_SeedTime = 0,    ///< the clock, in seconds
  E_SeedDefault = 1, ///< 123457
  E_SeedUser = 2     ///< the caller; 0 is refused
};

/**
 * The Mersenne Twister MT19937 with a range.
 *
 * Mathematics: M. Matsumoto and T. Nishimura, "Mersenne Twister: a 623-dimensionally
 * equidistributed uniform pseudo-random number generator", ACM TOMACS 8 (1998) 3-30, with the
 * seeding by a number and by an array that the authors published in 2002.
 *
 * A number is (y + 0.5) 2^-32 for an output word y, which lies strictly between 0 and 1, mapped to
 * the range. For `short` and `int` that number is truncated before it is mapped, so that every
 * value is the lower bound, truncated.
 *
 * Threads: objects are independent; one object serves one thread.
 * Failures: all functions return 0, or 1 for a failure; nothing is printed or thrown.
 */
class ZAREL_API C_RandNum {
public:
  /** Not initialised: no number can be drawn yet. */
  C_RandNum() = default;
  /** Not usable: clears the object and ends the process with exit code 0. */
  C_RandNum(C_RandNum& other);
  C_RandNum& operator=(const C_RandNum&) = delete;
  /** Frees the state. */
  virtual ~C_RandNum();

  /** Seeds from the clock. */
  int Init();
  /** Seeds as told. 1 for an unknown type, a seed of 0 or no memory. */
  int Init(E_InitSeedType const& type, unsigned int const& seed);
  /** Seeds by `count` numbers. 1 for a count below 1 or any number of 0; the state then stays. */
  int Init(int count, unsigned int const* seeds);
  /** Sets the range of the numbers, at first 0 to 1. */
  void SetRangeValue(double low, double high);
  /** Draws `count` numbers into `out`. 1 before an Init. */
  int GetRandNum(int count, double* const& out);
  /** Draws `count` numbers of `short`, `int`, `float` or `double`. 1 before an Init. */
  template <class T>
  int GetRandNum(int count, T* const& out);
  /** Gives the first seed. 1 before an Init. */
  int GetSeed(unsigned int& seed) const;
  /** Gives seed `i`. 1 before an Init or for `i` out of range. */
  int GetSeed(int i, unsigned int& seed) const;
  /** Gives the number of seeds. 1 before an Init. */
  int GetSeedVectorSize(int& size) const;

private:
  int freshState(int count, unsigned int const* seeds);
  void seedWords(std::uint32_t seed);
  void mixIn(int count, unsigned int const* seeds);
  void markReady();
  void clear();
  int refill();
  template <class T>
  int draw(int count, T* out);

  std::vector<unsigned int> SeedVector;
  std::uint32_t* StateWords = nullptr;
  int ReadyForNumbers = 101;
  int NumbersLeft = 0;
  std::uint32_t* NextWord = nullptr;
  int ReadyForSeeds = 101;
  double RangeLow = 0.0;
  double RangeHigh = 1.0;
};

/// @cond
extern template int C_RandNum::GetRandNum<short>(int, short* const&);
extern template int C_RandNum::GetRandNum<int>(int, int* const&);
extern template int C_RandNum::GetRandNum<float>(int, float* const&);
extern template int C_RandNum::GetRandNum<double>(int, double* const&);
/// @endcond

namespace Zarel {
using ::C_RandNum;
} // namespace Zarel

#endif
