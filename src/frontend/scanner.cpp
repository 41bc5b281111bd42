// The rules of the ten start conditions. In each the longest match wins, and of equal ones the earlier rule; what was
// looked at beyond the match is read again.
#include "frontend/scanner.h"

#include "frontend/numerals.h"
#include "frontend/tokens.h"
#include "frontend/vocabulary.h"
#include "frontend/window.h"
#include "spaces/characters.h"

namespace morvik {

using window::begintoken;
using window::BLANK;
using window::BLANK_OR_TAB;
using window::DIGIT;
using window::dropbyte;
using window::DROPPED_IN_NAME;
using window::endtoken;
using window::FEED_OR_BLANK;
using window::IN_ADDRESS_NAME;
using window::IN_COMMENT;
using window::IN_NAME;
using window::IN_STRING;
using window::isinclass;
using window::LONGEST_RUN;
using window::MINUS;
using window::NAME_BEGIN;
using window::NAME_BYTE;
using window::OPENS_MEMBER;
using window::passbytes;
using window::peekbyte;
using window::skipbytes;
using window::SKIPPED;
using window::SourceEnd;
using window::WHITE;
using window::windowstate;

namespace {

// Of the number matched last.
Decimal decimal;

Token maketoken(Rule rule, std::size_t length, std::uint16_t row = 0) {
  return {rule, row, endtoken(length), length, &decimal};
}
Token maketoken(const Match &match) {
  return maketoken(match.rule, match.length);
}

// Both ends of input end it once: the NUL is used up.
Token endofinput() {
  windowstate.ended = SourceEnd::BY_END;
  return maketoken(Rule::END_OF_INPUT, 0);
}

// The default rule.
void echo() {
  putchar_unlocked(peekbyte(0));
  dropbyte();
}

struct MatchedWord {
  std::size_t length;   // of the text
  std::size_t matched;  // with the boundary byte; 0: no word
  vocabulary::Terminal end;
};

// The best of the words that count in this set. Looks no further than the first byte that no word goes on with.
MatchedWord matchword(vocabulary::ConditionSet set) {
  MatchedWord best = {0, 0, {}};
  const auto consider = [&best, set](std::size_t length, std::size_t matched, const vocabulary::Terminal &end) {
    if ((end.sets & set) == 0) return;
    if (matched > best.matched || (matched == best.matched && end.order < best.end.order))
      best = {length, matched, end};
  };
  const vocabulary::Node *node = vocabulary::firstnode(peekbyte(0));
  for (std::size_t length = 1; node; ++length) {
    if (!node->end.bounded) {
      consider(length, length, node->end);
      if (node->firstchild == 0) break;
    }
    const int next = peekbyte(length);
    if (node->end.bounded && isboundary(next)) consider(length, length + 1, node->end);
    node = vocabulary::childnode(*node, next);
  }
  return best;
}

Token maketoken(const MatchedWord &word) {
  return maketoken(word.end.rule, word.length, word.end.row);
}

// ARGS n FUNCTION, VARS m NILADIC and their like, from the first count on: 0, or the length without the boundary byte.
// Two counts have line feeds and blanks only between them, and before the last word only blanks.
std::size_t matchcountedfunction() {
  const bool args = peekbyte(0) == 'A';
  if (!matchbytes(0, args ? "ARGS" : "VARS")) return 0;
  const std::size_t before = passbytes(4, WHITE), count = matchcount(before);
  if (count == 0) return 0;
  const std::size_t after = passbytes(count, WHITE);
  const bool narrow = passbytes(4, FEED_OR_BLANK, before) == before && passbytes(count, FEED_OR_BLANK, after) == after;
  const char *word = nullptr;
  switch (peekbyte(after)) {
    case 'F':
      word = args ? "FUNCTION" : nullptr;
      break;
    case 'N':
      word = args ? nullptr : peekbyte(after + 1) == 'E' ? "NEADIC" : "NILADIC";
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
    const std::size_t second = matchcount(passbytes(after + 4, FEED_OR_BLANK));
    if (second == 0) return 0;
    at = passbytes(second, BLANK);
    word = "FUNCTION";
  }
  if (!matchbytes(at, word)) return 0;
  for (; *word; ++word) ++at;
  return isboundary(peekbyte(at)) ? at : 0;
}

// _name $name .name %name, a sigil before the byte that opens a name, &n; the text's length, 0 for none.
Match matchsigil(int first) {
  switch (first) {
    case '_':
    case '$':
    case '.': {
      const int next = peekbyte(1);
      if (next == NAME_OPENS) return {2, Rule::BRACKET_NAME};
      return {isinclass(next, NAME_BEGIN) ? passbytes(2, NAME_BYTE) : 0, Rule::SIGIL_NAME};
    }
    case '%':
      return {isinclass(peekbyte(1), NAME_BEGIN) ? passbytes(2, NAME_BYTE) : 0, Rule::LABEL};
    case '&':
      return {matchcount(1), Rule::LOCAL};
    case NAME_OPENS:
      return {1, Rule::BRACKET_NAME};
    default:
      return {0, Rule::NAME_START};
  }
}

// What else than a word or a number begins with this byte.
Match matchother(int first) {
  switch (first) {
    case '\n':
      return {1, Rule::LINE_FEED};
    case '\'':
      return {1, Rule::OPEN_STRING};
    case '(':
      return {1, Rule::OPEN_VECTOR};
    case '`':
      return peekbyte(1) == '(' ? Match{2, Rule::OPEN_STRUCTURE} : matchbinarycharacter();
    case '@':
      return {1, Rule::ADDRESS};
    case '0':
      return matchbinary();
    case 'A':
    case 'V':
      return {matchcountedfunction(), Rule::OPEN_FUNCTION};
    default:
      return matchsigil(first);
  }
}

// -NaN is a minus and a name, though NaN alone is a number.
bool minusbeforename() {
  return peekbyte(0) == '-' && (matchbytes(1, "NaN") || matchbytes(1, "nan"));
}

Token scaninitial() {
  const int first = skipbytes(SKIPPED);
  if (first == EOF) return endofinput();
  if (windowstate.namenext) {
    windowstate.namenext = false;
    return maketoken(Rule::NAME_START, 1);
  }
  Match match = matchother(first);
  if (match.length == 0) match = matchnumber(decimal);
  if (isinclass(first, DIGIT)) return maketoken(match);
  MatchedWord word = matchword(vocabulary::INITIAL);
  if (word.matched == 0 || word.matched < match.length)
    return maketoken(match.length != 0 ? match : Match{1, Rule::NAME_START});
  windowstate.namenext = minusbeforename();
  if (word.end.rule == Rule::END_OF_TEXT && peekbyte(word.length) == '\n') ++word.length;
  return maketoken(word);
}

// No white space begins a name: it is dropped like any byte that no rule matches.
Token scanaddressed() {
  for (;; echo()) {
    const int first = peekbyte(0);
    if (first == EOF) return endofinput();
    if (isinclass(first, WHITE)) continue;
    const Match sigil = matchsigil(first);
    return maketoken(sigil.length != 0 ? sigil : Match{1, Rule::NAME_START});
  }
}

Token closevector() {
  const int next = peekbyte(1);
  if (next == '[') return peekbyte(2) == ']' ? maketoken(Rule::CLOSE_TO_NOOP, 3) : maketoken(Rule::CLOSE_TO_SHAPE, 2);
  if (next == '\t' && peekbyte(2) == '[') return maketoken(Rule::CLOSE_TO_SHAPE, 3);
  if (next != '`') return maketoken(Rule::CLOSE_VECTOR, 1);
  return peekbyte(2) == '[' ? maketoken(Rule::CLOSE_TO_SHAPE, 3) : maketoken(Rule::CLOSE_STRUCTURE, 2);
}

Token scanvector() {
  for (;; echo()) {
    const int first = skipbytes(WHITE);
    if (first == EOF) return endofinput();
    if (first == ')') return closevector();
    Match match = {0, Rule::INTEGER};
    if (first == '0' || isinclass(first, OPENS_MEMBER)) match = matchother(first);
    if (match.length == 0) match = matchnumber(decimal);
    // No word of a vector begins as a number does, but for those that begin with its prefix.
    if (match.length != 0 && isinclass(first, DIGIT | MINUS)) return maketoken(match);
    const MatchedWord word = matchword(vocabulary::VECTOR);
    if (word.matched != 0 && word.matched >= match.length) return maketoken(word);
    if (match.length != 0) return maketoken(match);
  }
}

Token scanshape(bool white) {
  for (;; echo()) {
    const int first = white ? skipbytes(WHITE) : peekbyte(0);
    if (first == EOF) return endofinput();
    if (first == ']') return maketoken(Rule::CLOSE_SHAPE, 1);
    if (const std::size_t length = matchcount(0)) return maketoken(Rule::EXTENT, length);
  }
}

Token closestring() {
  const int next = peekbyte(1);
  if (next == '\'') return maketoken(Rule::QUOTED_QUOTE, 2);
  if (next == '[') return maketoken(Rule::STRING_TO_SHAPE, 2);
  if (next == '\t' && peekbyte(2) == '[') return maketoken(Rule::STRING_TO_SHAPE, 3);
  return maketoken(Rule::CLOSE_STRING, 1);
}

Token scanquoted() {
  for (;; echo()) {
    const int first = peekbyte(0);
    if (first == EOF) return endofinput();
    if (first == '"') continue;
    if (first == '\'') return closestring();
    if (first == '`')
      if (const Match match = matchbinarycharacter(); match.length != 0) return maketoken(match);
    return maketoken(Rule::CHARACTERS, passbytes(1, IN_STRING, LONGEST_RUN));
  }
}

Token scancomment() {
  const int first = peekbyte(0);
  if (first == EOF) return endofinput();
  if (!isinclass(first, IN_COMMENT)) return maketoken(Rule::CLOSE_COMMENT, 1);
  return maketoken(Rule::COMMENT_TEXT, passbytes(1, IN_COMMENT, LONGEST_RUN));
}

// A line feed goes by the default rule; anything else but MASK is left for the rules of INITIAL.
Token scanmasked() {
  for (;; echo()) {
    const int first = skipbytes(BLANK_OR_TAB);
    if (first == EOF) return endofinput();
    if (first == '\n') continue;
    const MatchedWord word = matchword(vocabulary::MASKED);
    return word.matched != 0 ? maketoken(word) : maketoken(Rule::UNMASKED, 0);
  }
}

Token scanname(std::uint16_t classes) {
  for (;; echo()) {
    const int first = peekbyte(0);
    if (first == EOF) return endofinput();
    if (isinclass(first, classes)) return maketoken(Rule::NAME_PART, passbytes(1, classes, LONGEST_RUN));
    if (!isinclass(first, DROPPED_IN_NAME)) return maketoken(Rule::NAME_END, 0);
  }
}

}  // namespace

Token scan(Condition condition) {
  begintoken();
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
      return scanname(IN_NAME);
    case Condition::ADDRESSNAME:
      return scanname(IN_ADDRESS_NAME);
  }
  return endofinput();
}

}  // namespace morvik
