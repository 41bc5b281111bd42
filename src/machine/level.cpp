// The activations.
#include "machine/level.h"

namespace morvik {

Level *running;
Point *stacktop;

}  // namespace morvik
