// The prompt loop: prompt, one text compiled, one run, and the Programme given back.
#include "driver/prompt.h"

#include <unistd.h>

#include <cerrno>

#include "api/banks.h"
#include "api/session.h"
#include "driver/options.h"
#include "failure/jump.h"
#include "failure/signals.h"
#include "frontend/assembly.h"

namespace morvik {

namespace {

void prompt() {
  if (quiet) return;
  std::printf("\n\nMorvik [%ld]> ", sp - stack[0]);
  std::fflush(stdout);
}

// At a terminal, is the next line empty, before the text has begun? The scanner takes line feeds for nothing, so that
// a person who only presses ENTER would be left without a prompt. Blanks before a text mean nothing either; those that
// the last text left on its own line make no empty line.
bool emptyline() {
  if (!isatty(STDIN_FILENO)) return false;
  for (bool linestart = true;;) {
    const int byte = std::getc(stdin);
    if (byte == EOF && std::ferror(stdin) && errno == EINTR) {  // a fault was sent, which fill takes
      std::clearerr(stdin);
      return false;
    }
    if (byte == '\n') {
      if (linestart) return true;
      linestart = true;
    } else if (byte == ' ' || byte == '\t') {
      linestart = false;
    } else {
      std::ungetc(byte, stdin);
      return false;
    }
  }
}

// Was there nothing to read but the end of the input? That gives ENDPROCESS and END.
bool isinputgone(std::int64_t points) {
  return points == 2 && inputended();
}

}  // namespace

void onetext(std::FILE *stream) {
  readingsignals();
  const std::int64_t points = compilenext(stream, nullptr);
  runningsignals();
  const bool last = isinputgone(points);
  runcompiled();
  // No failure of the run may keep the loop from its end.
  if (last) endprocess = 1;
}

void promptloop() {
  while (!endprocess) {
    // Ahead of the prompt, so that a key that answers it at once does no harm.
    readingsignals();
    prompt();
    if (emptyline()) continue;
    onetext(stdin);
#ifdef MORVIK_CHECKING
    recountblocks();
#endif
  }
}

}  // namespace morvik
