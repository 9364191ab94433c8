#include <cstdint>

#include <zarel/mrand.h>

namespace {

enum { TableSize = 55, FirstOfB = 31, WarmUp = 3025, DefaultSeed = 3127 };

constexpr std::int32_t modulus = 2147483647;
constexpr std::int32_t multiplier = 123413;
constexpr double factor = 4.656612875245797e-10; // 1 / modulus

struct Generator {
  std::int32_t table[TableSize];
  int a = 0;
  int b = FirstOfB;
  bool seeded = false;
};

Generator generator;

// Products, sums and differences that wrap in 32 bits.
std::int32_t wrapped(std::uint32_t x) {
  return static_cast<std::int32_t>(x);
}
std::uint32_t word(std::int32_t x) {
  return static_cast<std::uint32_t>(x);
}
std::int32_t seedWord(std::int32_t from) {
  return wrapped(word(multiplier) * word(from)) % modulus;
}

int following(int cursor) {
  return cursor == TableSize - 1 ? 0 : cursor + 1;
}

double next() {
  Generator& g = generator;
  g.a = following(g.a);
  g.b = following(g.b);
  std::int32_t value = wrapped(word(g.table[g.a]) - word(g.table[g.b]));
  if (value < 0) value = wrapped(word(value) + word(modulus));
  g.table[g.a] = value;
  return value * factor;
}

void seedOnce() {
  if (!generator.seeded) smrand(DefaultSeed);
}

} // namespace

double mrand(void) {
  seedOnce();
  return next();
}

void mrandlist(double* out, int count) {
  if (count < 1) return;
  seedOnce();
  for (int i = 0; i < count; ++i)
    out[i] = next();
}

void smrand(int seed) {
  generator.table[0] = seedWord(seed);
  for (int i = 1; i < TableSize; ++i)
    generator.table[i] = seedWord(generator.table[i - 1]);
  generator.seeded = true;
  for (int i = 0; i < WarmUp; ++i)
    next();
}
