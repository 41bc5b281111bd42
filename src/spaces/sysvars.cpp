// The system variables as numbers. A person may bind anything to their names.
#include "spaces/sysvars.h"

#include "spaces/convert.h"
#include "spaces/parts.h"

namespace morvik {

namespace {

const Element *valueelement(const Point &variable) {
  return isspace(variable) ? variable.data_pointer : nullptr;
}

}  // namespace

std::int64_t indexorigin(const Point *context) {
  const Element *io = valueelement(context[IO_SLOT]);
  if (io && io->tag == tags::INTEGER) return io->integer;
  return io && io->tag == tags::REAL ? saturate(io->real) : 1;
}

double unusualtolerance(const Point &ct) {
  const Element *value = valueelement(ct);
  return value ? realpart(*value) : 0;
}

Point *quads;

}  // namespace morvik
