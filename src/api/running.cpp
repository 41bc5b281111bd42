// The texts of a source, one after the other.
#include "api/running.h"

#include <cstring>

#include "api/banks.h"
#include "api/places.h"
#include "api/session.h"
#include "failure/jump.h"

namespace morvik {

namespace {

// White space alone is no text, so that what follows the last end of text is none.
bool hastexts(const Source &source) {
  return source.read[std::strspn(source.read, " \t\r\n")] != 0;
}

void runtext(Source &source, bool (*isover)()) {
  const std::int64_t points = compilesource(source);
  dropinputend(points);
  if (openings() > 0 || points == 0 || isover())
    dropcompiled();
  else
    runcompiled();
#ifdef MORVIK_CHECKING
  recountblocks();
#endif
}

}  // namespace

bool runtexts(Source &source, bool (*isover)()) {
  while (hastexts(source) && !endprocess && !isover()) {
    runtext(source, isover);
    if (openings() > 0) return false;
  }
  return true;
}

}  // namespace morvik
