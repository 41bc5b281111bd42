// A run of the system in this process: what the prompt, the script runner and the library share.
#pragma once

#include <cstdint>
#include <cstdio>

#include "spaces/point.h"

namespace morvik {

// Calls the work with its argument under a landing of its own. Did it return? Where a failure jumped out of it, that
// was reported, and what it held was given back.
bool completes(void (*work)(void *argument), void *argument);

// From nothing to a session that is ready for its first text, with so many slots for work; the process keeps its own
// signals, limits and streams. Returns false where there is no storage for it. endsession gives everything back, after
// which another session may begin.
bool startsession(std::uint32_t slots);
void endsession();
// The status that a process ends with after its session: in the checking build another one where blocks are still
// alive, which is told.
int statusofend(int status);

// What of that the prompt has too: the banks and the tables; the pool and the generators. Jump where there is no
// storage.
void openstate();
void openpool();

// Compiles one text, of the stream or of the string as fill does. Returns what fill returns.
std::int64_t compilenext(std::FILE *stream, const char **string);
// Runs what was compiled on bank 0 and gives it back; the stack and the names stay for the next text.
void runcompiled();
// Its first Point, until then.
const Point *compiled();
// Gives it back without a run.
void dropcompiled();

// What the end of a string does not end: the text that it ends is run to its end as any other. After compilenext, which
// returned so many Points.
void dropinputend(std::int64_t points);

}  // namespace morvik
