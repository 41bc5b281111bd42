// The one jump to where the machine goes on, and its landings.
#include "failure/jump.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "failure/custody.h"
#include "spaces/blocks.h"
#include "spaces/refderef.h"

namespace morvik {

namespace {

constexpr std::int32_t GOODBYE = 999;
constexpr int FAILED_START = 1;

}  // namespace

jmp_buf error_jump;
std::int32_t A_Problem;
std::int16_t violations;
char PrintOut;
char stepping;
char endprocess;

namespace {

Custody *landingmark;
void (*landingunwind)();
void (*landingjoin)();
bool leaving;  // a jump is on its way: what it releases may fail in turn

// A buffer that setjmp never filled is all zeros.
bool armed() {
  const char *bytes = reinterpret_cast<const char *>(&error_jump);
  return std::any_of(bytes, bytes + sizeof error_jump, [](char byte) { return byte != 0; });
}

}  // namespace

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

}  // namespace morvik
