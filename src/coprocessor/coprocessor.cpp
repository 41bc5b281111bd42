// The main thread's side of the pool: how work is cut up and posted, and what the join makes of it.
#include "coprocessor/coprocessor.h"

#include <algorithm>
#include <cassert>
#include <cstdio>

#include "coprocessor/threads.h"
#include "failure/custody.h"
#include "failure/exception.h"
#include "spaces/convert.h"
#include "spaces/counters.h"
#include "spaces/refderef.h"
#include "spaces/streams.h"
#include "spaces/sysvars.h"
#include "spaces/work.h"

namespace morvik {

namespace {

Point posted;  // the instruction at work, with references of its own: its Programme may be gone at the join

void postwork(std::uint32_t slots) {
  assert(!coprocessors_running);
  posted = *to_coprocessors.instruction;
  referencepoint(&posted);
  to_coprocessors.instruction = &posted;
  to_coprocessors.context = quads;
  resultinflight = to_coprocessors.operand;
  slicesstopped = false;
  coprocessors_running = true;
  from_coprocessor[0].state = nullptr;
  for (std::uint32_t i = slots - 1; i > 0; --i) {
    from_coprocessor[i].state = nullptr;
    from_coprocessor[i].done = 0;
    postslot(i);
  }
}

// What the slices found, put together.
struct SliceFindings {
  bool any;  // was there anything to collect?
  std::uint32_t flags;
  std::int32_t failure;  // that of the first slice that failed
};

SliceFindings collectreplies(std::uint32_t slots) {
  SliceFindings found{};
  for (std::uint32_t i = slots - 1; i > 0; --i) {
    Reply &reply = from_coprocessor[i];
    // What a slot found stays there until its next work: a request may have ended an earlier join early.
    const bool collected = reply.done != 0;
    if (!collected) awaitslot(i);
    found.flags |= static_cast<std::uint32_t>(reply.flags);
    if (reply.failure != 0) found.failure = reply.failure;
    if (collected) continue;
    reply.done = 1;
    found.any = true;
    operations += reply.operations;
    InstructionTiming[posted.instruction].operations += reply.operations;
    InstructionTiming[posted.instruction].flops += reply.flops;
  }
  if (found.any) std::fflush(outputstream);
  return found;
}

// All slots sleep again. The instruction stays, for who reports of it.
void endwork() {
  coprocessors_running = false;
  resultinflight = nullptr;
  dereference(to_coprocessors.release);
}

// As nothing came of the instruction, it drew nothing either.
void takebackdraws() {
  for (std::uint32_t i = 0; i < processors; ++i) {
    const Reply &reply = from_coprocessor[i];
    if (reply.state) *reply.state = reply.undrawn;
  }
}

// Does what a coprocessor asked the main thread for, which then is not done yet. Did one ask?
bool serverequest() {
  for (std::uint32_t i = processors - 1; i > 0; --i) {
    Reply &reply = from_coprocessor[i];
    if (!reply.request) continue;
    std::fputs("REQ", outputstream);
    reply.request = reply.done = 0;
    reply.request_function(&reply.operand, reply.instruction, reply.context);
    return true;
  }
  return false;
}

void dropdeferred(Point &operand) {
  dereferencepoint(&operand);
  operand = {};
}

// The result is whole: what the slices found joins its flag word, and the operands may go.
void completeresult(std::uint32_t flags) {
  Point &result = *to_coprocessors.operand;
  const auto operands = static_cast<std::uint32_t>(to_coprocessors.combined);
  result.type |= flags | ((flags & STRUCTURED) != 0 ? operands & ISSTRUCTURE : 0);
  if (result.elements > 1) result.type |= complexed(result.type);
  dropdeferred(from_coprocessor[0].deferred);
  dropdeferred(from_coprocessor[1].deferred);
}

// The instruction failed: the result goes, and its operands are put back. The right one only where the stack did not
// grow over its slot.
void restoreoperands(Point *&top) {
  takebackdraws();
  Point &result = *to_coprocessors.operand;
  Point &left = from_coprocessor[0].deferred, &right = from_coprocessor[1].deferred;
  const bool dyadic = to_coprocessors.first != nullptr;
  Element *const records = result.data_pointer;
  release(result.shape_pointer);
  if (!left.data_pointer) {
    left.data_pointer = records;
  } else if (dyadic && !right.data_pointer) {
    right.data_pointer = records;
  } else {
    dereferencedataelems(records, result.elements);
    release(records);
  }
  const bool slotfree = &result == top;
  result = left;
  left = {};
  if (dyadic && slotfree)
    *++top = right;
  else
    dereferencepoint(&right);
  right = {};
}

[[noreturn]] void reportfailure(std::int32_t message, Point *&top) {
  Custody kept;
  takecustody(kept, releasepoint, &posted);
  failwith(message, &top, &posted);
}

}  // namespace

void wakecoprocessors(const Point &instruction, std::int64_t number) {
  if (cpus < 2 || !poolstarted()) return;
  to_coprocessors = {};
  to_coprocessors.instruction = &instruction;
  to_coprocessors.origin = number;
  postwork(cpus);
  collectreplies(cpus);
  endwork();
  dereferencepoint(&posted);
}

namespace {

bool postall() {
  if (processors < 2 || !poolstarted()) return false;
  postwork(processors);
  return true;
}

void recallall() {
  slicesstopped = true;
  collectreplies(processors);
  endwork();
  takebackdraws();
  dereferencepoint(&posted);
}

void join(Point *&top, int) {
  if (!poolstarted()) return;
  const SliceFindings found = collectreplies(processors);
  if (serverequest() || !found.any || !to_coprocessors.instruction) return;
  endwork();
  if (found.failure != 0) {
    restoreoperands(top);
    reportfailure(found.failure, top);
  }
  completeresult(found.flags);
  dereferencepoint(&posted);
}

// Set before main, so that no start of a programme or of a test can forget it.
[[maybe_unused]] const bool hooked = [] {
  postcoprocessors = postall;
  recallslices = recallall;
  wait_for_coprocessors = join;
  return true;
}();

}  // namespace

}  // namespace morvik
