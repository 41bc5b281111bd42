// Texts that the machine compiles and runs itself.
#include "machine/texts.h"

#include <cstring>

#include "failure/custody.h"
#include "failure/signals.h"
#include "frontend/assembly.h"
#include "frontend/limits.h"
#include "machine/calls.h"
#include "machine/machine.h"
#include "spaces/streams.h"

namespace morvik {

void opentext(Text &text) {
  text.programme = static_cast<Point *>(newblock(PROGRAMME_POINTS * sizeof(Point)));
  text.programme[0] = {};
  takecustody(text.block, releaseblock, text.programme);
  takecustody(text.points, releaseprogramme, text.programme);
}

void closetext(Text &text) {
  cleanup(text.programme);
  endcustody(text.points);
  endcustody(text.block);
  freeblock(text.programme);
}

std::int64_t compiletext(Level &level, Text &text, std::FILE *stream, const char **string, int flag) {
  // What a person types while asked for it is not meant for what runs; a text in storage takes no time to read.
  const bool typed = stream == inputstream;
  typed ? readingsignals() : deferinterrupts();
  const std::int64_t points = fill(text.programme, level.meaning, level.sp, stream, string, flag);
  typed ? runningsignals() : admitinterrupts();
  return points;
}

void runtext(Level &level, Text &text, Point *frame, Point *floor) {
  Level inner = innerlevel(level, text.programme, frame, floor);
  runinner(inner);
  cleanup(text.programme);
}

char *endedtext(const Point &space) {
  static constexpr char END_MARK[] = " .";
  const std::size_t length = space.elements;
  auto *bytes = static_cast<char *>(newblock(length + sizeof END_MARK));
  for (std::size_t i = 0; i < length; ++i) bytes[i] = static_cast<char>(space.data_pointer[i].ascii);
  std::memcpy(bytes + length, END_MARK, sizeof END_MARK);
  return bytes;
}

Next executetext(Level &level) {
  char *bytes = endedtext(*level.sp);
  Custody buffer;
  takecustody(buffer, releaseblock, bytes);
  Text text;
  opentext(text);
  droptop(level);
  for (const char *position = bytes; *position != 0;) {
    compiletext(level, text, nullptr, &position, SKIPPED);
    runtext(level, text, level.frame, level.floor);
  }
  closetext(text);
  endcustody(buffer);
  freeblock(bytes);
  return Next::FETCH;
}

}  // namespace morvik
