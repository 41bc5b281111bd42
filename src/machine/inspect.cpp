// Trace, step and the Inspect prompt.
#include "machine/inspect.h"

#include "failure/jump.h"
#include "frontend/assembly.h"
#include "frontend/limits.h"
#include "machine/level.h"
#include "machine/machine.h"
#include "machine/texts.h"
#include "spaces/instructions.h"
#include "spaces/streams.h"
#include "spaces/work.h"
#include "text/text.h"

namespace morvik {

char Trace, Step;

namespace {

constexpr std::uint16_t ALL_LEVELS = instructions::REST;  // the modifier of the ALL spellings

long height(const Level &level) {
  return level.sp - (stacktop - (STACK_POINTS - 1));
}

void traceline(const Level &level) {
  std::fprintf(outputstream, "\nTrace (%2d:%3ld)", level.level, static_cast<long>(level.current - level.start) + 1);
  if (!level.step) std::fprintf(outputstream, " [%2ld]", height(level));
  Point copy = *level.current;
  disass(outputstream, "", &copy, 0, 0);
}

// Takes the ENDPROCESS Point away that a line feed leaves at the end of a line. Was it all of the line? That of the end
// of the input stays, and ends the process.
bool droplineend(Text &line, std::int64_t points) {
  if (points < 2 || inputended()) return false;
  Point &last = line.programme[points - 2];
  if (!isoperator(last) || last.instruction != instructions::ENDPROCESS || last.name[0] != 0) return false;
  dereferencepoint(&last);
  last = {};
  return points == 2;
}

// Runs a line on the stack of the run inspected, with a landing place of its own: an error comes back to the prompt.
void runline(Level &level, Text &line) {
  level.sp = machine(line.programme, level.meaning, level.floor, level.floor, level.sp, level.memory, 0, level.slot);
  cleanup(line.programme);
  if (endprocess) jump(-1);
}

// One line at the prompt. Does the inspection go on with the next line?
bool inspectline(Level &level, Text &line) {
  std::fprintf(outputstream, "\nInspect [%ld]: ", height(level) + 1);
  std::fflush(outputstream);
  const std::int64_t points = compiletext(level, line, inputstream, nullptr, ENDS_STEP);
  const bool nothing = droplineend(line, points);
  if (!stepping || points == 0 || nothing) {
    cleanup(line.programme);
    return stepping && points == 0;
  }
  if (inputended()) stepping = 0;  // nobody is there to step through the line itself
  runline(level, line);
  stepping = 1;
  return true;
}

}  // namespace

void watch(Level &level) {
  joinpool(level.sp);
  if (Trace || level.trace) traceline(level);
  if (!Step && !level.step) return;
  Text line;
  opentext(line);
  while (inspectline(level, line)) {
  }
  closetext(line);
}

Next dotrace(Level &level) {
  if (level.instruction->modifier == ALL_LEVELS) Trace = 1;
  stepping = 1;
  level.trace = true;
  return Next::FETCH;
}

Next dostep(Level &level) {
  if (level.instruction->modifier == ALL_LEVELS) Trace = Step = 1;
  stepping = 1;
  level.trace = level.step = true;
  return Next::FETCH;
}

Next dorun(Level &level) {
  if (level.instruction->modifier == ALL_LEVELS) Trace = Step = 0;
  stepping = 0;
  level.trace = level.step = false;
  return Next::FETCH;
}

}  // namespace morvik
