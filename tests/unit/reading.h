// Reading back what was printed, and equality as far as a text can carry it.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "failure/jump.h"
#include "frontend/assembly.h"
#include "frontend/contexts.h"
#include "frontend/limits.h"
#include "frontend/symtab.h"
#include "points.h"
#include "spaces/symbols.h"

using namespace morvik;

namespace points {

struct Reader {
  Entry *table = makehashtab();
  Context *chain = makemeaning(table);
  std::vector<Point> programme = std::vector<Point>(PROGRAMME_POINTS);

  Reader() { stepping = 0; }
  ~Reader() {
    release(chain);
    releasetable(table);
  }
  Reader(const Reader &) = delete;
  Reader &operator=(const Reader &) = delete;

  // The Points of a text, without the END. What the scanner echoes is not looked at.
  std::vector<Point> read(const std::string &text) {
    const std::string ended = text + " .";
    const char *position = ended.c_str();
    programme[0] = {};
    testing::internal::CaptureStdout();
    const std::int64_t count = fill(programme.data(), chain, nullptr, nullptr, &position, SKIPPED);
    testing::internal::GetCapturedStdout();
    return {programme.begin(), programme.begin() + (count > 0 ? count - 1 : 0)};
  }
};

inline testing::AssertionResult same(const Point &a, const Point &b, double tolerance);

inline testing::AssertionResult differ(const char *what) {
  return testing::AssertionFailure() << what;
}

inline bool samereal(double a, double b, double tolerance) {
  if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
  return a == b || std::fabs(a - b) <= tolerance * std::max(std::fabs(a), 1.0);
}

inline testing::AssertionResult same(const Element &a, const Element &b, double tolerance) {
  if (a.tag != b.tag) return differ("tags") << ' ' << a.tag << ' ' << b.tag;
  if (a.tag == tags::SUBARRAY) return same(*a.subarray, *b.subarray, tolerance);
  if (a.tag == tags::ASCII) return a.ascii == b.ascii ? testing::AssertionSuccess() : differ("characters");
  if (a.form != b.form) return differ("forms") << ' ' << a.form << ' ' << b.form;
  if (a.tag == tags::INTEGER) return a.integer == b.integer ? testing::AssertionSuccess() : differ("integers");
  if (a.tag != tags::REAL && a.attributes != b.attributes) return differ("attributes");
  const std::vector<double> left = partsof(a), right = partsof(b);
  for (std::size_t k = 0; k < left.size(); ++k)
    if (!samereal(left[k], right[k], a.form == forms::POLAR ? tolerance : 0))
      return differ("part ") << k << ": " << left[k] << ' ' << right[k];
  return testing::AssertionSuccess();
}

inline constexpr std::uint32_t COMPARED = KIND_BITS | COMPLEXED | STRUCTURED | RANK_BITS;

// The depth that a literal inside another gets counts the deepest place of both; only the outermost is as it was.
inline testing::AssertionResult same(const Point &a, const Point &b, double tolerance) {
  if (a.elements != b.elements) return differ("elements") << ' ' << a.elements << ' ' << b.elements;
  if (a.elements == 0) return testing::AssertionSuccess();
  if (a.rank != b.rank) return differ("ranks") << ' ' << a.rank << ' ' << b.rank;
  if ((a.type & COMPARED) != (b.type & COMPARED)) return differ("types") << std::hex << ' ' << a.type << ' ' << b.type;
  for (std::int32_t k = 0; k < a.rank; ++k)
    if (a.shape_pointer[k].integer != b.shape_pointer[k].integer) return differ("shapes");
  for (std::uint32_t i = 0; i < a.elements; ++i)
    if (const auto result = same(a.data_pointer[i], b.data_pointer[i], tolerance); !result)
      return differ("element ") << i << ": " << result.message();
  return testing::AssertionSuccess();
}

}  // namespace points
