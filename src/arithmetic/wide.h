// Registers of 32 bytes. What gains by them is compiled twice, of which the function marked MORVIK_WIDE is for
// processors that have them. Both do the same operations in the same order: no result depends on the processor.
#pragma once

#ifdef __x86_64__
#define MORVIK_WIDE [[gnu::target("avx2"), gnu::noinline]]
#else
#define MORVIK_WIDE [[gnu::noinline]]
#endif

namespace morvik {

// Has the processor such registers? Tests clear it.
extern bool wideregisters;

using Pair __attribute__((vector_size(16))) = double;
using Quad __attribute__((vector_size(32))) = double;

// How many doubles a register holds.
template <class Lanes>
inline constexpr int LANES = sizeof(Lanes) / sizeof(double);

}  // namespace morvik
