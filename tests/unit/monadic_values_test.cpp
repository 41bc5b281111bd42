// What the monadic scalar instructions make of single values, the awkward ones above all.
#include <cmath>
#include <limits>

#include "monadics.h"

namespace {

using namespace points;
using monadics::result;

constexpr double INF = std::numeric_limits<double>::infinity();
constexpr double NOTANUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr double PI = 3.141592653589793;
constexpr double LARGEST = 1.7976931348623157e308, DENORMAL = 5e-324;
constexpr std::int64_t MOST = INT64_MAX, LEAST = INT64_MIN;

class MonadicValues : public Lifetimes {
 protected:
  // An integer of this form and value.
  void integer(const char *name, const Element &of, std::int64_t value, std::uint16_t form = forms::NUMBER,
               double tolerance = 0) {
    Point p = result(name, scalar(of), tolerance);
    const Element &e = *p.data_pointer;
    EXPECT_EQ(e.tag, tags::INTEGER) << name;
    EXPECT_EQ(e.integer, value) << name;
    EXPECT_EQ(e.form, form) << name;
    EXPECT_EQ(e.attributes, 0) << name;
    drop(p);
  }
  void truth(const char *name, const Element &of, bool value) { integer(name, of, value ? 1 : 0, forms::BOOLEAN); }

  // Components, each to so many units in the last place; NaN is NaN. The kind follows from how many there are.
  void parts(const char *name, const Element &of, const std::vector<double> &expected, double tolerance = 0,
             double units = 0) {
    Point p = result(name, scalar(of), tolerance);
    const std::vector<double> found = partsof(*p.data_pointer);
    ASSERT_EQ(found.size(), expected.size()) << name;
    for (std::size_t i = 0; i < found.size(); ++i) {
      if (std::isnan(expected[i]) || std::isinf(expected[i]) || units == 0)
        EXPECT_TRUE(found[i] == expected[i] || (std::isnan(found[i]) && std::isnan(expected[i])))
            << name << " part " << i << ": " << found[i] << " instead of " << expected[i];
      else
        EXPECT_NEAR(found[i], expected[i], units * 2.3e-16 * std::fmax(std::fabs(expected[i]), 1e-300)) << name;
    }
    drop(p);
  }

  void form(const char *name, const Element &of, std::uint16_t form, std::uint16_t marks) {
    const std::vector<double> before = partsof(of);
    const std::int64_t integer = of.integer;
    Point p = result(name, scalar(of));
    EXPECT_EQ(p.data_pointer->form, form) << name;
    EXPECT_EQ(p.data_pointer->attributes, marks) << name;
    EXPECT_EQ(partsof(*p.data_pointer), before) << name;
    if (before.empty()) EXPECT_EQ(p.data_pointer->integer, integer) << name;
    drop(p);
  }
};

TEST_F(MonadicValues, Conjugate) {
  parts("CONJUGATE", complex(3, 4), {3, -4});
  parts("CONJUGATE", quaternions(1, 2, -3, 4), {1, -2, 3, -4});
  parts("CONJUGATE", octonion({1, 2, 3, 4, 5, -6, 7, 8}), {1, -2, -3, -4, -5, 6, -7, -8});
  form("CONJUGATE", whole(3, forms::BINARY), forms::BINARY, 0);
  form("CONJUGATE", real(2.5, forms::COMPUTED), forms::COMPUTED, 0);
  form("CONJUGATE", complex(3, 0, forms::POLAR, attributes::DEGREES), forms::POLAR, attributes::DEGREES);
  form("CONJUGATE", complex(3, 0, forms::CARTESIAN | forms::NUMBER, attributes::PREFIX_R),
       forms::CARTESIAN | forms::NUMBER, attributes::PREFIX_R);
  form("CONJUGATE", complex(3, 0, forms::BINARY), forms::NUMBER, 0);
  form("CONJUGATE", quaternions(3, 0, 0, 0, forms::COMPUTED, 0x0020), forms::NUMBER, 0x0020);
  form("CONJUGATE", complex(3, 0, forms::CARTESIAN, 0xBFFF), forms::CARTESIAN, 0x3FFF);
}

TEST_F(MonadicValues, Negative) {
  integer("NEGATIVE", whole(5), -5);
  integer("NEGATIVE", whole(-9007199254740993), 9007199254740993);
  integer("NEGATIVE", whole(MOST), -MOST);
  integer("NEGATIVE", whole(LEAST), MOST);
  integer("NEGATIVE", whole(1, forms::BOOLEAN), -1);
  parts("NEGATIVE", real(-0.0), {0.0});
  parts("NEGATIVE", real(INF), {-INF});
  parts("NEGATIVE", real(NOTANUMBER), {NOTANUMBER});
  parts("NEGATIVE", complex(3, -4), {-3, 4});
  parts("NEGATIVE", octonion({1, 2, 3, 4, 5, 6, 7, 8}), {-1, -2, -3, -4, -5, -6, -7, -8});
}

TEST_F(MonadicValues, Signum) {
  integer("SIGNUM", whole(LEAST), -1);
  integer("SIGNUM", whole(0), 0);
  integer("SIGNUM", whole(7), 1);
  parts("SIGNUM", real(-DENORMAL), {-1});
  parts("SIGNUM", real(-0.0), {0});
  parts("SIGNUM", real(INF), {1});
  parts("SIGNUM", real(NOTANUMBER), {NOTANUMBER});
  parts("SIGNUM", complex(3, 4), {0.6, 0.8});
  parts("SIGNUM", complex(0, 0), {0, 0});
  parts("SIGNUM", complex(3e200, 4e200), {0.6, 0.8}, 0, 2);
  parts("SIGNUM", complex(0, -DENORMAL), {0, -1});
  parts("SIGNUM", quaternions(0, 0, 0, 0), {0, 0, 0, 0});
  parts("SIGNUM", quaternions(1, -1, 1, -1), {0.5, -0.5, 0.5, -0.5});
  parts("SIGNUM", octonion({0, 0, 0, 0, 0, 0, 3e-200, 4e-200}), {0, 0, 0, 0, 0, 0, 0.6, 0.8}, 0, 2);
}

TEST_F(MonadicValues, Direction) {
  integer("DIRECTION", whole(7), 1);
  parts("DIRECTION", whole(-7), {-1});  // a whole quotient that is negative is a real
  parts("DIRECTION", whole(0), {NOTANUMBER});
  parts("DIRECTION", real(-2.5), {-1});
  parts("DIRECTION", real(0), {NOTANUMBER});
  parts("DIRECTION", complex(3, -4), {0.6, -0.8});
  parts("DIRECTION", complex(0, 0), {NOTANUMBER, NOTANUMBER});
  parts("DIRECTION", quaternions(2, 0, 0, 0), {1, 0, 0, 0});
}

TEST_F(MonadicValues, Reciprocal) {
  integer("RECIPROCAL", whole(1), 1);
  parts("RECIPROCAL", whole(-1), {-1});
  parts("RECIPROCAL", whole(4), {0.25});
  parts("RECIPROCAL", whole(0), {INF});
  parts("RECIPROCAL", real(-0.0), {-INF});
  parts("RECIPROCAL", real(INF), {0});
  parts("RECIPROCAL", real(DENORMAL), {INF});
  parts("RECIPROCAL", complex(3, 4), {0.12, -0.16});
  parts("RECIPROCAL", complex(4, 0), {0.25, 0});
  parts("RECIPROCAL", complex(0, 0), {INF, 0});
  parts("RECIPROCAL", quaternions(1, 1, 1, 1), {0.25, -0.25, -0.25, -0.25});
  parts("RECIPROCAL", octonion({1, -1, 1, -1, 1, -1, 1, -1}),
        {0.125, 0.125, -0.125, 0.125, -0.125, 0.125, -0.125, 0.125});
}

TEST_F(MonadicValues, Magnitude) {
  integer("MAGNITUDE", whole(-5), 5);
  integer("MAGNITUDE", whole(LEAST), MOST);
  parts("MAGNITUDE", real(-2.5), {2.5});
  parts("MAGNITUDE", complex(3, 4), {5});
  parts("MAGNITUDE", complex(3e200, -4e200), {5e200}, 0, 2);
  parts("MAGNITUDE", complex(0, -DENORMAL), {DENORMAL});
  parts("MAGNITUDE", complex(-INF, 1), {INF});
  parts("MAGNITUDE", complex(1, NOTANUMBER), {NOTANUMBER});
  parts("MAGNITUDE", quaternions(1, -1, 1, -1), {2});
  parts("MAGNITUDE", octonion({2, 2, 2, 2, 0, 0, 0, 0}), {4});
  parts("MAGNITUDE", quaternions(LARGEST, LARGEST, 0, 0), {INF});
}

TEST_F(MonadicValues, Forms) {
  form("BINARY", whole(5), forms::BINARY, 0);
  form("BINARY", real(2.5), forms::BINARY, 0);
  form("BINARY", character('a'), forms::BINARY, 0);
  form("NUMBER", whole(1, forms::BOOLEAN), forms::NUMBER, 0);
  form("NUMBER", complex(3, 4, forms::POLAR, attributes::DEGREES), forms::NUMBER, attributes::DEGREES);
  integer("NUMBER", character('A', forms::BINARY), 65);
  integer("NUMBER", character('\xFF', forms::BINARY), 255);
  for (const std::uint16_t of : {forms::BINARY, forms::CARTESIAN, forms::COMPUTED}) {
    form("POLAR", complex(3, 4, of), forms::POLAR, 0);
    form("CARTESIAN", complex(3, 4, of), forms::CARTESIAN, 0);
  }
  form("POLAR", complex(3, 4, forms::NUMBER), forms::POLAR | forms::NUMBER, 0);
  form("CARTESIAN", complex(3, 4, forms::NUMBER), forms::CARTESIAN | forms::NUMBER, 0);
  form("POLAR", whole(3), forms::POLAR | forms::NUMBER, 0);
  form("CARTESIAN", real(2.5, forms::COMPUTED), forms::CARTESIAN, 0);
  form("POLAR", octonion({1, 2}), forms::POLAR, 0);
  form("CARTESIAN", quaternions(1, 2, 3, 4, forms::POLAR, attributes::DEGREES), forms::CARTESIAN, attributes::DEGREES);
}

TEST_F(MonadicValues, FormTests) {
  const std::vector<std::pair<const char *, std::uint16_t>> tests = {{"ISBOOLEAN", forms::BOOLEAN},
                                                                     {"ISBINARY", forms::BINARY},
                                                                     {"ISNUMBER", forms::NUMBER},
                                                                     {"ISCARTESIAN", forms::CARTESIAN},
                                                                     {"ISPOLAR", forms::POLAR}};
  for (const auto &[name, form] : tests)
    for (const std::uint16_t of : {forms::BOOLEAN, forms::COMPUTED, forms::BINARY, forms::NUMBER, forms::CARTESIAN,
                                   forms::POLAR, std::uint16_t{72}, std::uint16_t{24}}) {
      truth(name, whole(1, of), of == form);
      truth(name, complex(1, 2, of), of == form);
      truth(name, octonion({1, 2}, of), of == form);
      truth(name, character('a', of), of == form);
    }
}

TEST_F(MonadicValues, Angles) {
  parts("DEG", real(PI), {180}, 0, 4);
  parts("DEG", whole(1), {57.29577951308232}, 0, 4);
  parts("RAD", whole(180), {PI}, 0, 4);
  parts("RAD", real(-45.0), {-0.7853981633974483}, 0, 4);
  parts("RAD", real(LARGEST), {3.1375664143845866e306}, 0, 4);
  parts("DEG", real(LARGEST), {INF});
  form("DEG", complex(3, 4, forms::POLAR), forms::POLAR, attributes::DEGREES);
  form("RAD", complex(3, 4, forms::POLAR, attributes::DEGREES), forms::POLAR, 0);
  form("DEG", quaternions(1, 2, 3, 4, forms::POLAR | forms::NUMBER), forms::POLAR | forms::NUMBER, attributes::DEGREES);
  form("DEG", complex(3, 4), forms::CARTESIAN, 0);
  form("RAD", octonion({1, 2}, forms::NUMBER, attributes::DEGREES), forms::NUMBER, attributes::DEGREES);
}

TEST_F(MonadicValues, Floor) {
  integer("FLOOR", real(2.7), 2);
  integer("FLOOR", real(-2.2), -3);
  integer("FLOOR", real(-0.0), 0);
  integer("FLOOR", real(-DENORMAL), -1);
  integer("FLOOR", whole(MOST), MOST);
  integer("FLOOR", real(9.2e18), 9200000000000000000);
  parts("FLOOR", real(0x1p63), {0x1p63});
  parts("FLOOR", real(-1e300), {-1e300});
  parts("FLOOR", real(NOTANUMBER), {NOTANUMBER});
  parts("FLOOR", real(-INF), {-INF});
  integer("FLOOR", real(2.9999999), 3, forms::NUMBER, 1e-6);
  integer("FLOOR", real(2.999), 2, forms::NUMBER, 1e-6);
  integer("FLOOR", real(2.5), 2, forms::NUMBER, 1);  // near enough to both: the lower one
  integer("FLOOR", real(2.9), 2, forms::NUMBER, 1e300);
  integer("FLOOR", real(2.9), 2, forms::NUMBER, -1e300);
  integer("FLOOR", real(2.9), 2, forms::NUMBER, NOTANUMBER);
  parts("FLOOR", complex(2.25, -1.75), {2, -2});
  parts("FLOOR", complex(0.75, 0.5), {1, 0});
  parts("FLOOR", complex(0.5, 0.5), {1, 0});
  parts("FLOOR", complex(0.5, 0.75), {0, 0});
  parts("FLOOR", complex(0.5, 0.25), {0, 0});
  parts("FLOOR", complex(-0.25, -0.5), {0, -1});
  parts("FLOOR", complex(NOTANUMBER, 1.5), {NOTANUMBER, 1});
  parts("FLOOR", complex(1.9999999, 0.999), {2, 0}, 1e-6);
  parts("FLOOR", quaternions(0.75, 0.75, -0.5, INF), {0, 0, -1, INF});
  parts("FLOOR", octonion({1.5, -1.5, 2.9999999, 0, 1e300, 3, 4, 5}), {1, -2, 3, 0, 1e300, 3, 4, 5}, 1e-6);
}

TEST_F(MonadicValues, Ceiling) {
  integer("CEILING", real(2.2), 3);
  integer("CEILING", real(-2.7), -2);
  integer("CEILING", real(-0.5), 0);
  integer("CEILING", real(DENORMAL), 1);
  integer("CEILING", whole(LEAST), LEAST);
  parts("CEILING", real(-0x1p63), {-0x1p63});
  parts("CEILING", real(INF), {INF});
  integer("CEILING", real(3.0000001), 3, forms::NUMBER, 1e-6);
  integer("CEILING", real(3.001), 4, forms::NUMBER, 1e-6);
  integer("CEILING", real(2.1), 3, forms::NUMBER, 1e300);
  parts("CEILING", complex(-0.75, -0.5), {-1, 0});
  parts("CEILING", complex(0.25, 0.25), {0, 1});
  parts("CEILING", complex(1.5, 2.75), {2, 3});
  parts("CEILING", quaternions(0.25, -0.25, 2, NOTANUMBER), {1, 0, 2, NOTANUMBER});
}

TEST_F(MonadicValues, Truncate) {
  integer("TRUNCATE", real(2.9999999999), 2, forms::NUMBER, 1e-3);
  integer("TRUNCATE", real(-2.7), -2);
  integer("TRUNCATE", whole(-7), -7);
  parts("TRUNCATE", real(1e300), {1e300});
  parts("TRUNCATE", complex(-2.5, 0.75), {-2, 0});
  parts("TRUNCATE", octonion({1.5, -1.5, INF, 0.5, -0.5, 3, 4, 5}), {1, -1, INF, 0, 0, 3, 4, 5});
}

TEST_F(MonadicValues, Exponential) {
  parts("EXPONENTIAL", whole(0), {1});
  parts("EXPONENTIAL", whole(1), {2.718281828459045});
  parts("EXPONENTIAL", real(-INF), {0});
  parts("EXPONENTIAL", real(710), {INF});
  parts("EXPONENTIAL", real(NOTANUMBER), {NOTANUMBER});
  parts("EXPONENTIAL", complex(0, PI), {-1, 0});  // a sine below 1e-15 is 0
  parts("EXPONENTIAL", complex(0, PI / 2), {0, 1});
  parts("EXPONENTIAL", complex(INF, 0), {INF, 0});
  parts("EXPONENTIAL", complex(1, 1e-16), {2.718281828459045, 0});
  parts("EXPONENTIAL", quaternions(0, 0, PI, 0), {-1, 0, 0, 0});
  parts("EXPONENTIAL", quaternions(0, 0, 0, -PI / 2), {0, 0, 0, -1});
  parts("EXPONENTIAL", quaternions(1, 0, 0, 0), {2.718281828459045, 0, 0, 0});
  parts("EXPONENTIAL", octonion({0, 0, 0, 0, 0, 0, 0, PI / 2}), {0, 0, 0, 0, 0, 0, 0, 1});
}

TEST_F(MonadicValues, NaturalLog) {
  parts("NATURALLOG", whole(1), {0});
  parts("NATURALLOG", whole(0), {-INF});
  parts("NATURALLOG", real(-0.0), {-INF});
  parts("NATURALLOG", real(INF), {INF});
  parts("NATURALLOG", real(NOTANUMBER), {NOTANUMBER});
  parts("NATURALLOG", whole(-1), {0, PI});
  parts("NATURALLOG", real(-INF), {INF, PI});
  parts("NATURALLOG", whole(LEAST), {43.66827237527655, PI}, 0, 2);
  parts("NATURALLOG", complex(-1, -1e-17), {5e-35, PI}, 0, 2);  // nothing beside 1: on the axis
  parts("NATURALLOG", complex(0, 1), {0, PI / 2});
  parts("NATURALLOG", complex(0, 0), {-INF, 0});
  parts("NATURALLOG", complex(1e308, 1e308), {709.54278223244607, PI / 4}, 0, 2);
  parts("NATURALLOG", quaternions(0, 0, -2, 0), {0.6931471805599453, 0, -PI / 2, 0}, 0, 2);
  parts("NATURALLOG", quaternions(-1, 0, 0, 0), {0, PI, 0, 0});
  parts("NATURALLOG", octonion({0, 0, 0, 0, 0, 0, 1e-200, 0}), {-460.51701859880916, 0, 0, 0, 0, 0, 0, 0}, 0, 2);
  parts("NATURALLOG", octonion({0, 0, 0, 0, 3, 0, 0, 4}),
        {1.6094379124341003, 0, 0, 0, 0.6 * PI / 2, 0, 0, 0.8 * PI / 2}, 0, 4);
}

TEST_F(MonadicValues, PiTimes) {
  parts("PITIMES", whole(1), {PI});
  parts("PITIMES", whole(0), {0});
  parts("PITIMES", real(-0.5), {-PI / 2});
  parts("PITIMES", quaternions(1, 2, -1, 0.5), {PI, 2 * PI, -PI, PI / 2});
}

TEST_F(MonadicValues, Not) {
  truth("NOT", whole(1), false);
  truth("NOT", whole(7), false);
  truth("NOT", whole(0), true);
  truth("NOT", whole(-3), true);
  parts("NOT", real(0.25), {0.75});
  parts("NOT", real(-1), {1});
  parts("NOT", real(7), {0});
  parts("NOT", real(NOTANUMBER), {NOTANUMBER});
  parts("NOT", complex(2, 0.5), {0, 0.5});
  parts("NOT", quaternions(0.25, 1, 0, NOTANUMBER), {0.75, 0, 1, NOTANUMBER});
}

TEST_F(MonadicValues, Logical) {
  truth("LOGICAL", whole(7), true);
  truth("LOGICAL", whole(-7), false);
  parts("LOGICAL", real(0.25), {0.25});
  parts("LOGICAL", real(INF), {1});
  parts("LOGICAL", real(-DENORMAL), {0});
  parts("LOGICAL", quaternions(0.25, 2, -1, NOTANUMBER), {0.25, 1, 0, NOTANUMBER});
}

TEST_F(MonadicValues, IsLogical) {
  truth("ISLOGICAL", whole(1), true);
  truth("ISLOGICAL", whole(2), false);
  truth("ISLOGICAL", whole(-1), false);
  truth("ISLOGICAL", real(0.5), true);
  truth("ISLOGICAL", real(1.0000001), false);
  truth("ISLOGICAL", real(NOTANUMBER), true);
  truth("ISLOGICAL", quaternions(0, 1, 0.5, NOTANUMBER), true);
  truth("ISLOGICAL", octonion({0, 0, 0, 0, 0, 0, 0, 1.5}), false);
}

TEST_F(MonadicValues, Contradiction) {
  parts("CONTRADICTION", whole(3), {0});
  parts("CONTRADICTION", real(0.5), {0});
  parts("CONTRADICTION", real(NOTANUMBER), {NOTANUMBER});
  parts("CONTRADICTION", complex(0.5, 0.5), {0});
  parts("CONTRADICTION", complex(1, 1), {1});
  parts("CONTRADICTION", complex(2, -1), {0});
  parts("CONTRADICTION", quaternions(1, 1, 1, 1), {1});
  parts("CONTRADICTION", quaternions(1, 1, 1, NOTANUMBER), {1});
  parts("CONTRADICTION", octonion({1, 1, 1, 1, 0, 0, 0, 0}), {0});
  parts("CONTRADICTION", octonion({1, 1, 1, 1, 1, NOTANUMBER, NOTANUMBER, NOTANUMBER}), {1});
}

TEST_F(MonadicValues, Boolean) {
  truth("BOOLEAN", whole(7), true);
  truth("BOOLEAN", whole(0), false);
  truth("BOOLEAN", real(0.49), false);
  truth("BOOLEAN", real(0.51), true);
  truth("BOOLEAN", real(-INF), false);
  truth("BOOLEAN", real(INF), true);
  truth("BOOLEAN", real(NOTANUMBER), false);
  parts("BOOLEAN", quaternions(0.7, 0.2, 1, NOTANUMBER), {1, 0, 1, NOTANUMBER});
  truth("PROBABLY", whole(7), true);
  truth("PROBABLY", real(1), true);
  truth("PROBABLY", real(2), true);
  truth("PROBABLY", real(0), false);
  truth("PROBABLY", real(-1), false);
  parts("PROBABLY", octonion({1, 0, 2, -1, 1, 0, NOTANUMBER, NOTANUMBER}), {1, 0, 1, 0, 1, 0, NOTANUMBER, NOTANUMBER});
}

}  // namespace
