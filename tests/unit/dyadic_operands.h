// Operands of every kind and shape for the tests of the dyadic frame, small enough that results are exact or nearly so.
#pragma once

#include "arithmetic_model.h"
#include "failure/jump.h"

using namespace morvik;

namespace arithmetic {

using points::Elements;

enum Kind { ASCII, UNICODE, INTEGER, REAL, COMPLEX, POLAR, QUATERNION, FLAT, OCTONION, NESTED, KINDS };

inline Element element(int kind, std::size_t i) {
  const double x = static_cast<double>(i);
  switch (kind) {
    case ASCII:
      return points::character(static_cast<char>('a' + i), i % 2 == 0 ? 0 : forms::BINARY);
    case UNICODE: {
      Element e = points::record(tags::UNICODE, 0);
      e.unicode = static_cast<std::uint16_t>(0x2200 + i);
      return e;
    }
    case INTEGER:
      return points::whole(static_cast<std::int64_t>(i) - 2, i % 2 == 0 ? forms::NUMBER : forms::BINARY);
    case REAL:
      return points::real(x - 2.5);
    case COMPLEX:
      return points::complex(x - 1, 2 - x, forms::CARTESIAN, attributes::PREFIX_R);
    case POLAR:
      return points::complex(x + 1, x - 2, forms::POLAR, attributes::DEGREES | attributes::SILENT);
    case QUATERNION:
      return points::quaternions(x - 1, 2, -x, x + 1, forms::CARTESIAN, attributes::PREFIX_R);
    case FLAT:
      return points::quaternions(x + 1, 2, 3 - x, 0, forms::POLAR, attributes::DEGREES);
    case OCTONION:
      return points::octonion({x, 1, -2, x, 1, 3, -x, x - 1}, forms::POLAR, attributes::DEGREES);
    default:
      return points::enclosed(points::numbers({static_cast<std::int64_t>(i) + 1, 2, 3}));
  }
}

inline const std::vector<std::vector<std::int64_t>> SHAPES = {{}, {1}, {1, 1}, {3}, {4}, {3, 2}, {2, 3}};

inline Point operand(int kind, const std::vector<std::int64_t> &shape, std::size_t from = 1) {
  if (shape.empty()) return points::scalar(element(kind, from));
  std::size_t count = 1;
  for (const std::int64_t extent : shape) count *= static_cast<std::size_t>(extent);
  Elements elements;
  for (std::size_t i = 0; i < count; ++i) elements.push_back(element(kind, from + i));
  return points::array(elements, shape);
}

inline std::string described(const Instruction &instruction, int left, const std::vector<std::int64_t> &leftshape,
                             int right, const std::vector<std::int64_t> &rightshape) {
  std::string text = std::string(instruction.name) + " of kind " + std::to_string(left) + " [";
  for (const auto extent : leftshape) text += " " + std::to_string(extent);
  text += " ] by kind " + std::to_string(right) + " [";
  for (const auto extent : rightshape) text += " " + std::to_string(extent);
  return text + " ]";
}

class Dyadics : public Lifetimes {
 protected:
  void SetUp() override {
    Lifetimes::SetUp();
    pendingproblem = 0;
  }
  // What is on the stack is held elsewhere too if `shared`.
  void push(Stack &stack, const Point &p, bool shared) {
    stack.push(p);
    if (shared) holdcopy(p);
  }
  void clear(Stack &stack) {
    while (stack.height() > 0) dereferencepoint(stack.top--);
  }
  void drop() {
    for (Point &p : held) dereferencepoint(&p);
    held.clear();
  }
};

// Enclosed so many times, each time beside the number of the level.
inline Point chain(int levels, std::int64_t value) {
  Point p = points::numbers({value, value + 1});
  for (int i = 0; i < levels; ++i) p = points::vector({points::enclosed(p), points::whole(i)});
  return p;
}

}  // namespace arithmetic
