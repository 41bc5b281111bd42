// Texts that the machine compiles and runs itself. Only here does a level pay for the Points of a Programme.
#pragma once

#include <cstdio>

#include "failure/custody.h"
#include "machine/level.h"

namespace morvik {

// The bytes of a character space with an end of text after them: a counted string, owned by the caller. Message 27.
char *endedtext(const Point &space);

// Room for a Programme: a counted block, in custody with the Points that it holds until it is ended.
struct Text {
  Custody points, block;
  Point *programme;
};
void opentext(Text &text);
void closetext(Text &text);
// Compiles one text into it. An interrupt is ignored meanwhile if a person types the text, and waits otherwise. Returns
// what fill returns.
std::int64_t compiletext(Level &level, Text &text, std::FILE *stream, const char **string, int flag);
// Runs what was compiled in this frame and floor, and releases its Points.
void runtext(Level &level, Text &text, Point *frame, Point *floor);

// Runs the text of the character space on top, portion by portion.
Next executetext(Level &level);

}  // namespace morvik
