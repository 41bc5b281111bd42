// The monadic scalar instructions for tests: all of them, made from the instruction table, with what they run
// on.
#pragma once

#include <array>
#include <cctype>
#include <string>
#include <vector>

#include "arithmetic/generator.h"
#include "arithmetic/scalars.h"
#include "coprocessor/coprocessor.h"
#include "failures.h"
#include "points.h"
#include "recount.h"
#include "spaces/counters.h"
#include "spaces/sysvars.h"

using namespace morvik;

namespace monadics {

struct Member {
  const char *name;
  MonadicFunction *plain;
  MonadicSlice *slice;
  DrawingFunction *drawing;
  DrawingSlice *drawingslice;
};

// All of them, in the order of their numbers.
inline const std::vector<Member> &members() {
  static const std::vector<Member> all = [] {
    std::vector<Member> found;
#define MONADIC(f) found.push_back({name, &f, &vec_##f, nullptr, nullptr})
#define DRAWING(f) found.push_back({name, nullptr, nullptr, &f, &vec_##f})
#define DYADIC(f) static_cast<void>(name)
#define SPACE(f) static_cast<void>(name)
#define HANDLER(f) static_cast<void>(name)
#define NOTIMPLEMENTED static_cast<void>(name)
#define RESTRICTED static_cast<void>(name)
#define NOTHING static_cast<void>(name)
#define INSTRUCTION(number, word, argumentclass, key, handler, effect, meaning) \
  [&](const char *name) { handler; }(#word);
#include "tables/instructions.def"
#undef INSTRUCTION
#undef MONADIC
#undef DRAWING
#undef DYADIC
#undef SPACE
#undef HANDLER
#undef NOTIMPLEMENTED
#undef RESTRICTED
#undef NOTHING
    return found;
  }();
  return all;
}

inline const Member &member(const std::string &name) {
  for (const Member &m : members())
    if (name == m.name) return m;
  ADD_FAILURE() << name << " is not in the table";
  return members().front();
}

// A bank of system variables with these values. The instruction Point and the generator's state stay the same.
struct Bank {
  std::array<Point, 16> variables{};
  Bank(double tolerance, std::int64_t origin) {
    variables[CT_SLOT] = points::scalar(points::real(tolerance));
    variables[IO_SLOT] = points::scalar(points::whole(origin));
  }
  ~Bank() {
    points::drop(variables[CT_SLOT]);
    points::drop(variables[IO_SLOT]);
  }
  Bank(const Bank &) = delete;
  Bank &operator=(const Bank &) = delete;
};

inline constexpr std::uint64_t SEED = 20011;

inline void run(const Member &m, Point &p, Bank &bank, std::uint64_t *state) {
  if (m.plain)
    m.plain(&p, nullptr, bank.variables.data(), 0);
  else
    m.drawing(&p, nullptr, bank.variables.data(), 0, state);
}
inline std::int32_t runslice(const Member &m, Point &p, std::uint32_t index, std::uint64_t *state) {
  if (m.slice) return m.slice(&p, nullptr, nullptr, index);
  return m.drawingslice(&p, nullptr, nullptr, index, state);
}

// Runs an instruction on a Point, in place. Returns the message number that was printed where it jumped, 0 where it
// did not.
inline int attempt(const Member &m, Point &p, Bank &bank, std::uint64_t seed = SEED) {
  std::uint64_t state = seed;
  int landing = 0;
  const failures::Printed printed =
      failures::printed([&] { landing = failures::landingof([&] { run(m, p, bank, &state); }); });
  if (landing == 0) return 0;
  std::size_t digit = 0;
  while (digit < printed.err.size() && std::isdigit(static_cast<unsigned char>(printed.err[digit])) == 0) ++digit;
  return std::atoi(printed.err.c_str() + digit);
}

// The same for what must not fail, quickly.
inline Point result(const std::string &name, Point p, double tolerance = 0, std::int64_t origin = 1,
                    std::uint64_t seed = SEED) {
  Bank bank(tolerance, origin);
  std::uint64_t state = seed;
  const int landing = failures::landingof([&] { run(member(name), p, bank, &state); });
  EXPECT_EQ(landing, 0) << name;
  return p;
}

}  // namespace monadics
