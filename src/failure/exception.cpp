// What a failure does: its report on standard error, and the one jump to where the machine goes on.
#include "failure/exception.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "failure/hearing.h"
#include "failure/jump.h"
#include "failure/messagetext.h"
#include "failure/signals.h"
#include "spaces/blocks.h"
#include "spaces/messages.h"
#include "spaces/streams.h"

namespace morvik {

void (*dumppoint)(std::FILE *stream, const char *title, Point *point) = [](std::FILE *, const char *, Point *) {};

namespace {

// Printing may retag what it prints; the Point at work keeps its fields.
void dumpcopy(const char *title, const Point *point) {
  Point copy = *point;
  dumppoint(errorstream, title, &copy);
}

void report(std::int32_t number, Point **stackpointer, const Point *instruction) {
  stepping = 1;
  const char *const text = errors(static_cast<std::uint32_t>(number));
  std::fflush(outputstream);
  if (number == messages::OUT_OF_STORAGE) pendingproblem = 1;
  if (hearreport) return hearreport({number, text, instruction, stackpointer ? *stackpointer : nullptr});
  std::fprintf(errorstream, "\n%s\n", text);
  if (number == messages::OUT_OF_STORAGE) return;
  if (instruction) dumpcopy("\nInstruction:\n", instruction);
  if (stackpointer && pendingproblem != 0) dumpcopy("Top of stack:\n", *stackpointer);
  std::fflush(errorstream);
}

}  // namespace

void exception(std::int32_t number, Point **stackpointer, const Point *instruction) {
  joinahead();
  if (number <= SIGNAL_NUMBERS) takesignal(SIGNAL_NUMBERS - number);
  if (number == messages::GOODBYE) {
    endprocess = 1;
    jump(-1);
  }
  if (number > 0) return report(number, stackpointer, instruction);
  std::fflush(outputstream);
  std::fprintf(errorstream, "\n%s", errors(static_cast<std::uint32_t>(-number)));
}

void exceptionjump(std::int32_t number, Point **stackpointer, const Point *instruction) {
  exception(number, stackpointer, instruction);
  jump(-1);
}

void exceptionjump(std::int32_t number) {
  exceptionjump(number, nullptr, nullptr);
}

void failwith(std::int32_t message, Point **stackpointer, const Point *instruction) {
  if (message == INTERRUPTED) takeinterrupt();
  if (message == messages::OUT_OF_STORAGE) outofstorage();
  exceptionjump(message, stackpointer, instruction);
}

namespace {

// Set before main, so that no start of a programme or of a test can forget it.
[[maybe_unused]] const bool hooked = (raisefailure = exceptionjump, true);

}  // namespace

}  // namespace morvik
