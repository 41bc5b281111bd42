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
// On IF_YES and IF_NO: nothing is decided but what is on the stack.
inline constexpr std::uint16_t BARE = 65531;
}  // namespace instructions

// The argument classes by name, made from tables/classes.def.
namespace classes {
#define ARGUMENT_CLASS(number, name, wait, operands, more) inline constexpr std::uint16_t name = number;
#include "tables/classes.def"
#undef ARGUMENT_CLASS
}  // namespace classes
// By number.
extern const char Instructions[instructions::COUNT][32];
extern const char Addressnames[instructions::COUNT][2];  // two-byte keys, for memo texts
// Argument classes, for whoever asks for nothing else: the machine has what they ask for beside the handlers.
extern const std::uint16_t Types[instructions::COUNT];

}  // namespace morvik
