// A small table by the place of the value: what has no space in it is found out anew.
#include "machine/exactflags.h"

namespace morvik {

namespace {

struct Noted {
  const Point *bound;
  const Element *data;
  std::uint32_t elements;
};
constexpr std::size_t PLACES = 32, PLACE_BYTES = 64;
Noted noted[PLACES];

Noted &placeof(const Point &bound) {
  return noted[reinterpret_cast<std::uintptr_t>(&bound) / PLACE_BYTES % PLACES];
}

}  // namespace

void noteexact(const Point &bound) {
  placeof(bound) = {&bound, bound.data_pointer, bound.elements};
}

bool isexact(const Point &bound) {
  const Noted &n = placeof(bound);
  return n.bound == &bound && n.data == bound.data_pointer && n.elements == bound.elements;
}

void forgetexact(const Point &bound) {
  Noted &n = placeof(bound);
  if (n.bound == &bound) n.bound = nullptr;
}

}  // namespace morvik
