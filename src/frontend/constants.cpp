// The rows of constants.def as constant data.
#include "frontend/constants.h"

#include <array>

#include "spaces/point.h"

namespace morvik {

namespace {

constexpr bool SIGNED = true, UNSIGNED = false;

// A row is on one line of constants.def, so its line names the array of its spellings.
#define PASTE(a, b) a##b
#define SPELLINGS(line) PASTE(spellings, line)

#define CONSTANT(tag, form, bits, sign, ...) constexpr const char *SPELLINGS(__LINE__)[] = {__VA_ARGS__};
#include "tables/constants.def"
#undef CONSTANT

constexpr auto rows = std::to_array<Constant>({
#define CONSTANT(tag, form, bits, sign, ...) {tag, form, bits, sign, SPELLINGS(__LINE__)},
#include "tables/constants.def"
#undef CONSTANT
});

constexpr bool onlyrealsaresigned() {
  for (const Constant &row : rows)
    if (row.issigned && row.tag != tags::REAL) return false;
  return true;
}
static_assert(onlyrealsaresigned());

}  // namespace

constinit const std::span<const Constant> Constants = rows;

}  // namespace morvik
