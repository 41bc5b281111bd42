// The generator: multiplicative congruential, modulus 2147483647, multiplier 48271, by Schrage's method. Every thread
// owns one state, so that no draw needs a lock.
#pragma once

#include <cstdint>

namespace morvik {

// The main thread's state. A state is between 1 and 2147483646 after a step.
extern std::uint64_t prngs_seed;

inline constexpr double PRNGS_MODULUS = 2147483647.0;

// Advances the state and returns it.
std::int64_t PRNGS(std::uint64_t *state);
// Seeds the state of a thread. `index` separates the threads' streams; a seed above 0 counts modulo 2147483647, 0
// means 123456789, below 0 for the time in seconds.
void SEED_PRNGS(std::int32_t index, std::uint64_t *state, std::int64_t seed);
// Copies a state out, for whoever wants to show a stream of numbers or to take it up again.
void GetSeed(std::uint64_t *out, const std::uint64_t *state);

// A draw from the unit interval that differs from x.
double drawbeside(std::uint64_t *state, double x);
// A uniform integer from 0 to n - 1, from one draw; n is at least 1.
std::int64_t drawbelow(std::uint64_t *state, std::int64_t n);

}  // namespace morvik
