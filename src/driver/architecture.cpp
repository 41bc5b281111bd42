// What this build is. MORVIK_VERSION, TARGET_SYSTEM, BUILD_TIME and COMPILER_LINE come from the build.
#include "driver/architecture.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <limits>

#include "spaces/point.h"

namespace morvik {

namespace {

constexpr const char *PROGRAMME = "Morvik " MORVIK_VERSION;
constexpr const char *VERSION = "n0.0 smp0.7";
constexpr int BUILD = 6;
constexpr const char *WIDTH = "64-bit";
constexpr const char *NOTICE = "Postfix arrays at the prompt. A text ends at \".\" or END; OFF leaves.";

struct Size {
  const char *name;
  std::size_t bytes;
};

// How much of a record an element of each type fills, its own blocks included.
constexpr Size STRUCTURES[] = {
    {"subarray", offsetof(Element, subarray) + sizeof(void *)},
    {"ascii", offsetof(Element, integer) + sizeof(std::int64_t)},
    {"unicode", offsetof(Element, integer) + sizeof(std::int64_t)},
    {"integer", offsetof(Element, integer) + sizeof(std::int64_t)},
    {"real", offsetof(Element, real) + sizeof(double)},
    {"complex", offsetof(Element, complex) + sizeof(Complex)},
    {"quaternion", offsetof(Element, otherparts) + sizeof(Element::otherparts)},
    {"octonion", offsetof(Element, octonion) + sizeof(void *) + sizeof(Octonion)},
    {"filler", offsetof(Element, integer)},
    {"file", sizeof(Element)},
    // Kept: no element tag uses it.
    {"continuation", sizeof(Element)},
    {"data element (common size)", sizeof(Element)},
};

constexpr Size ELEMENTS[] = {
    {"ascii", sizeof(std::uint8_t)}, {"integer", sizeof(std::int64_t)},  {"real", sizeof(double)},
    {"complex", sizeof(Complex)},    {"quaternion", sizeof(Quaternion)}, {"octonion", sizeof(Octonion)},
};

constexpr double GREATEST_WHOLE_REAL = std::bit_cast<double>(0x433FFFFFFFFFFFFF);
constexpr double REAL_PRECISION = std::bit_cast<double>(0x3CD203AF9EE75616);
constexpr double DECIMAL_DIGITS = 15.59;
constexpr double EPSILON = std::bit_cast<double>(0x3CA00000001733A2);
constexpr double OMEGA = std::numeric_limits<double>::max();

template <std::size_t COUNT>
void sizes(const char *title, const Size (&rows)[COUNT]) {
  std::printf("%s\n", title);
  for (const Size &row : rows) std::printf("\t%-28s%3zu\n", row.name, row.bytes);
  std::putchar('\n');
}

}  // namespace

void banner() {
  std::printf("\n\n-- %s version %s [build %d] %s --\n\n%s\n\n", PROGRAMME, VERSION, BUILD, WIDTH, NOTICE);
}

const char *system_architecture() {
  return TARGET_SYSTEM " at " BUILD_TIME " with\n " COMPILER_LINE;
}

void internals() {
  sizes("Structure sizes:", STRUCTURES);
  sizes("Individual element sizes (precisions):", ELEMENTS);
  std::printf("Computer implementation precision data\n");
  std::printf("\tgreatest INTEGER value       %ld\n", std::numeric_limits<std::int64_t>::max());
  std::printf("\tgreatest integer REAL value  %ld\n", static_cast<std::int64_t>(GREATEST_WHOLE_REAL));
  std::printf("\tREAL value precision         %lg\n", REAL_PRECISION);
  std::printf("\tprecision in decimal numbers %.2lf\n", DECIMAL_DIGITS);
  std::printf("\teps                          %.17lg\n", EPSILON);
  std::printf("\tomega                        %.17lg\n\n", OMEGA);
}

}  // namespace morvik
