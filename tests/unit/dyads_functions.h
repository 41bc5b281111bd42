// Functions of numbers of any kind for the models of dyadic instructions: by the complex functions of the library and
// by the table of units, not by what the instructions use.
#pragma once

#include <complex>
#include <functional>

#include "arithmetic_model.h"
#include "dyads.h"

namespace dyads {

using Complexes = std::complex<double>;

inline model::Parts partsof(const Value &v, std::int32_t tag) {
  const Value p = promoted(v, tag);
  return {p.parts.begin(), p.parts.begin() + count(tag)};
}
inline Value valueof(const model::Parts &parts, const Value &left, const Value &right, double tolerance) {
  Value v;
  v.tag = model::tagof(parts.size());
  std::copy(parts.begin(), parts.end(), v.parts.begin());
  v = dressed(v, left, right);
  v.tolerance = tolerance;
  return v;
}

// A complex function along the unit of the vector part; where there is none, along the first unit.
inline model::Parts along(const model::Parts &x, const std::function<Complexes(Complexes)> &f) {
  double v = 0;
  for (std::size_t k = 1; k < x.size(); ++k) v = std::hypot(v, x[k]);
  model::Parts result(x.size());
  if (x.size() == 2) {
    const Complexes w = f({x[0], x[1]});
    return {w.real(), w.imag()};
  }
  const Complexes w = f({x[0], v});
  result[0] = w.real();
  for (std::size_t k = 1; k < x.size(); ++k) result[k] = v == 0 ? (k == 1 ? w.imag() : 0) : x[k] / v * w.imag();
  return result;
}

}  // namespace dyads
