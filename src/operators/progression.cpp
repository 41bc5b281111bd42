// The values of an interval.
#include "operators/progression.h"

#include <algorithm>

#include "spaces/hypercomplex.h"
#include "spaces/parts.h"

namespace morvik {

namespace {

void makehead(const Progression &p, Element &e) {
  e = {};
  e.tag = p.tag;
  e.form = p.form;
  e.attributes = p.attributes;
}

// The arithmetic is done without a sign, where it may wrap.
std::int64_t integerat(const Progression &p, std::uint64_t i) {
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(p.from) + i * static_cast<std::uint64_t>(p.step));
}

void writeintegers(const Progression &p, Element *result, std::uint64_t begin, std::uint64_t end) {
  for (std::uint64_t i = begin; i < end; ++i) {
    makehead(p, result[i]);
    result[i].integer = integerat(p, i);
  }
}

void writecharacters(const Progression &p, Element *result, std::uint64_t begin, std::uint64_t end) {
  for (std::uint64_t i = begin; i < end; ++i) {
    makehead(p, result[i]);
    result[i].ascii = static_cast<std::uint8_t>(integerat(p, i));
  }
}

void writereals(const Progression &p, Element *result, std::uint64_t begin, std::uint64_t end) {
  for (std::uint64_t i = begin; i < end; ++i) {
    makehead(p, result[i]);
    result[i].real = p.first[0] + static_cast<double>(i) * p.steps[0];
  }
}

// ---- Grids.

// How far a walk over a grid has come: the number of the value in each part, and that value.
struct GridPosition {
  std::uint64_t number[MOST_PARTS];
  double part[MOST_PARTS];
};

void setnumber(const Progression &p, GridPosition &position, int k, std::uint64_t number) {
  position.number[k] = number;
  position.part[k] = p.first[k] + static_cast<double>(number) * p.steps[k];
}

GridPosition gridposition(const Progression &p, std::uint64_t index) {
  GridPosition position{};
  for (int k = 0; k < p.parts; ++k) {
    setnumber(p, position, k, index % p.counts[k]);
    index /= p.counts[k];
  }
  return position;
}

void nextposition(const Progression &p, GridPosition &position) {
  for (int k = 0; k < p.parts; ++k) {
    const std::uint64_t next = position.number[k] + 1;
    setnumber(p, position, k, next < p.counts[k] ? next : 0);
    if (next < p.counts[k]) return;
  }
}

// What the record owns already stays.
void writevalue(const Progression &p, const double *parts, Element &e) {
  Octonion *const block = e.octonion;
  makehead(p, e);
  e.octonion = block;
  writeparts(e, parts);
}

void writegrid(const Progression &p, Element *result, std::uint64_t begin, std::uint64_t end) {
  GridPosition position = gridposition(p, begin);
  for (std::uint64_t i = begin; i < end; ++i, nextposition(p, position)) {
    if (!p.polar) {
      writevalue(p, position.part, result[i]);
      continue;
    }
    double parts[MOST_PARTS];
    std::copy_n(position.part, MOST_PARTS, parts);
    tocartesian(parts, p.parts);
    writevalue(p, parts, result[i]);
  }
}

}  // namespace

void writeinterval(const Progression &progression, Element *result, std::uint64_t begin, std::uint64_t end) noexcept {
  switch (progression.tag) {
    case tags::INTEGER:
      return writeintegers(progression, result, begin, end);
    case tags::ASCII:
      return writecharacters(progression, result, begin, end);
    case tags::REAL:
      return writereals(progression, result, begin, end);
    default:
      return writegrid(progression, result, begin, end);
  }
}

}  // namespace morvik
