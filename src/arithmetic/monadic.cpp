// The frame of the monadic scalar instructions: where the result goes, the walk over records of any kinds, and the end.
// It knows an instruction by its table.
//
// Whether a failure leaves the operand whole:
// - A result in new blocks always does: what was made goes back.
// - Over the operand, nothing is written before all records were found to have a core that takes them. Only where the
//   flag word promises one kind, and no value of it fails, are the records trusted; should one of them turn out to
//   differ, and have no core, the elements ahead of it are results already, and each record is whole.
// - An operand whose records own blocks is never written over, but for octonions alone.
// The state of the generator is then put back.
#include "arithmetic/monadic.h"

#include <algorithm>

#include "arithmetic/operandfit.h"
#include "arithmetic/pairs.h"
#include "arithmetic/walk.h"
#include "failure/exception.h"
#include "failure/signals.h"
#include "spaces/hypercomplex.h"
#include "spaces/messages.h"
#include "spaces/processstack.h"
#include "spaces/refderef.h"
#include "spaces/work.h"

namespace morvik {

namespace {

Run makerun(const Point &operand) {
  Run run{};
  run.left = operand.data_pointer;
  run.leftstep = run.resultstep = 1;
  run.count = operand.elements;
  return run;
}

// The flag word of a result of which these kinds were found.
std::uint32_t resulttype(const Point &operand, std::uint32_t kinds) {
  const std::uint32_t type = (operand.type & ~(COMPLEXED | ISEMPTY | ELEMENT_BITS)) | kinds;
  return operand.elements > 1 ? type | complexed(kinds) : type;
}

// ---- Where the result goes.

// The first message that a record gives. One that only the walk can judge, or that owns a block, sets `owning`.
std::int32_t checkrecords(const Monadic &m, const Run &run, bool &owning) {
  for (std::size_t i = 0; i < run.count; ++i) {
    if (i % POLL_INTERVAL == 0 && interrupted != 0) return INTERRUPTED;
    const Element &e = run.left[i];
    owning = e.tag == tags::OCTONION || kindbit(e.tag) == 0;
    if (owning) return 0;
    const std::size_t kind = kindof(e.tag);
    if (!m.kernels[kind]) return m.refusal(e.tag);
    const Check check = m.checks[kind];
    if (const std::int32_t message = check ? check(run, i, i + 1) : 0; message != 0) return message;
  }
  return 0;
}

// May the result overwrite the operand? 0, or the message that the records give before anything is written.
std::int32_t chooseblock(const Monadic &m, const Point &operand, const Run &run, bool &inplace) {
  inplace = !m.failslate && isowned(operand);
  if (!inplace) return 0;
  const bool uniform = isuniform(operand);
  const std::size_t kind = kindof(run.left->tag);
  if (uniform && m.kernels[kind] && !m.checks[kind]) return 0;
  bool owning = !uniform && mayown(operand);
  const std::int32_t message = owning ? 0 : checkrecords(m, run, owning);
  inplace = !owning;
  return message;
}

// ---- Nested spaces.

// All that one enclosed space becomes, in new blocks.
std::int32_t workenclosed(const Monadic &m, const Point &operand, Point &result, Tally &tally) {
  if (!isspace(operand)) return messages::RESTRICTION;
  if (stackends()) return messages::OUT_OF_STORAGE;
  result = operand;
  if (hasnoelements(operand)) {
    referencepoint(&result);
    return 0;
  }
  Run run = makerun(operand);
  if (!newrecords(run)) return messages::OUT_OF_STORAGE;
  if (const std::int32_t message = work(m, run, tally); message != 0) {
    abandonrun(run);
    return message;
  }
  tally.operations += operand.elements;
  reference(result.shape_pointer);
  result.type = resulttype(operand, run.kinds);
  result.data_pointer = run.result;
  return 0;
}

// The one element at i, which no loop takes as it is. Returns a message number.
std::int32_t workelement(const Monadic &m, Run &run, std::size_t i, Tally &tally) {
  const Element &source = run.left[i * run.leftstep];
  if (source.tag != tags::SUBARRAY) return m.refusal(source.tag);
  auto *box = static_cast<Point *>(tryblock(sizeof(Point)));
  if (!box) return messages::OUT_OF_STORAGE;
  if (const std::int32_t message = workenclosed(m, *source.subarray, *box, tally); message != 0) {
    freeblock(box);
    return message;
  }
  Element &result = run.result[i * run.resultstep];
  releaseoverwritten(run, result);
  result = {};
  setheading(result, heading(tags::SUBARRAY, 0));
  result.subarray = box;
  run.kinds |= STRUCTURED | (box->type & ISPROBABLE);
  return 0;
}

// ---- On the stack.

// What the slices need to know of the operand.
void describeoperand(const Point &operand) {
  to_coprocessors = {};
  to_coprocessors.combined = operand.type;
  to_coprocessors.second = operand.data_pointer;
}

// The result takes the place of the operand, which is given up, at the join if the pool is at work on it.
void putresult(Point *point, const Run &run, bool inpool) {
  Point spent = *point;
  point->type = resulttype(spent, run.kinds);
  point->data_pointer = run.result;
  if (!run.fresh) spent.data_pointer = nullptr;
  if (inpool) {
    reference(point->shape_pointer);
    return deferoperands(spent);
  }
  spent.shape_pointer = nullptr;  // which the result keeps
  if (run.fresh) dereferencepoint(&spent);
}

// ---- All of a run.

struct MonadicFamily {
  static constexpr std::size_t KINDS = morvik::KINDS, pollinterval = POLL_INTERVAL;
  const Monadic &loops;

  bool inorder(const Run &) const { return loops.inorder; }
  static std::size_t kindat(const Run &run, std::size_t i) { return kindof(run.left[i].tag); }
  static auto kindmaskof(const Run &run, std::size_t size, bool ahead) {
    return [&run, tags = Tags(run.left, 1, size, ahead)](std::size_t i) {
      return KindMask{kindat(run, i), Tags::places(tags.unlike(run.left[i].tag))};
    };
  }
  static std::size_t continuemixed(Run &, std::size_t from, std::size_t, Tally &) { return from; }
  std::int32_t workelement(Run &run, std::size_t i, Tally &tally) const {
    return morvik::workelement(loops, run, i, tally);
  }
};

}  // namespace

std::int32_t work(const Monadic &m, Run &run, Tally &tally) noexcept {
  return walk(MonadicFamily{m}, run, tally);
}

namespace {

// Works what is left of a run, all of it on the main thread or its slice, and ends the instruction.
void finishframe(const Monadic &m, Point *point, const Point *instruction, bool inpool, Run &run, Tally &tally) {
  std::uint64_t *const state = tally.state;
  const std::uint64_t undrawn = state ? *state : 0;
  if (const std::int32_t message = work(m, run, tally); message != 0) {
    if (state) *state = undrawn;
    if (inpool) recallrun(run);
    abandonrun(run);
    Point *top = point;
    failwith(message, &top, instruction);
  }
  putresult(point, run, inpool);
  countwork(point->elements + tally.operations, 1 + tally.flops + hypercomplexflops);
}

// The short way of a plain space. False, with nothing done, where the frame has to look closer.
bool workplain(const Monadic &m, Point *point, const Point *instruction, const Point *context) {
  const std::size_t kind = plainkind(*point);
  if (kind == PLAIN_COUNT || !isshort(point->elements, POLL_INTERVAL) || mayownname(*point)) return false;
  const Kernel kernel = m.kernels[kind];
  if (!kernel || m.checks[kind] || m.failslate) return false;
  Run run = makerun(*point);
  Element *const operand = run.result = point->data_pointer;
  if (referencecount(operand) != 1 && !newrecords(run)) failwith(messages::OUT_OF_STORAGE, &point, instruction);
  Tally tally;
  tally.stopped = isinterrupted;
  if (m.tolerant && context) tally.tolerance = tolerance(context);
  if (m.counting && context) tally.origin = indexorigin(context);
  hypercomplexflops = 0;
  run.done = kernel(run, 0, run.count, tally);
  if (run.done == 0) {
    abandonrun(run);
    return false;
  }
  if (run.done < run.count) [[unlikely]] {
    finishframe(m, point, instruction, false, run, tally);
    return true;
  }
  point->type = plaintype(*point, run.kinds);
  point->data_pointer = run.result;
  if (run.fresh) release(operand);
  countwork(point->elements, 1 + tally.flops + hypercomplexflops);
  return true;
}

}  // namespace

void monadicframe(const Monadic &m, Point *point, const Point *instruction, const Point *context, bool nested,
                  std::uint64_t *state) {
  if (!nested && !state && workplain(m, point, instruction, context)) return;
  Point *top = point;
  if (!isspace(*point)) failwith(messages::RESTRICTION, &top, instruction);
  if (hasnoelements(*point)) return;
  const bool parallel = goesparallel(point->elements);
  hypercomplexflops = 0;

  Run run = makerun(*point);
  bool inplace = false;
  if (!nested)
    if (const std::int32_t message = chooseblock(m, *point, run, inplace); message != 0)
      failwith(message, &top, instruction);
  run.result = point->data_pointer;
  if (!inplace && !newrecords(run)) failwith(messages::OUT_OF_STORAGE, &top, instruction);

  Tally tally;
  tally.stopped = isinterrupted;
  tally.state = state;
  if (m.tolerant && context) tally.tolerance = tolerance(context);
  if (m.counting && context) tally.origin = indexorigin(context);
  bool inpool = false;
  if (parallel && !isdeep(*point)) {
    describeoperand(*point);
    inpool = postrun(run, instruction, point, tally);
    if (inpool) notedraws(0, state);
  }
  finishframe(m, point, instruction, inpool, run, tally);
}

std::int32_t monadicslice(const Monadic &m, std::uint32_t index, std::uint64_t *state) noexcept {
  Run run{};
  run.left = to_coprocessors.second;
  run.leftstep = 1;
  Tally tally = startslice();
  tally.state = state;
  notedraws(index, state);
  const std::int32_t message = narrowtoslice(run, index) ? work(m, run, tally) : 0;
  return endslice(run, tally, message, index);
}

}  // namespace morvik
