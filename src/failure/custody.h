// What a jump releases on its way.
#pragma once

#include "spaces/point.h"

namespace morvik {

// Custody: what a frame holds and a jump would leak. The jump releases all that was taken since its landing was armed,
// the latest first; for a frame that returned that is nothing. A record lives in the frame of its owner, which takes
// and ends it in stack order.
struct Custody {
  void (*release)(Custody &);
  Custody *outer;
  void *held;
};
extern Custody *custody;
// Custody of a Point kept aside (held: Point *), of a Programme (held: its first Point), of a counted block.
void releasepoint(Custody &);
void releaseprogramme(Custody &);
void releaseblock(Custody &);
inline void takecustody(Custody &c, void (*release)(Custody &), void *held) {
  c = {release, custody, held};
  custody = &c;
}
// The owner has the thing back; `c` must be the latest.
inline void endcustody(const Custody &c) {
  custody = c.outer;
}
// Releases everything that was taken later than `mark`. For frames that still exist: jump calls it, a landing finds
// nothing left to do.
void releasecustody(Custody *mark);

}  // namespace morvik
