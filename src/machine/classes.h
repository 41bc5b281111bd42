// What the argument class of an instruction asks for, and the checks that it makes.
#pragma once

#include <cstdint>

#include "machine/level.h"
#include "spaces/messages.h"
#include "spaces/work.h"

namespace morvik {

// What the argument class of an instruction asks for, as classes.def tells.
enum class Wait : std::uint8_t { NO, ALWAYS, WHEN_LARGE };
enum class Takes : std::uint8_t { ANY, SCALAR, EMPTIES };
struct Needs {
  Wait wait;
  std::uint8_t operands;
  Takes takes;
};

// Waits for the pool if the operands ask for it, while a result is in flight.
void awaitpool(Level &level, const Needs &needs);
// The empty rule: an empty operand of two gives way to the other. Was one of them empty?
bool emptyrule(Level &level);

// What the argument class of the present instruction says: run it; pass it by, as the empty rule did its work; or
// leave the level, as a failure was reported.
enum class Admission { RUN, PASS, LEAVE };
[[gnu::cold]] Admission refuse(Level &level, int number);
inline Admission admit(Level &level, const Needs &needs) {
  if (resultinflight) [[unlikely]]
    awaitpool(level, needs);
  if (needs.operands == 0) return Admission::RUN;
  const Point &first = *(level.sp + 1 - needs.operands);
  if (&first < level.floor) [[unlikely]]
    return refuse(level, messages::TOO_FEW_ARGUMENTS);
  if (needs.takes == Takes::ANY) return Admission::RUN;
  if (isoperator(*level.sp) || isoperator(first)) [[unlikely]]
    return refuse(level, messages::OPERATOR_OPERAND);
  const bool empty = needs.takes == Takes::EMPTIES && (isempty(*level.sp) || isempty(first));
  return empty && emptyrule(level) ? Admission::PASS : Admission::RUN;
}

}  // namespace morvik
