// How names hash, for tables of the two sizes.
#pragma once

#include <cstdint>

namespace morvik {

extern const std::uint8_t rand8[256];
std::uint8_t smallhash(const char *name);
std::uint16_t largehash(const char *name);

}  // namespace morvik
