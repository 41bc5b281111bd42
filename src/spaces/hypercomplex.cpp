// The numerics that hypercomplex.h offers. The angles of a quaternion and those of an octonion follow two conventions,
// which are both kept: what one of them writes, only its own inverse reads.
#include "spaces/hypercomplex.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace morvik {

constinit thread_local double hypercomplexflops = 0;

namespace {

constexpr double CLEAN = 1e-15;  // a sine or cosine below this counts as 0

constexpr int QUATERNION_PARTS = 4, OCTONION_PARTS = 8;
constexpr int LEAST_HIGHEST = 4;  // an octonion's angles reach at least so far

void countflops(int flops) {
  hypercomplexflops += flops;
}

// The angle of (x, y), where a y that cannot change 1.0 lies on the axis.
double angle(double y, double x) {
  if (y + 1.0 == 1.0) return x < 0 ? std::numbers::pi : 0;
  return std::atan2(y, x);
}

double clean(double x) {
  return std::fabs(x) < CLEAN ? 0 : x;
}
double cleansine(double x) {
  return clean(std::sin(x));
}
double cleancosine(double x) {
  return clean(std::cos(x));
}

int highestpart(const double *parts) {
  int h = OCTONION_PARTS - 1;
  while (h > LEAST_HIGHEST && parts[h] == 0) --h;
  return h;
}

// One flop a test.
double leadingsign(const double *parts, int count) {
  int tests = 1;
  while (tests < count && parts[tests - 1] == 0) ++tests;
  countflops(tests);
  const double first = parts[tests - 1];
  return first == 0 ? 0 : first < 0 ? -1.0 : 1.0;
}

// Written with the two comparisons, so that NaN passes through.
double clamp(double x) {
  return x > 1 ? 1 : x < 0 ? 0 : x;
}

double clampedsum(const double *parts, int count) {
  countflops(2 * count + 3);
  double sum = 0;
  for (int i = 0; i < count; ++i) sum += clamp(parts[i]);
  return sum;
}

double disagreement(const double *parts, int count) {
  const double middle = count / 2.0;
  return std::fabs(clampedsum(parts, count) - middle) / middle;
}

}  // namespace

void polarcomplex(double *out, const double *in) {
  const double a = in[0], b = in[1];
  countflops(5);
  out[0] = std::sqrt(a * a + b * b);
  out[1] = angle(b, a);
}

void cartesiancomplex(double *out, const double *in) {
  const double r = in[0], theta = in[1];
  countflops(4);
  out[0] = r * cleancosine(theta);
  out[1] = r * cleansine(theta);
}

void polarquat(double *out, const double *in) {
  const double a = in[0], b = in[1], c = in[2], d = in[3];
  if (d != 0) {
    countflops(15);
    out[0] = std::sqrt(a * a + b * b + c * c + d * d);
    out[1] = angle(b, a);
    out[2] = angle(std::sqrt(b * b + c * c), a);
    out[3] = std::asin(d);
  } else {
    countflops(8);
    out[0] = std::sqrt(a * a + b * b + c * c);
    out[1] = angle(b, a);
    out[2] = std::asin(c);
    out[3] = 0;
  }
}

void cartesianquat(double *out, const double *in) {
  const double r = in[0];
  const double sine1 = cleansine(in[1]), cosine1 = cleancosine(in[1]);
  const double sine2 = cleansine(in[2]), cosine2 = cleancosine(in[2]);
  if (in[3] == 0) {
    countflops(9);
    out[0] = r * cosine1 * cosine2;
    out[1] = r * sine1 * cosine2;
    out[2] = r * sine2;
    out[3] = 0;
  } else {
    const double sine3 = cleansine(in[3]), cosine3 = cleancosine(in[3]);
    countflops(15);
    out[0] = r * cosine1 * cosine2 * cosine3;
    out[1] = r * sine1 * cosine2 * cosine3;
    out[2] = r * sine2 * cosine3;
    out[3] = r * sine3;
  }
}

void polarocto(double *out, const double *in) {
  const int h = highestpart(in);
  double polar[OCTONION_PARTS] = {};
  double squares = in[h] * in[h];  // of the components from this one up
  polar[h] = angle(in[h], in[h - 1]);
  for (int k = h - 1; k > 0; --k) {
    squares += in[k] * in[k];
    polar[k] = angle(std::sqrt(squares), in[k - 1]);
  }
  polar[0] = std::sqrt(squares + in[0] * in[0]);
  countflops(4 * h + 2);
  std::copy_n(polar, OCTONION_PARTS, out);
}

void cartesianocto(double *out, const double *in) {
  const int h = highestpart(in);
  double cartesian[OCTONION_PARTS] = {};
  double product = in[0];  // of the modulus and the sines so far
  for (int k = 0; k < h; ++k) {
    cartesian[k] = product * cleancosine(in[k + 1]);
    product *= cleansine(in[k + 1]);
  }
  cartesian[h] = product;
  countflops(4 * h);
  std::copy_n(cartesian, OCTONION_PARTS, out);
}

double csgnquat(const double *q4) {
  return leadingsign(q4, QUATERNION_PARTS);
}
double csgnocto(const double *o8) {
  return leadingsign(o8, OCTONION_PARTS);
}

double contradiction(const double *parts, int count) {
  int values = count;
  if (count == 4 && std::isnan(parts[3])) values = 3;
  if (count == 8 && std::isnan(parts[7])) values = !std::isnan(parts[6]) ? 7 : std::isnan(parts[5]) ? 5 : 6;
  return disagreement(parts, values);
}

double contradict_c(const Element &element) {
  const double parts[] = {element.complex.re, element.complex.im};
  return contradiction(parts, 2);
}

double contradict_q(const Element &element) {
  const Quaternion q = quaternion(element);
  return contradiction(q.part, 4);
}

double contradict_o(const Element &element) {
  return contradiction(element.octonion->part, 8);
}

}  // namespace morvik
