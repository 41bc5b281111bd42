// What the frames of the scalar instructions share: the records of a result, and the slices of the pool.
#include "arithmetic/frame.h"

#include "spaces/hypercomplex.h"
#include "spaces/refderef.h"
#include "spaces/work.h"

namespace morvik {

void releaseoverwritten(const Run &run, Element &result) {
  // What the record encloses may be seen by others too: it is lowered, and stays as it is.
  if (!run.fresh) dereferencedataelems(&result, 1);
}

void abandonrun(Run &run) {
  if (!run.fresh || !run.result) return;
  dereferencedataelems(run.result, run.done);
  freeblock(run.result);
}

namespace {

// A coprocessor's stack has no guard that reports its end as the main thread's has.
constexpr std::int16_t DEEPEST_NESTING = 1000;

// What a failed slice leaves: records that own nothing.
void fillrest(const Run &run) {
  for (std::size_t i = run.done; i < run.count; ++i) setfiller(run.result[i]);
}

}  // namespace

bool isdeep(const Point &operand) {
  return operand.depth < 0 || operand.depth > DEEPEST_NESTING;
}

bool postrun(Run &run, const Point *instruction, Point *operand, const Tally &tally) {
  Work &w = to_coprocessors;
  w.instruction = instruction;
  w.operand = operand;
  w.fresh = run.fresh;
  w.tolerance = tally.tolerance;
  w.origin = tally.origin;
  w.count = run.count;
  w.result = run.result;
  if (!postcoprocessors()) return false;
  run.count = slice(static_cast<std::uint32_t>(run.count), processors, 0).end;
  return true;
}

void recallrun(Run &run) {
  recallslices();
  if (!run.fresh) return;
  fillrest(run);
  run.done = to_coprocessors.count;
}

bool narrowtoslice(Run &run, std::uint32_t index) {
  const Work &w = to_coprocessors;
  const Slice mine = slice(static_cast<std::uint32_t>(w.count), processors, index);
  run.left += mine.begin * run.leftstep;
  run.right += mine.begin * run.rightstep;
  run.result = w.result + mine.begin;
  run.resultstep = 1;
  run.count = mine.end - mine.begin;
  run.fresh = w.fresh != 0;
  return run.count > 0;
}

Tally startslice() {
  Tally tally;
  tally.stopped = isstopped;
  tally.tolerance = to_coprocessors.tolerance;
  tally.origin = to_coprocessors.origin;
  hypercomplexflops = 0;
  return tally;
}

std::int32_t endslice(Run &run, const Tally &tally, std::int32_t message, std::uint32_t index) {
  Reply &reply = from_coprocessor[index];
  if (message != 0 && run.fresh) {
    dereferencedataelems(run.result, run.done);
    run.done = run.kinds = 0;
    fillrest(run);
  }
  const double flops = tally.flops + hypercomplexflops;
  reply.failure = message;
  reply.flags = run.kinds | complexed(run.kinds);
  reply.flops += flops;
  reply.total_flops += flops;
  reply.operations += tally.operations;
  return message;
}

}  // namespace morvik
