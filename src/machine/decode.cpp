// Decoding. Nothing is copied that may change while the body lives: an operation refers to its Point, and reads there
// what a name is bound to.
#include "machine/decode.h"

#include <cstdlib>
#include <cstring>

#include "machine/quick.h"
#include "spaces/instructions.h"
#include "spaces/loose.h"

namespace morvik {

namespace {

struct Scalar {
  LooseMonadic *monadic;
  const Dyadic *dyadic;
};
// By instruction number.
#define MONADIC(f) loose_##f, nullptr
#define DYADIC(f) nullptr, &f##cores
#define INSTRUCTION(number, name, argumentclass, key, handler, effect, meaning) {handler},
constexpr Scalar Scalars[instructions::COUNT] = {
#include "tables/instructions.def"
};

// Where an operation finds its right operand; BOTH: it is a name, and the left one too.
enum class Right { ON_STACK, LITERAL, NAME, BOTH };

// The operation that works a dyadic scalar instruction.
Quick dyadiccode(const Point &p, Right right) {
  static_assert(static_cast<int>(Quick::NAMES_ADD) - static_cast<int>(Quick::ADD) == static_cast<int>(Right::BOTH) &&
                static_cast<int>(Quick::NAMES_DYADIC) - static_cast<int>(Quick::DYADIC) ==
                    static_cast<int>(Right::BOTH));
  Quick code = Quick::DYADIC;
  switch (p.instruction) {
#define QUICK_SCALAR(name, core) \
  case instructions::name:       \
    code = Quick::name;          \
    break;
#include "tables/quick.def"
    default:
      break;
  }
  return static_cast<Quick>(static_cast<int>(code) + static_cast<int>(right));
}

// The operation that works a comparison with a literal and decides by it; `otherwise` where there is none.
Quick checkcode(const Point &p, Quick otherwise) {
  switch (p.instruction) {
#define QUICK_CHECK(name, core) \
  case instructions::name:      \
    return Quick::CHECK_##name;
#include "tables/quick.def"
    default:
      return otherwise;
  }
}

bool isdecided(const Point &p) {
  return isinstruction(p, instructions::IF_YES) || isinstruction(p, instructions::IF_NO);
}
bool isconditional(const Point &p) {
  return (p.type & CONDITIONAL) != 0;
}
const Scalar *scalarof(const Point &p) {
  if (!isoperator(p) || p.instruction >= instructions::COUNT) return nullptr;
  const Scalar &s = Scalars[p.instruction];
  return s.monadic || s.dyadic ? &s : nullptr;
}

// A body while it is decoded. The END follows its last Point.
struct Body {
  Point *start;
  Op *ops;
  std::ptrdiff_t end;
};

Quick quickof(const Point &p) {
  switch (p.instruction) {
    case instructions::RETURN:
    case instructions::FUNCTIONEND:
      return Quick::LEAVE;
    case instructions::DUPLICATE:
      return Quick::DUPLICATE;
    case instructions::DISCARD:
      return Quick::DISCARD;
    case instructions::SWAP:
      return Quick::SWAP;
    case instructions::RIGHT:
      return Quick::RIGHT;
    case instructions::CHECK:
      return Quick::CHECK;
    case instructions::JUMP:
      return Quick::JUMP;
    case instructions::CATENATE:
      return Quick::CATENATE;
    case instructions::RESHAPE:
      return Quick::RESHAPE;
    case instructions::FIRST:
      return p.modifier == instructions::FIRST ? Quick::SLOW : Quick::FIRST;
    default:
      return Quick::SLOW;
  }
}

void decodedecided(Op &op, const Point &p) {
  op.type = p.instruction == instructions::IF_YES ? 1 : 0;
  if (p.modifier == instructions::RETURN)
    op.code = Quick::IF_LEAVE;
  else if (p.modifier != instructions::BARE)
    op.code = Quick::IF;
}

bool isrest(const Point &p) {
  return isinstruction(p, instructions::REST) && p.modifier != instructions::REDUCE;
}
// What makes a new value for the name that its old one came from.
Quick replacing(const Point &p) {
  if (p.instruction == instructions::CATENATE) return Quick::CATENATE_STORE;
  if (isrest(p)) return Quick::REST_STORE;
  return quickof(p);
}
bool isstore(const Point *p) {
  return p[0].rank == ranks::ADDRESS && !isconditional(p[0]) && isinstruction(p[1], instructions::SET);
}

void decodeoperator(Op &op, const Point &p) {
  if (isdecided(p)) return decodedecided(op, p);
  if (const Scalar *s = scalarof(p)) {
    op.code = s->monadic ? Quick::MONADIC : dyadiccode(p, Right::ON_STACK);
    if (s->monadic)
      op.monadic = s->monadic;
    else
      op.dyadic = s->dyadic;
    return;
  }
  op.code = isstore(&p + 1) ? replacing(p) : quickof(p);
}

void decodeliteral(const Body &body, Op &op, const Point &p, const Point &next) {
  const std::uint32_t type = loosetype(p);
  if (type == 0 || changesinprint(type, p.data_pointer->integer)) {
    op.code = Quick::SPACE;
    return;
  }
  op.code = Quick::LITERAL;
  op.type = type;
  op.form = p.data_pointer->form;
  op.value = p.data_pointer->integer;
  if (const Scalar *s = scalarof(next); s && s->dyadic) {
    op.code = dyadiccode(next, Right::LITERAL);
    op.dyadic = s->dyadic;
    if (isinstruction((&next)[1], instructions::CHECK)) op.code = checkcode(next, op.code);
  } else if (isinstruction(next, instructions::JUMP) && type == LOOSE_INTEGER && op.value > 0 &&
             op.value - 1 <= body.end) {
    op.target = body.ops + (op.value - 1);
    op.code = Quick::LITERAL_JUMP;
  }
}

void decodename(Op &op, const Point &next) {
  op.code = Quick::NAME;
  if (isinstruction(next, instructions::EXECUTE)) op.code = Quick::NAME_CALL;
  if (isrest(next) && isstore(&next + 1)) op.code = Quick::NAME_REST_STORE;
  if (const Scalar *s = scalarof(next); s && s->dyadic) {
    op.code = dyadiccode(next, Right::NAME);
    op.dyadic = s->dyadic;
  }
  if (next.rank != ranks::VARIABLE || isconditional(next)) return;
  const Point &after = (&next)[1];
  if (const Scalar *s = scalarof(after); s && s->dyadic) {
    op.code = dyadiccode(after, Right::BOTH);
    op.dyadic = s->dyadic;
  }
}

void decodefunction(Op &op, const Point &p, const Point &next) {
  if ((p.type & ISOPERATOR) != 0) return;
  op.code = Quick::SPACE;
  if (isinstruction(next, instructions::EXECUTE)) op.code = Quick::CALL;
  if (isdecided(next) && next.modifier == instructions::BARE) {
    op.code = Quick::CALL_IF;
    op.type = next.instruction == instructions::IF_YES ? 1 : 0;
  }
}

void decodepoint(const Body &body, std::ptrdiff_t i) {
  Op &op = body.ops[i];
  Point &p = body.start[i];
  op = {};
  op.point = &p;
  if (i == body.end) {
    op.code = Quick::END;
    return;
  }
  const Point &next = body.start[i + 1];
  if (isoperator(p)) return decodeoperator(op, p);
  if (isfunction(p)) return decodefunction(op, p, next);
  if (isconditional(p)) {
    op.code = Quick::IF_VALUE;
    op.type = (p.type & YES) != 0 ? 1 : 0;
    return;
  }
  if (isspace(p)) return decodeliteral(body, op, p, next);
  if (p.rank == ranks::VARIABLE) return decodename(op, next);
  if (isstore(&p)) op.code = Quick::STORE;
}

Op *decodebody(Point *start) {
  std::ptrdiff_t end = 0;
  while (!isend(start[end])) ++end;
  auto *ops = static_cast<Op *>(tryblock((static_cast<std::size_t>(end) + 1) * sizeof(Op)));
  if (!ops) return nullptr;
  const Body body{start, ops, end};
  const void *const *const places = placesofoperations();
  for (std::ptrdiff_t i = 0; i <= end; ++i) {
    decodepoint(body, i);
    ops[i].place = places[static_cast<unsigned>(ops[i].code)];
  }
  return ops;
}

#ifdef MORVIK_NO_QUICK_LOOP
constexpr bool switchedoff = true;
#else
bool isswitchedoff() {
  const char *const set = std::getenv("MORVIK_QUICK");
  return set && std::strcmp(set, "off") == 0;
}
const bool switchedoff = isswitchedoff();
#endif

}  // namespace

// The data word of a header, which nobody else needs, tells how far it came: the header itself means a body that
// never ran, null for one that ran once.
const Op *decode(const Activation &level, bool often) {
  Point *const header = level.header;
  if (!header || switchedoff) return nullptr;
  if (header->block && !often) {
    header->block = nullptr;
    return nullptr;
  }
  if (Op *ops = decodebody(level.start)) header->block = ops;
  return header->block == header ? nullptr : static_cast<const Op *>(header->block);
}

}  // namespace morvik
