// BINARY, NUMBER, POLAR and CARTESIAN: how an element is written back. The value stays what it is.
#include "arithmetic/monadic.h"

#include "spaces/messages.h"

namespace morvik {

namespace {

// The form that the result has, from that of the operand.
template <std::uint16_t (*form)(std::uint16_t)>
struct Reform : FlopCounter {
  template <class T>
  requires(Parted<T> || std::same_as<T, Integer>) Formed operator()(const T &, Heading head) {
    return {withform(head.word, form(formof(head.word)))};
  }
};

constexpr std::uint16_t binaryform(std::uint16_t) {
  return forms::BINARY;
}
constexpr std::uint16_t numberform(std::uint16_t) {
  return forms::NUMBER;
}
// The ordinary form stays beside the coordinates.
template <std::uint16_t coordinates>
constexpr std::uint16_t coordinateform(std::uint16_t form) {
  return form == forms::NUMBER ? static_cast<std::uint16_t>(coordinates | forms::NUMBER) : coordinates;
}

struct Binary : Reform<binaryform> {
  using Reform::operator();
  Formed operator()(Ascii, Heading head) { return {withform(head.word, forms::BINARY)}; }
  Formed operator()(Unicode, Heading head) { return {withform(head.word, forms::BINARY)}; }
};

// Only a character that is written in bits is the number that these bits are.
struct ToNumber : Reform<numberform> {
  using Reform::operator();
  std::int32_t check(Ascii, Heading head) const {
    return formof(head.word) == forms::BINARY ? 0 : messages::NUMBER_NOT_BINARY;
  }
  std::int32_t check(Unicode, Heading head) const {
    return formof(head.word) == forms::BINARY ? 0 : messages::NUMBER_NOT_BINARY;
  }
  Integer operator()(Ascii x) { return {x.value}; }
  Integer operator()(Unicode x) { return {x.value}; }
};

}  // namespace

MONADIC_SCALAR(binary, Binary)
MONADIC_SCALAR(number, ToNumber)
MONADIC_SCALAR(polar, Reform<coordinateform<forms::POLAR>>)
MONADIC_SCALAR(cartesian, Reform<coordinateform<forms::CARTESIAN>>)

}  // namespace morvik
