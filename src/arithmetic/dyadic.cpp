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

#include "arithmetic/joint.h"
#include "arithmetic/pairs.h"
#include "arithmetic/pairwalk.h"
#include "failure/exception.h"
#include "failure/signals.h"
#include "spaces/hypercomplex.h"
#include "spaces/refderef.h"
#include "spaces/sysvars.h"
#include "spaces/work.h"

namespace morvik {

namespace {

// ---- Where the result goes.

enum class Home { NEW, LEFT, RIGHT };

// The first message that a pair of records gives. A pair that only the walk can judge sets `owning`.
std::int32_t survey(const Dyadic &d, const Run &run, bool &owning) {
  const Element *left = run.left, *right = run.right;
  for (std::size_t i = 0; i < run.count; ++i, left += run.leftstep, right += run.rightstep) {
    if (i % STRETCH == 0 && interrupted != 0) return INTERRUPTED;
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

Home candidate(const Point &left, const Point &right, const Joint &joint) {
  const bool leftowned = isowned(left), rightowned = isowned(right);
  const bool leftserves = !joint.leftsingle || joint.rightsingle, rightserves = !joint.rightsingle || joint.leftsingle;
  if (leftowned && leftserves) return Home::LEFT;
  if (rightowned && rightserves) return Home::RIGHT;
  const bool sameblock = left.data_pointer == right.data_pointer && refr(left.data_pointer) == 2;
  const bool arrays = !joint.leftsingle && !joint.rightsingle;
  return sameblock && arrays && !mayown(left) && !mayown(right) ? Home::LEFT : Home::NEW;
}

// May the result overwrite an operand, and which? 0, or the message that the records give before anything is written.
std::int32_t choosehome(const Dyadic &d, const Point &left, const Point &right, const Joint &joint, const Run &run,
                        Home &home) {
  home = candidate(left, right, joint);
  if (home == Home::NEW) return 0;
  const std::int32_t lefttag = run.left->tag, righttag = run.right->tag;
  const std::int32_t hometag = home == Home::LEFT ? lefttag : righttag;
  if (isuniform(left) && isuniform(right)) {
    if ((lefttag == tags::OCTONION || righttag == tags::OCTONION) && hometag != tags::OCTONION) home = Home::NEW;
    const std::size_t kind = kindof(lefttag, righttag);
    if (d.kernels[kind] && !d.checks[kind]) return 0;
  } else if (mayown(left) || mayown(right)) {
    home = Home::NEW;
  }
  if (home == Home::NEW) return 0;
  bool owning = false;
  const std::int32_t message = survey(d, run, owning);
  if (owning) home = Home::NEW;
  return message;
}

// ---- On the stack.

// The empty rule: an empty operand of two gives way to the other. Was one of them empty?
bool passvoid(Point **stack) {
  Point &left = (*stack)[-1], &right = **stack;
  if (!isvoid(right) && !isvoid(left)) return false;
  Point spent = right;
  if (!isvoid(right)) {
    spent = left;
    left = right;
  }
  --*stack;
  dereferencepoint(&spent);
  return true;
}

// What the slices need to know of the operands. The one that extends, where there is one, is the first; a structure of
// several members has the flags of a scalar, and does not extend.
void describe(const Run &run, const Point &left, const Point &right) {
  const bool swapped = run.rightstep == 0;
  Work &w = to_coprocessors;
  w = {};
  w.swapped = swapped;
  w.combined = left.type | right.type | (left.rank == right.rank ? SAMERANK : 0);
  if (run.leftstep != 0 && run.rightstep != 0) w.combined &= ~SCALARLIKE;
  w.first = const_cast<Element *>(swapped ? run.right : run.left);
  w.second = const_cast<Element *>(swapped ? run.left : run.right);
}

// The result takes the place of its operands; what it did not take over of them is given up, at the join if the pool is
// at work on it.
void finish(Point **stack, const Point &result, Home home, bool handed) {
  Point &left = (*stack)[-1], &right = **stack;
  Point spentleft = left, spentright = right;
  if (home == Home::LEFT) spentleft.data_pointer = nullptr;
  if (home == Home::RIGHT) spentright.data_pointer = nullptr;
  left = result;
  --*stack;
  if (handed) return defer(spentleft, spentright);
  dereferencepoint(&spentright);
  dereferencepoint(&spentleft);
}

}  // namespace

Element *otherhome(Element *left, Element *right) {
  const bool serves = refr(right) == 1 || (left == right && refr(left) == 2);
  Element *const home = serves ? right : newelements(1);
  if (!serves) release(right);
  release(left);
  return home;
}

void dyadicframe(const Dyadic &d, Point **stack, const Point *instruction, const Point *context, bool nested) {
  if (passvoid(stack)) return;
  const Point &left = (*stack)[-1], &right = **stack;
  const bool parallel = goesparallel(std::max(left.elements, right.elements));
  hypercomplexflops = 0;

  Joint joint;
  if (const std::int32_t message = conform(d, left, right, joint); message != 0) failwork(message, stack, instruction);
  Run run = runover(left, right, joint);
  Home home = Home::NEW;
  if (!nested)
    if (const std::int32_t message = choosehome(d, left, right, joint, run, home); message != 0)
      failwork(message, stack, instruction);
  run.result = home == Home::LEFT ? left.data_pointer : right.data_pointer;
  if (home == Home::NEW && !newrecords(run)) failwork(OUTOFSTORAGE, stack, instruction);

  Tally tally;
  tally.stopped = isinterrupted;
  if (d.tolerant) tally.tolerance = tolerancein(context);
  bool handed = false;
  if (parallel && !isdeep(left) && !isdeep(right)) {
    describe(run, left, right);
    handed = handout(run, instruction, *stack - 1, tally);
  }
  if (const std::int32_t message = work(d, run, tally); message != 0) {
    if (handed) recall(run);
    abandon(run);
    failwork(message, stack, instruction);
  }
  finish(stack, resultof(left, right, joint, run), home, handed);
  countwork(joint.count + tally.operations, 1 + tally.flops + hypercomplexflops);
}

std::int32_t dyadicslice(const Dyadic &d, std::uint32_t index) noexcept {
  const Work &w = to_coprocessors;
  const bool swapped = w.swapped != 0, extends = (w.combined & SCALARLIKE) != 0;
  Run run{};
  run.left = swapped ? w.second : w.first;
  run.right = swapped ? w.first : w.second;
  run.leftstep = extends && !swapped ? 0 : 1;
  run.rightstep = extends && swapped ? 0 : 1;
  Tally tally = startslice();
  const std::int32_t message = cutslice(run, index) ? work(d, run, tally) : 0;
  return endslice(run, tally, message, index);
}

double tolerancein(const Point *context) {
  return context ? tolerance(context) : 0;
}

}  // namespace morvik
