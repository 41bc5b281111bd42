// The instructions that work on files by name, and those of FILE elements. What is saved is text of the language, so
// that loading is compiling and running.
#include "machine/filing.h"

#include "failure/custody.h"
#include "failure/exception.h"
#include "failure/jump.h"
#include "failure/signals.h"
#include "files/files.h"
#include "files/persist.h"
#include "files/replacement.h"
#include "frontend/limits.h"
#include "frontend/remember.h"
#include "frontend/symtab.h"
#include "machine/leave.h"
#include "machine/texts.h"
#include "spaces/counters.h"
#include "spaces/instructions.h"
#include "spaces/messages.h"
#include "spaces/streams.h"
#include "spaces/work.h"
#include "text/text.h"

namespace morvik {

namespace {

// The messages about a name and about a file that can't be opened or written, and whether they jump.
struct Access {
  int data, structure, opening;
  bool jumps;
};
constexpr Access READING = {messages::READ_NAME_DATA, messages::READ_NAME_STRUCTURE, messages::CANNOT_READ, false},
                 WRITING = {messages::WRITE_NAME_DATA, messages::WRITE_NAME_STRUCTURE, messages::CANNOT_WRITE, false},
                 SAVING = {messages::SAVE_NAME_DATA, messages::SAVE_NAME_STRUCTURE, messages::CANNOT_SAVE, false},
                 LOADING = {messages::LOAD_NAME_DATA, messages::LOAD_NAME_STRUCTURE, messages::CANNOT_READ, false},
                 DUMPING = {messages::DUMP_NAME_DATA, messages::DUMP_NAME_STRUCTURE, messages::CANNOT_DUMP, false},
                 REMEMBERING = {messages::REMEMBER_NAME_DATA, messages::REMEMBER_NAME_STRUCTURE,
                                messages::CANNOT_REMEMBER, false},
                 NAMING = {messages::FILE_NAME_DATA, messages::FILE_NAME_STRUCTURE, messages::CANNOT_OPEN, true};

// Reports, and leaves the level or all of them.
Next refuse(Level &level, const Access &access, int number) {
  if (access.jumps) exceptionjump(number, &level.sp, level.instruction);
  return fail(level, number);
}

// Does the top name a file? If not, that is reported and the level left.
bool namesfile(Level &level, const Access &access) {
  const int fault = namefault(*level.sp, access.data, access.structure);
  if (fault != 0) refuse(level, access, fault);
  return fault == 0;
}

// An open stream that a jump closes.
struct HeldStream {
  Custody custody;
  std::FILE *stream;
};
void holdstream(HeldStream &held, std::FILE *stream) {
  held.stream = stream;
  takecustody(held.custody, releasestream, stream);
}
void closeheldstream(HeldStream &held) {
  endcustody(held.custody);
  std::fclose(held.stream);
}

// Opens the file that the top names, to be read. If that can't be, it is reported and the level left, with the name in
// its place.
bool opennamed(Level &level, const Access &access, HeldStream &held) {
  if (!namesfile(level, access)) return false;
  char *name = filename(*level.sp);
  Custody kept;
  takecustody(kept, releaseblock, name);
  const bool refused = isrefused(name);
  std::FILE *stream = refused ? nullptr : openstream(name, "r");
  endcustody(kept);
  freeblock(name);
  if (stream)
    holdstream(held, stream);
  else
    refuse(level, access, refused ? messages::DIRECTORY_REFUSED : access.opening);
  return stream != nullptr;
}

// The same for a file that is to be written anew. The name stays until it is.
bool beginnamed(Level &level, const Access &access, Replacement &file) {
  if (!namesfile(level, access)) return false;
  char *name = filename(*level.sp);
  const bool refused = isrefused(name);
  if (refused) freeblock(name);
  if (!refused && beginreplacement(file, name)) return true;
  refuse(level, access, refused ? messages::DIRECTORY_REFUSED : access.opening);
  return false;
}

Next endnamed(Level &level, const Access &access, Replacement &file) {
  if (!endreplacement(file)) return refuse(level, access, access.opening);
  droptop(level);
  return Next::FETCH;
}

void writecounted(std::FILE *stream, Point *value, Form form) {
  operations += value->elements;
  writevalue(stream, value, form);
}

// Writes the value under the name, which goes; the value stays.
Next appendtofile(Level &level, Form form) {
  joinpool(level.sp);
  HeldStream file;
  holdstream(file, openfile(level.instruction, &level.sp, "a", nullptr));
  writecounted(file.stream, level.sp - 1, form);
  const bool whole = std::fflush(file.stream) == 0 && !std::ferror(file.stream);
  if (!whole) safepoint();  // it may be an interrupt that broke the write
  endcustody(file.custody);
  if (!closewritten(file.stream) || !whole) return refuse(level, NAMING, NAMING.opening);
  droptop(level);
  return Next::FETCH;
}

Next opennew(Level &level) {
  Point descriptor = *level.sp--;
  Custody described, called;
  takecustody(described, releasepoint, &descriptor);
  char *name;
  HeldStream file;
  std::FILE *stream = openfile(level.instruction, &level.sp, "r+b", &name);
  takecustody(called, releaseblock, name);
  holdstream(file, stream);
  Point made;
  makefile(made, stream, name, descriptor, level.instruction->modifier == instructions::SMALL);
  endcustody(file.custody);
  endcustody(called);
  endcustody(described);
  dereferencepoint(level.sp);
  *level.sp = made;
  return Next::FETCH;
}

Next openagain(Level &level) {
  droptop(level);
  const Point &top = *level.sp;
  const bool isfile = isspace(top) && top.elements > 0 && top.data_pointer && top.data_pointer[0].tag == tags::HANDLE;
  return isfile && reopenfile(top.data_pointer[0]) ? Next::FETCH : fail(level, messages::CANNOT_OPEN);
}

}  // namespace

void runstream(Level &level, std::FILE *stream) {
  Text text;
  opentext(text);
  for (;;) {
    const std::int32_t problem = pendingproblem;
    pendingproblem = 0;
    const std::int64_t points = compiletext(level, text, stream, nullptr, SKIPPED);
    // No storage even to read on: the same text would fail for ever.
    if (points == 0 && pendingproblem != 0) jump(-1);
    pendingproblem = problem;
    if (isinstruction(*text.programme, instructions::ENDPROCESS)) break;
    runtext(level, text, level.frame, level.floor);
  }
  closetext(text);
}

Next doread(Level &level) {
  HeldStream file;
  if (!opennamed(level, READING, file)) return Next::LEAVE;
  droptop(level);
  runstream(level, file.stream);
  closeheldstream(file);
  return Next::FETCH;
}

Next doload(Level &level) {
  HeldStream file;
  if (!opennamed(level, LOADING, file)) return Next::LEAVE;
  joinpool(level.sp);
  while (hasvalues(level, 1)) droptop(level);
  if (level.meaning->table) hashwipe(level.meaning->table);
  runstream(level, file.stream);
  closeheldstream(file);
  return Next::FETCH;
}

Next dosave(Level &level) {
  Replacement file;
  if (!beginnamed(level, SAVING, file)) return Next::LEAVE;
  remember(file.stream, level.meaning);
  dumpstack(file.stream, level.floor, level.sp - 1);
  return endnamed(level, SAVING, file);
}

// Kept: an empty name stays, and is listed as the top.
Next dodumpstack(Level &level) {
  if (!namesfile(level, DUMPING)) return Next::LEAVE;
  if (isempty(*level.sp)) {
    dumpstack(outputstream, level.floor, level.sp);
    return Next::FETCH;
  }
  Replacement file;
  if (!beginnamed(level, DUMPING, file)) return Next::LEAVE;
  dumpstack(file.stream, level.floor, level.sp - 1);
  return endnamed(level, DUMPING, file);
}

Next doremember(Level &level) {
  Replacement file;
  if (!beginnamed(level, REMEMBERING, file)) return Next::LEAVE;
  remember(file.stream, level.meaning);
  return endnamed(level, REMEMBERING, file);
}

Next dowrite(Level &level) {
  joinpool(level.sp);
  if (!namesfile(level, WRITING)) return Next::LEAVE;
  if (isempty(*level.sp)) {
    droptop(level);
    writecounted(outputstream, level.sp, Form::SOURCE);
    std::fputc('\n', outputstream);
    std::fflush(outputstream);
    return Next::FETCH;
  }
  Replacement file;
  if (!beginnamed(level, WRITING, file)) return Next::LEAVE;
  writecounted(file.stream, level.sp - 1, Form::SOURCE);
  std::fputc('\n', file.stream);
  return endnamed(level, WRITING, file);
}

Next dotextwrite(Level &level) {
  joinpool(level.sp);
  Replacement file;
  if (!beginnamed(level, NAMING, file)) return Next::LEAVE;
  writecounted(file.stream, level.sp - 1, Form::PLAIN);
  return endnamed(level, NAMING, file);
}

Next doappend(Level &level) {
  return appendtofile(level, Form::SOURCE);
}
Next dotextappend(Level &level) {
  return appendtofile(level, Form::PLAIN);
}

Next dotextread(Level &level) {
  HeldStream file;
  if (!opennamed(level, READING, file)) return Next::LEAVE;
  const Point text = readcharacters(file.stream);
  closeheldstream(file);
  dereferencepoint(level.sp);
  *level.sp = text;
  return Next::FETCH;
}

// What can be no name opens again, whatever it is: a name has two characters or more.
Next doopen(Level &level) {
  return (level.sp[-1].type & (SCALAR_LIKE | HASFILE | SAMERANK)) == 0 ? opennew(level) : openagain(level);
}

Next doclose(Level &level) {
  closefile(&level.sp, level.instruction);
  droptop(level);
  return Next::FETCH;
}

Next dorewind(Level &level) {
  rewindfile(&level.sp, level.instruction);
  droptop(level);
  return Next::FETCH;
}

// Kept: the expression is looked at and nothing is edited.
Next dostreamedit(Level &level) {
  if (isempty(*level.sp)) return Next::FETCH;
  const int fault = namefault(*level.sp, messages::PATTERN_DATA, messages::PATTERN_STRUCTURE);
  return fault == 0 ? Next::FETCH : fail(level, fault);
}

}  // namespace morvik
