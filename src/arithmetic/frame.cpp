// How scalar instructions fail, and what their results replace.
#include "arithmetic/frame.h"

#include "diagnostics/exception.h"
#include "spaces/refderef.h"

void giveupall(const Run &run, Element &result) {
  if (run.fresh) return;
  if (result.tag == tags::SUBARRAY) {
    dereferencepoint(result.subarray);
    release(result.subarray);
  } else {
    giveup(result);
  }
}

void failscalar(std::int32_t message, Point **stack, const Point *instruction) {
  if (message == INTERRUPTED) takeinterrupt();
  if (message == OUTOFSTORAGE) exceptionjump(OUTOFSTORAGE);
  exceptionjump(message, stack, instruction);
}
