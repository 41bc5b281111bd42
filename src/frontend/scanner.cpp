// The rules of the ten start conditions. In each the longest match wins, and of equal ones the earlier rule; what was
// looked at beyond the match is read again.
#include "frontend/scanner.h"

#include "frontend/numerals.h"
#include "frontend/tokens.h"
#include "frontend/vocabulary.h"
#include "frontend/window.h"

namespace morvik {

using window::begin;
using window::BLANK;
using window::BLANKORTAB;
using window::DIGIT;
using window::dropbyte;
using window::DROPPEDINNAME;
using window::Ended;
using window::FEEDORBLANK;
using window::INADDRESSNAME;
using window::INCOMMENT;
using window::INNAME;
using window::INSTRING;
using window::is;
using window::LONGEST_RUN;
using window::MINUS;
using window::NAMEBEGIN;
using window::NAMEBYTE;
using window::OPENSMEMBER;
using window::pass;
using window::peek;
using window::skip;
using window::SKIPPED;
using window::state;
using window::take;
using window::WHITE;

namespace {

constexpr int NAMEOPENER = 2;

// Of the number matched last.
Decimal decimal;

Token token(Rule rule, std::size_t length, std::uint16_t row = 0) {
  return {rule, row, take(length), length, &decimal};
}
Token token(const Match &match) {
  return token(match.rule, match.length);
}

// Both ends of input end it once: the NUL is used up.
Token endofinput() {
  state.ended = Ended::BY_END;
  return token(Rule::ENDOFINPUT, 0);
}

// The default rule.
void echo() {
  putchar_unlocked(peek(0));
  dropbyte();
}

struct Word {
  std::size_t length;   // of the text
  std::size_t matched;  // with the boundary byte; 0: no word
  vocabulary::Terminal end;
};

// The best of the words that count in this set. Looks no further than the first byte that no word goes on with.
Word matchword(vocabulary::Set set) {
  Word best = {0, 0, {}};
  const auto consider = [&best, set](std::size_t length, std::size_t matched, const vocabulary::Terminal &end) {
    if ((end.sets & set) == 0) return;
    if (matched > best.matched || (matched == best.matched && end.order < best.end.order))
      best = {length, matched, end};
  };
  const vocabulary::Node *node = vocabulary::first(peek(0));
  for (std::size_t length = 1; node; ++length) {
    if (!node->end.bounded) {
      consider(length, length, node->end);
      if (node->firstchild == 0) break;
    }
    const int next = peek(length);
    if (node->end.bounded && isboundary(next)) consider(length, length + 1, node->end);
    node = vocabulary::child(*node, next);
  }
  return best;
}

Token token(const Word &word) {
  return token(word.end.rule, word.length, word.end.row);
}

// ARGS n FUNCTION, VARS m NILADIC and their like, from the first count on: 0, or the length without the boundary byte.
// Two counts stand among line feeds and blanks only, and before the last word only blanks.
std::size_t matchcountedfunction() {
  const bool args = peek(0) == 'A';
  if (!matchbytes(0, args ? "ARGS" : "VARS")) return 0;
  const std::size_t before = pass(4, WHITE), count = matchcount(before);
  if (count == 0) return 0;
  const std::size_t after = pass(count, WHITE);
  const bool narrow = pass(4, FEEDORBLANK, before) == before && pass(count, FEEDORBLANK, after) == after;
  const char *word = nullptr;
  switch (peek(after)) {
    case 'F':
      word = args ? "FUNCTION" : nullptr;
      break;
    case 'N':
      word = args ? nullptr : peek(after + 1) == 'E' ? "NEADIC" : "NILADIC";
      break;
    case 'M':
      word = args ? nullptr : "MONADIC";
      break;
    case 'D':
      word = args ? nullptr : "DYADIC";
      break;
    case 'T':
      word = args ? nullptr : "TRIADIC";
      break;
  }
  std::size_t at = after;
  if (!word) {
    if (!narrow || !matchbytes(after, args ? "VARS" : "ARGS")) return 0;
    const std::size_t second = matchcount(pass(after + 4, FEEDORBLANK));
    if (second == 0) return 0;
    at = pass(second, BLANK);
    word = "FUNCTION";
  }
  if (!matchbytes(at, word)) return 0;
  for (; *word; ++word) ++at;
  return isboundary(peek(at)) ? at : 0;
}

// _name $name .name %name, a sigil before the byte that opens a name, &n; the text's length, 0 for none.
Match matchsigil(int first) {
  switch (first) {
    case '_':
    case '$':
    case '.': {
      const int next = peek(1);
      if (next == NAMEOPENER) return {2, Rule::BRACKETNAME};
      return {is(next, NAMEBEGIN) ? pass(2, NAMEBYTE) : 0, Rule::SIGILNAME};
    }
    case '%':
      return {is(peek(1), NAMEBEGIN) ? pass(2, NAMEBYTE) : 0, Rule::LABEL};
    case '&':
      return {matchcount(1), Rule::LOCAL};
    case NAMEOPENER:
      return {1, Rule::BRACKETNAME};
    default:
      return {0, Rule::NAMESTART};
  }
}

// What else than a word or a number begins with this byte.
Match matchother(int first) {
  switch (first) {
    case '\n':
      return {1, Rule::LINEFEED};
    case '\'':
      return {1, Rule::OPENSTRING};
    case '(':
      return {1, Rule::OPENVECTOR};
    case '`':
      return peek(1) == '(' ? Match{2, Rule::OPENSTRUCTURE} : matchbinarycharacter();
    case '@':
      return {1, Rule::ADDRESS};
    case '0':
      return matchbinary();
    case 'A':
    case 'V':
      return {matchcountedfunction(), Rule::OPENFUNCTION};
    default:
      return matchsigil(first);
  }
}

// -NaN is a minus and a name, though NaN alone is a number.
bool minusbeforename() {
  return peek(0) == '-' && (matchbytes(1, "NaN") || matchbytes(1, "nan"));
}

Token scaninitial() {
  const int first = skip(SKIPPED);
  if (first == EOF) return endofinput();
  if (state.namenext) {
    state.namenext = false;
    return token(Rule::NAMESTART, 1);
  }
  Match match = matchother(first);
  if (match.length == 0) match = matchnumber(decimal);
  if (is(first, DIGIT)) return token(match);
  Word word = matchword(vocabulary::INITIAL);
  if (word.matched == 0 || word.matched < match.length)
    return token(match.length != 0 ? match : Match{1, Rule::NAMESTART});
  state.namenext = minusbeforename();
  if (word.end.rule == Rule::ENDOFTEXT && peek(word.length) == '\n') ++word.length;
  return token(word);
}

// No white space begins a name: it is dropped like any byte that no rule matches.
Token scanaddressed() {
  for (;; echo()) {
    const int first = peek(0);
    if (first == EOF) return endofinput();
    if (is(first, WHITE)) continue;
    const Match sigil = matchsigil(first);
    return token(sigil.length != 0 ? sigil : Match{1, Rule::NAMESTART});
  }
}

Token closevector() {
  const int next = peek(1);
  if (next == '[') return peek(2) == ']' ? token(Rule::CLOSETONOOP, 3) : token(Rule::CLOSETOSHAPE, 2);
  if (next == '\t' && peek(2) == '[') return token(Rule::CLOSETOSHAPE, 3);
  if (next != '`') return token(Rule::CLOSEVECTOR, 1);
  return peek(2) == '[' ? token(Rule::CLOSETOSHAPE, 3) : token(Rule::CLOSESTRUCTURE, 2);
}

Token scanvector() {
  for (;; echo()) {
    const int first = skip(WHITE);
    if (first == EOF) return endofinput();
    if (first == ')') return closevector();
    Match match = {0, Rule::INTEGER};
    if (first == '0' || is(first, OPENSMEMBER)) match = matchother(first);
    if (match.length == 0) match = matchnumber(decimal);
    // No word of a vector begins as a number does, but for those that begin with its prefix.
    if (match.length != 0 && is(first, DIGIT | MINUS)) return token(match);
    const Word word = matchword(vocabulary::VECTOR);
    if (word.matched != 0 && word.matched >= match.length) return token(word);
    if (match.length != 0) return token(match);
  }
}

Token scanshape(bool white) {
  for (;; echo()) {
    const int first = white ? skip(WHITE) : peek(0);
    if (first == EOF) return endofinput();
    if (first == ']') return token(Rule::CLOSESHAPE, 1);
    if (const std::size_t length = matchcount(0)) return token(Rule::EXTENT, length);
  }
}

Token closestring() {
  const int next = peek(1);
  if (next == '\'') return token(Rule::QUOTEDQUOTE, 2);
  if (next == '[') return token(Rule::STRINGTOSHAPE, 2);
  if (next == '\t' && peek(2) == '[') return token(Rule::STRINGTOSHAPE, 3);
  return token(Rule::CLOSESTRING, 1);
}

Token scanquoted() {
  for (;; echo()) {
    const int first = peek(0);
    if (first == EOF) return endofinput();
    if (first == '"') continue;
    if (first == '\'') return closestring();
    if (first == '`')
      if (const Match match = matchbinarycharacter(); match.length != 0) return token(match);
    return token(Rule::CHARACTERS, pass(1, INSTRING, LONGEST_RUN));
  }
}

Token scancomment() {
  const int first = peek(0);
  if (first == EOF) return endofinput();
  if (!is(first, INCOMMENT)) return token(Rule::CLOSECOMMENT, 1);
  return token(Rule::COMMENTTEXT, pass(1, INCOMMENT, LONGEST_RUN));
}

// A line feed goes by the default rule; anything else but MASK is left for the rules of INITIAL.
Token scanmasked() {
  for (;; echo()) {
    const int first = skip(BLANKORTAB);
    if (first == EOF) return endofinput();
    if (first == '\n') continue;
    const Word word = matchword(vocabulary::MASKED);
    return word.matched != 0 ? token(word) : token(Rule::UNMASKED, 0);
  }
}

Token scanname(std::uint16_t classes) {
  for (;; echo()) {
    const int first = peek(0);
    if (first == EOF) return endofinput();
    if (is(first, classes)) return token(Rule::NAMEPART, pass(1, classes, LONGEST_RUN));
    if (!is(first, DROPPEDINNAME)) return token(Rule::NAMEEND, 0);
  }
}

}  // namespace

Token scan(Condition condition) {
  begin();
  switch (condition) {
    case Condition::INITIAL:
      return scaninitial();
    case Condition::ADDRESSED:
      return scanaddressed();
    case Condition::VECTOR:
      return scanvector();
    case Condition::SHAPE:
      return scanshape(true);
    case Condition::SUBSHAPE:
      return scanshape(false);
    case Condition::QUOTED:
      return scanquoted();
    case Condition::COMMENT:
      return scancomment();
    case Condition::MASKED:
      return scanmasked();
    case Condition::NAME:
      return scanname(INNAME);
    case Condition::ADDRESSNAME:
      return scanname(INADDRESSNAME);
  }
  return endofinput();
}

}  // namespace morvik
