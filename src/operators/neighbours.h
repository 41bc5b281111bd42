// The sums of weighted neighbourhoods, all at once: what MASK gives for a function that adds up what it is handed.
#pragma once

#include <cstdint>

#include "spaces/point.h"

namespace morvik {

// What the sums are, and the flops that they took, apart for products and for sums.
struct NeighbourSums {
  std::uint32_t kinds;  // HAS bits of the results
  double productflops, sumflops;
};

// Writes the sum of the weighted neighbourhood of each element of `data` to the records at `to`: products and sums in
// the order and by the rules of MULTIPLY and of a fold by ADD, the places outside being integers 0. The ranks are the
// same, and both have elements. Takes interrupts. False, with nothing written that counts, where the numbers ask for
// more than plain arithmetic: anything but integers and reals, kinds that change within the data, what is no finite
// number, integers whose sums may not be integers, a mask of one element; and where there is no storage for the work.
bool sumneighbourhoods(const Point &data, const Point &weights, Element *to, NeighbourSums &found);

}  // namespace morvik
