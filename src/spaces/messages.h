// The numbers of the messages by name, made from tables/messages.def. A message number is the one result by which
// functions tell what failed, so that they are plain integers; 0, which is the greeting, there means no failure.
#pragma once

#include <cstdint>

namespace morvik::messages {
#define MESSAGE(number, name, ...) inline constexpr std::int32_t name = number;
#include "tables/messages.def"
#undef MESSAGE
}  // namespace morvik::messages
