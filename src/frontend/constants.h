// The rows of constants.def as a table.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace morvik {

struct Constant {
  std::int32_t tag;  // 0: the empty vector
  std::uint16_t form;
  std::int64_t bits;  // the integer, or the bits of the double
  bool issigned;      // a leading `-` negates; true of reals only
  std::span<const char *const> spellings;
};

extern const std::span<const Constant> Constants;

}  // namespace morvik
