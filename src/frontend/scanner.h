// Bytes to tokens: longest match in ten start conditions, one byte at a time, never a byte past what is needed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "frontend/tokens.h"

namespace morvik {

// The next token in this condition. Skips the white space that the condition skips; copies to standard output and
// drops, outside INITIAL, each byte that no rule matches. Reports 27 and jumps.
Token scan(Condition condition);

}  // namespace morvik
