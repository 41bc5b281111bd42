// INTERVAL: equally spaced values from a description of one to three elements.
#pragma once

#include <cstdint>

#include "spaces/point.h"

namespace morvik {

// Replaces the top: n counts from #IO; from, to; from, to, step. A vector of integers, reals or characters, or the grid
// of all components of hypercomplex numbers, component 0 fastest. The empty vector gives the integer 0.
// Reports 142, 146, 153 to 158 and jumps, the operand in place; 27.
void interval(Point **stackpointer, const Point *instruction, Point *context);
// One slice of what to_coprocessors holds, on any thread; fails only where it is stopped.
void vec_interval(std::uint32_t index) noexcept;

}  // namespace morvik
