// What EACH and MASK share.
#include "machine/gather.h"

#include <algorithm>
#include <cstring>

#include "failure/custody.h"
#include "failure/exception.h"
#include "machine/calls.h"
#include "machine/machine.h"
#include "spaces/copies.h"
#include "spaces/loose.h"
#include "spaces/making.h"
#include "spaces/messages.h"
#include "spaces/work.h"

namespace morvik {

namespace {

void releasegathering(Custody &c) {
  auto *g = static_cast<Gathering *>(c.held);
  release(g->spare);
  dereferencepoint(&g->result);
  dereferencepoint(&g->weights);
  dereferencepoint(&g->data);
  dereferencepoint(&g->function);
}

// Takes over what is on top as the next record of the result. Each returns the flags that say what it is.
std::uint32_t takeplain(Level &level, Gathering &g, Element &element) {
  Element *const record = level.sp->data_pointer;
  const std::uint32_t kind = kindbit(record->tag);
  copyplain(element, *record);
  --level.sp;
  if (!g.spare && referencecount(record) == 1)
    g.spare = record;
  else
    release(record);
  return kind;
}

std::uint32_t takescalar(Level &level, Element &element) {
  copyelement(element, *level.sp->data_pointer);
  droptop(level);
  return kindbit(element.tag) | (element.tag == tags::HANDLE ? HASFILE : 0) |
         (element.tag < 0 || element.tag == tags::SUBARRAY ? STRUCTURED : 0);
}

// The space moves into the box.
std::uint32_t enclosespace(Element &element, Point *box, const Point &space, std::int16_t &depth) {
  *box = space;
  element = {};
  element.tag = tags::SUBARRAY;
  element.subarray = box;
  depth = std::max(depth, static_cast<std::int16_t>(box->depth + 1));
  return ISSTRUCTURE | STRUCTURED;
}

std::uint32_t takespace(Level &level, Gathering &g, Element &element) {
  Point *box = newpoint();
  return enclosespace(element, box, *level.sp--, g.depth);
}

std::uint32_t takesymbolic(Level &level, Element &element) {
  std::memcpy(&element, level.sp--, sizeof element);
  return STRUCTURED | (element.tag == ranks::FUNCTION ? HASFUNCTION : 0);
}

// What a function left is no element: the operands go back to their places.
[[noreturn]] void refuseresult(Level &level, const Gathering &g) {
  while (level.sp > g.base) droptop(level);
  pushcopy(level, g.data);
  if (!isend(g.weights)) pushcopy(level, g.weights);
  pushcopy(level, g.function);
  failgathering(level, messages::RESTRICTION);
}

void appendresult(Level &level, Gathering &g) {
  Element &element = g.result.data_pointer[g.result.elements];
  const Point &value = *level.sp;
  std::uint32_t kinds = value.type & ISPROBABLE;
  if (ownsoneblock(value)) [[likely]]
    kinds |= takeplain(level, g, element);
  else if (value.rank == ranks::SCALAR)
    kinds |= takescalar(level, element);
  else if (isspace(value))
    kinds |= takespace(level, g, element);
  else
    kinds |= takesymbolic(level, element);
  g.kinds |= kinds;
  ++g.result.elements;
}

// Makes a value that is no symbolic Point, and no scalar that owns more than its block, the next result.
bool keepresult(const Point &value, Rounds &rounds) {
  Element &element = rounds.results[*rounds.made];
  std::uint32_t kinds = value.type & ISPROBABLE;
  if (isloose(value)) {
    setrecord(element, value);
    kinds = value.type & KIND_BITS;
  } else if (ownsoneblock(value)) {
    copyplain(element, *value.data_pointer);
    kinds |= kindbit(element.tag);
    release(value.data_pointer);
  } else if (isspace(value) && value.rank != ranks::SCALAR) {
    auto *const box = static_cast<Point *>(tryblock(sizeof(Point)));
    if (!box) return false;
    kinds |= enclosespace(element, box, value, rounds.depth);
  } else {
    return false;
  }
  rounds.kinds |= kinds;
  ++*rounds.made;
  return true;
}

}  // namespace

bool passon(Point &slot, Rounds &rounds) {
  const Element &next = rounds.elements[rounds.index];
  const bool isnested = next.tag == tags::SUBARRAY && isspace(*next.subarray);
  if ((!isnested && !islooseelement(next, rounds)) || !keepresult(slot, rounds)) return false;
  if (isnested) {
    slot = *next.subarray;
    referencepoint(&slot);
  } else {
    putloose(slot, next);
    noteloose(&slot);
  }
  return true;
}

void begingathering(Level &level, Gathering &g, int operands) {
  const Point *data = level.sp - operands + 1;
  g = {};
  g.result.rank = ranks::VECTOR;
  g.result.type = ISVECTOR | STRUCTURED;
  g.result.data_pointer = newelements(data->elements);
  g.data = *data;
  if (operands > 2) g.weights = data[1];
  g.function = level.sp[0];
  g.base = level.sp -= operands;
  takecustody(g.held, releasegathering, &g);
}

void failgathering(Level &level, int number) {
  exceptionjump(number, &level.sp, level.instruction);
}

void pushempty(Level &level) {
  Point empty;
  makeempty(empty);
  pushowned(level, empty);
}

Level gatheringlevel(Level &level, const Gathering &g) {
  Point *const frame = g.base + 1;
  return innerlevel(level, g.function, frame, frame + g.function.locals);
}

void callforelement(Level &inner, Gathering &g, Rounds *rounds) {
  Level &level = *inner.caller;
  if (level.sp + g.function.locals > stacktop) failgathering(level, messages::STACK_FULL);
  if (g.function.locals > 0) makelocals(level, 1, g.function.locals);
  runinnerloose(inner, rounds);
  makewhole(level.sp);
  joinpool(level.sp);
  // A function that leaves nothing leaves the empty vector; one that leaves more, the topmost.
  if (level.sp <= g.base) {
    pushempty(level);
  }
  if (isoperator(*level.sp)) refuseresult(level, g);
  appendresult(level, g);
  while (level.sp > g.base) droptop(level);
}

void endgathering(Level &level, Gathering &g, std::uint32_t kept) {
  endcustody(g.held);
  release(g.spare);
  Point result = g.data;
  result.data_pointer = g.result.data_pointer;
  result.type = (result.type & kept) | g.kinds | complexed(g.kinds);
  result.depth = std::max(result.depth, g.depth);
  g.data.shape_pointer = nullptr;  // which goes with the result
  dereferencepoint(&g.data);
  dereferencepoint(&g.weights);
  dereferencepoint(&g.function);
  pushowned(level, result);
}

}  // namespace morvik
