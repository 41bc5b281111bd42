// The recount. It looks into each block once, when it meets its first owner, and keeps in a list what it has still to
// look into: no depth of a value costs process stack.
#include "spaces/recount.h"

#include <bit>
#include <cstdio>

#include "spaces/refderef.h"

namespace morvik {

namespace {

bool issymbolic(const Point &point) {
  return point.rank <= ranks::LABEL && point.rank >= ranks::LOCAL_VARIABLE;
}

std::string described(const void *block) {
  char text[32];
  std::snprintf(text, sizeof text, "block %p", block);
  return text;
}

// Do the extents make so many elements?
bool isshaped(const Point &space) {
  if (space.rank > 0 && !space.shape_pointer) return false;
  constexpr std::uint64_t BEYOND = std::uint64_t{UINT32_MAX} + 1;
  std::uint64_t product = 1;
  for (std::int32_t axis = 0; axis < space.rank; ++axis) {
    const auto extent = static_cast<std::uint64_t>(space.shape_pointer[axis].integer);
    if (extent == 0) return space.elements == 0;
    product = extent < BEYOND / product ? product * extent : BEYOND;
  }
  return product == space.elements;
}

bool hasroom([[maybe_unused]] const void *block, [[maybe_unused]] std::size_t records) {
#ifdef MORVIK_CHECKING
  return blocksize(block) >= records * sizeof(Element);
#else
  return true;
#endif
}

}  // namespace

void Recount::complain(const Point &space, const char *what) {
  char type[16];
  std::snprintf(type, sizeof type, "0x%x", space.type);
  complaints_ += described(space.data_pointer) + ", flags " + type + ": " + what + "; ";
}

bool Recount::hold(const void *block) {
  return block && referencecount(block) >= 0 && ++owners_[block] == 1;
}

void Recount::holdbox(const Point *box) {
  if (hold(box)) boxes_.push_back(box);
}

void Recount::holdsymbolic(const Point &point) {
  hold(point.name);
  hold(point.link);
  switch (point.rank) {
    case ranks::FUNCTION:
      if (hold(point.programme)) programmes_.push_back(point.programme);
      break;
    case ranks::VARIABLE:
    case ranks::ADDRESS:
    case ranks::LABEL:
      if (point.rank != ranks::ADDRESS || (point.type & ISLOCAL) == 0) holdbox(point.target);
      break;
    default:
      hold(point.block);
  }
}

void Recount::holdrecord(const Element &e) {
  switch (e.tag) {
    case tags::SUBARRAY:
      return holdbox(e.subarray);
    case tags::OCTONION:
      if (isnamed(e)) hold(e.name);
      hold(e.octonion);
      return;
    case tags::HANDLE:
      hold(e.name);
      hold(e.file.reserved);
      return holdbox(e.file.descriptor);
    default:
      if (e.tag < 0) holdsymbolic(std::bit_cast<Point>(e));
  }
}

// Does any record own a block? The kinds that do are told by their tags.
bool Recount::holdrecords(const Point &space) {
  bool own = false;
  for (std::uint32_t i = 0; i < space.elements; ++i) {
    const Element &e = space.data_pointer[i];
    own |= e.tag == tags::SUBARRAY || e.tag == tags::OCTONION || e.tag == tags::HANDLE || e.tag < 0;
    holdrecord(e);
  }
  if (space.rank == ranks::SCALAR && isnamed(*space.data_pointer) && space.data_pointer->tag < tags::OCTONION)
    hold(space.data_pointer->name);
  return own;
}

void Recount::holdspace(const Point &point) {
  if (!point.shape_pointer && !point.data_pointer) return;  // one that was given up, or an END
  hold(point.shape_pointer);
  if (!isshaped(point)) complain(point, "its extents do not make its elements");
  if (!point.data_pointer) return;
  if (!hasroom(point.data_pointer, point.elements)) return complain(point, "more elements than it has room for");
  hold(point.data_pointer);
  const auto [met, first] = records_.try_emplace(point.data_pointer, Records{point.elements, false});
  if (first) met->second.own = holdrecords(point);
  if (met->second.count != point.elements) complain(point, "its owners say different numbers of elements");
  if (met->second.own && point.rank > 0 && !mayown(point)) complain(point, "a record owns what the flags deny");
}

void Recount::hold(const Point &point) {
  if (issymbolic(point))
    holdsymbolic(point);
  else
    holdspace(point);
}

void Recount::walkprogramme(const Point *header) {
  hold(header->link);
  if (header->block != header) hold(header->block);
  const Point *p = header + 1;
  for (; !isend(*p); ++p) hold(*p);
  hold(p->name);
  hold(p->link);
}

// Goes down to everything that was met.
void Recount::finish() {
  while (!boxes_.empty() || !programmes_.empty()) {
    std::vector<const Point *> &list = boxes_.empty() ? programmes_ : boxes_;
    const Point *const next = list.back();
    const bool box = &list == &boxes_;
    list.pop_back();
    if (box)
      hold(*next);
    else
      walkprogramme(next);
  }
}

std::int64_t Recount::reached() {
  finish();
  return static_cast<std::int64_t>(owners_.size());
}

std::string Recount::faults(std::int64_t alive) {
  const std::int64_t met = reached();
  std::string text = complaints_;
  for (const auto &[block, owners] : owners_)
    if (referencecount(block) != owners)
      text += described(block) + ": a count of " + std::to_string(referencecount(block)) + " for " +
              std::to_string(owners) + " owners; ";
  if (alive != met) text += std::to_string(alive) + " blocks alive, " + std::to_string(met) + " reached";
  return text;
}

}  // namespace morvik
