// The two banks of storage: made, counted again, and given back.
#include "api/banks.h"

#include <sys/resource.h>

#include <bit>
#include <cstdio>
#include <cstdlib>

#include "frontend/contexts.h"
#include "frontend/fixedsyms.h"
#include "frontend/symtab.h"
#include "machine/level.h"
#include "spaces/blocks.h"
#include "spaces/recount.h"
#include "spaces/refderef.h"
#include "spaces/symbols.h"
#include "spaces/sysvars.h"
#include "spaces/work.h"

namespace morvik {

Entry *memory[BANKS];
Context *variables[BANKS];
Point stack[BANKS][STACK_POINTS];
Point *stacktops[BANKS];
Point *sp = stack[0];

namespace {

constexpr double COMPARISON_TOLERANCE = std::bit_cast<double>(0x3CD203AF9EE75616);

// The system variables of a bank, and their names, which the bank holds whatever the variables are set to. The Points
// beside the two in use are left alone: the count that pins a variable is in the one before it.
struct Bank {
  Point quads[BANK_QUADS];
  char *io, *ct;
};
Bank banks[BANKS];

// One named scalar: a value that prints as its name.
void makesystemvariable(Point &point, char *name, const Element &value, std::uint32_t kind) {
  Element *element = newelements(1);
  *element = value;
  element->attributes = attributes::NAMED;
  element->name = name;
  reference(name);
  point = {};
  point.type = ISSCALAR | kind;
  point.elements = 1;
  point.data_pointer = element;
}

void makesystemvariables(Bank &bank) {
  Element value;
  setinteger(value, 1);
  bank.io = stringdup("#IO");
  makesystemvariable(bank.quads[IO_SLOT], bank.io, value, HASINTEGER);
  value.tag = tags::REAL;
  value.form = forms::COMPUTED;
  value.real = COMPARISON_TOLERANCE;
  bank.ct = stringdup("#CT");
  makesystemvariable(bank.quads[CT_SLOT], bank.ct, value, HASREAL);
}

void openbank(std::size_t bank) {
  memory[bank] = makehashtab();
  variables[bank] = makemeaning(memory[bank]);
  makesystemvariables(banks[bank]);
  stacktops[bank] = &stack[bank][STACK_POINTS - 1];
}

void closebank(std::size_t bank, Point *top) {
  for (; top > stack[bank]; --top) dereferencepoint(top);
  const Entry *wiped = nullptr;
  for (const Context *link = variables[bank]; link; link = link->previous) {
    if (link->table && link->table != wiped) hashwipe(link->table);
    wiped = link->table;
  }
  release(variables[bank]);
  release(memory[bank]);
  variables[bank] = nullptr;
  memory[bank] = nullptr;
  dereferencepoint(&banks[bank].quads[IO_SLOT]);
  dereferencepoint(&banks[bank].quads[CT_SLOT]);
  dereference(banks[bank].io);
  dereference(banks[bank].ct);
}

}  // namespace

void openbanks() {
  // The slots' type words are 0 from the start: the stacks are static storage.
  for (std::size_t bank = 0; bank < BANKS; ++bank) openbank(bank);
  quads = banks[0].quads;
  bindfixedsym("#IO", &quads[IO_SLOT]);
  bindfixedsym("#CT", &quads[CT_SLOT]);
  sp = stack[0];
  stacktop = stacktops[0];
}

void closebanks() {
  bindfixedsym("#IO", nullptr);
  bindfixedsym("#CT", nullptr);
  closebank(0, sp);
  closebank(1, stack[1]);
  wipealllocalnames();  // a function that keeps itself in its own table is alive until here
  sp = stack[0];
}

#ifdef MORVIK_CHECKING
void recountblocks() {
  if (resultinflight) return;  // the pool holds what its result is made of
  rlimit storage;
  if (getrlimit(RLIMIT_DATA, &storage) == 0 && storage.rlim_cur != RLIM_INFINITY) return;  // it may not last to count
  finishreleases();
  Recount recount;
  for (const Point *p = stack[0] + 1; p <= sp; ++p) recount.hold(*p);
  for (std::size_t bank = 0; bank < BANKS; ++bank) {
    recounttable(recount, memory[bank]);
    recount.hold(variables[bank]);
    recount.hold(banks[bank].quads[IO_SLOT]);
    recount.hold(banks[bank].quads[CT_SLOT]);
    recount.hold(banks[bank].io);
    recount.hold(banks[bank].ct);
  }
  recountlocalnames(recount);
  const auto faults = recount.faults(liveblocks());
  if (faults.empty()) return;
  std::fprintf(stderr, "\nRecount: %s\n", faults.c_str());
  std::abort();
}
#endif

}  // namespace morvik
