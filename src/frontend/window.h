// The scanner's window on its input: the bytes of the token at work, those looked at beyond it, and where more come
// from. A byte is taken from the source only when it is asked for, so that a terminal never waits for one too many.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "frontend/tokens.h"

namespace morvik {

namespace window {

// No run of bytes that the scanner returns is longer.
inline constexpr std::size_t LONGEST_RUN = 16384;

// Classes of bytes. NUL and the end of input belong to none.
enum ByteClass : std::uint16_t {
  DIGIT = 1,
  BINARY_DIGIT = 2,       // 0 1 |
  NAME_BEGIN = 4,         // A-Z a-z _
  NAME_BYTE = 8,          // 0-9 A-Z a-z _; all others but NUL are boundaries
  SKIPPED = 16,           // tab, carriage return, blank
  WHITE = 32,             // these and line feed
  IN_NAME = 64,           // goes on with a plain name
  IN_ADDRESS_NAME = 128,  // the same after @
  IN_STRING = 256,        // part of a string wherever it is
  IN_COMMENT = 512,
  DROPPED_IN_NAME = 1024,  // " ( ) |
  BLANK = 2048,            // blank alone
  BLANK_OR_TAB = 4096,
  FEED_OR_BLANK = 8192,  // line feed, blank
  MINUS = 16384,         // - and the high minus
  OPENS_MEMBER = 32768,  // ' ( `
};

constexpr bool oneof(int byte, const char *set) {
  for (; *set; ++set)
    if (byte == static_cast<unsigned char>(*set)) return true;
  return false;
}

constexpr std::uint16_t classesof(int byte) {
  const bool digit = byte >= '0' && byte <= '9';
  const bool letter = (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
  unsigned classes = 0;
  if (byte == 0) return 0;
  if (digit) classes |= DIGIT;
  if (oneof(byte, "01|")) classes |= BINARY_DIGIT;
  if (letter || byte == '_') classes |= NAME_BEGIN;
  if (letter || digit || byte == '_') classes |= NAME_BYTE;
  if (oneof(byte, "\t\r ")) classes |= SKIPPED;
  if (oneof(byte, "\t\n\r ")) classes |= WHITE;
  if (!oneof(byte, "\t\n\r !.;\"()|")) classes |= IN_NAME;
  if (!oneof(byte, "\t\n\r .;\"()|")) classes |= IN_ADDRESS_NAME;
  if (!oneof(byte, "'\"`")) classes |= IN_STRING;
  if (!oneof(byte, "\"\xBC")) classes |= IN_COMMENT;
  if (oneof(byte, "\"()|")) classes |= DROPPED_IN_NAME;
  if (byte == ' ') classes |= BLANK;
  if (oneof(byte, " \t")) classes |= BLANK_OR_TAB;
  if (oneof(byte, "\n ")) classes |= FEED_OR_BLANK;
  if (oneof(byte, "-\xAF")) classes |= MINUS;
  if (oneof(byte, "'(`")) classes |= OPENS_MEMBER;
  return static_cast<std::uint16_t>(classes);
}

struct ClassTable {
  std::uint16_t row[256];
};
constexpr ClassTable makebyteclasses() {
  ClassTable table = {};
  for (int byte = 0; byte < 256; ++byte) table.row[byte] = classesof(byte);
  return table;
}
inline constexpr ClassTable ByteClasses = makebyteclasses();

// False for EOF.
inline bool isinclass(int byte, std::uint16_t classes) {
  return byte >= 0 && (ByteClasses.row[byte] & classes) != 0;
}

// What follows the last byte taken in the source.
enum class SourceEnd : std::uint8_t { NOT, BY_NUL, BY_END };

struct WindowState {
  char *bytes;  // the window; one byte more than `capacity`, for the zero after a token
  std::size_t capacity;
  std::size_t token;      // where the token at work begins
  std::size_t filled;     // the bytes from `token` to here are taken from the source and not used
  std::FILE *stream;      // the source, while `string` is null
  const char *string;     // the byte to be taken next
  const char *beginning;  // of the string
  SourceEnd ended;
  bool namenext;  // the last token was a minus that makes a name of what follows
  bool holding;   // `zero` holds a zero in place of `held`
  char held;
  std::size_t zero;
};
extern WindowState windowstate;

// Takes one more byte. EOF at the end of input. Reports 27 and jumps, with nothing lost.
int fetchbyte();

// The byte so many places after the beginning of the token; all before it have been looked at.
inline int peekbyte(std::size_t at) {
  const std::size_t place = windowstate.token + at;
  return place < windowstate.filled ? static_cast<unsigned char>(windowstate.bytes[place]) : fetchbyte();
}

// Passes the bytes of these classes from a place on, but none from `limit` on. Returns the place after them, which has
// been looked at if it is below the limit.
std::size_t passbytes(std::size_t at, std::uint16_t classes, std::size_t limit = SIZE_MAX);

// The same for digits, which are written behind those of `number`, modulo 2^64.
std::size_t passdigits(std::size_t at, std::uint64_t &number);

// Comes before any peek for a new token: the last one is done with.
void begintoken();
// Drops the first byte, which has been looked at.
inline void dropbyte() {
  if (++windowstate.token == windowstate.filled) windowstate.token = windowstate.filled = 0;
}
// Drops the bytes of these classes, as many as come. Returns the first other one, EOF at the end of input.
int skipbytes(std::uint16_t classes);
// Ends the token: its first `length` bytes as a zero-terminated text, good until the next begintoken() or yyunput().
char *endtoken(std::size_t length);

}  // namespace window

// What is read from now on: the string if it is not null (a NUL ends it), else the stream.
void scanfrom(std::FILE *stream, const char *string);
// Where the string that is being read has been read to.
const char *scanposition();
// The end of a text: what was looked at but not used goes back to the stream, so that whoever reads the stream next
// meets it. That is a byte or two at the end of a text (in `.]x` the text ends at the point); of more, after a failure,
// nothing goes back. Nothing is read after it until the next scanfrom.
void scandone();

// The next member of a vector where it is a plain number, that is digits, perhaps with a minus ahead and a point among
// them, and white space after them; that is dropped too. Reads no further than scan does. False for anything else,
// which scan meets next.
bool scanplain(Token &token);
// Were bytes read that no token has used yet?
bool scanbegun();
// The next byte, EOF at the end of input or a NUL.
int input();
// Gives a byte back, to be read next; the text of the last token is no longer valid. The counterpart of input,
// for actions that read on by themselves: those that there are look ahead no further than the window gives back.
void yyunput(int byte);

// Any byte that may follow a keyword: none of NUL, a digit, a letter, `_`; the end of input is none either.
bool isboundary(int byte);

}  // namespace morvik
