// Registers of 32 bytes. What gains by them is compiled a second time, for processors that have them. Both do the same
// operations in the same order: no result depends on the processor.
#pragma once

// Attributes of a function for such registers, and for logic of three operands in them too.
#ifdef __x86_64__
#define MORVIK_WIDE gnu::target("avx2")
#define MORVIK_TERNARY gnu::target("avx2,avx512vl")
#else
#define MORVIK_WIDE maybe_unused
#define MORVIK_TERNARY maybe_unused
#endif

namespace morvik {

// Has the processor such registers, and such logic? Tests clear them.
extern bool wideregisters, ternarylogic;

using Pair __attribute__((vector_size(16))) = double;
using Quad __attribute__((vector_size(32))) = double;

// How many doubles a register holds.
template <class Lanes>
inline constexpr int LANES = sizeof(Lanes) / sizeof(double);

}  // namespace morvik
