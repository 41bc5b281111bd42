// Text to Programme: fill, the way in.
#pragma once

#include <cstdint>
#include <cstdio>

#include "frontend/symtab.h"
#include "spaces/point.h"

// Points that a caller of fill provides room for.
inline constexpr std::size_t PROGRAMME_POINTS = 1024;
// Points that a function body may hold.
inline constexpr std::size_t BODY_POINTS = 40960;
// How deep functions and nested literals may stand in each other.
inline constexpr std::size_t FRAMES = 16584;

// How a line feed behaves.
enum LineFeed : int { SKIPPED = 0, ENDS_TEXT = 1, ENDS_STEP = 2 };

// Compiles one text into `programme` (room for PROGRAMME_POINTS, owned by the caller, released by cleanup).
// Reads from `string` if that is not null, moving it on to the position reached, else from `stream`.
// Returns the number of Points written, END included; 0, with an empty Programme, after a message that jumps: the rest
// of that text is read and dropped. Reports 27, 74, 79, 150, 151, 152, 807, 808, 809, 810, 982, 1100, and what reshape
// reports of a literal's shape.
std::int64_t fill(Point *programme, Context *chain, Point *stackposition, std::FILE *stream, const char **string,
                  int flag);
// Did the text that fill compiled last end with its input?
bool inputended();
