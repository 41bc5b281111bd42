// Files that are written whole or not at all: what is written goes into a new file beside the old one, and takes its
// place when all of it is on disk.
#pragma once

#include <limits.h>
#include <sys/stat.h>

#include <cstdio>

#include "failure/custody.h"

namespace morvik {

// A file that is being written; in custody until it is ended, and a jump removes what was written.
struct Replacement {
  Custody custody;
  std::FILE *stream;         // null while none is open
  char *name;                // as it was asked for, a counted block
  char target[PATH_MAX];     // what is to be replaced, at the end of all links
  char temporary[PATH_MAX];  // the new file; empty where the old one is written directly
  struct stat old;           // what the new file takes over; a mode of 0 where there was none
};

// Begins a file of this name, whose counted block it takes over. What is no regular file is written directly, and so is
// one that must not be replaced: where its folder is read-only. Takes an interrupt that comes while the host keeps it
// waiting, by a jump. False where it can't be written; nothing is left then.
bool beginreplacement(Replacement &file, char *name);
// Puts the new file in place of the old one. False where not all could be written; the old one stays then. Takes an
// interrupt that broke a write, by a jump.
bool endreplacement(Replacement &file);

// Closes a stream. Did all that was written to it arrive?
bool closewritten(std::FILE *stream);

}  // namespace morvik
