// The system variables #IO and #CT: names that are in no table and mean the same in every context. The meaning of each
// is the Point of quads that the scalar instructions are given, so that a new value is in force at once.
#include "frontend/fixedsyms.h"

#include "failure/hearing.h"
#include "frontend/buckets.h"
#include "spaces/refderef.h"
#include "spaces/streams.h"
#include "spaces/symbols.h"

namespace morvik {

namespace {

// The Point is no block of its own: however many Points are bound to it, its count never comes near 0. The checks of
// blocks take nothing but a permanent count for one that is outside the heap.
#ifdef MORVIK_CHECKING
constexpr std::int64_t PINNED_COUNT = -999999999;
#else
constexpr std::int64_t PINNED_COUNT = 999999999;
#endif

struct FixedSymbol {
  FixedName name;
  bool tolerance;
  Entry entry;
};
FixedSymbol fixedsyms[] = {{{-1, 0, "#IO"}, false, {}}, {{-1, 0, "#CT"}, true, {}}};

FixedSymbol *findfixed(const char *name) {
  if (name[0] != '#') return nullptr;
  for (FixedSymbol &fixed : fixedsyms)
    if (stringcmp(fixed.name.text, name)) return &fixed;
  return nullptr;
}

bool isnumeric(const Element *value) {
  return value && value->tag != tags::ASCII && value->tag != tags::UNICODE && value->tag != tags::OCTONION;
}

// Kept: the tolerance is looked at when its name is looked up, not when it is set.
void checktolerance(Point &value) {
  if (!isnumeric(value.data_pointer)) {
    std::fflush(outputstream);
    complain(
        "WARNING/ERROR: The #CT value is not numerically specified, unspecified results can be expected from verbs "
        "depending on the Comparison Tolerance");
  } else if (value.data_pointer->tag == tags::INTEGER && !isscalarlike(value)) {
    value.type |= COMPLEXED;
  }
}

}  // namespace

Entry *fixedsym(const char *name) {
  FixedSymbol *fixed = findfixed(name);
  if (!fixed || !isnamed(fixed->entry)) return nullptr;
  *refer(fixed->entry.meaning) = PINNED_COUNT;
  if (fixed->tolerance) checktolerance(*fixed->entry.meaning);
  return &fixed->entry;
}

bool isfixed(const Entry *entry) {
  return entry == &fixedsyms[0].entry || entry == &fixedsyms[1].entry;
}

void bindfixedsym(const char *name, Point *value) {
  FixedSymbol *fixed = findfixed(name);
  fixed->entry.name = value ? fixed->name.text : nullptr;
  fixed->entry.meaning = value;
  if (value) *refer(value) = PINNED_COUNT;
}

}  // namespace morvik
