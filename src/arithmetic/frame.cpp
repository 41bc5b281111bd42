// How scalar instructions fail, and what their results replace.
#include "arithmetic/frame.h"

#include "diagnostics/exception.h"
#include "spaces/refderef.h"

void giveupall(const Run &run, Element &result) {
  // What the record encloses may be seen by others too: it is lowered, and stays as it is.
  if (!run.fresh) dereferencedataelems(&result, 1);
}

void failscalar(std::int32_t message, Point **stack, const Point *instruction) {
  if (message == INTERRUPTED) takeinterrupt();
  if (message == OUTOFSTORAGE) exceptionjump(OUTOFSTORAGE);
  exceptionjump(message, stack, instruction);
}
