// The message for a pair of kinds, where an instruction has no formula for quaternions and octonions.
#pragma once

#include "arithmetic/frame.h"
#include "spaces/messages.h"
#include "spaces/parts.h"

namespace morvik {

inline std::int32_t nohigher(std::int32_t left, std::int32_t right) {
  return partsof(left) > 0 && partsof(right) > 0 ? messages::RESTRICTION : messages::INCOMPATIBLE_TYPES;
}

}  // namespace morvik
