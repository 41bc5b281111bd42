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
#include "coprocessor/slices.h"
#include "diagnostics/exception.h"
#include "spaces/hypercomplex.h"
#include "spaces/refderef.h"

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
    if (!kernelof(d, left->tag, right->tag)) return d.refusal(left->tag, right->tag);
    const Check check = checkof(d, left->tag, right->tag);
    if (const std::int32_t message = check ? check(*left, *right) : 0; message != 0) return message;
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
  home = d.failslate ? Home::NEW : candidate(left, right, joint);
  if (home == Home::NEW) return 0;
  const std::int32_t lefttag = run.left->tag, righttag = run.right->tag;
  const std::int32_t hometag = home == Home::LEFT ? lefttag : righttag;
  if (isuniform(left) && isuniform(right)) {
    if ((lefttag == tags::OCTONION || righttag == tags::OCTONION) && hometag != tags::OCTONION) home = Home::NEW;
    if (kernelof(d, lefttag, righttag) && !checkof(d, lefttag, righttag)) return 0;
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

// The one place where work goes to the pool. True: its threads are on all slices but the first, which is what is left
// in `run`. What they read must then live until the join, which is also where the operands may go.
bool handout(Run &run, const Point *instruction, Point *operand, const Point &left, const Point &right,
             const Tally &tally) {
  const bool swapped = run.rightstep == 0;
  Work &w = to_coprocessors;
  w = {};
  w.instruction = instruction;
  w.operand = operand;
  w.fresh = run.fresh;
  w.swapped = swapped;
  w.combined = left.type | right.type | (left.rank == right.rank ? SAMERANK : 0);
  w.tolerance = tally.tolerance;
  w.count = run.count;
  w.first = const_cast<Element *>(swapped ? run.right : run.left);
  w.second = const_cast<Element *>(swapped ? run.left : run.right);
  w.result = run.result;
  if (postcoprocessors()) {
    run.count = slice(static_cast<std::uint32_t>(run.count), processors, 0).end;
    return true;
  }
  w.instruction = nullptr;
  return false;
}

// The result takes the place of its operands; what it did not take over of them is given up.
void finish(Point **stack, const Point &result, Home home) {
  Point &left = (*stack)[-1], &right = **stack;
  Point spentleft = left, spentright = right;
  if (home == Home::LEFT) spentleft.data_pointer = nullptr;
  if (home == Home::RIGHT) spentright.data_pointer = nullptr;
  left = result;
  --*stack;
  dereferencepoint(&spentright);
  dereferencepoint(&spentleft);
}

}  // namespace

void dyadicframe(const Dyadic &d, Point **stack, const Point *instruction, const Point *context, bool nested) {
  if (passvoid(stack)) return;
  const Point &left = (*stack)[-1], &right = **stack;
  const bool parallel = goesparallel(std::max(left.elements, right.elements));
  if (parallel) wait_for_coprocessors(*stack, 2);
  hypercomplexflops = 0;

  Joint joint;
  if (const std::int32_t message = conform(d, left, right, joint); message != 0)
    failscalar(message, stack, instruction);
  Run run = runover(left, right, joint);
  Home home = Home::NEW;
  if (!nested)
    if (const std::int32_t message = choosehome(d, left, right, joint, run, home); message != 0)
      failscalar(message, stack, instruction);
  run.result = home == Home::LEFT ? left.data_pointer : right.data_pointer;
  if (home == Home::NEW && !newrecords(run)) failscalar(OUTOFSTORAGE, stack, instruction);

  Tally tally;
  tally.interruptible = true;
  if (d.tolerant) tally.tolerance = tolerancein(context);
  if (parallel) handout(run, instruction, *stack - 1, left, right, tally);
  if (const std::int32_t message = work(d, run, tally); message != 0) {
    abandon(run);
    failscalar(message, stack, instruction);
  }
  finish(stack, resultof(left, right, joint, run), home);
  countwork(joint.count + tally.operations, 1 + tally.flops + hypercomplexflops);
}

std::int32_t dyadicslice(const Dyadic &d, std::uint32_t index) noexcept {
  const Work &w = to_coprocessors;
  Reply &reply = from_coprocessor[index];
  reply.flags = 0;
  reply.failure = 0;
  const Slice mine = slice(static_cast<std::uint32_t>(w.count), processors, index);
  if (mine.begin == mine.end) return 0;
  // The scalar-like operand, where there is one, is always the first.
  const bool swapped = w.swapped != 0, extends = (w.combined & SCALARLIKE) != 0;
  const std::size_t firststep = extends ? 0 : 1, begin = mine.begin;
  Run run{};
  run.left = swapped ? w.second + begin : w.first + begin * firststep;
  run.right = swapped ? w.first + begin * firststep : w.second + begin;
  run.leftstep = swapped ? 1 : firststep;
  run.rightstep = swapped ? firststep : 1;
  run.result = w.result + begin;
  run.resultstep = 1;
  run.count = mine.end - mine.begin;
  run.fresh = w.fresh != 0;

  Tally tally;
  tally.tolerance = w.tolerance;
  hypercomplexflops = 0;
  reply.failure = work(d, run, tally);
  if (reply.failure != 0 && run.fresh) {
    dereferencedataelems(run.result, run.done);
    run.kinds = 0;
  }
  const double done = tally.flops + hypercomplexflops;
  reply.flags = run.kinds | complexed(run.kinds);
  reply.flops += done;
  reply.total_flops += done;
  reply.operations += tally.operations;
  return reply.failure;
}

double tolerancein(const Point *context) {
  const Element *e = context ? context[CT_SLOT].data_pointer : nullptr;
  if (!e) return 0;
  return e->tag == tags::INTEGER ? static_cast<double>(e->integer) : e->real;
}
