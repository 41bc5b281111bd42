// The sizes of what is compiled, and how a line feed behaves.
#pragma once

#include <cstddef>

namespace morvik {

// Points that a caller of fill has storage for.
inline constexpr std::size_t PROGRAMME_POINTS = 1024;
// Points that a function body may hold.
inline constexpr std::size_t BODY_POINTS = 40960;
// How deep functions and literals may nest.
inline constexpr std::size_t MOST_FRAMES = 16584;

// How a line feed behaves.
enum LineFeed : int { SKIPPED = 0, ENDS_TEXT = 1, ENDS_STEP = 2 };

}  // namespace morvik
