// Leaf numerics of complex numbers, quaternions and octonions: cartesian and polar forms into each other, the sign that
// orders the higher numbers, and how far the components of a many-valued truth disagree.
#pragma once

#include "spaces/point.h"

namespace morvik {

// Half a turn in degrees; in radians it is pi.
inline constexpr double HALF_TURN = 180;

// Floating point operations that these functions did on this thread, until who counts flops takes them and sets 0.
extern constinit thread_local double hypercomplexflops;

// Conversions over arrays of 2, 4 and 8 doubles; `out` and `in` may be the same array. A polar value is the modulus,
// then the angles in radians. Polar to cartesian takes a sine or cosine below 1e-15 in magnitude as 0.
void polarcomplex(double *out, const double *in);
void cartesiancomplex(double *out, const double *in);
// Of polarquat the last angle is the arc sine of the component as it stands: NaN outside -1 to 1.
void polarquat(double *out, const double *in);
void cartesianquat(double *out, const double *in);
// Hyperspherical coordinates up to the highest component (angle) that is not 0, but at least to the fifth.
void polarocto(double *out, const double *in);
void cartesianocto(double *out, const double *in);

// -1.0 or 1.0: the sign of the first component that is not 0, of 4 and of 8 doubles; 0.0 where all are 0.
double csgnquat(const double *q4);
double csgnocto(const double *o8);

// From 0, no contradiction: how far the sum of the components, each clamped into 0 to 1, is from half their number. NaN
// in the trailing components of a quaternion or an octonion marks a truth of fewer values.
double contradict_c(const Element &element);
double contradict_q(const Element &element);
double contradict_o(const Element &element);
// The same of 2, 4 or 8 components side by side.
double contradiction(const double *parts, int count);

}  // namespace morvik
