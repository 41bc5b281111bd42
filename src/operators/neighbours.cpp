// The sums of weighted neighbourhoods. The data are laid out as plain numbers, a row along the fastest axis after the
// other with a zero at both ends, so that a neighbour along that axis is one number further. All is worked in doubles,
// which is how integers are multiplied and folded too.
#include "operators/neighbours.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "arithmetic/kinds.h"
#include "arithmetic/loops.h"
#include "failure/custody.h"
#include "failure/signals.h"
#include "spaces/blocks.h"
#include "spaces/convert.h"

namespace morvik {

namespace {

constexpr double MOST_SUM =
    0x1p62;  // what integers add up to here, so that no step rounds to more than an integer holds
constexpr std::size_t TILE = 1024;  // columns whose sums are made before their records are written
constexpr std::size_t PAIRS = 4;    // pairs of columns that are worked together
constexpr std::uint32_t REACH = 3;  // offsets of a dimension, -1 to 1

// One place of the mask, in the present row.
struct Place {
  double weight;
  bool isreal;        // the weight is a real
  bool gives;         // it is not 0, so that there is a product
  bool inside;        // the row that it refers to is there
  std::int8_t shift;  // along the row
  const double *row;  // what is weighted in the first column; zeros where there is nothing
};

struct Work {
  const Point *data;
  const Point *weights;
  std::size_t columns, rows;
  std::size_t places;
  bool realdata;
  bool integers;  // every product is one
  double *zeros;  // a row of them
  double *numbers;
  Place *place;
};

std::size_t widthof(const Work &w) {
  return w.columns + 2;
}

// The value of a plain number; false for any other record, and for what is not finite.
bool readnumber(const Element &e, double &value) {
  value = e.tag == tags::INTEGER ? static_cast<double>(e.integer) : e.real;
  return e.tag == tags::INTEGER || (e.tag == tags::REAL && std::isfinite(value));
}

// Lays out the mask. Returns the sum of the magnitudes, below 0 where a weight is no plain number.
double layweights(Work &w) {
  double sum = 0;
  w.integers = !w.realdata;
  for (std::size_t j = 0; j < w.places; ++j) {
    const Element &e = w.weights->data_pointer[j];
    Place &p = w.place[j];
    p = {};
    if (!readnumber(e, p.weight)) return -1;
    p.isreal = e.tag == tags::REAL;
    p.gives = p.weight != 0;
    p.shift = static_cast<std::int8_t>(static_cast<int>(j % REACH) - 1);
    w.integers &= !p.isreal;
    sum += std::fabs(p.weight);
  }
  return sum;
}

// What the data are found to be while they are laid out.
struct Findings {
  std::uint32_t others;     // not 0 where a record is of another kind
  std::uint64_t magnitude;  // of integers: one more is not below any, and not above twice the largest
  bool infinite;            // a real is no finite number
  bool areplain() const { return others == 0 && !infinite; }
};

template <std::int32_t tag>
void laynumbers(const Element *from, std::size_t count, double *to, Findings &found) {
  std::uint32_t others = 0;
  std::uint64_t magnitude = 0;
  bool infinite = false;
  for (std::size_t i = 0; i < count; ++i) {
    const Element &e = from[i];
    others |= static_cast<std::uint32_t>(e.tag ^ tag);
    if constexpr (tag == tags::REAL) {
      to[i] = e.real;
      infinite |= !std::isfinite(e.real);
    } else {
      to[i] = static_cast<double>(e.integer);
      magnitude |= static_cast<std::uint64_t>(e.integer ^ (e.integer >> 63));
    }
  }
  found.others |= others;
  found.magnitude |= magnitude;
  found.infinite |= infinite;
}

// Lays out the data, as long as they are plain.
Findings laydata(const Work &w) {
  Findings found{};
  const Element *from = w.data->data_pointer;
  std::fill_n(w.zeros, widthof(w), 0.0);
  for (std::size_t row = 0; row < w.rows && found.areplain(); ++row) {
    double *const to = w.numbers + row * widthof(w);
    to[0] = to[w.columns + 1] = 0;
    for (std::size_t column = 0; column < w.columns; column += TILE) {
      safepoint();
      const std::size_t count = std::min(TILE, w.columns - column);
      if (w.realdata)
        laynumbers<tags::REAL>(from + column, count, to + 1 + column, found);
      else
        laynumbers<tags::INTEGER>(from + column, count, to + 1 + column, found);
    }
    from += w.columns;
  }
  return found;
}

// Where each place of the mask is, seen from a row of the data. The offsets count in threes, whatever the extents.
void placemask(const Work &w, std::size_t row) {
  for (std::size_t j = 0; j < w.places; ++j) {
    Place &p = w.place[j];
    std::size_t digits = j / REACH, left = row, stride = 1, index = 0;
    p.inside = true;
    for (std::int32_t d = 1; d < w.data->rank; ++d, digits /= REACH) {
      const std::int64_t extent = w.data->shape_pointer[d].integer;
      const auto size = static_cast<std::size_t>(extent);
      const std::int64_t at = static_cast<std::int64_t>(left % size) + static_cast<std::int64_t>(digits % REACH) - 1;
      p.inside &= at >= 0 && at < extent;
      index += static_cast<std::size_t>(at) * stride;
      left /= size;
      stride *= size;
    }
    p.row = (p.inside && p.gives ? w.numbers + index * widthof(w) : w.zeros) + 1 + p.shift;
  }
}

// What the sums of a column are: reals or integers, and their flops. Those at the ends of a row lack neighbours.
struct Column {
  bool real;
  double productflops, sumflops;
};

Column lookat(const Work &w, bool first, bool last) {
  Column c{};
  std::size_t integers = 0;  // before the first real
  for (std::size_t j = 0; j < w.places; ++j) {
    const Place &p = w.place[j];
    const bool there = p.inside && !(first && p.shift < 0) && !(last && p.shift > 0);
    const bool realproduct = there && p.gives && (p.isreal || w.realdata);
    c.real |= realproduct || (there && p.isreal);
    integers += c.real ? 0 : 1;
    c.productflops += realproduct ? 1 : 0;
  }
  // A step between integers is no flop.
  if (c.real) c.sumflops = static_cast<double>(w.places - std::max<std::size_t>(integers, 1));
  return c;
}

// A product with 0 is 0, without a sign. Integers show none anyway.
template <bool integers>
Pair product(Pair weight, Pair datum) {
  const Pair x = weight * datum;
  if constexpr (integers) return x;
  using Bits __attribute__((vector_size(16))) = long long;
  return std::bit_cast<Pair>(std::bit_cast<Bits>(x) & std::bit_cast<Bits>(datum != Pair{}));
}

Pair pairat(const double *from) {
  Pair result;
  std::memcpy(&result, from, sizeof result);
  return result;
}

// The sums of columns that begin at `column`, `count` of them, at most a tile. The numbers of a sum come in the order
// of the mask.
template <bool integers>
void sumcolumns(const Work &w, std::size_t column, std::size_t count, double *to) {
  constexpr std::size_t TOGETHER = 2 * PAIRS;
  std::size_t i = 0;
  for (; i + TOGETHER <= count; i += TOGETHER) {
    safepoint();
    Pair sums[PAIRS];
    for (std::size_t k = 0; k < PAIRS; ++k)
      sums[k] = product<integers>(Pair{} + w.place[0].weight, pairat(w.place[0].row + column + i + 2 * k));
    for (std::size_t j = 1; j < w.places; ++j) {
      const Pair weight = Pair{} + w.place[j].weight;
      const double *const from = w.place[j].row + column + i;
      for (std::size_t k = 0; k < PAIRS; ++k) sums[k] += product<integers>(weight, pairat(from + 2 * k));
    }
    std::memcpy(to + i, sums, sizeof sums);
  }
  for (; i < count; ++i) {
    safepoint();
    Pair sum = product<integers>(Pair{w.place[0].weight}, Pair{w.place[0].row[column + i]});
    for (std::size_t j = 1; j < w.places; ++j)
      sum += product<integers>(Pair{w.place[j].weight}, Pair{w.place[j].row[column + i]});
    to[i] = sum[0];
  }
}

void writesums(const double *sums, std::size_t count, bool real, Element *to) {
  if (real)
    for (std::size_t i = 0; i < count; ++i) writerecord(to[i], sums[i]);
  else
    for (std::size_t i = 0; i < count; ++i) writerecord(to[i], static_cast<std::int64_t>(sums[i]), forms::NUMBER);
}

void note(NeighbourSums &found, const Column &c, std::size_t count) {
  if (count == 0) return;
  found.kinds |= c.real ? HASREAL : HASINTEGER;
  found.productflops += c.productflops * static_cast<double>(count);
  found.sumflops += c.sumflops * static_cast<double>(count);
}

void sumrow(const Work &w, Element *to, NeighbourSums &found) {
  const std::size_t last = w.columns - 1;
  const Column first = lookat(w, true, last == 0), middle = lookat(w, false, false), end = lookat(w, false, true);
  note(found, first, 1);
  note(found, middle, last > 1 ? last - 1 : 0);
  note(found, end, last > 0 ? 1 : 0);
  double sums[TILE];
  for (std::size_t column = 0; column < w.columns; column += TILE) {
    const std::size_t count = std::min(TILE, w.columns - column);
    w.integers ? sumcolumns<true>(w, column, count, sums) : sumcolumns<false>(w, column, count, sums);
    writesums(sums, count, middle.real, to + column);
    if (column == 0) writesums(sums, 1, first.real, to);
    if (last > 0 && column + count > last) writesums(sums + (last - column), 1, end.real, to + last);
  }
}

// One block for all that the work needs; null where there is none.
void *takeblock(Work &w) {
  const std::size_t numbers = (w.rows + 1) * widthof(w) * sizeof(double);
  void *const block = tryblock(numbers + w.places * sizeof(Place));
  if (!block) return nullptr;
  w.zeros = static_cast<double *>(block);
  w.numbers = w.zeros + widthof(w);
  w.place = reinterpret_cast<Place *>(static_cast<char *>(block) + numbers);
  return block;
}

bool layout(Work &w) {
  const double weight = layweights(w);
  if (weight < 0) return false;
  const Findings found = laydata(w);
  return found.areplain() && (static_cast<double>(found.magnitude) + 1) * weight < MOST_SUM;
}

}  // namespace

bool sumneighbourhoods(const Point &data, const Point &weights, Element *to, NeighbourSums &found) {
  if (data.rank < 1 || weights.elements < 2) return false;
  Work w{};
  w.data = &data;
  w.weights = &weights;
  w.columns = static_cast<std::size_t>(data.shape_pointer[0].integer);
  w.rows = data.elements / w.columns;
  w.places = weights.elements;
  w.realdata = data.data_pointer->tag == tags::REAL;
  void *const block = takeblock(w);
  if (!block) return false;
  Custody working;
  takecustody(working, releaseblock, block);
  const bool plain = layout(w);
  found = {};
  for (std::size_t row = 0; plain && row < w.rows; ++row) {
    placemask(w, row);
    sumrow(w, to + row * w.columns, found);
  }
  endcustody(working);
  freeblock(block);
  return plain;
}

}  // namespace morvik
