// The rows of keywords.def as a table.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace morvik {

enum class KeywordKind : std::uint8_t { PLAIN, REWRITE, MASK_FORM, MASK, DECISION, ROOT, YIELDTO, RUN, BREAK };

struct Hidden {
  enum : std::uint8_t { NOTHING, INTEGER, REAL } kind;
  double value;
};

struct Keyword {
  KeywordKind kind;
  bool bounded;  // a boundary byte must follow
  std::uint16_t instruction;
  std::uint16_t modifier;
  std::uint32_t mark;  // goes to the header of the function that the keyword is in
  Hidden hidden;
  std::span<const char *const> spellings;
};

extern const std::span<const Keyword> Keywords;

}  // namespace morvik
