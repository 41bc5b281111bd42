// The numerics that hypercomplex.h offers. The angles of a quaternion and those of an octonion follow two conventions,
// which are both kept: what one of them writes, only its own inverse reads.
#include "spaces/hypercomplex.h"

#include <algorithm>
#include <cmath>

#include "spaces/parts.h"

namespace morvik {

constinit thread_local double hypercomplexflops = 0;

namespace {

constexpr int LEAST_HIGHEST = 4;  // an octonion's angles reach at least so far

void countflops(int flops) {
  hypercomplexflops += flops;
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

double clampedsum(const double *parts, int count) {
  countflops(2 * count + 3);
  double sum = 0;
  for (int i = 0; i < count; ++i) sum += clamped(parts[i]);
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
  out[1] = angleof(a, b);
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
    out[1] = angleof(a, b);
    out[2] = angleof(a, std::sqrt(b * b + c * c));
    out[3] = std::asin(d);
  } else {
    countflops(8);
    out[0] = std::sqrt(a * a + b * b + c * c);
    out[1] = angleof(a, b);
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
  polar[h] = angleof(in[h - 1], in[h]);
  for (int k = h - 1; k > 0; --k) {
    squares += in[k] * in[k];
    polar[k] = angleof(in[k - 1], std::sqrt(squares));
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

void topolar(double *parts, int count) {
  switch (count) {
    case COMPLEX_PARTS:
      return polarcomplex(parts, parts);
    case QUATERNION_PARTS:
      return polarquat(parts, parts);
    default:
      return polarocto(parts, parts);
  }
}

void tocartesian(double *parts, int count) {
  switch (count) {
    case COMPLEX_PARTS:
      return cartesiancomplex(parts, parts);
    case QUATERNION_PARTS:
      return cartesianquat(parts, parts);
    default:
      return cartesianocto(parts, parts);
  }
}

double csgnquat(const double *q4) {
  return leadingsign(q4, QUATERNION_PARTS);
}
double csgnocto(const double *o8) {
  return leadingsign(o8, OCTONION_PARTS);
}

double contradiction(const double *parts, int count) {
  int values = count;
  if (count == QUATERNION_PARTS && std::isnan(parts[3])) values = 3;
  if (count == OCTONION_PARTS && std::isnan(parts[7]))
    values = !std::isnan(parts[6]) ? 7 : std::isnan(parts[5]) ? 5 : 6;
  return disagreement(parts, values);
}

double contradiction(const Element &element) {
  double parts[MOST_PARTS];
  const int count = readparts(element, parts);
  return contradiction(parts, count);
}

}  // namespace morvik
