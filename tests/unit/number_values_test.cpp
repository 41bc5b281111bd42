// What a number is worth: of every shape, in a text of its own, in a vector, from a string and from a stream, it is
// what strtod makes of it.
#include <bit>
#include <cmath>
#include <cstdlib>
#include <random>
#include <vector>

#include "compiled.h"
#include "frontend/limits.h"

using namespace morvik;

namespace {

// The largest magnitude of an integer.
constexpr double LIMIT = 9.223372036854776e18;

class NumberValues : public Compiled {
 protected:
  // So many digits at most, none of them at least.
  std::string digits(unsigned most) {
    std::string text;
    for (unsigned i = static_cast<unsigned>(random() % (most + 1)); i > 0; --i)
      text += static_cast<char>('0' + random() % 10);
    return text;
  }
  std::string sign() { return random() % 2 ? "" : random() % 2 ? "-" : "\xAF"; }

  // A number of one part; long ones, leading zeros and far exponents among them.
  std::string number() {
    const unsigned most = random() % 8 == 0 ? 40 : random() % 4 == 0 ? 20 : 9;
    std::string text = sign() + (random() % 6 ? "" : "000") + digits(most), point = digits(most);
    if (text.find_first_of("0123456789") == std::string::npos) text += "7";
    if (random() % 2 && !point.empty()) text += "." + point;
    if (random() % 3 == 0) {
      text += random() % 2 ? "E" : "e";
      text += random() % 3 == 0 ? "+" : sign();
      text += (random() % 6 ? "" : "00") + std::to_string(random() % (random() % 8 == 0 ? 5000 : 40));
    }
    return text;
  }

  static std::string plain(std::string text) {
    for (char &byte : text)
      if (byte == '\xAF') byte = '-';
    return text;
  }

  static void expectvalue(const Element &e, const std::string &text) {
    const std::string minus = plain(text);
    const double value = std::strtod(minus.c_str(), nullptr);
    const bool point = minus.find('.') != std::string::npos,
               lowered = minus.find("E-") != std::string::npos || minus.find("e-") != std::string::npos;
    EXPECT_EQ(e.form, forms::NUMBER) << minus;
    EXPECT_EQ(e.attributes, 0) << minus;
    if (point || lowered || std::fabs(value) > LIMIT) {
      ASSERT_EQ(e.tag, tags::REAL) << minus;
      EXPECT_EQ(std::bit_cast<std::uint64_t>(e.real), std::bit_cast<std::uint64_t>(value)) << minus;
    } else {
      ASSERT_EQ(e.tag, tags::INTEGER) << minus;
      // 2^63 itself is within the limit, and no 64-bit integer.
      EXPECT_EQ(e.integer, value >= 0x1p63 ? INT64_MAX : static_cast<std::int64_t>(value)) << minus;
    }
  }

  std::mt19937_64 random{11};
};

TEST_F(NumberValues, OfScalars) {
  for (int i = 0; i < 20000; ++i) {
    const std::string text = number();
    expectvalue(element(text), text);
    if (HasFailure()) return;
  }
}

TEST_F(NumberValues, OfMembersFromAStringAndFromAStream) {
  constexpr std::size_t MEMBERS = 40000;
  std::vector<std::string> texts;
  std::string literal = "(";
  for (std::size_t i = 0; i < MEMBERS; ++i) {
    texts.push_back(number());
    literal += texts.back() + (random() % 9 ? " " : "\n\t");
  }
  literal += ") .";
  const auto expectall = [&] {
    ASSERT_EQ(programme[0].elements, MEMBERS);
    for (std::size_t i = 0; i < MEMBERS && !HasFailure(); ++i) expectvalue(programme[0].data_pointer[i], texts[i]);
  };
  ASSERT_EQ(compile(literal), 2);
  expectall();
  cleanup(programme);
  std::FILE *stream = fmemopen(literal.data(), literal.size(), "r");
  EXPECT_EQ(fill(programme, chain, &below, stream, nullptr, SKIPPED), 2);
  expectall();
  std::fclose(stream);
}

// Where one way of reading gives place to another.
TEST_F(NumberValues, AtTheEdges) {
  const char *const texts[] = {"9007199254740992",
                               "9007199254740993",
                               "9007199254740992.0",
                               "9007199254740993.0",
                               "0.9007199254740993",
                               "9007199254740991E22",
                               "9007199254740991E23",
                               "1E22",
                               "1E23",
                               "-1.0E22",
                               "1.0E23",
                               "1.0E-22",
                               "1.0E-23",
                               "9999999999999999999",
                               "18446744073709551615.0",
                               "18446744073709551616.0",
                               "99999999999999999999.0",
                               "0000000000000000000.1",
                               "00000000000000000001.5",
                               "1.5E999",
                               "1.5E1000",
                               "1.5E-999",
                               "1.5E-1000",
                               "-1E400",
                               "1E-400",
                               "1.5E0000000000000000000001",
                               "4.9E-324",
                               "2.4E-324",
                               "2.2250738585072011E-308",
                               "1.7976931348623158E308",
                               "1.7976931348623159E308",
                               "-0.0",
                               "-0",
                               "-0E5",
                               "-0E-5",
                               "0E999",
                               "0.0E-999",
                               "9223372036854775807",
                               "9223372036854776E3",
                               "9223372036854777E3",
                               "-9223372036854776E3",
                               "1E18",
                               "1E19",
                               "100000000000000000000E-2"};
  for (const char *text : texts) {
    expectvalue(element(text), text);
    ASSERT_EQ(compile(std::string("(") + text + " 1.5) ."), 2);
    expectvalue(programme[0].data_pointer[0], text);
  }
}

// The first part of a longer form is not what the number is worth.
TEST_F(NumberValues, APartThatBreaksOff) {
  EXPECT_EQ(compile("12.5i 3 ."), 4) << err;  // 12.5, the name i, 3
  expectvalue(*programme[0].data_pointer, "12.5");
  EXPECT_EQ(compile("(12i3j 7) ."), 2);
  ASSERT_EQ(programme[0].elements, 2u);
  EXPECT_EQ(programme[0].data_pointer[0].complex.im, 3.0);
  expectvalue(programme[0].data_pointer[1], "7");
}

}  // namespace
