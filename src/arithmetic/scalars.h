// Every scalar instruction, declared from tables/instructions.def.
//   monadic  f(point, instruction, context, nested): `point` is the stack top, replaced in place by one of its shape
//   drawing  the same with the state of the thread's generator
//   dyadic   f(&sp, instruction, context, nested): the two top Points become one, and sp moves down by one
// `context` is quads; `nested` non-zero forbids writing over an operand. Failures report and jump, operands left in
// place: 17, 162 and 149 of the dyadic family, 164 and 811 of the monadic one, 27, 991, 994 of all.
//
// The twin vec_f of each works slice `index` of what to_coprocessors holds, on any thread: it never reports or jumps,
// but returns the message number, 0 for none, and leaves flags, flops and that number in its reply.
#pragma once

#include <cstdint>

#include "spaces/point.h"

namespace morvik {

using MonadicFunction = void(Point *, const Point *, Point *, char);
using DrawingFunction = void(Point *, const Point *, Point *, char, std::uint64_t *);
using DyadicFunction = void(Point **, const Point *, Point *, char);

using MonadicSlice = std::int32_t(Point *, const Point *, Point *, std::uint32_t) noexcept;
using DrawingSlice = std::int32_t(Point *, const Point *, Point *, std::uint32_t, std::uint64_t *) noexcept;
using DyadicSlice = std::int32_t(Point **, const Point *, Point *, std::uint32_t) noexcept;

// The twin loose_f of the monadic ones works a loose scalar (spaces/loose.h) in its place. It returns 1 and its flops;
// 0 where f itself is to look closer, with everything as it was. What the quick loop asks of the dyadic ones is in
// their tables, fcores (arithmetic/pairs.h).
using LooseMonadic = std::uint64_t(Point &);
struct Dyadic;

#define INSTRUCTION(number, name, argumentclass, key, handler, effect, meaning) handler
#define MONADIC(f)        \
  MonadicFunction f;      \
  LooseMonadic loose_##f; \
  MonadicSlice vec_##f;
#define DRAWING(f)   \
  DrawingFunction f; \
  DrawingSlice vec_##f;
#define DYADIC(f)               \
  DyadicFunction f;             \
  extern const Dyadic f##cores; \
  DyadicSlice vec_##f;
#include "tables/instructions.def"

}  // namespace morvik
