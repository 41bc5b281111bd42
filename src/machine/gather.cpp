// What EACH and MASK share.
#include "machine/gather.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

void releasegathering(Custody &c) {
  auto *g = static_cast<Gathering *>(c.held);
  release(g->spare);
  dereferencepoint(&g->result);
  dereferencepoint(&g->weights);
  dereferencepoint(&g->data);
  dereferencepoint(&g->function);
}

// Takes over the record of a scalar on top.
void takescalar(Level &level, Gathering &g, Element &element) {
  Element *const record = level.sp->data_pointer;
  if (!isplainrecord(*record)) {
    copyelement(element, *record);
    return droptop(level);
  }
  element = *record;
  if (g.spare || refr(record) != 1) return droptop(level);
  g.spare = record;
  --level.sp;
}

// The last record of a result that was just enclosed, or copied, or moved in whole.
void enclose(Gathering &g, Element &element, const Point &value) {
  Point *box = newpoint();
  *box = value;
  element = {};
  element.tag = tags::SUBARRAY;
  element.subarray = box;
  g.kinds |= ISSTRUCTURE | STRUCTURED;
  g.depth = std::max(g.depth, static_cast<std::int16_t>(value.depth + 1));
}

void append(Level &level, Gathering &g) {
  Element &element = g.result.data_pointer[g.result.elements];
  const Point &value = *level.sp;
  g.kinds |= value.type & ISPROBABLE;
  if (value.rank > 0) {
    enclose(g, element, value);
    --level.sp;
  } else if (value.rank == ranks::SCALAR) {
    takescalar(level, g, element);
    g.kinds |= kindbit(element.tag);
    if (element.tag == tags::HANDLE) g.kinds |= HASFILE;
    if (element.tag < 0 || element.tag == tags::SUBARRAY) g.kinds |= STRUCTURED;
  } else {
    std::memcpy(&element, &value, sizeof element);
    g.kinds |= STRUCTURED | (isfunction(value) ? HASFUNCTION : 0);
    --level.sp;
  }
  ++g.result.elements;
}

}  // namespace

bool isplainrecord(const Element &e) {
  return e.tag >= tags::ASCII && e.tag <= tags::QUATERNION && (e.attributes & attributes::NAMED) == 0;
}

Element *takerecord(Gathering &g) {
  return g.spare ? std::exchange(g.spare, nullptr) : newelements(1);
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
  level.sp -= operands;
  takecustody(g.held, releasegathering, &g);
}

void failgathering(Level &level, int number) {
  exceptionjump(number, &level.sp, level.instruction);
}

void gather(Level &level, Gathering &g) {
  Point *const base = level.sp - 1;
  if (level.sp + g.function.locals > stacktop) failgathering(level, 806);
  callheld(level, g.function);
  settle(level.sp);
  // A function that leaves nothing leaves the empty vector; one that leaves more, the topmost.
  if (level.sp <= base) {
    Point empty;
    makeempty(empty);
    pushowned(level, empty);
  }
  append(level, g);
  while (level.sp > base) droptop(level);
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
