// Values of names whose flag word and depth are exactly those that their records ask for. It takes a walk over all
// records to find that out; what the quick loop appends to such a value, or takes from it, changes the two by what is
// known of these few records.
#pragma once

#include "spaces/point.h"

namespace morvik {

// Notes that the value of a name is so, as it is now; asks for it; and forgets it, which must be done before the name
// gets any other value.
void noteexact(const Point &bound);
bool isexact(const Point &bound);
void forgetexact(const Point &bound);

}  // namespace morvik
