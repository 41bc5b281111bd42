// The short way for the plain numbers of a vector: it finds what the rules find, and reads no further.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "frontend/tokens.h"
#include "frontend/window.h"
#include "unit/scan_tokens.h"

using namespace morvik;

namespace {

struct Number {
  std::string text;
  Rule rule;
  Decimal decimal;
};

// Where the value counts: what is left out means nothing.
void expectequal(const Decimal &a, const Decimal &b, const std::string &text) {
  ASSERT_EQ(a.whole, b.whole) << text;
  if (!a.whole) return;
  EXPECT_EQ(a.digits, b.digits) << text;
  EXPECT_EQ(a.exponent, b.exponent) << text;
  EXPECT_EQ(a.minus, b.minus) << text;
}

struct Members {
  std::vector<Number> numbers;  // and all other tokens, without a decimal
  std::string echo;
  std::size_t plain = 0;
};

// The tokens of a vector's inside up to its end, plain numbers by the short way where it is asked for.
Members membersof(bool shortway) {
  Members members;
  testing::internal::CaptureStdout();
  for (Token token;;) {
    const bool plain = shortway && scanplain(token);
    members.plain += plain ? 1 : 0;
    if (!plain) token = scan(Condition::VECTOR);
    const bool isnumber = token.rule == Rule::INTEGER || token.rule == Rule::REAL;
    EXPECT_EQ(token.text[token.length], 0);
    members.numbers.push_back(
        {std::string(token.text, token.length), token.rule, isnumber ? *token.decimal : Decimal{}});
    if (token.rule == Rule::END_OF_INPUT) break;
  }
  scandone();
  members.echo = testing::internal::GetCapturedStdout();
  return members;
}

// Returns how many numbers went the short way.
std::size_t expectsame(const std::string &text) {
  scanfrom(nullptr, text.c_str());
  const Members expected = membersof(false);
  std::size_t plain = 0;
  for (const bool stream : {false, true}) {
    std::FILE *source = stream ? streamof(text) : nullptr;
    scanfrom(source, stream ? nullptr : text.c_str());
    const Members found = membersof(true);
    if (source) std::fclose(source);
    EXPECT_EQ(found.echo, expected.echo) << text;
    EXPECT_EQ(found.numbers.size(), expected.numbers.size()) << text;
    for (std::size_t i = 0; i < std::min(found.numbers.size(), expected.numbers.size()); ++i) {
      EXPECT_EQ(found.numbers[i].text, expected.numbers[i].text) << text;
      EXPECT_EQ(found.numbers[i].rule, expected.numbers[i].rule) << text;
      expectequal(found.numbers[i].decimal, expected.numbers[i].decimal, text);
    }
    plain = found.plain;
  }
  return plain;
}

}  // namespace

TEST(ScannerPlain, WhatIsPlain) {
  EXPECT_EQ(expectsame("1 -2\n\xAF"
                       "3\t0\r007 -0 1.5 -0.25 12345678901234567890 "),
            9u);
  EXPECT_EQ(expectsame("  1  \n\n  2 "), 2u);
  EXPECT_EQ(expectsame(std::string(40, '1') + " 0." + std::string(38, '1') + " -." + std::string(9, '1') + " "), 2u);
}

TEST(ScannerPlain, WhatIsNot) {
  for (const char *text : {"1",  "1)",    "1.",     "1. ",  "1.)", ".5 ",     "-.5 ", "-",   "- ",   "--1 ",  "-)",
                           ".",  "..",    "1.2.3 ", "1E3 ", "1e",  "1.5E-3 ", "1i2 ", "2x ", "0#1 ", "-#PI ", "#PI ",
                           "T ", "-NaN ", "Inf ",   "(1)",  "'a'", "`(",      "",     " ",   "\n",   "1\xAF", "1-2"})
    EXPECT_EQ(expectsame(text), 0u) << text;
  for (std::size_t digits = 38; digits < 45; ++digits) {
    const std::string number(digits, '7');
    EXPECT_EQ(expectsame(number + " 1 "), digits < 41 ? 2u : 1u);
    EXPECT_EQ(expectsame("-" + number + ".7 1 "), digits < 38 ? 2u : 1u);
    expectsame(number + ".");
    expectsame("-" + number + "i" + number);
  }
}

TEST(ScannerPlain, ALongNumberIsWhole) {
  const std::string digits(300000, '3');
  EXPECT_EQ(expectsame("1 2 " + digits + " 3 -" + digits + "." + digits + " 4 "), 4u);
}

TEST(ScannerPlain, NoiseIsReadAsTheRulesReadIt) {
  std::mt19937 random(11);
  const std::string likely = "0123456789012345678901234567890123456789   \n\t\r--\xAF...EeijpdrI#|)('`x\"";
  std::size_t plain = 0;
  for (int round = 0; round < 4000; ++round) {
    std::string text;
    const std::size_t length = random() % 60;
    while (text.size() < length) text += likely[random() % likely.size()];
    plain += expectsame(text);
  }
  EXPECT_GT(plain, 1000u) << "else the noise is no test";
}

TEST(ScannerPlain, ANulEndsTheInput) {
  const std::string text("1 23\0004 5 ", 9);
  std::FILE *stream = streamof(text);
  scanfrom(stream, nullptr);
  Token token;
  ASSERT_TRUE(scanplain(token));
  EXPECT_STREQ(token.text, "1");
  EXPECT_FALSE(scanplain(token));
  EXPECT_FALSE(scanplain(token)) << "nor when asked again";
  EXPECT_STREQ(scan(Condition::VECTOR).text, "23");
  EXPECT_FALSE(scanplain(token));
  EXPECT_EQ(scan(Condition::VECTOR).rule, Rule::END_OF_INPUT);
  scandone();
  EXPECT_EQ(std::getc(stream), '4');
  std::fclose(stream);
}

TEST(ScannerPlain, AStringIsLeftWhereItWasReadTo) {
  scanfrom(nullptr, "1 2 34x");
  Token token;
  ASSERT_TRUE(scanplain(token));
  EXPECT_STREQ(scanposition(), "2 34x");
  ASSERT_TRUE(scanplain(token));
  EXPECT_FALSE(scanplain(token));
  EXPECT_STREQ(scanposition(), "34x");
  EXPECT_STREQ(scan(Condition::VECTOR).text, "34");
  EXPECT_STREQ(scanposition(), "x");
  scandone();
}

// Reading past what was written would wait for ever, which the alarm turns into an end.
TEST(ScannerPlain, EachNumberComesWithTheByteBehindIt) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  std::FILE *stream = fdopen(ends[0], "r");
  alarm(20);
  scanfrom(stream, nullptr);
  for (const char *written : {"12 ", " 3.5\n", "\n-4\t"}) {
    ASSERT_GT(write(ends[1], written, std::string(written).size()), 0);
    Token token;
    ASSERT_TRUE(scanplain(token)) << written;
    EXPECT_NE(std::string(written).find(std::string(token.text, token.length)), std::string::npos);
  }
  for (const char *written : {")", "5i", "T", "6x"}) {
    ASSERT_GT(write(ends[1], written, std::string(written).size()), 0);
    Token token;
    EXPECT_FALSE(scanplain(token)) << written;
    while (input() != written[std::string(written).size() - 1]) {
    }
  }
  alarm(0);
  scandone();
  std::fclose(stream);
  close(ends[1]);
}
