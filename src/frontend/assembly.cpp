// The loop over tokens: which start condition each leads to, and which action it asks for. A text that a message broke
// off is read on to its end without the actions.
#include "frontend/assembly.h"

#include <algorithm>
#include <csetjmp>

#include "failure/exception.h"
#include "failure/jump.h"
#include "failure/signals.h"
#include "frontend/compiler.h"
#include "frontend/functionwords.h"
#include "frontend/limits.h"
#include "frontend/namewords.h"
#include "frontend/scanner.h"
#include "frontend/tokens.h"
#include "frontend/vectors.h"
#include "frontend/window.h"
#include "frontend/words.h"
#include "spaces/blocks.h"
#include "spaces/characters.h"
#include "spaces/messages.h"
#include "spaces/symbols.h"

namespace morvik {

namespace {

bool isaddressed(Condition condition) {
  return condition == Condition::ADDRESSED || condition == Condition::ADDRESSNAME;
}

void openliterallevel() {
  Compiler &c = compiler;
  ++c.literallevel;
  c.depth = c.literallevel == 1 ? 1 : std::max(c.depth, c.literallevel);
}

// The condition around a literal that has just closed.
Condition closeliterallevel() {
  return --compiler.literallevel > 0 ? Condition::VECTOR : Condition::INITIAL;
}

Condition afterkeyword(const Token &token) {
  const bool form = Keywords[token.row].kind == KeywordKind::MASK_FORM;
  return form && !hasmeaning(token.text) ? Condition::MASKED : Condition::INITIAL;
}

// The condition that a token leads to. Opens and closes the levels of literals, so that it goes ahead of the action.
Condition conditionafter(const Token &token) {
  const Condition now = compiler.condition;
  switch (token.rule) {
    case Rule::KEYWORD:
      return afterkeyword(token);
    case Rule::OPEN_COMMENT:
      return hasmeaning(token.text) ? Condition::INITIAL : Condition::COMMENT;
    case Rule::ADDRESS:
      return Condition::ADDRESSED;
    case Rule::NAME_START:
      return isaddressed(now) ? Condition::ADDRESSNAME : Condition::NAME;
    case Rule::OPEN_STRING:
      openliterallevel();
      return Condition::QUOTED;
    case Rule::OPEN_VECTOR:
    case Rule::OPEN_STRUCTURE:
      openliterallevel();
      return Condition::VECTOR;
    case Rule::CLOSE_STRING:
    case Rule::CLOSE_VECTOR:
    case Rule::CLOSE_STRUCTURE:
    case Rule::CLOSE_TO_NOOP:
    case Rule::CLOSE_SHAPE:
      return closeliterallevel();
    case Rule::STRING_TO_SHAPE:
    case Rule::CLOSE_TO_SHAPE:
      return compiler.literallevel > 1 ? Condition::SUBSHAPE : Condition::SHAPE;
    case Rule::SIGIL_NAME:
    case Rule::BRACKET_NAME:
    case Rule::LABEL:
    case Rule::LOCAL:
    case Rule::NAME_END:
    case Rule::CLOSE_COMMENT:
    case Rule::UNMASKED:
    case Rule::END_OF_INPUT:
      return Condition::INITIAL;
    default:
      return now;
  }
}

void opencomment(const Token &token) {
  if (compiler.condition != Condition::COMMENT) {
    oper(token.text, instructions::NOOP);
    return;
  }
  compiler.builtinnext = false;
  compiler.collecting.length = 0;
}

void closecomment() {
  emitoperator(collected(), instructions::NOOP, instructions::CONTEXT);
}

void closetonoop(const Token &token) {
  closevector(INOUT);
  if (compiler.literallevel == 0) emitoperator(token.text, instructions::NOOP, instructions::NIHIL);
}

// A name that the end of the input ends is whole; whatever else is open is given up. The process ends with its input,
// whatever its name means.
void endofinput(Condition was) {
  Compiler &c = compiler;
  if (was == Condition::NAME || was == Condition::ADDRESSNAME) plainname(collected(), isaddressed(was));
  dropopen();
  emitoperator("", instructions::ENDPROCESS, instructions::NIHIL);
  c.inputended = true;
  c.builtinnext = false;
  *c.position = {};
}

// Does a line feed end the text? While inspecting it is a step of its own; after RUN, the end of the inspection.
bool endsatlinefeed() {
  const Compiler &c = compiler;
  return c.flag == ENDS_TEXT || (c.flag == ENDS_STEP && (stepping || c.inspecting));
}
bool linefeed() {
  if (compiler.flag == ENDS_STEP && stepping) emitoperator("", instructions::ENDPROCESS, instructions::NIHIL);
  return endsatlinefeed();
}

void nameaction(const Token &token, bool address) {
  switch (token.rule) {
    case Rule::SIGIL_NAME:
      return sigilname(token.text[0], token.text + 1, address);
    case Rule::BRACKET_NAME:
      return bracketname(token.text, address);
    case Rule::LABEL:
      return label(token.text, address);
    case Rule::LOCAL:
      return local(token.text, address);
    case Rule::NAME_START:
      compiler.collecting.length = 0;
      return collectbytes(token.text, token.length);
    case Rule::NAME_PART:
      return collectbytes(token.text, token.length);
    default:
      return plainname(collected(), address);
  }
}

void literalaction(const Token &token) {
  switch (token.rule) {
    case Rule::OPEN_STRING:
    case Rule::OPEN_VECTOR:
      return openliteral(ISVECTOR);
    case Rule::OPEN_STRUCTURE:
      return openliteral(ISSCALAR);
    case Rule::CHARACTERS:
      return characters(token.text, token.length);
    case Rule::QUOTED_QUOTE:
      return characters(token.text, 1);
    case Rule::CLOSE_STRING:
      return closestring();
    case Rule::CLOSE_VECTOR:
    case Rule::CLOSE_STRUCTURE:
      return closevector(0);
    case Rule::CLOSE_TO_NOOP:
      return closetonoop(token);
    case Rule::STRING_TO_SHAPE:
    case Rule::CLOSE_TO_SHAPE:
      return openshape(token.rule == Rule::STRING_TO_SHAPE);
    case Rule::EXTENT:
      return extent(token.text, token.length);
    case Rule::CLOSE_SHAPE:
      return closeshape();
    default:
      return elementliteral(token);
  }
}

// The action of a token that was read in the condition `was`. Does it end the text?
[[gnu::always_inline]] inline bool runaction(const Token &token, Condition was) {
  Compiler &c = compiler;
  switch (token.rule) {
    case Rule::END_OF_INPUT:
      endofinput(was);
      return true;
    case Rule::END_OF_TEXT:
      endtext(token.text);
      return true;
    case Rule::LINE_FEED:
      if (!linefeed()) return false;
      endtext(token.text);
      return true;
    case Rule::KEYWORD:
      was == Condition::MASKED ? emitmask() : keyword(Keywords[token.row], token.text);
      return false;
    case Rule::OPEN_FUNCTION:
      openfunction(token.text);
      return false;
    case Rule::CLOSE_FUNCTION:
      closefunction(token.text);
      return false;
    case Rule::BUILTIN:
      c.builtinnext = true;
      return false;
    case Rule::OPEN_COMMENT:
      opencomment(token);
      return false;
    case Rule::COMMENT_TEXT:
      collectbytes(token.text, token.length);
      return false;
    case Rule::CLOSE_COMMENT:
      closecomment();
      return false;
    case Rule::ADDRESS:
      return false;
    case Rule::UNMASKED:
      exception(messages::MASK_WANTED, &c.stackposition, nullptr);
      return false;
    case Rule::SIGIL_NAME:
    case Rule::BRACKET_NAME:
    case Rule::LABEL:
    case Rule::LOCAL:
    case Rule::NAME_START:
    case Rule::NAME_PART:
    case Rule::NAME_END:
      nameaction(token, isaddressed(was));
      return false;
    default:
      literalaction(token);
      return false;
  }
}

// The loop exists twice, so that a listener who is not there costs nothing. Returns the number of Points, END included.
enum class Heard { NO, YES };
template <Heard heard>
std::int64_t compile() {
  Compiler &c = compiler;
  for (;;) {
    const Condition was = c.condition;
    giveupforinterrupt();
    const Token token = scan(was);
    if (token.rule != Rule::LINE_FEED) c.begun = true;
    if (heard == Heard::YES) listener->heartoken(token, was);
    c.condition = conditionafter(token);
    if (runaction(token, was)) return c.position - c.frames[0].start + 1;
  }
}

// ---- What a jump leaves of a text.

void dropline() {
  for (int byte = input(); byte != EOF && byte != '\n'; byte = input()) {
  }
}

void dropname() {
  for (int byte = input(); byte != EOF && byte != NAME_CLOSES; byte = input()) {
  }
  compiler.bracketed = false;
}

// For what the scanner has no storage for: the bytes up to the next blank.
void dropword() {
  for (int byte = input(); byte != EOF && byte > ' '; byte = input()) {
  }
}

bool endstext(const Token &token) {
  switch (token.rule) {
    case Rule::END_OF_INPUT:
    case Rule::END_OF_TEXT:
      return true;
    case Rule::LINE_FEED:
      return endsatlinefeed();
    default:
      return false;
  }
}

void droptext() {
  Compiler &c = compiler;
  if (c.bracketed) dropname();
  while (!isinterruptdeferred()) {
    const Token token = scan(c.condition);
    c.condition = conditionafter(token);
    if (endstext(token)) return;
    if (token.rule == Rule::BRACKET_NAME) dropname();
  }
}

// A jump lands here again where even the dropping fails; some bytes are used up each time. Where a fault came before
// the text began there is nothing to drop.
void recoverinput() {
  Compiler &c = compiler;
  if (!c.begun && !c.dropping && !scanbegun()) return;
  if (c.dropping) dropword();
  c.dropping = true;
  if (c.breaking)
    dropline();
  else
    droptext();
  c.dropping = c.breaking = false;
  c.condition = Condition::INITIAL;
  c.literallevel = 0;
}

void begintext(Point *programme, Context *chain, Point *stackposition, int flag) {
  Compiler &c = compiler;
  c.position = programme;
  c.blockend = programme + PROGRAMME_POINTS;
  c.chain = chain;
  c.stackposition = stackposition;
  c.flag = flag;
  c.inspecting = flag == ENDS_STEP && stepping;
  c.begun = false;
  c.inputended = false;
  c.nextframe = 1;
  c.openlocals = 0;
  c.namereferences = 0;
  c.literallevel = 0;
  c.frames[0] = {programme, c.blockend, 0, chain, programme};
}

}  // namespace

std::int64_t fill(Point *programme, Context *chain, Point *stackposition, std::FILE *stream, const char **string,
                  int flag) {
  begintext(programme, chain, stackposition, flag);
  scanfrom(stream, string ? *string : nullptr);
  std::int64_t points = 0;
  Landing outer;
  armlanding(outer, abandontext);
  if (setjmp(error_jump) == 0) {
    safepoint();
    points = listener ? compile<Heard::YES>() : compile<Heard::NO>();
  } else {
    recoverinput();
  }
  disarmlanding(outer);
  dereference(compiler.collecting.bytes);
  compiler.collecting = {};
  if (string) *string = scanposition();
  scandone();
  return points;
}

bool inputended() {
  return compiler.inputended;
}

}  // namespace morvik
