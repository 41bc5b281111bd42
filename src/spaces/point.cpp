// The tables and counters that belong to Points as such.
#include "spaces/point.h"

#include "spaces/counters.h"

namespace morvik {

const char Ranks[12][32] = {"END",      "LOCAL VARIABLE", "LOCAL ADDRESS", "ADDRESS", "OPERATOR", "FUNCTION",
                            "VARIABLE", "LABEL",          "UNUSED",        "INVALID", "SCALAR",   "ARRAY"};

}  // namespace morvik
