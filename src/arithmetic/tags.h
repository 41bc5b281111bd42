// Where the same tags are among some dozen records, found without a branch that depends on them.
#pragma once

#include <algorithm>

#include "arithmetic/loops.h"

namespace morvik {

// So many records have one bit each in a word.
inline constexpr std::size_t MASK_BITS = 64;

// Records of one kind among them.
struct KindMask {
  std::size_t kind;
  PlaceMask places;
};
// The first so many of them, at least one.
inline PlaceMask firstplacemask(std::size_t count) {
  return ~PlaceMask{0} >> (MASK_BITS - count);
}

// The tags of up to 64 records, a byte for each: byte j of word i is that of record 8j + i. Every tag fits seven bits
// and a sign.
class Tags {
 public:
  // Of records side by side, or of a lone one so many times. `ahead`: 64 more follow, which are prefetched.
  Tags(const Element *e, std::size_t step, std::size_t size, bool ahead) {
    if (step == 0)
      std::fill(words, words + BYTES, byteof(*e) * ONES);
    else if (size < MASK_BITS)
      for (std::size_t i = 0; i < size; ++i) words[i % BYTES] |= byteof(e[i]) << i / BYTES * 8;
    else if (ahead)
      gathertags<true>(e);
    else
      gathertags<false>(e);
    for (std::uint64_t &word : words) word &= LOW;
  }

  // Eight in a word, how each differs from a tag.
  auto unlike(std::int32_t tag) const {
    return [this, wanted = repeatedbyte(tag)](std::size_t word) { return words[word] ^ wanted; };
  }
  static std::uint64_t repeatedbyte(std::int32_t byte) { return (static_cast<std::uint64_t>(byte) & 0x7f) * ONES; }
  // The places where such words say that nothing differs: a byte of seven bits is 0 if it does not reach 128 with 127
  // more.
  template <class Differing>
  static PlaceMask places(Differing differing) {
    PlaceMask result = 0;
    for (std::size_t i = 0; i < BYTES; ++i) result |= (~(differing(i) + LOW) & ~LOW) >> (BYTES - 1 - i);
    return result;
  }

 private:
  static constexpr std::size_t BYTES = 8;
  static constexpr std::uint64_t ONES = 0x0101010101010101, LOW = 0x7f * ONES;
  static_assert(MASK_BITS == BYTES * BYTES);

  static std::uint64_t byteof(const Element &e) { return static_cast<std::uint8_t>(e.tag); }
  // In the order of the records, so that memory is read as it comes.
  template <bool ahead>
  void gathertags(const Element *e) {
    for (std::size_t j = 0; j < BYTES; ++j, e += BYTES) [&]<std::size_t... i>(std::index_sequence<i...>) {
        if constexpr (ahead) (__builtin_prefetch(e + MASK_BITS + i), ...);
        ((words[i] = words[i] >> 8 | byteof(e[i]) << (BYTES - 1) * 8), ...);
      }
    (std::make_index_sequence<BYTES>{});
  }

  std::uint64_t words[BYTES] = {};
};

}  // namespace morvik
