// The records of the calls of the quick loop.
#include "machine/quickcalls.h"

namespace morvik {

Call calls[MOST_CALLS];

void releasecalled(Custody &body) {
  dropbody(static_cast<Point *>(body.held));
}

}  // namespace morvik
