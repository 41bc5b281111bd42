// The instructions that look at the structure of a space: their place on the stack, and their reports.
#include "operators/reshape.h"

#include "machine/leave.h"
#include "machine/level.h"
#include "operators/catenate.h"
#include "operators/compress.h"
#include "operators/enclose.h"
#include "operators/enlist.h"
#include "operators/ravel.h"
#include "operators/reverse.h"
#include "operators/slices.h"
#include "operators/transpose.h"
#include "spaces/counters.h"
#include "spaces/instructions.h"
#include "spaces/making.h"

namespace morvik {

namespace {

Next done(Level &level, int fault) {
  return fault == 0 ? Next::FETCH : fail(level, fault);
}

// Of two operands the lower one's slot holds the result.
Next done2(Level &level, int fault) {
  if (fault == 0) --level.sp;
  return done(level, fault);
}

// An integer in the place of the top.
Next becomeinteger(Level &level, std::int64_t value) {
  Point scalar;
  makeinteger(scalar, value);
  dereferencepoint(level.sp);
  *level.sp = scalar;
  return Next::FETCH;
}

}  // namespace

Next doravel(Level &level) {
  ravel(*level.sp);
  return Next::FETCH;
}

Next doshape(Level &level) {
  extents(*level.sp);
  return Next::FETCH;
}

Next dorank(Level &level) {
  return becomeinteger(level, level.sp->rank);
}

Next dodepth(Level &level) {
  return becomeinteger(level, level.sp->depth);
}

Next doenclose(Level &level) {
  enclose(*level.sp, level.instruction->modifier == instructions::NUMBER);
  return Next::FETCH;
}

Next dodisclose(Level &level) {
  return done(level, disclose(*level.sp));
}

Next dofirst(Level &level) {
  const bool one = level.instruction->modifier == instructions::FIRST;
  return done(level, one ? firstelement(*level.sp) : first(*level.sp));
}

Next dorest(Level &level) {
  const bool elements = level.instruction->modifier == instructions::REDUCE;
  return done(level, elements ? restelements(*level.sp) : rest(*level.sp));
}

Next doreverse(Level &level) {
  return done(level, reverse(*level.sp));
}

Next domirror(Level &level) {
  return done(level, mirror(*level.sp));
}

Next dotranspose(Level &level) {
  return done(level, transpose(*level.sp));
}

Next doenlist(Level &level) {
  return done(level, enlist(*level.sp));
}

Next docatenate(Level &level) {
  return done2(level, catenate(level.sp[-1], level.sp[0]));
}

Next docompress(Level &level) {
  return done2(level, compress(level.sp[-1], level.sp[0]));
}

Next docompresslastaxis(Level &level) {
  return done2(level, compresslastaxis(level.sp[-1], level.sp[0]));
}

Next doreplicate(Level &level) {
  const int fault = replicate(level.sp[-1], level.sp[0], level.instruction);
  return fault == ALREADY_REPORTED ? levelreturn(level) : done2(level, fault);
}

Next doreshape(Level &level) {
  if (reshape(level.sp - 1, level.sp, level.instruction) != 0) return levelreturn(level);
  --level.sp;
  operations += level.sp->elements;
  return Next::FETCH;
}

}  // namespace morvik
