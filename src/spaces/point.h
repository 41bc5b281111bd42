// The two records that everything is made of: the Point, on the stack, in a Programme and ahead of an enclosed space,
// and the Element, one for each element of a space. Both are 40 bytes, so that one stride serves all arrays.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace morvik {

#define FLAG(name, value) inline constexpr std::uint32_t name = value;
#include "tables/flags.def"
#undef FLAG

// What a Point is: 0 or more is the rank of a space, below 0 a symbolic Point.
namespace ranks {
inline constexpr std::int32_t END = -10, LOCAL_VARIABLE = -9, LOCAL_ADDRESS = -8, ADDRESS = -7, OPERATOR = -6,
                              FUNCTION = -5, VARIABLE = -4, LABEL = -3, UNUSED = -2, INVALID = -1, SCALAR = 0,
                              VECTOR = 1;
}

// What an element is. A structured space may also hold a whole symbolic Point, under its rank code.
namespace tags {
inline constexpr std::int32_t SUBARRAY = 1, ASCII = 2, UNICODE = 3, INTEGER = 4, REAL = 5, COMPLEX = 6, QUATERNION = 7,
                              OCTONION = 8, FILLER = 10, HANDLE = 11;
}

// How an element was written, and is to be written back.
namespace forms {
inline constexpr std::uint16_t BOOLEAN = 1, COMPUTED = 2, BINARY = 4, NUMBER = 8, CARTESIAN = 16, POLAR = 64,
                               JULIAN = 0x200, NAMED = 0x1000;
}

namespace attributes {
inline constexpr std::uint16_t DEGREES = 0x0020, PREFIX_R = 0x0100, NAMED = 0x4000, SILENT = 0x8000;
}

struct Point;
struct Context;

// Eight doubles in a counted block of their own: real, then i j k l m n o.
struct Octonion {
  double part[8];
};

struct Complex {
  double re, im;
};

struct Quaternion {
  double part[4];
};

// The value of a file element.
struct FileValue {
  std::FILE *stream;
  void *reserved;     // counted, null when unset
  Point *descriptor;  // counted block of one Point: what was on the stack at OPEN
};

struct Element {
  std::int32_t tag;
  std::uint16_t form;
  std::uint16_t attributes;
  union {
    char *name;        // counted; set with attributes::NAMED, and for a file
    double firstpart;  // of a quaternion, which therefore has no name
  };
  union {
    std::int64_t integer;
    double real;
    Complex complex;
    double otherparts[3];  // of a quaternion
    Octonion *octonion;    // counted
    Point *subarray;       // counted block of one Point: the enclosed space
    std::uint8_t ascii;
    std::uint16_t unicode;
    FileValue file;
    void *block;
  };
};

inline Quaternion quaternion(const Element &e) {
  return {{e.firstpart, e.otherparts[0], e.otherparts[1], e.otherparts[2]}};
}
inline void setquaternion(Element &e, const Quaternion &q) {
  e.firstpart = q.part[0];
  e.otherparts[0] = q.part[1];
  e.otherparts[1] = q.part[2];
  e.otherparts[2] = q.part[3];
}

// The integer as it is written, and what owns and means nothing. Written in place, since a copy of a record that was
// just written in parts misses store forwarding.
inline void setinteger(Element &e, std::int64_t value) {
  e = {};
  e.tag = tags::INTEGER;
  e.form = forms::NUMBER;
  e.integer = value;
}
inline void setfiller(Element &e) {
  e = {};
  e.tag = tags::FILLER;
}

// The link word of a space.
struct LinkWord {
  std::uint32_t low;
  std::int32_t last;  // a space that is being built: elements - 1
};

struct Point {
  std::int32_t rank;
  std::uint32_t type;
  union {
    Element *shape_pointer;  // space of rank 1 or more: one integer Element an axis, the fastest axis first
    char *name;              // symbolic Point: zero-terminated
    std::uint64_t origin;    // header of a body: which one it is to who heard of it when it was compiled; 0 for nobody
  };
  union {
    std::int16_t depth;         // space: how deeply it nests
    std::int16_t arguments;     // FUNCTION; negative: no frame of its own
    std::uint16_t instruction;  // OPERATOR
  };
  union {
    std::uint16_t locals;    // FUNCTION
    std::uint16_t modifier;  // OPERATOR: a second instruction number; VARIABLE and ADDRESS: the scope code
  };
  std::uint32_t elements;
  union {
    Context *context;  // symbolic Point: where it was last bound; counted
    void *link;        // FUNCTIONEND: the function's own context; a memo text on the END of a body
    LinkWord word;
  };
  union {
    Element *data_pointer;  // space: the elements, null for none
    Point *target;          // VARIABLE, ADDRESS, LABEL: the bound Point
    Point *programme;       // FUNCTION: a header Point, then the body up to its END
    void *block;
  };
};

static_assert(sizeof(Point) == 40 && sizeof(Element) == 40);
static_assert(offsetof(Point, type) == 4 && offsetof(Point, shape_pointer) == 8 && offsetof(Point, depth) == 16 &&
              offsetof(Point, locals) == 18 && offsetof(Point, elements) == 20 && offsetof(Point, context) == 24 &&
              offsetof(Point, data_pointer) == 32);
static_assert(offsetof(Element, form) == 4 && offsetof(Element, attributes) == 6 && offsetof(Element, name) == 8 &&
              offsetof(Element, otherparts) == 16 && offsetof(Element, integer) == 16);

// The most elements of a space, which `elements` counts in 32 bits.
inline constexpr std::uint64_t MOST_ELEMENTS = UINT32_MAX;

// Groups of flags that are tested together.
inline constexpr std::uint32_t SCALAR_LIKE = ISSCALAR | ISONEELEMENT;
inline constexpr std::uint32_t RANK_BITS = ISSCALAR | ISONEELEMENT | ISVECTOR | ISARRAY;
inline constexpr std::uint32_t KIND_BITS =  // the seven that COMPLEXED counts
    HASASCII | HASUNICODE | HASINTEGER | HASREAL | HASCOMPLEX | HASQUATERNION | HASOCTONION;
inline constexpr std::uint32_t ELEMENT_BITS = KIND_BITS | HASFUNCTION | HASFILE;  // 0x40FF00
inline constexpr std::uint32_t PURITY_BITS = KIND_BITS | HASFILE;                 // 0x407F00
inline constexpr std::uint32_t OWNING_BITS = STRUCTURED | HASOCTONION;  // the elements own counted blocks: walk them
inline constexpr std::uint32_t NAME_BEARING = ISVARIABLE | ISADDRESS | ISFUNCTION | ISOPERATOR;
inline constexpr std::uint32_t EMPTY_VECTOR = ISVECTOR | ISEMPTY;

// Two words in one store. Records are copied by sixteen bytes and more, and store forwarding serves such a load only
// from a store that wrote all of it.
using TwoWords __attribute__((vector_size(16), aligned(8), may_alias)) = unsigned long long;
inline void store16(void *to, std::uint64_t first, std::uint64_t second) {
  *static_cast<TwoWords *>(to) = TwoWords{first, second};
}
inline void copy16(void *to, const void *from) {
  *static_cast<TwoWords *>(to) = *static_cast<const TwoWords *>(from);
}

// Gives a scalar its flags; it has no shape.
inline void setscalar(Point &p, std::uint32_t type) {
  static_assert(ranks::SCALAR == 0 && offsetof(Point, type) == 4 && offsetof(Point, shape_pointer) == 8);
  store16(&p, std::uint64_t{type} << 32, 0);
}

inline bool isend(const Point &p) {
  return p.type == 0;
}
inline bool isempty(const Point &p) {
  return (p.type & ISEMPTY) != 0;
}
inline bool isscalarlike(const Point &p) {
  return (p.type & SCALAR_LIKE) != 0;
}
inline bool isspace(const Point &p) {
  return p.rank >= 0;
}
inline bool isfunction(const Point &p) {
  return p.rank == ranks::FUNCTION;
}
inline bool isoperator(const Point &p) {
  return p.rank == ranks::OPERATOR;
}
inline bool isinstruction(const Point &p, std::uint16_t number) {
  return isoperator(p) && p.instruction == number;
}
// A space of characters alone, whose bytes can serve as text.
inline bool istext(const Point &p) {
  return isspace(p) && (p.type & (HASASCII | COMPLEXED | STRUCTURED)) == HASASCII;
}

// The HAS bit of a tag from ASCII to OCTONION; 0 for any other.
inline constexpr std::uint32_t kindbit(std::int32_t tag) {
  return tag >= tags::ASCII && tag <= tags::OCTONION ? HASASCII << (tag - tags::ASCII) : 0;
}
// Does a flag word tell of more than one kind, or of enclosed elements?
inline bool ismixed(const Point &p) {
  return (p.type & (COMPLEXED | STRUCTURED)) != 0;
}
// COMPLEXED if two or more of the kinds are set in the word, else 0.
inline constexpr std::uint32_t complexed(std::uint32_t type) {
  const std::uint32_t kinds = type & KIND_BITS;
  return (kinds & (kinds - 1)) != 0 ? COMPLEXED : 0;
}

// Rank names, indexed by rank + 10.
extern const char Ranks[12][32];

}  // namespace morvik
