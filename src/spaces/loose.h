// Loose scalars: plain integers and reals on the value stack whose value is in the Point itself, where a whole one
// has it in a block. The quick loop makes them and works on them; nobody else ever meets one.
//
// - A loose slot owns nothing. It may be copied, moved and released like any other, but it has no record to look at.
// - No slot below `lowestloose` is loose. Whoever writes a loose slot, or moves one down, says so (noteloose).
// - makewhole gives each of them its block, and is the one function that does. What looks at Points comes after it: an
//   instruction that is not quick, an interrupt, a trace, the end of a run, and what is left where a jump lands.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

#include "spaces/blocks.h"
#include "spaces/point.h"

namespace morvik {

// A bit of the flag word that nothing else uses, and that no whole Point has.
inline constexpr std::uint32_t LOOSE = 0x08000000;
inline constexpr std::uint32_t LOOSE_INTEGER = LOOSE | ISSCALAR | HASINTEGER, LOOSE_REAL = LOOSE | ISSCALAR | HASREAL;

inline bool isloose(const Point &p) {
  return (p.type & LOOSE) != 0;
}

// The value of a loose slot, and its form, which is where a function has its locals.
inline std::int64_t looseinteger(const Point &p) {
  return std::bit_cast<std::int64_t>(p.link);
}
inline double loosereal(const Point &p) {
  return std::bit_cast<double>(p.link);
}
inline std::uint16_t looseform(const Point &p) {
  return p.locals;
}

// Writes a loose slot, word by word, as it is read. `type` is LOOSE_INTEGER or LOOSE_REAL.
inline void setword(Point &slot, std::size_t offset, std::uint64_t word) {
  std::memcpy(reinterpret_cast<char *>(&slot) + offset, &word, sizeof word);
}
inline std::uint64_t wordof(const Point &p, std::size_t offset) {
  std::uint64_t word;
  std::memcpy(&word, reinterpret_cast<const char *>(&p) + offset, sizeof word);
  return word;
}
inline void putloose(Point &slot, std::uint32_t type, std::uint16_t form, std::uint64_t value) {
  static_assert(ranks::SCALAR == 0 && offsetof(Point, locals) == 18 && offsetof(Point, elements) == 20);
  setword(slot, 0, std::uint64_t{type} << 32);
  setword(slot, offsetof(Point, shape_pointer), 0);
  setword(slot, offsetof(Point, depth), std::uint64_t{form} << 16 | std::uint64_t{1} << 32);
  setword(slot, offsetof(Point, link), value);
  setword(slot, offsetof(Point, data_pointer), 0);
}
// A record of a plain integer or real.
inline void putloose(Point &slot, const Element &e) {
  putloose(slot, LOOSE | ISSCALAR | kindbit(e.tag), e.form, static_cast<std::uint64_t>(e.integer));
}
// Copies one to another slot.
inline void copylooseslot(Point &to, const Point &from) {
  putloose(to, from.type, looseform(from), static_cast<std::uint64_t>(looseinteger(from)));
}

// Is a Point of the flag word of a plain number all that such a one is: a scalar with one record, whose tag agrees?
inline bool isplainnumber(const Point &p, std::int32_t tag) {
  constexpr std::uint64_t ONE_ELEMENT = std::uint64_t{1} << 32;
  return !p.shape_pointer && wordof(p, offsetof(Point, depth)) == ONE_ELEMENT && !p.link && p.data_pointer &&
         p.data_pointer->tag == tag && p.data_pointer->attributes == 0;
}
// The type of the loose scalar that says the same as a Point; 0 for a Point that none does: anything but a scalar of
// one kind, an integer or a real, without marks and without a name.
inline std::uint32_t loosetype(const Point &p) {
  const std::uint64_t heading = wordof(p, 0);
  if (heading == std::uint64_t{ISSCALAR | HASINTEGER} << 32) return isplainnumber(p, tags::INTEGER) ? LOOSE_INTEGER : 0;
  if (heading == std::uint64_t{ISSCALAR | HASREAL} << 32) return isplainnumber(p, tags::REAL) ? LOOSE_REAL : 0;
  return 0;
}
// Makes a slot the loose scalar that says what a Point of such a type does. Nothing is released.
inline void copyloose(Point &slot, std::uint32_t type, const Point &scalar) {
  const Element &e = *scalar.data_pointer;
  putloose(slot, type, e.form, static_cast<std::uint64_t>(e.integer));
}

// The address of the lowest slot that may be loose, the greatest address where none is.
inline constexpr std::uintptr_t NONE_LOOSE = UINTPTR_MAX;
extern std::uintptr_t lowestloose;
inline void noteloose(const Point *slot) {
  const auto address = reinterpret_cast<std::uintptr_t>(slot);
  if (address < lowestloose) [[unlikely]]
    lowestloose = address;
}

// Makes a slot loose that says something loose, or is so already; false for any other.
inline bool loosen(Point &slot) {
  if (isloose(slot)) return true;
  const std::uint32_t type = loosetype(slot);
  if (type == 0) return false;
  Element *const record = slot.data_pointer;
  copyloose(slot, type, slot);
  noteloose(&slot);
  release(record);
  return true;
}

// Writes the value of a loose slot to a record, over whatever it held.
inline void setrecord(Element &record, const Point &slot) {
  record.tag = slot.type == LOOSE_INTEGER ? tags::INTEGER : tags::REAL;
  record.form = looseform(slot);
  record.attributes = 0;
  record.name = nullptr;
  record.integer = looseinteger(slot);
}

// Makes a loose slot whole with a record that nobody else sees.
inline void giverecord(Point &slot, Element *record) {
  setrecord(*record, slot);
  slot.type &= ~LOOSE;
  slot.locals = 0;
  slot.link = nullptr;
  slot.data_pointer = record;
}

// Makes all slots up to the top whole. The top is stored where a jump finds it. Message 27, with those that were not
// reached still loose.
void makeslotswhole(Point *top);
inline void makewhole(Point *top) {
  if (lowestloose <= reinterpret_cast<std::uintptr_t>(top)) makeslotswhole(top);
  lowestloose = NONE_LOOSE;
}
// The same where a jump landed: returns the top of what is whole. Where there is no storage for one of them, it is
// dropped with what is above it.
Point *keepwhole(Point *top);

}  // namespace morvik
