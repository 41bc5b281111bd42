// The argument classes: how many operands an instruction needs, which ones it refuses, and whether it waits for the
// pool.
#include <algorithm>
#include <array>

#include "machine/level.h"

namespace {

enum class Wait : std::uint8_t { NO, ALWAYS, WHEN_LARGE };

struct Class {
  Wait wait;
  std::uint8_t operands;
  bool scalar;   // refuses OPERATOR Points
  bool empties;  // an empty operand of two gives way to the other
};

constexpr std::array<Class, 37> makeclasses() {
  std::array<Class, 37> c{};
  for (const int n : {1, 5, 7}) c[n].wait = Wait::ALWAYS;
  for (const int n : {10, 11, 12, 13, 14, 15}) c[n].operands = 1;
  for (const int n : {18, 19, 20, 21, 22, 23}) c[n].operands = 2;
  for (const int n : {28, 29, 30, 31}) c[n].operands = 3;
  for (const int n : {13, 15}) c[n].wait = Wait::ALWAYS;
  for (const int n : {11, 19, 21, 23, 25, 29, 31}) c[n].wait = Wait::WHEN_LARGE;
  for (const int n : {10, 11, 18, 19}) c[n].scalar = true;
  for (const int n : {18, 19}) c[n].empties = true;
  return c;
}
constexpr std::array<Class, 37> Classes = makeclasses();

// Do the operands pass the gate of the pool? Those that stand there: the count is checked only afterwards.
bool large(const Level &level, int operands) {
  std::int64_t elements = 0;
  for (int i = 0; i < operands && level.sp - i >= level.floor; ++i)
    elements = std::max<std::int64_t>(elements, level.sp[-i].elements);
  return goesparallel(elements);
}

void await(const Level &level, const Class &c) {
  if (c.wait == Wait::ALWAYS || (c.wait == Wait::WHEN_LARGE && large(level, c.operands)))
    wait_for_coprocessors(level.sp, c.operands);
}

}  // namespace

bool emptyrule(Level &level) {
  if (isempty(level.sp[0])) {
    droptop(level);
    return true;
  }
  if (!isempty(level.sp[-1])) return false;
  dereferencepoint(level.sp - 1);
  level.sp[-1] = level.sp[0];
  --level.sp;
  return true;
}

Admission admit(Level &level) {
  const std::uint16_t number = level.instruction->instruction;
  const Class &c = Classes[number < instructions::COUNT ? Types[number] : 0];
  if (processors > 1) await(level, c);
  if (c.operands == 0) return Admission::RUN;
  int failure = 0;
  if (!hasvalues(level, c.operands))
    failure = 800;
  else if (c.scalar && (isoperator(level.sp[0]) || (c.operands == 2 && isoperator(level.sp[-1]))))
    failure = 200;
  if (failure != 0) {
    fail(level, failure);
    return Admission::LEAVE;
  }
  return c.empties && emptyrule(level) ? Admission::PASS : Admission::RUN;
}
