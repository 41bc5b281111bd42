// The longest number at the beginning of the window.
#pragma once

#include <cstddef>

#include "frontend/tokens.h"

namespace morvik {

// A match of so many bytes under a rule; of length 0: none.
struct Match {
  std::size_t length;
  Rule rule;
};

// 12 -3 2E3 2.5 Inf NaN, the cartesian and the polar forms with their prefixes; `decimal` is the value of one part.
// Looks no further than the first byte that no number goes on with.
Match matchnumber(Decimal &decimal);
// 0#101
Match matchbinary();
// The same between backquotes.
Match matchbinarycharacter();
// An optional minus and digits from a place on: the place after them; 0 for none.
std::size_t matchcount(std::size_t at);
// Whether the bytes from a place on are these; looks no further than the first that differs.
bool matchbytes(std::size_t at, const char *word);

}  // namespace morvik
