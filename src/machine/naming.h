// Names at run time.
#pragma once

#include "machine/level.h"

namespace morvik {

// The value of a VARIABLE or ADDRESS Point, rebound to the present context where its rule asks for it; null: none.
Point *resolve(Level &level, Point &name);

}  // namespace morvik
