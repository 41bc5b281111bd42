// The vocabulary of instruction numbers, made from tables/instructions.def.
#pragma once

#include <cstdint>

namespace morvik {

namespace instructions {
enum Number : std::uint16_t {
#define INSTRUCTION(number, name, argumentclass, key, handler, effect, meaning) name = number,
#include "tables/instructions.def"
  NAMELESS,  // the last number has no row
  COUNT
};
// On IF_YES and IF_NO: nothing is decided but what stands on the stack.
inline constexpr std::uint16_t BARE = 65531;
}  // namespace instructions

// The argument classes by name, made from machine/classes.def.
namespace classes {
#define ARGUMENT_CLASS(number, name, wait, operands, more) inline constexpr std::uint16_t name = number;
#include "tables/classes.def"
#undef ARGUMENT_CLASS
}  // namespace classes
extern const char Instructions[instructions::COUNT][32];
extern const std::uint16_t Types[instructions::COUNT];   // argument classes
extern const char Addressnames[instructions::COUNT][2];  // two-byte keys, for memo texts

}  // namespace morvik
