// Custody: the release of what a jump would leak.
#include "failure/custody.h"

#include "spaces/refderef.h"

namespace morvik {

Custody *custody;

void releasepoint(Custody &c) {
  dereferencepoint(static_cast<Point *>(c.held));
}
void releaseprogramme(Custody &c) {
  cleanup(static_cast<Point *>(c.held));
}
void releaseblock(Custody &c) {
  release(c.held);
}

// Each record is taken off before its release, so that a failure in there cannot release it again.
void releasecustody(Custody *mark) {
  while (custody != mark && custody) {
    Custody &c = *custody;
    custody = c.outer;
    c.release(c);
  }
}

}  // namespace morvik
