// EDIT: the value on top as a text in the person's editor.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "failure/custody.h"
#include "files/files.h"
#include "files/persist.h"
#include "files/replacement.h"
#include "machine/filing.h"
#include "machine/leave.h"
#include "spaces/instructions.h"
#include "spaces/messages.h"
#include "spaces/streams.h"

namespace morvik {

namespace {

// Kept: the dollar sign belongs to the name, so that an ordinary environment holds none such.
constexpr char EDITOR_VARIABLE[] = "$EDITOR", SHELL_VARIABLE[] = "EDITOR";
// No byte of it means anything to a shell between quotes.
constexpr char TEMPLATE[] = P_tmpdir "/morvikXXXXXX";
constexpr char WITH_EDITOR[] = "/bin/sh -c 'SHELL=`which Morvik`; export SHELL; $EDITOR %s'";
constexpr char WITH_VI[] = "/bin/sh -c 'SHELL=`which Morvik`; export SHELL; vi %s'";

// The temporary file: private, made new, and removed in the end whatever happens.
struct Draft {
  Custody named, opened;
  char name[sizeof TEMPLATE];
  std::FILE *stream;
};

void removedraft(Custody &c) {
  std::remove(static_cast<const char *>(c.held));
}

// Could the file be made? It is open for writing then.
bool begindraft(Draft &draft) {
  std::snprintf(draft.name, sizeof draft.name, "%s", TEMPLATE);
  const int descriptor = mkstemp(draft.name);
  if (descriptor < 0) return false;
  draft.stream = fdopen(descriptor, "w");
  if (!draft.stream) {
    close(descriptor);
    std::remove(draft.name);
    return false;
  }
  takecustody(draft.named, removedraft, draft.name);
  takecustody(draft.opened, releasestream, draft.stream);
  return true;
}

void closedraft(Draft &draft) {
  endcustody(draft.opened);
  std::fclose(draft.stream);
}

// The end of the writing. Is all of it in the file? If not, that is gone.
bool enddraft(Draft &draft) {
  endcustody(draft.opened);
  if (closewritten(draft.stream)) return true;
  endcustody(draft.named);
  std::remove(draft.name);
  return false;
}

// Opens what the editor left, and removes its name. Could it be opened?
bool reopendraft(Draft &draft) {
  draft.stream = openstream(draft.name, "r");
  endcustody(draft.named);
  std::remove(draft.name);
  if (draft.stream) takecustody(draft.opened, releasestream, draft.stream);
  return draft.stream != nullptr;
}

// Runs the editor and waits for it. What it answers does not matter: what counts is the file.
void runeditor(const char *name) {
  const char *editor = std::getenv(EDITOR_VARIABLE);
  if (editor) setenv(SHELL_VARIABLE, editor, 1);
  char command[sizeof WITH_EDITOR + sizeof TEMPLATE];
  std::snprintf(command, sizeof command, editor ? WITH_EDITOR : WITH_VI, name);
  std::fflush(outputstream);
  const int status = std::system(command);
  static_cast<void>(status);
}

}  // namespace

Next doedit(Level &level) {
  if (!hasvalues(level, 1)) return fail(level, messages::TOO_FEW_ARGUMENTS);
  if (areconfined()) return fail(level, messages::DIRECTORY_REFUSED);  // an editor opens what it likes
  const bool plain = level.instruction->modifier == instructions::TEXTREAD;
  Draft draft;
  if (!begindraft(draft)) return fail(level, messages::CANNOT_WRITE);
  writevalue(draft.stream, level.sp, plain ? Form::PLAIN : Form::SOURCE);
  if (!enddraft(draft)) return fail(level, messages::CANNOT_WRITE);
  runeditor(draft.name);
  if (!reopendraft(draft)) return fail(level, messages::CANNOT_READ);
  if (plain) {
    const Point text = readcharacters(draft.stream);
    dereferencepoint(level.sp);
    *level.sp = text;
  } else {
    droptop(level);
    runstream(level, draft.stream);
  }
  closedraft(draft);
  return Next::FETCH;
}

}  // namespace morvik
