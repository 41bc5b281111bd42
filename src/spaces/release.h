// Long releases, which an interrupt need not wait for.
#pragma once

// On the main thread: does the user wait? Then what is left of a long release goes with the next one. Null: no.
using Question = bool (*)();
extern constinit thread_local Question releasestops;
// Releases what was left.
void finishreleases();
