// The frame of the dyadic scalar instructions on the stack: where the result goes, the share of the pool, and the end.
// It knows an instruction by its table.
//
// Whether a failure leaves the operands whole:
// - A result in new blocks always does: what was made goes back.
// - Over an operand, nothing is written before all pairs of records were found to have a core that takes them.
// - Only where both flag words promise one kind each are the records trusted. Should one of them differ after all, and
//   have no core, then the elements ahead of it are results already, and each record is whole.
// - Operands whose records own blocks are never written over, but for octonions over octonions.
#include "arithmetic/dyadic.h"

#include <algorithm>

#include "arithmetic/operandfit.h"
#include "arithmetic/pairs.h"
#include "arithmetic/pairwalk.h"
#include "failure/exception.h"
#include "failure/signals.h"
#include "spaces/hypercomplex.h"
#include "spaces/messages.h"
#include "spaces/refderef.h"
#include "spaces/sysvars.h"
#include "spaces/work.h"

namespace morvik {

namespace {

// ---- Where the result goes.

enum class ResultBlock { NEW, LEFT, RIGHT };

// The first message that a pair of records gives. A pair that only the walk can judge sets `owning`.
std::int32_t checkrecords(const Dyadic &d, const Run &run, bool &owning) {
  const Element *left = run.left, *right = run.right;
  for (std::size_t i = 0; i < run.count; ++i, left += run.leftstep, right += run.rightstep) {
    if (i % POLL_INTERVAL == 0 && interrupted != 0) return INTERRUPTED;
    if (left->tag == tags::SUBARRAY || right->tag == tags::SUBARRAY || left->tag == tags::OCTONION ||
        right->tag == tags::OCTONION) {
      owning = true;
      return 0;
    }
    const std::size_t kind = kindof(left->tag, right->tag);
    if (!d.kernels[kind]) return d.refusal(left->tag, right->tag);
    const Check check = d.checks[kind];
    if (const std::int32_t message = check ? check(run, i, i + 1) : 0; message != 0) return message;
  }
  return 0;
}

inline ResultBlock candidateblock(const Point &left, const Point &right, const OperandFit &fit, bool leftowned,
                                  bool rightowned) {
  const bool leftserves = !fit.leftextends || fit.rightextends, rightserves = !fit.rightextends || fit.leftextends;
  if (leftowned && leftserves) return ResultBlock::LEFT;
  if (rightowned && rightserves) return ResultBlock::RIGHT;
  const bool sameblock = left.data_pointer == right.data_pointer && referencecount(left.data_pointer) == 2;
  const bool arrays = !fit.leftextends && !fit.rightextends;
  return sameblock && arrays && !mayown(left) && !mayown(right) ? ResultBlock::LEFT : ResultBlock::NEW;
}

// The same of two plain spaces, of which so many are borrowed: those are never written over.
inline ResultBlock plainblock(const Point &left, const Point &right, const OperandFit &fit, unsigned borrowed) {
  const bool leftowned = referencecount(left.data_pointer) == 1;
  if (borrowed == 0) return candidateblock(left, right, fit, leftowned, referencecount(right.data_pointer) == 1);
  const bool leftserves = !fit.leftextends || fit.rightextends;
  return borrowed == 1 && leftowned && leftserves ? ResultBlock::LEFT : ResultBlock::NEW;
}

// May the result overwrite an operand, and which? 0, or the message that the records give before anything is written.
std::int32_t chooseblock(const Dyadic &d, const Point &left, const Point &right, const OperandFit &fit, const Run &run,
                         ResultBlock &block) {
  block = candidateblock(left, right, fit, isowned(left), isowned(right));
  if (block == ResultBlock::NEW) return 0;
  const std::int32_t lefttag = run.left->tag, righttag = run.right->tag;
  const std::int32_t blocktag = block == ResultBlock::LEFT ? lefttag : righttag;
  if (isuniform(left) && isuniform(right)) {
    if ((lefttag == tags::OCTONION || righttag == tags::OCTONION) && blocktag != tags::OCTONION)
      block = ResultBlock::NEW;
    const std::size_t kind = kindof(lefttag, righttag);
    if (d.kernels[kind] && !d.checks[kind]) return 0;
  } else if (mayown(left) || mayown(right)) {
    block = ResultBlock::NEW;
  }
  if (block == ResultBlock::NEW) return 0;
  bool owning = false;
  const std::int32_t message = checkrecords(d, run, owning);
  if (owning) block = ResultBlock::NEW;
  return message;
}

// ---- On the stack.

// The empty rule: of two operands an empty one is dropped, and the other is the result. Was one of them empty?
bool applyemptyrule(Point **stack) {
  Point &left = (*stack)[-1], &right = **stack;
  if (!hasnoelements(right) && !hasnoelements(left)) return false;
  Point spent = right;
  if (!hasnoelements(right)) {
    spent = left;
    left = right;
  }
  --*stack;
  dereferencepoint(&spent);
  return true;
}

// What the slices need to know of the operands. The one that extends, where there is one, is the first; a structure of
// several members has the flags of a scalar, and does not extend.
void describeoperands(const Run &run, const Point &left, const Point &right) {
  const bool swapped = run.rightstep == 0;
  Work &w = to_coprocessors;
  w = {};
  w.swapped = swapped;
  w.combined = left.type | right.type | (left.rank == right.rank ? SAMERANK : 0);
  if (run.leftstep != 0 && run.rightstep != 0) w.combined &= ~SCALAR_LIKE;
  w.first = const_cast<Element *>(swapped ? run.right : run.left);
  w.second = const_cast<Element *>(swapped ? run.left : run.right);
}

// The result takes the place of its operands; what it did not take over of them is given up, at the join if the pool is
// at work on it.
void putresult(Point **stack, const Point &result, ResultBlock block, bool inpool) {
  Point &left = (*stack)[-1], &right = **stack;
  Point spentleft = left, spentright = right;
  if (block == ResultBlock::LEFT) spentleft.data_pointer = nullptr;
  if (block == ResultBlock::RIGHT) spentright.data_pointer = nullptr;
  left = result;
  --*stack;
  if (inpool) return deferoperands(spentleft, spentright);
  dereferencepoint(&spentright);
  dereferencepoint(&spentleft);
}

}  // namespace

Element *resultblock(Element *left, Element *right) {
  const bool serves = referencecount(right) == 1 || (left == right && referencecount(left) == 2);
  Element *const block = serves ? right : newelements(1);
  if (!serves) release(right);
  release(left);
  return block;
}

namespace {

// Works what is left of a run, all of it on the main thread or its slice, and ends the instruction.
void finishframe(const Dyadic &d, Point **stack, const Point *instruction, const OperandFit &fit, ResultBlock block,
                 bool inpool, Run &run, Tally &tally) {
  if (const std::int32_t message = work(d, run, tally); message != 0) {
    if (inpool) recallrun(run);
    abandonrun(run);
    failwith(message, stack, instruction);
  }
  putresult(stack, resultpoint((*stack)[-1], **stack, fit, run), block, inpool);
  countwork(fit.count + tally.operations, 1 + tally.flops + hypercomplexflops);
}

// The same where both operands are plain and one loop did it all: the result has the shape of one of them, and the rest
// of the two is given up.
inline void finishplain(Point **stack, const OperandFit &fit, ResultBlock block, Element *records, std::uint32_t kinds,
                        const Tally &tally, unsigned borrowed) {
  Point &left = (*stack)[-1];
  const Point &right = **stack;
  const bool asleft = fit.shaped == &left;
  Element *const leftdata = left.data_pointer, *const rightdata = right.data_pointer;
  Element *const leftshape = left.shape_pointer, *const rightshape = right.shape_pointer;
  const std::int16_t depth = std::max(left.depth, right.depth);
  const std::uint32_t type = plaintype(*fit.shaped, kinds);
  if (!asleft) left = right;
  left.type = type;
  left.depth = depth;
  left.data_pointer = records;
  --*stack;
  if (borrowed > (asleft ? 1 : 0)) reference(asleft ? leftshape : rightshape);
  if (borrowed < 1) {
    if (block != ResultBlock::RIGHT) release(rightdata);
    if (asleft) release(rightshape);
  }
  if (borrowed < 2) {
    if (block != ResultBlock::LEFT) release(leftdata);
    if (!asleft) release(leftshape);
  }
  countwork(fit.count, 1 + tally.flops + hypercomplexflops);
}

// Borrowed operands get their counts: from here on they are the stack's, as all others are.
void countborrowed(Point *top, unsigned borrowed) {
  for (; borrowed > 0; --borrowed) referencepoint(top--);
}

}  // namespace

bool workplain(const Dyadic &d, Point **stack, const Point *instruction, const Point *context, unsigned borrowed) {
  const Point &left = (*stack)[-1], &right = **stack;
  const std::size_t leftkind = plainkind(left), rightkind = plainkind(right);
  OperandFit fit;
  if (leftkind == PLAIN_COUNT || rightkind == PLAIN_COUNT || !fitshapes(left, right, fit) ||
      !isshort(fit.count, d.pollinterval) || mayownname(left) || mayownname(right))
    return false;
  const Lone lone = fit.leftextends == fit.rightextends ? NO_LONE : fit.leftextends ? LONE_LEFT : LONE_RIGHT;
  const StraightLoop loop = d.straight[leftkind][rightkind][lone];
  if (!loop) return false;
  const ResultBlock block = plainblock(left, right, fit, borrowed);
  const bool fresh = block == ResultBlock::NEW;
  Element *const records = fresh                        ? static_cast<Element *>(tryblock(fit.count * sizeof(Element)))
                           : block == ResultBlock::LEFT ? left.data_pointer
                                                        : right.data_pointer;
  if (!records) {
    countborrowed(*stack, borrowed);
    failwith(messages::OUT_OF_STORAGE, stack, instruction);
  }
  Tally tally;
  tally.stopped = isinterrupted;
  if (d.tolerant) tally.tolerance = tolerancein(context);
  hypercomplexflops = 0;
  const Stretch stretch = loop(left.data_pointer, right.data_pointer, records, fit.count, fresh, tally);
  if (stretch.done == fit.count) [[likely]] {
    finishplain(stack, fit, block, records, stretch.kinds, tally, borrowed);
    return true;
  }
  if (fresh) freeblock(records);
  if (fresh || stretch.done == 0) return false;
  countborrowed(*stack, borrowed);
  Run run = makerun(left, right, fit);
  run.result = records;
  run.kinds = stretch.kinds;
  run.done = stretch.done;
  finishframe(d, stack, instruction, fit, block, false, run, tally);
  return true;
}

void dyadicframe(const Dyadic &d, Point **stack, const Point *instruction, const Point *context, bool nested) {
  if (!nested && workplain(d, stack, instruction, context, 0)) return;
  if (applyemptyrule(stack)) return;
  const Point &left = (*stack)[-1], &right = **stack;
  const bool parallel = goesparallel(std::max(left.elements, right.elements));
  hypercomplexflops = 0;

  OperandFit fit;
  if (const std::int32_t message = fitoperands(d, left, right, fit); message != 0)
    failwith(message, stack, instruction);
  Run run = makerun(left, right, fit);
  ResultBlock block = ResultBlock::NEW;
  if (!nested)
    if (const std::int32_t message = chooseblock(d, left, right, fit, run, block); message != 0)
      failwith(message, stack, instruction);
  run.result = block == ResultBlock::LEFT ? left.data_pointer : right.data_pointer;
  if (block == ResultBlock::NEW && !newrecords(run)) failwith(messages::OUT_OF_STORAGE, stack, instruction);

  Tally tally;
  tally.stopped = isinterrupted;
  if (d.tolerant) tally.tolerance = tolerancein(context);
  bool inpool = false;
  if (parallel && !isdeep(left) && !isdeep(right)) {
    describeoperands(run, left, right);
    inpool = postrun(run, instruction, *stack - 1, tally);
  }
  finishframe(d, stack, instruction, fit, block, inpool, run, tally);
}

std::int32_t dyadicslice(const Dyadic &d, std::uint32_t index) noexcept {
  const Work &w = to_coprocessors;
  const bool swapped = w.swapped != 0, extends = (w.combined & SCALAR_LIKE) != 0;
  Run run{};
  run.left = swapped ? w.second : w.first;
  run.right = swapped ? w.first : w.second;
  run.leftstep = extends && !swapped ? 0 : 1;
  run.rightstep = extends && swapped ? 0 : 1;
  Tally tally = startslice();
  const std::int32_t message = narrowtoslice(run, index) ? work(d, run, tally) : 0;
  return endslice(run, tally, message, index);
}

double tolerancein(const Point *context) {
  return context ? tolerance(context) : 0;
}

}  // namespace morvik
