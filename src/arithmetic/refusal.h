// The message for a pair of kinds, where an instruction has no formula for quaternions and octonions.
#pragma once

#include "arithmetic/frame.h"
#include "spaces/messages.h"

namespace morvik {

inline std::int32_t nohigher(std::int32_t left, std::int32_t right) {
  const auto isnumber = [](std::int32_t tag) { return tag >= tags::INTEGER && tag <= tags::OCTONION; };
  return isnumber(left) && isnumber(right) ? messages::RESTRICTION : messages::INCOMPATIBLE_TYPES;
}

}  // namespace morvik
