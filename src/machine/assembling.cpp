// ASSEMBLE and DISASSEMBLE: functions out of text, and text out of any value.
#include <cstdlib>
#include <cstring>

#include "failure/custody.h"
#include "files/persist.h"
#include "frontend/limits.h"
#include "machine/leave.h"
#include "machine/texts.h"
#include "spaces/instructions.h"
#include "spaces/messages.h"
#include "text/written.h"

namespace morvik {

namespace {

// A function that is being put together: a header, and the Points of its body so far with the END after them.
struct Body {
  Point *block;
  std::size_t points;
};

void releasebody(Custody &c) {
  auto *body = static_cast<Body *>(c.held);
  cleanup(body->block + 1);
  freeblock(body->block);
}

// Room for so many Points more, beside the header and the END.
void reservepoints(Body &body, std::size_t more) {
  const std::size_t records = body.points + more + 2;
  body.block = reinterpret_cast<Point *>(Reallocate(reinterpret_cast<Element *>(body.block), records));
}

// Moves Points to the end of the body.
void addpoints(Body &body, const Point *points, std::size_t count) {
  reservepoints(body, count);
  Point *end = body.block + 1 + body.points;
  std::memcpy(end, points, count * sizeof(Point));
  body.points += count;
  end[count] = {};
}

// Compiles the bytes, text by text, to the end of the body.
void compileinto(Level &level, Body &body, const char *bytes) {
  Text text;
  opentext(text);
  while (*bytes != 0) {
    const std::int64_t points = compiletext(level, text, nullptr, &bytes, SKIPPED);
    if (points < 1) continue;
    addpoints(body, text.programme, static_cast<std::size_t>(points - 1));
    text.programme[0] = {};
  }
  closetext(text);
}

void sealbody(Body &body, Point &function) {
  static constexpr char OPENING[] = ":", CLOSING[] = ";";
  Point end{};
  end.rank = ranks::OPERATOR;
  end.type = ISOPERATOR;
  end.instruction = instructions::FUNCTIONEND;
  Custody ended, named;
  takecustody(ended, releasepoint, &end);
  end.name = stringdup(CLOSING);
  char *name = stringdup(OPENING);
  takecustody(named, releaseblock, name);
  addpoints(body, &end, 1);
  endcustody(named);
  endcustody(ended);
  function = {};
  function.rank = ranks::FUNCTION;
  function.type = ISFUNCTION | GLOBAL;
  function.name = name;
  function.arguments = -1;
  function.elements = static_cast<std::uint32_t>(body.points + 1);
  function.programme = body.block;
  *body.block = function;
  body.block->origin = 0;
  body.block->elements = static_cast<std::uint32_t>(body.points);
}

}  // namespace

Next doassemble(Level &level) {
  if (!istext(*level.sp) || level.sp->rank > 1) return fail(level, messages::ASSEMBLE_ARGUMENT);
  char *bytes = endedtext(*level.sp);
  Custody buffer, built;
  takecustody(buffer, releaseblock, bytes);
  Body body{static_cast<Point *>(newblock(2 * sizeof(Point))), 0};
  body.block[0] = body.block[1] = {};
  takecustody(built, releasebody, &body);
  compileinto(level, body, bytes);
  Point function;
  sealbody(body, function);
  endcustody(built);
  endcustody(buffer);
  freeblock(bytes);
  droptop(level);
  pushowned(level, function);
  return Next::FETCH;
}

Next dodisassemble(Level &level) {
  const int source = level.instruction->modifier == instructions::TEXTWRITE ? 0 : 1;
  WrittenText written;
  if (!writepoint(written, level.sp, source)) outofstorage();
  Characters characters;
  begincharacters(characters, written.length);
  appendcharacters(characters, written.bytes, written.length);
  const Point text = endcharacters(characters);
  endcustody(written.custody);
  std::free(written.bytes);
  droptop(level);
  pushowned(level, text);
  return Next::FETCH;
}

}  // namespace morvik
