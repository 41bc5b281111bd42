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
#include "spaces/symbols.h"

namespace morvik {

namespace {

constexpr std::int32_t MASK_WANTED = 982;
constexpr int CLOSES_NAME = 3;

bool isaddressed(Condition condition) {
  return condition == Condition::ADDRESSED || condition == Condition::ADDRESSNAME;
}

void openlevel() {
  Compiler &c = compiler;
  ++c.subvector;
  c.depth = c.subvector == 1 ? 1 : std::max(c.depth, c.subvector);
}

// The condition around a literal that has just closed.
Condition closelevel() {
  return --compiler.subvector > 0 ? Condition::VECTOR : Condition::INITIAL;
}

Condition afterkeyword(const Token &token) {
  const bool form = Keywords[token.row].kind == KeywordKind::MASKFORM;
  return form && !hasmeaning(token.text) ? Condition::MASKED : Condition::INITIAL;
}

// The condition that a token leads to. Opens and closes the levels of literals, so that it goes ahead of the action.
Condition after(const Token &token) {
  const Condition now = compiler.condition;
  switch (token.rule) {
    case Rule::KEYWORD:
      return afterkeyword(token);
    case Rule::OPENCOMMENT:
      return hasmeaning(token.text) ? Condition::INITIAL : Condition::COMMENT;
    case Rule::ADDRESS:
      return Condition::ADDRESSED;
    case Rule::NAMESTART:
      return isaddressed(now) ? Condition::ADDRESSNAME : Condition::NAME;
    case Rule::OPENSTRING:
      openlevel();
      return Condition::QUOTED;
    case Rule::OPENVECTOR:
    case Rule::OPENSTRUCTURE:
      openlevel();
      return Condition::VECTOR;
    case Rule::CLOSESTRING:
    case Rule::CLOSEVECTOR:
    case Rule::CLOSESTRUCTURE:
    case Rule::CLOSETONOOP:
    case Rule::CLOSESHAPE:
      return closelevel();
    case Rule::STRINGTOSHAPE:
    case Rule::CLOSETOSHAPE:
      return compiler.subvector > 1 ? Condition::SUBSHAPE : Condition::SHAPE;
    case Rule::SIGILNAME:
    case Rule::BRACKETNAME:
    case Rule::LABEL:
    case Rule::LOCAL:
    case Rule::NAMEEND:
    case Rule::CLOSECOMMENT:
    case Rule::UNMASKED:
    case Rule::ENDOFINPUT:
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
  compiler.morvik_op = false;
  compiler.operat.length = 0;
}

void closecomment() {
  appendoperator(collected(), instructions::NOOP, instructions::CONTEXT);
}

void closetonoop(const Token &token) {
  closevector(INOUT);
  if (compiler.subvector == 0) appendoperator(token.text, instructions::NOOP, instructions::NIHIL);
}

// A name that the end of the input ends is whole; whatever else is open is given up. The process ends with its input,
// whatever its name means.
void endofinput(Condition was) {
  Compiler &c = compiler;
  if (was == Condition::NAME || was == Condition::ADDRESSNAME) plainname(collected(), isaddressed(was));
  dropopen();
  appendoperator("", instructions::ENDPROCESS, instructions::NIHIL);
  c.inputended = true;
  c.morvik_op = false;
  *c.position = {};
}

// Does a line feed end the text? While inspecting it is a step of its own; after RUN, the end of the inspection.
bool endsatlinefeed() {
  const Compiler &c = compiler;
  return c.flag == ENDS_TEXT || (c.flag == ENDS_STEP && (stepping || c.inspecting));
}
bool linefeed() {
  if (compiler.flag == ENDS_STEP && stepping) appendoperator("", instructions::ENDPROCESS, instructions::NIHIL);
  return endsatlinefeed();
}

void name(const Token &token, bool address) {
  switch (token.rule) {
    case Rule::SIGILNAME:
      return sigilname(token.text[0], token.text + 1, address);
    case Rule::BRACKETNAME:
      return bracketname(token.text, address);
    case Rule::LABEL:
      return label(token.text, address);
    case Rule::LOCAL:
      return local(token.text, address);
    case Rule::NAMESTART:
      compiler.operat.length = 0;
      return collect(token.text, token.length);
    case Rule::NAMEPART:
      return collect(token.text, token.length);
    default:
      return plainname(collected(), address);
  }
}

void literal(const Token &token) {
  switch (token.rule) {
    case Rule::OPENSTRING:
    case Rule::OPENVECTOR:
      return openliteral(ISVECTOR);
    case Rule::OPENSTRUCTURE:
      return openliteral(ISSCALAR);
    case Rule::CHARACTERS:
      return characters(token.text, token.length);
    case Rule::QUOTEDQUOTE:
      return characters(token.text, 1);
    case Rule::CLOSESTRING:
      return closestring();
    case Rule::CLOSEVECTOR:
    case Rule::CLOSESTRUCTURE:
      return closevector(0);
    case Rule::CLOSETONOOP:
      return closetonoop(token);
    case Rule::STRINGTOSHAPE:
    case Rule::CLOSETOSHAPE:
      return openshape(token.rule == Rule::STRINGTOSHAPE);
    case Rule::EXTENT:
      return extent(token.text, token.length);
    case Rule::CLOSESHAPE:
      return closeshape();
    default:
      return elementliteral(token);
  }
}

// The action of a token that was read in the condition `was`. Does it end the text?
bool act(const Token &token, Condition was) {
  Compiler &c = compiler;
  switch (token.rule) {
    case Rule::ENDOFINPUT:
      endofinput(was);
      return true;
    case Rule::ENDOFTEXT:
      endtext(token.text);
      return true;
    case Rule::LINEFEED:
      if (!linefeed()) return false;
      endtext(token.text);
      return true;
    case Rule::KEYWORD:
      was == Condition::MASKED ? mask() : keyword(Keywords[token.row], token.text);
      return false;
    case Rule::OPENFUNCTION:
      openfunction(token.text);
      return false;
    case Rule::CLOSEFUNCTION:
      closefunction(token.text);
      return false;
    case Rule::BUILTIN:
      c.morvik_op = true;
      return false;
    case Rule::OPENCOMMENT:
      opencomment(token);
      return false;
    case Rule::COMMENTTEXT:
      collect(token.text, token.length);
      return false;
    case Rule::CLOSECOMMENT:
      closecomment();
      return false;
    case Rule::ADDRESS:
      return false;
    case Rule::UNMASKED:
      exception(MASK_WANTED, &c.stackposition, nullptr);
      return false;
    case Rule::SIGILNAME:
    case Rule::BRACKETNAME:
    case Rule::LABEL:
    case Rule::LOCAL:
    case Rule::NAMESTART:
    case Rule::NAMEPART:
    case Rule::NAMEEND:
      name(token, isaddressed(was));
      return false;
    default:
      literal(token);
      return false;
  }
}

// Returns the number of Points, END included.
std::int64_t compile() {
  Compiler &c = compiler;
  for (;;) {
    const Condition was = c.condition;
    const Token token = scan(was);
    if (token.rule != Rule::LINEFEED) c.begun = true;
    c.condition = after(token);
    if (act(token, was)) return c.position - c.returnstack[0].start + 1;
  }
}

// ---- What a jump leaves of a text.

void dropline() {
  for (int byte = input(); byte != EOF && byte != '\n'; byte = input()) {
  }
}

void dropname() {
  for (int byte = input(); byte != EOF && byte != CLOSES_NAME; byte = input()) {
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
    case Rule::ENDOFINPUT:
    case Rule::ENDOFTEXT:
      return true;
    case Rule::LINEFEED:
      return endsatlinefeed();
    default:
      return false;
  }
}

void droptext() {
  Compiler &c = compiler;
  if (c.bracketed) dropname();
  for (;;) {
    const Token token = scan(c.condition);
    c.condition = after(token);
    if (endstext(token)) return;
    if (token.rule == Rule::BRACKETNAME) dropname();
  }
}

// A jump lands here again where even the dropping fails; some bytes are used up each time. Where a fault came before
// the text began there is nothing to drop.
void recover() {
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
  c.subvector = 0;
}

void begin(Point *programme, Context *chain, Point *stackposition, int flag) {
  Compiler &c = compiler;
  c.position = programme;
  c.pctop = programme + PROGRAMME_POINTS;
  c.chain = chain;
  c.stackposition = stackposition;
  c.flag = flag;
  c.inspecting = flag == ENDS_STEP && stepping;
  c.begun = false;
  c.inputended = false;
  c.pcsp = 1;
  c.funcvars = 0;
  c.varsp = 0;
  c.subvector = 0;
  c.returnstack[0] = {programme, c.pctop, 0, chain, programme};
}

}  // namespace

std::int64_t fill(Point *programme, Context *chain, Point *stackposition, std::FILE *stream, const char **string,
                  int flag) {
  begin(programme, chain, stackposition, flag);
  scanfrom(stream, string ? *string : nullptr);
  std::int64_t points = 0;
  Landing outer;
  armlanding(outer, abandon);
  if (setjmp(error_jump) == 0) {
    safepoint();
    points = compile();
  } else {
    recover();
  }
  disarmlanding(outer);
  dereference(compiler.operat.bytes);
  compiler.operat = {};
  if (string) *string = scanposition();
  scandone();
  return points;
}

bool inputended() {
  return compiler.inputended;
}

}  // namespace morvik
