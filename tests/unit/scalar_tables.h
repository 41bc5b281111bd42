// Every scalar instruction as the loops that it is made of, from the table of the instructions.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "arithmetic/cores.h"
#include "arithmetic/kinds.h"
#include "arithmetic/monadic.h"
#include "points.h"
#include "spaces/instructions.h"

namespace morvik {
#define MONADIC(f) extern const Monadic f##monadic;
#define DRAWING(f) MONADIC(f)
#define DYADIC(f)
#define SPACE(f)
#define HANDLER(f)
#define NOTIMPLEMENTED
#define RESTRICTED
#define NOTHING
#define INSTRUCTION(number, name, argumentclass, key, handler, effect, meaning) handler
#include "tables/instructions.def"
#undef INSTRUCTION
#undef MONADIC
}  // namespace morvik
namespace scalars {

template <class Cores>
struct Instruction {
  std::string name;
  const Cores *cores;
};

inline std::vector<Instruction<morvik::Dyadic>> dyadics() {
  std::vector<Instruction<morvik::Dyadic>> found;
#define MONADIC(f)
#define INSTRUCTION(number, name, argumentclass, key, handler, effect, meaning) \
  if (morvik::dyadiccores(number)) found.push_back({#name, morvik::dyadiccores(number)});
#include "tables/instructions.def"
#undef INSTRUCTION
#undef MONADIC
  return found;
}

inline std::vector<Instruction<morvik::Monadic>> monadics() {
  std::vector<Instruction<morvik::Monadic>> found;
#define MONADIC(f) found.push_back({name, &morvik::f##monadic});
#define DRAWING(f) MONADIC(f)
#define INSTRUCTION(number, word, argumentclass, key, handler, effect, meaning) \
  [&]([[maybe_unused]] const char *name) { handler; }(#word);
#include "tables/instructions.def"
#undef INSTRUCTION
#undef MONADIC
  return found;
}

// Are two records equal to the bit? One NaN is as good as another.
inline bool same(const morvik::Element &a, const morvik::Element &b) {
  if (morvik::headingof(a) != morvik::headingof(b)) return false;
  const std::vector<double> left = points::partsof(a), right = points::partsof(b);
  if (left.empty()) return a.integer == b.integer;
  return std::equal(left.begin(), left.end(), right.begin(), right.end(), [](double x, double y) {
    return std::isnan(x) ? std::isnan(y) : std::memcmp(&x, &y, sizeof x) == 0;
  });
}

}  // namespace scalars
