// The rows of keywords.def as constant data: nothing is built at start.
#include "frontend/keywords.h"

#include <array>

#include "spaces/instructions.h"
#include "spaces/point.h"

namespace morvik {

namespace {

constexpr bool BOUNDED = true, FREE = false;
constexpr std::uint32_t NONE = 0;
constexpr Hidden NOTHING_HIDDEN = {Hidden::NOTHING, 0.0};
constexpr Hidden HIDDEN_INTEGER(int value) {
  return {Hidden::INTEGER, static_cast<double>(value)};
}
constexpr Hidden HIDDEN_REAL(double value) {
  return {Hidden::REAL, value};
}

// A row is on one line of keywords.def, so its line names the array of its spellings.
#define PASTE(a, b) a##b
#define SPELLINGS(line) PASTE(spellings, line)

#define KEYWORD(kind, boundary, instruction, modifier, mark, hidden, ...) \
  constexpr const char *SPELLINGS(__LINE__)[] = {__VA_ARGS__};
#include "tables/keywords.def"
#undef KEYWORD

constexpr auto rows = std::to_array<Keyword>({
#define KEYWORD(kind, boundary, instruction, modifier, mark, hidden, ...) \
  {KeywordKind::kind, boundary, instructions::instruction, instructions::modifier, mark, hidden, SPELLINGS(__LINE__)},
#include "tables/keywords.def"
#undef KEYWORD
});

}  // namespace

constinit const std::span<const Keyword> Keywords = rows;

}  // namespace morvik
