// Hand-written loops over records, made from what they do with one value or with two. They do what the instruction must
// do and nothing else: they trust every tag.
#pragma once

#include "kernels.h"

namespace kernels {

using Whole = std::int64_t;

// ---- Kinds, and what a loop does at both ends.

template <class T>
constexpr std::int32_t TAG = std::is_same_v<T, Ascii>        ? tags::ASCII
                             : std::is_same_v<T, Unicode>    ? tags::UNICODE
                             : std::is_same_v<T, Whole>      ? tags::INTEGER
                             : std::is_same_v<T, double>     ? tags::REAL
                             : std::is_same_v<T, Complex>    ? tags::COMPLEX
                             : std::is_same_v<T, Quaternion> ? tags::QUATERNION
                                                             : tags::OCTONION;
inline constexpr const char *KINDNAMES[] = {"",     "",        "ascii",      "unicode", "integer",
                                            "real", "complex", "quaternion", "octonion"};

template <class T>
inline T load(const Element &e) {
  if constexpr (std::is_same_v<T, Ascii>) return {e.ascii};
  if constexpr (std::is_same_v<T, Unicode>) return {e.unicode};
  if constexpr (std::is_same_v<T, double>) return e.real;
  if constexpr (std::is_same_v<T, Whole>) return e.integer;
  if constexpr (std::is_same_v<T, Complex>) return e.complex;
  if constexpr (std::is_same_v<T, Quaternion>) return quaternion(e);
  if constexpr (std::is_same_v<T, Octonion>) return *e.octonion;
}

inline void head(Element &e, std::int32_t tag, std::uint16_t form, std::uint16_t marks = 0) {
  e.tag = tag;
  e.form = form;
  e.attributes = marks;
}
inline void looklike(Element &e, std::int32_t tag, const Element &other) {
  head(e, tag, other.form, other.attributes & 0x3fff);
}

inline void store(Element &to, const Element &, double value) {
  head(to, tags::REAL, forms::COMPUTED);
  to.name = nullptr;
  to.real = value;
}
inline void store(Element &to, const Element &, Whole value) {
  head(to, tags::INTEGER, forms::NUMBER);
  to.name = nullptr;
  to.integer = value;
}
inline void store(Element &to, const Element &, bool value) {
  head(to, tags::INTEGER, forms::BOOLEAN);
  to.name = nullptr;
  to.integer = value;
}
inline void store(Element &to, const Element &like, Ascii value) {
  looklike(to, tags::ASCII, like);
  to.name = nullptr;
  to.integer = value.value;
}
inline void store(Element &to, const Element &like, Unicode value) {
  looklike(to, tags::UNICODE, like);
  to.name = nullptr;
  to.integer = value.value;
}
inline void store(Element &to, const Element &like, const Complex &value) {
  looklike(to, tags::COMPLEX, like);
  to.name = nullptr;
  to.complex = value;
}
inline void store(Element &to, const Element &like, const Quaternion &value) {
  looklike(to, tags::QUATERNION, like);
  setquaternion(to, value);
}
// Blocks are counted: one that somebody else holds too is not to be written over.
inline void store(Element &to, const Element &like, const Octonion &value) {
  Octonion *home = to.octonion;
  if (referencecount(home) != 1) [[unlikely]] {
    release(home);
    home = static_cast<Octonion *>(newblock(sizeof(Octonion)));
  }
  *home = value;
  looklike(to, tags::OCTONION, like);
  to.name = nullptr;
  to.octonion = home;
}
// What integer arithmetic made in doubles: an integer as long as it is one.
struct Sum {
  double value;
};
inline void store(Element &to, const Element &like, Sum sum) {
  if (std::fabs(sum.value) < INTEGER_BOUND)
    store(to, like, static_cast<Whole>(sum.value));
  else if (std::fabs(sum.value) == INTEGER_BOUND)
    store(to, like, sum.value < 0 ? std::numeric_limits<Whole>::min() : std::numeric_limits<Whole>::max());
  else
    store(to, like, sum.value);
}
// The same where something else decides.
struct Quotient {
  double value;
  bool whole;
};
inline void store(Element &to, const Element &like, Quotient quotient) {
  if (quotient.whole)
    store(to, like, static_cast<Whole>(quotient.value));
  else
    store(to, like, quotient.value);
}
// The operand's value again, in a form of its own.
template <class T>
struct Reformed {
  T value;
  std::uint16_t form;
};
template <class T>
inline void store(Element &to, const Element &like, const Reformed<T> &made) {
  const auto marks = static_cast<std::uint16_t>(like.attributes & 0x3fff);
  store(to, like, made.value);
  head(to, TAG<T>, made.form, marks);
}

// What #CT holds, which no loop knows beforehand.
extern double comparisontolerance;

// ---- The loops.

template <class T, class F>
[[gnu::noinline]] void overtwo(Element *r, const Element *a, const Element *b, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) store(r[i], a[i], F{}(load<T>(a[i]), load<T>(b[i])));
}
template <class T, class F>
[[gnu::noinline]] void overlone(Element *r, const Element *a, const Element *b, std::size_t count) {
  const T y = load<T>(*b);
  for (std::size_t i = 0; i < count; ++i) store(r[i], a[i], F{}(load<T>(a[i]), y));
}
template <class T, class F>
[[gnu::noinline]] void overone(Element *r, const Element *a, const Element *, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    if constexpr (std::is_invocable_v<F, T, const Element &>)
      store(r[i], a[i], F{}(load<T>(a[i]), a[i]));
    else
      store(r[i], a[i], F{}(load<T>(a[i])));
  }
}

template <class R>
constexpr std::int32_t resulttag() {
  if constexpr (std::is_same_v<R, Octonion> || std::is_same_v<R, Reformed<Octonion>>)
    return tags::OCTONION;
  else
    return tags::REAL;
}

// One row for two operands of kind T; F is what is done with them.
template <class T, class F>
Row two(const char *name, std::uint16_t instruction, double goal, F) {
  using R = decltype(F{}(std::declval<T>(), std::declval<T>()));
  Row row{};
  row.name = std::string(name) + "/" + KINDNAMES[TAG<T>];
  row.goal = goal;
  row.dyadic = dyadiccores(instruction);
  row.left = row.right = TAG<T>;
  row.result = resulttag<R>();
  row.byhand = overtwo<T, F>;
  return row;
}
template <class T, class F>
Row one(const char *name, const Monadic &cores, double goal, F) {
  Row row{};
  row.name = std::string(name) + "/" + KINDNAMES[TAG<T>];
  row.goal = goal;
  row.monadic = &cores;
  row.left = row.right = TAG<T>;
  if constexpr (std::is_invocable_v<F, T, const Element &>)
    row.result = resulttag<std::invoke_result_t<F, T, const Element &>>();
  else
    row.result = resulttag<std::invoke_result_t<F, T>>();
  row.byhand = overone<T, F>;
  row.rightstep = 0;
  return row;
}

// ---- Values.

// Component by component.
template <class T, class F>
inline T eachpart(const T &x, F &&f) {
  return assemble<T>([&](auto i) { return f(part(x, i)); });
}
template <class T, class F>
inline T eachpart(const T &x, const T &y, F &&f) {
  return assemble<T>([&](auto i) { return f(part(x, i), part(y, i)); });
}
template <class T>
inline double sumofsquares(const T &x) {
  double sum = part(x, 0) * part(x, 0);
  for (int i = 1; i < PARTS<T>; ++i) sum += part(x, i) * part(x, i);
  return sum;
}
template <class T>
constexpr bool ISHYPER = PARTS<T> > 1;

}  // namespace kernels
