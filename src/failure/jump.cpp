// The one jump to where the machine goes on, and its landings.
#include "failure/jump.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "failure/custody.h"
#include "spaces/blocks.h"
#include "spaces/refderef.h"
#include "spaces/streams.h"

namespace morvik {

namespace {

constexpr int FAILED_START = 1;

}  // namespace

jmp_buf error_jump;
std::int32_t pendingproblem;
std::int16_t violations;
char printing;
char stepping;
char endprocess;

namespace {

Custody *landingmark;
void (*landingunwind)();
void (*landingjoin)();
bool jumping;  // a jump is under way: what it releases may fail in turn

// A buffer that setjmp never filled is all zeros.
bool armed() {
  const char *bytes = reinterpret_cast<const char *>(&error_jump);
  return std::any_of(bytes, bytes + sizeof error_jump, [](char byte) { return byte != 0; });
}

}  // namespace

void jump(int value) {
  if (!armed()) endatonce(value <= SIGNAL_NUMBERS ? value & 0xFF : FAILED_START);
  dropwalks();
  joinahead();
  if (!jumping) {
    jumping = true;
    if (landingunwind) landingunwind();
  }
  releasecustody(landingmark);
  jumping = false;
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
    std::fflush(outputstream);
  }
  _exit(status);
}

}  // namespace morvik
