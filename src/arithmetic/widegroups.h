// The same groups in registers of 32 bytes, for processors that have them.
#pragma once

#include "arithmetic/groups.h"

#ifdef __x86_64__
#include <immintrin.h>

namespace morvik {

static_assert(GROUP == 4);  // which are written out here, one by one or by twos

[[gnu::always_inline]] inline const double *wordsof(const Element &e) {
  return reinterpret_cast<const double *>(&e);
}
[[gnu::always_inline]] inline double *wordsof(Element &e) {
  return reinterpret_cast<double *>(&e);
}

// Heading and name of a record as they stand in such a register.
[[MORVIK_WIDE, gnu::always_inline]] inline __m256d beginof(std::uint64_t head) {
  return _mm256_castsi256_pd(_mm256_set_epi64x(0, 0, 0, static_cast<long long>(head)));
}

// Two complex numbers in one register.
[[MORVIK_WIDE, gnu::always_inline]] inline __m256d numbersof(const Element &first, const Element &second) {
  return _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_loadu_pd(&first.complex.re)), _mm_loadu_pd(&second.complex.re),
                              1);
}

// Works two pairs into fresh records. False, with nothing done, where one is not for a group.
template <class Core, Lone lone>
[[MORVIK_WIDE, gnu::always_inline]] inline bool worktwo(std::uint64_t lefthead, std::int32_t tag, __m256d begin,
                                                        const Operands<lone> &operands, Element *result, std::size_t i,
                                                        Quad &values) {
  const Element &left = operands.leftat(i), &nextleft = operands.leftat(i + 1);
  const Element &right = operands.rightat(i), &nextright = operands.rightat(i + 1);
  if (headingof(left) != lefthead || right.tag != tag || headingof(nextleft) != lefthead || nextright.tag != tag)
      [[unlikely]]
    return false;
  Core::usual(values, Quad(numbersof(left, nextleft)), Quad(numbersof(right, nextright)));
  _mm256_storeu_pd(wordsof(result[i]), _mm256_insertf128_pd(begin, _mm256_castpd256_pd128(values), 1));
  _mm256_storeu_pd(wordsof(result[i + 1]), _mm256_blend_pd(begin, values, 0b1100));
  return true;
}

// As complexgroups.
template <class Core, Lone lone>
[[MORVIK_WIDE, gnu::noinline]] std::size_t widecomplexgroups(std::uint64_t lefthead, const Element *left,
                                                             const Element *right, Element *result, std::size_t count) {
  const Operands<lone> operands(left, right);
  const std::int32_t tag = heldtag<tags::COMPLEX>();
  const __m256d begin = beginof(lefthead & INHERITED_BITS);
  std::size_t done = 0;
  for (; count - done >= GROUP; done += GROUP) {
    Quad values, others;
    if (!worktwo<Core>(lefthead, tag, begin, operands, result, done, values) ||
        !worktwo<Core>(lefthead, tag, begin, operands, result, done + 2, others))
      break;
    const __m256d sum = values + others;
    if (UNLESSNAN<Core> && _mm256_movemask_pd(_mm256_cmp_pd(sum, sum, _CMP_UNORD_Q)) != 0) break;
  }
  return done;
}

// Records that lie over two lines of the cache are slow to read whole where the lines come from afar. Three spaces of
// so many are in the first cache together.
inline constexpr std::size_t MOST_NEAR = 200;

// Works a pair of reals by all words of their records: heading and name of the result are `begin`. Returns a register
// in which the tag is 0 if both have that of a real.
template <class Core, Lone lone>
[[MORVIK_TERNARY, gnu::always_inline]] inline __m256i workwords(__m256d begin, const Operands<lone> &operands,
                                                                Element *result, std::size_t i) {
  constexpr int DIFFER = 0b01111110;  // of three bits
  __m256d a = _mm256_loadu_pd(wordsof(operands.leftat(i))), b = _mm256_loadu_pd(wordsof(operands.rightat(i)));
  asm("" : "+x"(a), "+x"(b));  // read once
  Quad value;
  Core::usual(value, Quad(a), Quad(b));
  _mm256_storeu_pd(wordsof(result[i]), _mm256_blend_pd(begin, value, 0b1100));
  return _mm256_ternarylogic_epi64(_mm256_castpd_si256(a), _mm256_castpd_si256(b), _mm256_castpd_si256(begin), DIFFER);
}

// As realgroups, for what works component by component.
template <class Core, Lone lone>
[[MORVIK_TERNARY, gnu::noinline]] std::size_t widerealgroups(const Element *left, const Element *right, Element *result,
                                                             std::size_t count) {
  const Operands<lone> operands(left, right);
  const __m256d begin = beginof(heading(tags::REAL, forms::COMPUTED));
  std::size_t done = 0;
  for (; count - done >= GROUP; done += GROUP) {
    const auto differing =
        workwords<Core>(begin, operands, result, done) | workwords<Core>(begin, operands, result, done + 1) |
        workwords<Core>(begin, operands, result, done + 2) | workwords<Core>(begin, operands, result, done + 3);
    if (_mm_cvtsi128_si32(_mm256_castsi256_si128(differing)) != 0) break;
  }
  return done;
}

}  // namespace morvik
#else
namespace morvik {

// Nothing calls these.
inline constexpr std::size_t MOST_NEAR = 0;
template <class Core, Lone lone>
std::size_t widecomplexgroups(std::uint64_t, const Element *, const Element *, Element *, std::size_t) {
  return 0;
}
template <class Core, Lone lone>
std::size_t widerealgroups(const Element *, const Element *, Element *, std::size_t) {
  return 0;
}

}  // namespace morvik
#endif
