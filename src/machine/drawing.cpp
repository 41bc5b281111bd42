// SEED, RANDOMISE and DEAL.
#include "arithmetic/generator.h"

#include <algorithm>
#include <bit>

#include "coprocessor/coprocessor.h"
#include "failure/custody.h"
#include "machine/leave.h"
#include "machine/level.h"
#include "spaces/convert.h"
#include "spaces/counters.h"
#include "spaces/messages.h"
#include "spaces/point.h"
#include "spaces/sysvars.h"
#include "spaces/work.h"

namespace morvik {

namespace {

constexpr double SEED_SCALE = 1000000;

// The generators of all threads.
void seedall(Level &level, std::int64_t seed) {
  joinpool(level.sp);
  SEED_PRNGS(0, &prngs_seed, seed);
  wakecoprocessors(*level.instruction, seed);
}

bool isreal(const Element *element) {
  return element && (element->tag == tags::INTEGER || element->tag == tags::REAL);
}

// A whole number of at least 1; 0 for anything else.
std::int64_t positive(const Element *element) {
  if (!element) return 0;
  if (element->tag == tags::INTEGER) return element->integer > 0 ? element->integer : 0;
  const std::int64_t whole = saturate(element->real);
  return whole > 0 && static_cast<double>(whole) == element->real ? whole : 0;
}

// The cards that a shuffle has moved, by place. A pack that is never written out: only what differs from its first
// order is kept, so that a few cards of a huge pack cost little.
class Pack {
 public:
  // A slot for each card, where that is not more than twice as many as are moved.
  static std::size_t slots(std::int64_t moves, std::int64_t cards) {
    return std::min(std::bit_ceil(static_cast<std::size_t>(moves) * 2), static_cast<std::size_t>(cards));
  }
  Pack(void *block, std::size_t slots, std::int64_t cards)
      : table(static_cast<CardSlot *>(block)), mask(slots - 1), scattered(static_cast<std::size_t>(cards) > slots) {
    for (std::size_t i = 0; i < slots; ++i) table[i].place = FREE;
  }
  std::int64_t card(std::int64_t place) {
    const CardSlot &p = findslot(place);
    return p.place == FREE ? place : p.card;
  }
  void putcard(std::int64_t place, std::int64_t card) { findslot(place) = {place, card}; }
  struct CardSlot {
    std::int64_t place, card;
  };

 private:
  static constexpr std::int64_t FREE = -1;
  static constexpr std::uint64_t HASH_MULTIPLIER = 0x9E3779B97F4A7C15;  // 2^64 over the golden ratio
  CardSlot &findslot(std::int64_t place) {
    if (!scattered) return table[place];
    std::size_t i = (static_cast<std::uint64_t>(place) * HASH_MULTIPLIER >> 20) & mask;
    while (table[i].place != FREE && table[i].place != place) i = (i + 1) & mask;
    return table[i];
  }
  CardSlot *table;
  std::size_t mask;
  bool scattered;
};

// Draws `count` different numbers below n, from #IO up, in the order of the draw.
void deal(Element *records, std::int64_t count, std::int64_t n, void *block) {
  Pack pack(block, Pack::slots(count, n), n);
  const std::int64_t origin = indexorigin(quads);
  for (std::int64_t i = 0; i < count; ++i) {
    const std::int64_t last = n - 1 - i;
    const std::int64_t place = drawbelow(&prngs_seed, last + 1);
    const std::int64_t card = pack.card(place);
    pack.putcard(place, pack.card(last));  // the last place is not drawn from again
    std::int64_t number;
    setinteger(records[i], __builtin_add_overflow(origin, card, &number) ? INT64_MAX : number);
  }
}

}  // namespace

Next doseed(Level &level) {
  const Element *seed = oneelement(*level.sp);
  if (!isreal(seed)) return fail(level, messages::SEED_ARGUMENT);
  // A real keeps six of its decimals, in 32 bits.
  const std::int64_t value = seed->tag == tags::INTEGER
                                 ? seed->integer
                                 : std::clamp<std::int64_t>(saturate(seed->real * SEED_SCALE), INT32_MIN, INT32_MAX);
  seedall(level, value);
  droptop(level);
  return Next::FETCH;
}

Next dorandomise(Level &level) {
  seedall(level, CLOCK_SEED);
  return Next::FETCH;
}

Next dodeal(Level &level) {
  const Element *left = oneelement(level.sp[-1]), *right = oneelement(level.sp[0]);
  if ((left && !isreal(left)) || (right && !isreal(right))) return fail(level, messages::DEAL_TYPE);
  const std::int64_t n = positive(left), count = positive(right);
  if (n == 0 || count == 0) return fail(level, messages::DEAL_POSITIVE);
  if (count > n) return fail(level, messages::DEAL_TOO_MANY);
  if (count > std::int64_t{MOST_ELEMENTS}) return fail(level, messages::ARRAY_TOO_BIG);
  Point dealt{};
  Custody made, packed;
  takecustody(made, releasepoint, &dealt);
  dealt.rank = ranks::VECTOR;
  dealt.type = ISVECTOR | HASINTEGER | ISPROBABLE | (count == 1 ? ISONEELEMENT : 0);
  dealt.depth = 1;
  dealt.shape_pointer = newshape(count);
  dealt.data_pointer = newelements(static_cast<std::size_t>(count));
  dealt.elements = static_cast<std::uint32_t>(count);
  void *pack = newblock(Pack::slots(count, n) * sizeof(Pack::CardSlot));
  takecustody(packed, releaseblock, pack);
  deal(dealt.data_pointer, count, n, pack);
  endcustody(packed);
  endcustody(made);
  freeblock(pack);
  droptop(level);
  droptop(level);
  pushowned(level, dealt);
  operations += static_cast<double>(count);
  return Next::FETCH;
}

}  // namespace morvik
