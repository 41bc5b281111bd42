// Leaf numerics of complex numbers, quaternions and octonions: cartesian and polar forms into each other, the sign that
// orders the higher numbers, and how far the components of a many-valued truth disagree.
#pragma once

#include <cmath>
#include <numbers>

#include "spaces/point.h"

namespace morvik {

// Half a turn in degrees; in radians it is pi.
inline constexpr double HALF_TURN = 180;

// The clean rule: a sine or cosine below this is 0.
inline constexpr double CLEAN = 1e-15;
inline double clean(double x) {
  return std::fabs(x) < CLEAN ? 0 : x;
}

// The angle rule: an imaginary part that cannot change 1.0 lies on the real axis.
inline bool onaxis(double imaginary) {
  return imaginary + 1.0 == 1.0;
}
inline double angleof(double re, double im) {
  if (onaxis(im)) return re < 0 ? std::numbers::pi : 0;
  return std::atan2(im, re);
}

// A truth lies in 0 to 1: what is outside is as true as can be, or not at all. NaN stays.
constexpr double clamped(double x) {
  if (x > 1) [[unlikely]]
    return 1;
  if (x < 0) [[unlikely]]
    return 0;
  return x;
}

// Floating point operations that these functions did on this thread, until who counts flops takes them and sets 0.
extern constinit thread_local double hypercomplexflops;

// Conversions over arrays of 2, 4 and 8 doubles; `out` and `in` may be the same array. A polar value is the modulus,
// then the angles in radians. Polar to cartesian goes by the clean rule, cartesian to polar by the angle rule.
void polarcomplex(double *out, const double *in);
void cartesiancomplex(double *out, const double *in);
// Of polarquat the last angle is the arc sine of the component as it is: NaN outside -1 to 1.
void polarquat(double *out, const double *in);
void cartesianquat(double *out, const double *in);
// Hyperspherical coordinates up to the highest component (angle) that is not 0, but at least to the fifth.
void polarocto(double *out, const double *in);
void cartesianocto(double *out, const double *in);
// The same of 2, 4 or 8 components in their place.
void topolar(double *parts, int count);
void tocartesian(double *parts, int count);

// -1.0 or 1.0: the sign of the first component that is not 0, of 4 and of 8 doubles; 0.0 where all are 0.
double csgnquat(const double *q4);
double csgnocto(const double *o8);

// From 0, no contradiction: how far the sum of 2, 4 or 8 components, each clamped into 0 to 1, is from half their
// number. NaN in the trailing components of a quaternion or an octonion marks a truth of fewer values.
double contradiction(const double *parts, int count);
// The same of an element of so many. Each kind has a name of its own for it, for callers that
// know the kind.
double contradiction(const Element &element);
inline double contradict_c(const Element &element) {
  return contradiction(element);
}
inline double contradict_q(const Element &element) {
  return contradiction(element);
}
inline double contradict_o(const Element &element) {
  return contradiction(element);
}

}  // namespace morvik
