// The tables that are made from instructions.def.
#include "spaces/instructions.h"

namespace morvik {

const char Instructions[instructions::COUNT][32] = {
#define INSTRUCTION(number, name, argumentclass, key, handler, effect, meaning) #name,
#include "tables/instructions.def"
};

const std::uint16_t Types[instructions::COUNT] = {
#define INSTRUCTION(number, name, argumentclass, key, handler, effect, meaning) classes::argumentclass,
#include "tables/instructions.def"
};

const char Addressnames[instructions::COUNT][2] = {
#define INSTRUCTION(number, name, argumentclass, key, handler, effect, meaning) {key[0], key[1]},
#include "tables/instructions.def"
};

namespace {
// The rows are in the order of their numbers, none missing: what is indexed by number can be made row by row.
constexpr std::uint16_t numbers[] = {
#define INSTRUCTION(number, name, argumentclass, key, handler, effect, meaning) number,
#include "tables/instructions.def"
};
constexpr bool inorder() {
  for (std::size_t i = 0; i < sizeof numbers / sizeof *numbers; ++i)
    if (numbers[i] != i) return false;
  return true;
}
static_assert(inorder());
static_assert(sizeof numbers / sizeof *numbers == instructions::NAMELESS, "the last number has no row");
}  // namespace

}  // namespace morvik
