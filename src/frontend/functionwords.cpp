// Function definitions: a header and a body in a block of their own, written while the frame is open.
#include "frontend/functionwords.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "failure/exception.h"
#include "failure/hearing.h"
#include "frontend/compiler.h"
#include "frontend/contexts.h"
#include "frontend/limits.h"
#include "frontend/literals.h"
#include "spaces/blocks.h"
#include "spaces/messages.h"
#include "spaces/streams.h"

namespace morvik {

namespace {

constexpr std::int64_t MOST_ARGUMENTS = 32767, LEAST_ARGUMENTS = -32768, MOST_LOCALS = 65535;
constexpr std::int16_t NO_FRAME = -1;

// The first capacity of a body; it doubles as it fills.
#ifdef MORVIK_CHECKING
constexpr std::size_t FIRST_BODY = 2;
#else
constexpr std::size_t FIRST_BODY = 32;
#endif

struct Signature {
  std::int16_t arguments;
  std::uint16_t locals;
};

// Kept: a count is read from the second byte after its keyword on, so that it must come after one separator.
std::int64_t countafter(const char *keyword) {
  constexpr std::size_t KEYWORD_BYTES = 4;
  if (std::strlen(keyword) <= KEYWORD_BYTES) return 0;
  return std::strtol(keyword + KEYWORD_BYTES + 1, nullptr, 10);
}

std::uint16_t localsafter(const char *keyword) {
  return static_cast<std::uint16_t>(std::clamp<std::int64_t>(countafter(keyword), 0, MOST_LOCALS));
}

std::int16_t argumentsafter(const char *keyword) {
  return static_cast<std::int16_t>(std::clamp(countafter(keyword), LEAST_ARGUMENTS, MOST_ARGUMENTS));
}

bool endswith(const char *text, const char *word) {
  const std::size_t length = std::strlen(text), tail = std::strlen(word);
  return length >= tail && std::strcmp(text + length - tail, word) == 0;
}

Signature signature(const char *text) {
  const bool begins = text[0] == 'V' || text[0] == 'A';
  const char *vars = begins ? std::strchr(text, 'V') : nullptr;
  const std::uint16_t locals = vars ? localsafter(vars) : std::uint16_t{0};
  if (begins && endswith(text, "FUNCTION")) return {argumentsafter(std::strstr(text, "ARGS")), locals};
  if (endswith(text, "NILADIC")) return {0, locals};
  if (endswith(text, "MONADIC")) return {1, locals};
  if (endswith(text, "DYADIC")) return {2, locals};
  if (endswith(text, "TRIADIC")) return {3, locals};
  if (vars) complain("Warning, a NEADIC can not have local VARS!");
  return {NO_FRAME, 0};
}

// Ends the innermost body at the position, where its END goes; the FUNCTION Point is whole then.
void sealfunction() {
  Compiler &c = compiler;
  Frame &frame = c.frames[c.nextframe - 1];
  const auto points = static_cast<std::size_t>(c.position - frame.start);
  *c.position = {};
  auto *block = reinterpret_cast<Point *>(Reallocate(reinterpret_cast<Element *>(frame.start - 1), points + 2));
  block->programme = block;
  frame.start = block + 1;
  Point &function = *frame.point;
  function.programme = block;
  function.type |= block->type;
  function.elements = static_cast<std::uint32_t>(points + 1);
  block->type = function.type;
  block->elements = static_cast<std::uint32_t>(points);
  if (listener) listener->hearbody(*block);
}

}  // namespace

void openfunction(char *text) {
  Compiler &c = compiler;
  fixsign(text, std::strlen(text));
  if (c.nextframe >= MOST_FRAMES) exceptionjump(messages::PROGRAMME_FULL);
  const Signature s = signature(text);
  Point &function = newpending(ranks::FUNCTION, ISFUNCTION);
  function.arguments = s.arguments;
  function.locals = s.locals;
  function.name = stringdup(text);
  auto *block = static_cast<Point *>(newblock((FIRST_BODY + 1) * sizeof(Point)));
  function.programme = block;
  *block = function;
  block->origin = 0;
  *c.position = function;
  c.pending = {};
  c.frames[c.nextframe++] = {c.position, c.blockend, c.openlocals, c.chain, block + 1};
  c.openlocals = s.locals;
  c.position = block + 1;
  c.blockend = c.position + FIRST_BODY;
}

void endfunction() {
  Compiler &c = compiler;
  sealfunction();
  const Frame &frame = c.frames[--c.nextframe];
  if (c.chain != frame.chain) popsymtabs(c.chain);
  c.chain = frame.chain;
  c.blockend = frame.blockend;
  c.openlocals = frame.counted;
  c.position = frame.point;
  c.pending = *c.position;
  emit();
}

void closefunction(const char *text) {
  Compiler &c = compiler;
  if (c.nextframe == 1) {
    complain("[Trelk] error: No FUNCTION pending!\n");
    return;
  }
  Point &end = newpending(ranks::OPERATOR, ISOPERATOR);
  end.instruction = instructions::FUNCTIONEND;
  end.name = stringdup(text);
  if (c.chain != c.frames[c.nextframe - 1].chain) attachlocalnames(end, c.chain);
  emit();
  endfunction();
}

void endtext(const char *text) {
  Compiler &c = compiler;
  if (c.nextframe > 1) {
    std::fflush(outputstream);
    complain("\nFUNCTION definition pending, the FUNCTION is forcibly finished.\n");
    std::fflush(errorstream);
    const std::size_t length = std::strcspn(text, "\n");
    char name[sizeof "END"] = ".";
    if (length > 0 && length < sizeof name) std::memcpy(name, text, length);
    closefunction(name);
    // Kept: one function is closed. Those around it end at their positions.
    while (c.nextframe > 1) endfunction();
  }
  *c.position = {};
}

}  // namespace morvik
