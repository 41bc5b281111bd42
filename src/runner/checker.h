// A look at a script without a run: what would be wrong without a word.
#pragma once

#include "api/places.h"

namespace morvik {

void begincheck();
// Compiles the texts of a source and warns on standard error; of a library, only the names that it sets count.
void checktexts(Source &source, bool library);
// Warns of names that nothing set.
void endcheck();

}  // namespace morvik
