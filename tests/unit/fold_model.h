// Folds written a second time, plainly: one step is an instruction on two elements, and a fold takes the elements of
// one row after the other.
#pragma once

#include <algorithm>
#include <functional>

#include "arithmetic_model.h"
#include "structure_values.h"

namespace folds {

using model::Outcome;
using model::Parts;
using model::Space;
using model::Value;
using structured::Extents;

inline constexpr double TOLERANCE = 1e-15;

// ---- One step of a fold: an instruction on two elements.

inline Value truth(bool value) {
  return {tags::INTEGER, forms::BOOLEAN, 0, value ? 1 : 0, {}, {}};
}

inline bool isletter(const Value &v) {
  return v.tag == tags::ASCII;
}

inline Parts widened(const Value &v, std::size_t size) {
  Parts parts = model::parts(v);
  parts.resize(std::max(parts.size(), size));
  return parts;
}

inline double modulus(const Parts &parts) {
  return std::sqrt(model::norm(parts));
}

// What higher numbers are ordered by: the modulus with the sign of the first part that is not 0.
inline double signedmodulus(const Parts &parts) {
  for (const double x : parts)
    if (x != 0) return parts.size() == 1 ? parts[0] : x > 0 ? modulus(parts) : -modulus(parts);
  return 0;
}

// A result of the kind of the wider operand, looking like one of that kind.
inline Value dressed(const Value &a, const Value &b, const Parts &parts) {
  Value v{model::tagof(parts.size()), forms::NUMBER, 0, 0, parts, {}};
  if (v.tag == tags::REAL) v.form = forms::COMPUTED;
  if (v.tag < tags::COMPLEX || (v.tag > tags::COMPLEX && a.tag != b.tag)) return v;
  const Value &shown = a.tag == v.tag ? a : b;
  v.form = shown.form;
  v.attributes = shown.attributes & model::PASSING;
  return v;
}

inline Outcome extremum(const Value &a, const Value &b, bool smaller) {
  if (isletter(a) != isletter(b)) return {162, {}};
  if (a.tag <= tags::INTEGER && b.tag <= tags::INTEGER) {
    Value chosen = (smaller ? b.integer < a.integer : b.integer > a.integer) ? b : a;
    if (chosen.tag == tags::INTEGER) chosen.form = forms::NUMBER;
    return {0, chosen};
  }
  const std::size_t size = std::max(model::parts(a).size(), model::parts(b).size());
  const Parts left = widened(a, size), right = widened(b, size);
  const auto weight = [&](const Parts &p) { return size == 1 ? p[0] : smaller ? signedmodulus(p) : modulus(p); };
  const bool second = smaller ? weight(right) < weight(left) : weight(right) > weight(left);
  return {0, dressed(a, b, second ? right : left)};
}

inline Outcome logical(const Value &a, const Value &b, const std::function<double(double, double)> &of) {
  if (isletter(a) || isletter(b)) return {162, {}};
  if (a.tag == tags::INTEGER && b.tag == tags::INTEGER) return {0, truth(of(a.integer > 0, b.integer > 0) == 1)};
  const Parts left = model::parts(a), right = model::parts(b);
  Parts parts(std::max(left.size(), right.size()));
  const auto clamp = [](double x) { return std::min(std::max(x, 0.0), 1.0); };
  for (std::size_t k = 0; k < parts.size(); ++k) {
    if (left.size() > 1 && k >= left.size()) {
      parts[k] = right[k];
    } else if (right.size() > 1 && k >= right.size()) {
      parts[k] = left[k];
    } else {
      parts[k] = of(clamp(left[left.size() == 1 ? 0 : k]), clamp(right[right.size() == 1 ? 0 : k]));
    }
  }
  return {0, dressed(a, b, parts)};
}

inline Outcome compared(const Value &a, const Value &b, const std::function<bool(double)> &holds) {
  if (isletter(a) != isletter(b)) return {162, {}};
  if (isletter(a)) return {0, truth(holds(static_cast<double>(a.integer - b.integer)))};
  const double d = signedmodulus(model::parts(a)) - signedmodulus(model::parts(b));
  return {0, truth(holds(std::fabs(d) <= TOLERANCE ? 0 : d))};
}

inline Outcome identical(const Value &a, const Value &b, bool same) {
  if (isletter(a) != isletter(b)) return {162, {}};
  if (isletter(a)) return {0, truth((a.integer == b.integer) == same)};
  const std::size_t size = std::max(model::parts(a).size(), model::parts(b).size());
  return {0, truth((widened(a, size) == widened(b, size)) == same)};
}

inline Outcome step(std::uint16_t modifier, const Value &a, const Value &b);

// Members: a single element against all of the other, otherwise element by element.
inline Outcome members(std::uint16_t modifier, const Value &a, const Value &b) {
  const auto space = [](const Value &v) { return v.tag == tags::SUBARRAY ? v.member[0] : model::scalarof(v); };
  const Space left = space(a), right = space(b);
  if (!model::single(left) && !model::single(right) && left.shape != right.shape) return {17, {}};
  const Space &shaped = model::single(left) && (!model::single(right) || right.rank > left.rank) ? right : left;
  Space made{shaped.rank, shaped.type & RANK_BITS, shaped.shape, {}};
  for (std::size_t i = 0; i < shaped.elements.size(); ++i) {
    const Outcome o =
        step(modifier, left.elements[model::single(left) ? 0 : i], right.elements[model::single(right) ? 0 : i]);
    if (o.message != 0) return o;
    made.elements.push_back(o.value);
  }
  return {0, {tags::SUBARRAY, 0, 0, 0, {}, {made}}};
}

inline Outcome step(std::uint16_t modifier, const Value &a, const Value &b) {
  if (a.tag == tags::SUBARRAY || b.tag == tags::SUBARRAY) return members(modifier, a, b);
  const auto strong = [](double x, double y) { return std::max(0.0, x + y - 1); };
  const auto bounded = [](double x, double y) { return std::min(1.0, x + y); };
  switch (modifier) {
    case instructions::ADD:
      return model::apply(model::Op::ADD, a, b);
    case instructions::SUBTRACT:
      return model::apply(model::Op::SUBTRACT, a, b);
    case instructions::MULTIPLY:
      return model::apply(model::Op::MULTIPLY, a, b);
    case instructions::DIVIDE:
      return model::apply(model::Op::DIVIDE, a, b);
    case instructions::MINIMUM:
    case instructions::MAXIMUM:
      return extremum(a, b, modifier == instructions::MINIMUM);
    case instructions::AND:
      return logical(a, b, [](double x, double y) { return std::min(x, y); });
    case instructions::OR:
      return logical(a, b, [](double x, double y) { return std::max(x, y); });
    case instructions::STRONGAND:
      return logical(a, b, strong);
    case instructions::STRONGOR:
      return logical(a, b, bounded);
    case instructions::STRONGNAND:
      return logical(a, b, [&](double x, double y) { return 1 - strong(x, y); });
    case instructions::STRONGNOR:
      return logical(a, b, [&](double x, double y) { return 1 - bounded(x, y); });
    case instructions::IDENTICAL:
    case instructions::NOTIDENTICAL:
      return identical(a, b, modifier == instructions::IDENTICAL);
    case instructions::LESS:
      return compared(a, b, [](double d) { return d < 0; });
    case instructions::NOTGREATER:
      return compared(a, b, [](double d) { return d <= 0; });
    case instructions::EQUIVALENT:
      return compared(a, b, [](double d) { return d == 0; });
    case instructions::NOTLESS:
      return compared(a, b, [](double d) { return d >= 0; });
    case instructions::GREATER:
      return compared(a, b, [](double d) { return d > 0; });
    default:
      return compared(a, b, [](double d) { return d != 0; });
  }
}

inline constexpr std::uint16_t FOLDING[] = {
    instructions::ADD,        instructions::SUBTRACT,     instructions::MULTIPLY,   instructions::DIVIDE,
    instructions::MINIMUM,    instructions::MAXIMUM,      instructions::AND,        instructions::OR,
    instructions::STRONGAND,  instructions::STRONGOR,     instructions::STRONGNAND, instructions::STRONGNOR,
    instructions::IDENTICAL,  instructions::NOTIDENTICAL, instructions::LESS,       instructions::NOTGREATER,
    instructions::EQUIVALENT, instructions::NOTLESS,      instructions::GREATER,    instructions::NOTEQUIVALENT};

inline bool isarithmetic(std::uint16_t modifier) {
  return modifier >= instructions::ADD && modifier <= instructions::DIVIDE;
}

// ---- The whole.

struct Folded {
  int message;
  Extents shape;
  std::vector<Value> elements;
};

// The message that a fold does not even begin with.
inline int refusal(std::uint16_t modifier, const Space &s) {
  if (isarithmetic(modifier) && (s.type & (HASASCII | HASUNICODE)) != 0) return 75;
  if (modifier != instructions::ADD || (s.type & COMPLEXED) == 0) return 0;
  for (const Value &v : s.elements)
    if (v.tag == tags::SUBARRAY) return 991;
  return 0;
}

// Along the first axis, or the last one.
inline Folded folded(std::uint16_t modifier, const Space &s, bool last) {
  Folded result{refusal(modifier, s), s.shape, {}};
  if (result.message != 0) return result;
  const std::size_t axis = last ? s.shape.size() - 1 : 0;
  const std::int64_t extent = s.shape[axis];
  result.shape.erase(result.shape.begin() + static_cast<std::ptrdiff_t>(axis));
  std::size_t count = 1;
  for (const std::int64_t n : result.shape) count *= static_cast<std::size_t>(n);
  for (std::size_t i = 0; i < count; ++i) {
    Extents place = structured::placeof(i, result.shape);
    place.insert(place.begin() + static_cast<std::ptrdiff_t>(axis), 0);
    Value sofar = s.elements[structured::indexof(place, s.shape)];
    for (place[axis] = 1; place[axis] < extent; ++place[axis]) {
      const Outcome o = step(modifier, sofar, s.elements[structured::indexof(place, s.shape)]);
      result.message = o.message;
      if (o.message != 0) return result;
      sofar = o.value;
    }
    result.elements.push_back(sofar);
  }
  return result;
}

inline bool alike(const Value &a, const Value &b) {
  if (a.tag != tags::SUBARRAY || b.tag != tags::SUBARRAY) return model::agree(a, b, 1e-12);
  const Space &x = a.member[0], &y = b.member[0];
  return x.shape == y.shape &&
         std::equal(x.elements.begin(), x.elements.end(), y.elements.begin(), y.elements.end(), alike);
}

}  // namespace folds
