// Tokens: the start conditions, the rules, and what the scanner hands out.
#pragma once

#include <cstddef>
#include <cstdint>

namespace morvik {

// Which rules apply. The actions choose the next condition; it survives from text to text.
enum class Condition : std::uint8_t {
  INITIAL,
  ADDRESSED,    // after @
  VECTOR,       // inside ( )
  SHAPE,        // the extents after )[ or '[
  SUBSHAPE,     // the same inside a vector
  QUOTED,       // inside ' '
  COMMENT,      // inside " "
  MASKED,       // after WRAP or REFLECT
  NAME,         // the rest of a plain name
  ADDRESSNAME,  // the rest of a plain name after @
};

enum class Rule : std::uint8_t {
  END_OF_INPUT,      // end of file, or a NUL; in every condition
  KEYWORD,           // row: the row of keywords.def. INITIAL; in MASKED only MASK and STENCIL
  OPEN_FUNCTION,     // : NEADIC FUNCTION NILADIC MONADIC DYADIC TRIADIC, ARGS n FUNCTION, VARS m ...; the whole text
  BUILTIN,           // ::
  END_OF_TEXT,       // . or END, with a line feed right after it if there is one (a part of the text)
  CLOSE_FUNCTION,    // ; or FUNCTIONEND
  OPEN_COMMENT,      // " or \xBC
  CONSTANT,          // row: the row of constants.def; the text begins with - for the negated value. Also in VECTOR
  BINARY_NUMBER,     // 0#101           also in VECTOR
  BINARY_CHARACTER,  // `0#101`         also in VECTOR and QUOTED
  INTEGER,           // INITIAL and VECTOR, to POLAR_OCTONION
  REAL,
  COMPLEX,
  QUATERNION,
  OCTONION,
  POLAR_COMPLEX,
  POLAR_QUATERNION,
  POLAR_OCTONION,
  OPEN_STRING,      // '                 also in VECTOR
  OPEN_VECTOR,      // (                 also in VECTOR
  OPEN_STRUCTURE,   // `(                also in VECTOR
  ADDRESS,          // @
  SIGIL_NAME,       // _name $name .name: the text begins with the sigil. INITIAL and ADDRESSED
  BRACKET_NAME,     // \2 or a sigil and \2: the name follows by input(), up to \3. INITIAL and ADDRESSED
  LABEL,            // %name. INITIAL and ADDRESSED
  LOCAL,            // &n, with optional sign. INITIAL and ADDRESSED
  LINE_FEED,        // INITIAL
  NAME_START,       // one byte that begins a plain name. INITIAL and ADDRESSED
  NAME_PART,        // NAME, ADDRESSNAME: a run of bytes that belong to the name
  NAME_END,         // NAME, ADDRESSNAME: a delimiter comes next (it stays in the input); the text is empty
  CLOSE_VECTOR,     // VECTOR: )
  CLOSE_STRUCTURE,  // VECTOR: )`
  CLOSE_TO_SHAPE,   // VECTOR: )[  )`[  ) tab [
  CLOSE_TO_NOOP,    // VECTOR: )[]
  CHARACTERS,       // QUOTED: a run of plain bytes
  QUOTED_QUOTE,     // QUOTED: ''
  CLOSE_STRING,     // QUOTED: '
  STRING_TO_SHAPE,  // QUOTED: '[  ' tab [
  EXTENT,           // SHAPE, SUBSHAPE: a number
  CLOSE_SHAPE,      // SHAPE, SUBSHAPE: ]
  COMMENT_TEXT,     // COMMENT: a run of bytes up to the delimiter or the end of the buffer
  CLOSE_COMMENT,    // COMMENT: " or \xBC
  UNMASKED,         // MASKED: anything but a blank or MASK; the text is empty and the token stays in the input
};

// The value of a number of one part, as far as the scanner found it: digits times a power of 10.
struct Decimal {
  std::uint64_t digits;
  std::int16_t exponent;
  bool minus;
  bool whole;  // nothing is left out; else all but the text means nothing
};

// More digits might not fit 64 bits, leading zeros or not.
inline constexpr int MOST_DIGITS = 19;

// A token. The text is zero-terminated and may be changed in place; it and the decimal are valid until the next scan.
struct Token {
  Rule rule;
  std::uint16_t row;
  char *text;
  std::size_t length;
  const Decimal *decimal;  // INTEGER and REAL: what the text spells
};

}  // namespace morvik
