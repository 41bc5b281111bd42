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
  for (const unsigned n : {1U, 5U, 7U}) c[n].wait = Wait::ALWAYS;
  for (const unsigned n : {10U, 11U, 12U, 13U, 14U, 15U}) c[n].operands = 1;
  for (const unsigned n : {18U, 19U, 20U, 21U, 22U, 23U}) c[n].operands = 2;
  for (const unsigned n : {28U, 29U, 30U, 31U}) c[n].operands = 3;
  for (const unsigned n : {13U, 15U}) c[n].wait = Wait::ALWAYS;
  // The scalar ones wait here rather than in their frames, where a failure of the join could not move the stack.
  for (const unsigned n : {10U, 11U, 18U, 19U, 21U, 23U, 25U, 29U, 31U}) c[n].wait = Wait::WHEN_LARGE;
  for (const unsigned n : {10U, 11U, 18U, 19U}) c[n].scalar = true;
  for (const unsigned n : {18U, 19U}) c[n].empties = true;
  return c;
}
constexpr std::array<Class, 37> Classes = makeclasses();

// By instruction number; the last row is that of every number above.
struct ClassTable {
  Class row[instructions::COUNT + 1];
};
constexpr ClassTable maketable() {
  constexpr std::uint16_t numbers[] = {
#define INSTRUCTION(number, name, argumentclass, key, handler) argumentclass,
#include "machine/instructions.def"
#undef INSTRUCTION
  };
  ClassTable table = {};
  std::size_t number = 0;
  for (const std::uint16_t n : numbers) table.row[number++] = Classes[n];
  return table;
}
constexpr ClassTable Instructionclasses = maketable();

// Do the operands pass the gate of the pool? Those that stand there: the count is checked only afterwards.
bool large(const Level &level, int operands) {
  std::int64_t elements = 0;
  for (int i = 0; i < operands && level.sp - i >= level.floor; ++i)
    elements = std::max<std::int64_t>(elements, level.sp[-i].elements);
  return goesparallel(elements);
}

// While a result is in flight. The classes that never wait do not take it either. What the join adds to the count of
// operations was not done by this instruction.
void await(Level &level, const Class &c) {
  const bool taken = unfinished > level.sp - c.operands;
  if (c.wait != Wait::ALWAYS && !(c.wait == Wait::WHEN_LARGE && large(level, c.operands)) && !taken) return;
  wait_for_coprocessors(level.sp, c.operands);
  level.operated = operations;
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
  const Class &c = Instructionclasses.row[std::min<std::size_t>(level.instruction->instruction, instructions::COUNT)];
  if (unfinished) [[unlikely]]
    await(level, c);
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
  const bool empty = c.empties && (isempty(level.sp[0]) || isempty(level.sp[-1]));
  return empty && emptyrule(level) ? Admission::PASS : Admission::RUN;
}
