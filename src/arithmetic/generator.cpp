// Random numbers.
#include "arithmetic/generator.h"

#include <ctime>

namespace morvik {

namespace {
constexpr std::int64_t MODULUS = 2147483647, MULTIPLIER = 48271, QUOTIENT = 44488, REMAINDER = 3399;
constexpr std::int64_t STREAM_OFFSET = 22925;  // between the threads' states
constexpr std::int64_t DEFAULT_SEED = 123456789;
}  // namespace

std::uint64_t prngs_seed = 1;

std::int64_t PRNGS(std::uint64_t *state) {
  // A seed plus a thread's offset may reach beyond the modulus, where the split would leave the range.
  auto s = static_cast<std::int64_t>(*state % MODULUS);
  if (s == 0) s = DEFAULT_SEED;  // from 0 no step would ever lead away
  std::int64_t next = (s % QUOTIENT) * MULTIPLIER - (s / QUOTIENT) * REMAINDER;
  if (next < 1) next += MODULUS;
  *state = static_cast<std::uint64_t>(next);
  return next;
}

void SEED_PRNGS(std::int32_t index, std::uint64_t *state, std::int64_t seed) {
  std::int64_t start = DEFAULT_SEED;
  if (seed > 0) start = seed % MODULUS;
  if (seed < 0) start = static_cast<std::int64_t>(std::time(nullptr)) % MODULUS;
  *state = static_cast<std::uint64_t>(index * STREAM_OFFSET + start);
}

void GetSeed(std::uint64_t *out, const std::uint64_t *state) {
  *out = *state;
}

double drawbeside(std::uint64_t *state, double x) {
  double drawn;
  do drawn = static_cast<double>(PRNGS(state)) / PRNGS_MODULUS;
  while (drawn == x);
  return drawn;
}

std::int64_t drawbelow(std::uint64_t *state, std::int64_t n) {
  const double drawn = static_cast<double>(PRNGS(state)) / PRNGS_MODULUS * static_cast<double>(n);
  // A product near a large n may round up to it.
  return drawn < static_cast<double>(n) ? static_cast<std::int64_t>(drawn) : n - 1;
}

}  // namespace morvik
