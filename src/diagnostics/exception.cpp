// What a failure does: its report on standard error, and the one jump to where the machine goes on.
#include "diagnostics/exception.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "diagnostics/text.h"
#include "spaces/refderef.h"

jmp_buf error_jump;
std::int32_t A_Problem;
std::int16_t violations;
char PrintOut;
char stepping;
char endprocess;
thread_local std::int32_t aplerr;

namespace {

constexpr std::int32_t GOODBYE = 999, OUTOFSTORAGE = 27;
constexpr int FAILED_START = 1;

Custody *landingmark;
void (*landingunwind)();
void (*landingjoin)();
bool leaving;  // a jump is on its way: what it releases may fail in turn

// A buffer that setjmp never filled is all zeros.
bool armed() {
  const char *bytes = reinterpret_cast<const char *>(&error_jump);
  return std::any_of(bytes, bytes + sizeof error_jump, [](char byte) { return byte != 0; });
}

// Printing may retag what it prints; the Point at work keeps its fields.
void dumpcopy(const char *title, const Point *point) {
  Point copy = *point;
  dump(stderr, title, &copy);
}

void report(std::int32_t number, Point **stackpointer, const Point *instruction) {
  stepping = 1;
  std::fflush(stdout);
  std::fprintf(stderr, "\n%s\n", errors(static_cast<std::uint32_t>(number)));
  if (number == OUTOFSTORAGE) {
    A_Problem = 1;
    return;
  }
  if (instruction) dumpcopy("\nInstruction:\n", instruction);
  if (stackpointer && A_Problem != 0) dumpcopy("Top of stack:\n", *stackpointer);
  std::fflush(stderr);
}

}  // namespace

void exception(std::int32_t number, Point **stackpointer, const Point *instruction) {
  joinahead();
  if (number < -GOODBYE) raised(-1000 - number);
  if (number == GOODBYE) {
    endprocess = 1;
    jump(-1);
  }
  if (number > 0) return report(number, stackpointer, instruction);
  std::fflush(stdout);
  std::fprintf(stderr, "\n%s", errors(static_cast<std::uint32_t>(-number)));
}

void exceptionjump(std::int32_t number, Point **stackpointer, const Point *instruction) {
  exception(number, stackpointer, instruction);
  jump(-1);
}

void exceptionjump(std::int32_t number) {
  exceptionjump(number, nullptr, nullptr);
}

void outofstorage() {
  exceptionjump(OUTOFSTORAGE);
}

void failwork(std::int32_t message, Point **stackpointer, const Point *instruction) {
  if (message == INTERRUPTED) takeinterrupt();
  if (message == OUTOFSTORAGE) outofstorage();
  exceptionjump(message, stackpointer, instruction);
}

void jump(int value) {
  if (!armed()) endatonce(value < -GOODBYE ? value & 0xFF : FAILED_START);
  dropwalks();
  joinahead();
  if (!leaving) {
    leaving = true;
    if (landingunwind) landingunwind();
  }
  landcustody(landingmark);
  leaving = false;
  longjmp(error_jump, value);
}

// A walk over counts that fails holds the lock, which the other threads may wait for.
void joinahead() {
  dropreferencelocks();
  if (landingjoin) landingjoin();
}

void armlanding(Landing &outer, void (*unwind)(), void (*join)()) {
  joinahead();
  std::memcpy(&outer.buffer, &error_jump, sizeof error_jump);
  outer.mark = landingmark;
  outer.unwind = landingunwind;
  outer.join = landingjoin;
  landingmark = custody;
  landingunwind = unwind;
  landingjoin = join;
}

void disarmlanding(const Landing &outer) {
  std::memcpy(&error_jump, &outer.buffer, sizeof error_jump);
  landingmark = outer.mark;
  landingunwind = outer.unwind;
  landingjoin = outer.join;
}

void endatonce(int status) {
  static bool ending;  // the flush itself may be what fails
  if (!ending) {
    ending = true;
    std::fflush(stdout);
  }
  _exit(status);
}
