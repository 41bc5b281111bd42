// MATCH: how similar two spaces are, and whether they are the same.
#pragma once

#include <cstdint>

#include "spaces/point.h"

namespace morvik {

struct Similarity {
  std::uint64_t weight;  // what two spaces of these sizes could score
  std::uint64_t score;
};

// The elements of two spaces in step, enclosed spaces within them. Nothing is released. Comparisons of
// doubles count as flops of slot 0. An interrupt jumps.
Similarity match(const Point &left, const Point &right);
// Are the elements the same, in kind and in value? 1 or 0.
int exactmatch(const Point &left, const Point &right);

}  // namespace morvik
