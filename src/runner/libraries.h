// Libraries: scripts that are run ahead of a script, for the names that they set.
#pragma once

#include <cstddef>

#include "api/list.h"

namespace morvik {

// The file of a library: along MORVIK_PATH, then beside the binary where it is installed (../share/morvik/lib), then in
// the tree that it was built in (../lib). A name is letters, digits, - and _. An empty list where there is none, which
// was told.
bool findlibrary(List<char> &path, const char *name);

// What a text needs stands in a comment ahead of its first word: NEEDS, and names. Where these begin; null for none.
const char *findneeds(const char *text);
// Goes on to the next name. Returns its length, 0 behind the last.
std::size_t findneed(const char *&names);

}  // namespace morvik
