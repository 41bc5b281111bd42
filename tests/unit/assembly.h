// A fixture for what is compiled: the Points of a text, one by one, and what a text that fails leaves.
#pragma once

#include <string>

#include "compiled.h"
#include "spaces/symbols.h"

using namespace morvik;

class Assembly : public Compiled {
 protected:
  Entry *entry(const char *name) { return checkhash(table, name); }

  // Compiles a text that is one function and its end.
  Point &function(const std::string &text) {
    EXPECT_EQ(compile(text + " ."), 2) << text << err;
    EXPECT_EQ(programme[0].rank, ranks::FUNCTION) << text;
    return programme[0];
  }

  static void expectend(const Point &p) {
    const Point zero = {};
    EXPECT_EQ(std::memcmp(&p, &zero, sizeof p), 0);
  }

  void expectoperator(const Point &p, const char *name, int instruction, int modifier = instructions::NIHIL) {
    EXPECT_EQ(p.rank, ranks::OPERATOR) << name;
    EXPECT_EQ(p.type, ISOPERATOR) << name;
    EXPECT_STREQ(p.name, name);
    EXPECT_EQ(p.instruction, instruction) << name;
    EXPECT_EQ(p.modifier, modifier) << name;
    EXPECT_EQ(p.elements, 0u) << name;
    EXPECT_EQ(p.link, nullptr) << name;
    EXPECT_EQ(p.block, nullptr) << name;
  }

  // A failing text writes nothing, and the text after it is whole.
  void expectabandoned(const std::string &text, int number) {
    const std::string whole = text + " 42 .";
    EXPECT_EQ(compile(whole), 0) << text.substr(0, 100);
    EXPECT_TRUE(reported(number)) << text.substr(0, 100) << err;
    EXPECT_TRUE(isend(programme[0]));
    EXPECT_EQ(rest, " 42 .") << text.substr(0, 100);
    ASSERT_EQ(compile(" 42 ."), 2);
    EXPECT_EQ(programme[0].data_pointer->integer, 42);
  }
};

inline std::string repeated(const std::string &word, std::size_t times) {
  std::string text;
  for (std::size_t i = 0; i < times; ++i) text += word;
  return text;
}
