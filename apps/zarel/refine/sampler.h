/**
 * @file sampler.h
 * Where the first samples and the test points come from when they are not given.
 */
#ifndef ZAREL_APP_REFINE_SAMPLER_H
#define ZAREL_APP_REFINE_SAMPLER_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace app::refine {

/** One design variable and where it may go. */
struct Variable {
  std::string name;
  double low = 0;
  double high = 0;
};

/** A way to place points. Other designs of experiments come in as other subclasses. */
class Sampler {
public:
  virtual ~Sampler() = default;
  /** `count` points strictly inside the bounds, a row a point. */
  virtual std::vector<std::vector<double>> draw(int count,
                                                const std::vector<Variable>& variables) = 0;
};

/** Independent uniform numbers from MT19937. What is drawn depends on seed and stream alone. */
class RandomSampler : public Sampler {
public:
  RandomSampler(std::uint64_t seed, unsigned stream);
  std::vector<std::vector<double>> draw(int count, const std::vector<Variable>& variables) override;

protected:
  /** `count` rows of `columns` numbers in (0, 1). */
  std::vector<std::vector<double>> unitPoints(int count, int columns);

private:
  std::uint64_t seed_;
  unsigned stream_;
  unsigned draws_ = 0;
};

/**
 * Of a number of random draws the one whose two nearest points are farthest apart, measured in the
 * unit cube. It costs nothing next to a simulation and avoids draws with points that nearly
 * coincide, which tell little and spoil the conditioning of a fit.
 */
class SpreadSampler : public RandomSampler {
public:
  using RandomSampler::RandomSampler;
  std::vector<std::vector<double>> draw(int count, const std::vector<Variable>& variables) override;
};

} // namespace app::refine

#endif
