// The instructions that set up the pool.
#include <algorithm>

#include "failure/exception.h"
#include "failure/hearing.h"
#include "machine/leave.h"
#include "machine/level.h"
#include "spaces/messages.h"
#include "spaces/streams.h"
#include "spaces/work.h"

namespace morvik {

namespace {

const Element *oneinteger(const Point &point) {
  const Element *element = oneelement(point);
  return element && element->tag == tags::INTEGER ? element : nullptr;
}

}  // namespace

Next doparallel(Level &level) {
  const Element *wanted = oneinteger(*level.sp);
  if (!wanted) return fail(level, messages::PARALLEL_ARGUMENT);
  std::int64_t slots = std::max<std::int64_t>(wanted->integer, 1);
  if (slots > cpus) {
    if (!hearreport)
      std::fprintf(errorstream,
                   "WARNING: 204 - requested more than started processors (%ld):", static_cast<long>(cpus));
    exception(messages::PARALLEL_CAPPED, &level.sp, level.instruction);
    slots = cpus;
  }
  processors = static_cast<std::uint32_t>(slots);
  droptop(level);
  return Next::FETCH;
}

// The slices of a result in flight were cut by the old threshold.
Next doserial(Level &level) {
  joinpool(level.sp);
  const Element *least = oneinteger(*level.sp);
  if (!least) return fail(level, messages::SERIAL_ARGUMENT);
  MIN_PARALLEL = std::max<std::int64_t>(least->integer, processors);
  droptop(level);
  return Next::FETCH;
}

}  // namespace morvik
