// Loose scalars become whole.
#include "spaces/loose.h"

#include "spaces/refderef.h"

namespace morvik {

std::uintptr_t lowestloose = NONE_LOOSE;

namespace {

// The lowest slot that could not be made whole; null where all of them are.
Point *wholeupto(Point *top) {
  // NOLINTNEXTLINE(performance-no-int-to-ptr)
  for (Point *slot = reinterpret_cast<Point *>(lowestloose); slot <= top; ++slot) {
    if (!isloose(*slot)) continue;
    auto *const record = static_cast<Element *>(tryblock(sizeof(Element)));
    if (!record) return slot;
    giverecord(*slot, record);
  }
  return nullptr;
}

}  // namespace

void makeslotswhole(Point *top) {
  if (wholeupto(top)) outofstorage();
}

Point *keepwhole(Point *top) {
  if (lowestloose > reinterpret_cast<std::uintptr_t>(top)) return top;
  Point *const failed = wholeupto(top);
  for (; failed && top >= failed; --top) dereferencepoint(top);
  lowestloose = NONE_LOOSE;
  return top;
}

}  // namespace morvik
