// The scanner against a slow one of another make: every rule of INITIAL as a pattern of the POSIX matcher, which finds
// the longest match of each, or as a comparison of strings; the longest of all counts, and of equal ones the earlier.
#include <gtest/gtest.h>
#include <regex.h>

#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "frontend/constants.h"
#include "frontend/keywords.h"
#include "frontend/tokens.h"
#include "frontend/window.h"
#include "unit/scan_tokens.h"

using namespace morvik;

namespace {

struct Found {
  Rule rule;
  std::size_t row, length;
};

class Pattern {
 public:
  explicit Pattern(const std::string &text) {
    if (regcomp(&compiled, ("^(" + text + ")").c_str(), REG_EXTENDED) != 0) ADD_FAILURE() << text;
  }
  ~Pattern() { regfree(&compiled); }
  Pattern(const Pattern &) = delete;
  Pattern &operator=(const Pattern &) = delete;
  std::size_t length(const char *text) const {
    regmatch_t match;
    return regexec(&compiled, text, 1, &match, 0) == 0 ? static_cast<std::size_t>(match.rm_eo) : 0;
  }

 private:
  regex_t compiled;
};

class Oracle {
 public:
  Oracle() {
    const std::string count = "[-\xAF]?[0-9]+", white = "[ \t\n\r]*", narrow = "[ \n]*";
    words(Rule::OPEN_FUNCTION, 0, false, {":"});
    words(Rule::OPEN_FUNCTION, 0, true, {"NEADIC", "FUNCTION", "NILADIC", "MONADIC", "DYADIC", "TRIADIC"});
    pattern(Rule::OPEN_FUNCTION, true,
            "ARGS" + white + count + white + "FUNCTION|VARS" + white + count + white +
                "(NEADIC|NILADIC|MONADIC|DYADIC|TRIADIC)|ARGS" + narrow + count + narrow + "VARS" + narrow + count +
                " *FUNCTION|VARS" + narrow + count + narrow + "ARGS" + narrow + count + " *FUNCTION");
    words(Rule::BUILTIN, 0, false, {"::"});
    for (std::size_t row = 0; row < Keywords.size(); ++row)
      words(Rule::KEYWORD, row, Keywords[row].bounded,
            {Keywords[row].spellings.begin(), Keywords[row].spellings.end()});
    words(Rule::END_OF_TEXT, 0, false, {".", ".\n", "END\n"});
    words(Rule::END_OF_TEXT, 0, true, {"END"});
    words(Rule::CLOSE_FUNCTION, 0, false, {";"});
    words(Rule::CLOSE_FUNCTION, 0, true, {"FUNCTIONEND"});
    words(Rule::OPEN_COMMENT, 0, false, {"\"", "\xBC"});
    for (std::size_t row = 0; row < Constants.size(); ++row)
      for (const std::string spelling : Constants[row].spellings) {
        words(Rule::CONSTANT, row, true, {spelling});
        if (Constants[row].issigned) words(Rule::CONSTANT, row, true, {"-" + spelling});
      }
    numbers();
    words(Rule::OPEN_STRING, 0, false, {"'"});
    words(Rule::OPEN_VECTOR, 0, false, {"("});
    words(Rule::OPEN_STRUCTURE, 0, false, {"`("});
    words(Rule::ADDRESS, 0, false, {"@"});
    pattern(Rule::SIGIL_NAME, false, "[_$.][A-Za-z_][0-9A-Za-z_]*");
    pattern(Rule::BRACKET_NAME, false, "[_$.]?\x02");
    pattern(Rule::LABEL, false, "%[A-Za-z_][0-9A-Za-z_]*");
    pattern(Rule::LOCAL, false, "&" + count);
    words(Rule::LINE_FEED, 0, false, {"\n"});
  }

  // The token at the beginning of a text that begins with no white space but a line feed.
  Found find(const char *text) const {
    Found best = {Rule::NAME_START, 0, 1};
    std::size_t longest = 0;
    for (const Step &step : steps) {
      const std::size_t length = step.pattern ? step.pattern->length(text)
                                 : std::strncmp(text, step.word.c_str(), step.word.size()) == 0 ? step.word.size()
                                                                                                : 0;
      if (length == 0 || (step.bounded && !isboundary(static_cast<unsigned char>(text[length])))) continue;
      const std::size_t matched = length + (step.bounded ? 1 : 0);
      if (matched <= longest) continue;
      longest = matched;
      best = {step.rule, step.row, length};
    }
    return best;
  }

  std::string anyword(std::mt19937 &random) const {
    const Step &step = steps[random() % steps.size()];
    return step.pattern ? std::string("VARS 1") : step.word;
  }

 private:
  struct Step {
    Rule rule;
    std::size_t row;
    bool bounded;
    std::string word;
    std::unique_ptr<Pattern> pattern;
  };

  void words(Rule rule, std::size_t row, bool bounded, const std::vector<std::string> &spellings) {
    for (const std::string &spelling : spellings) steps.push_back({rule, row, bounded, spelling, nullptr});
  }
  void pattern(Rule rule, bool bounded, const std::string &text) {
    steps.push_back({rule, 0, bounded, "", std::make_unique<Pattern>(text)});
  }
  void numbers() {
    const std::string exponent = "([Ee][-+\xAF]?[0-9]+)?";
    const std::string c = "([-\xAF]?([0-9]+(\\.[0-9]+)?|\\.[0-9]+)" + exponent + "|[-\xAF]?(Inf|inf|Infinity)|NaN|nan)";
    const auto part = [&c](const char *letter) { return "(" + (letter + c) + ")"; };
    const auto maybe = [&part](const char *letter) { return part(letter) + "?"; };
    const std::string cartesian = "#?r?" + c, polar = "d?r?" + c;
    pattern(Rule::BINARY_NUMBER, false, "0#[01|]+");
    pattern(Rule::BINARY_CHARACTER, false, "`0#[01|]+`");
    pattern(Rule::INTEGER, false, "[-\xAF]?[0-9]+([Ee]\\+?[0-9]+)?");
    pattern(Rule::REAL, false, c);
    pattern(Rule::COMPLEX, false, cartesian + part("i"));
    pattern(Rule::QUATERNION, false, cartesian + maybe("i") + "(" + part("j") + maybe("k") + "|" + part("k") + ")");
    const std::string ijk = maybe("i") + maybe("j") + maybe("k");
    pattern(Rule::OCTONION, false,
            cartesian + ijk + "(" + part("l") + maybe("m") + maybe("n") + maybe("o") + "|" + part("m") + maybe("n") +
                maybe("o") + "|" + part("n") + maybe("o") + "|" + part("o") + ")");
    pattern(Rule::POLAR_COMPLEX, false, polar + part("p"));
    pattern(Rule::POLAR_QUATERNION, false, polar + maybe("p") + "(" + part("q") + maybe("r") + "|" + part("r") + ")");
    const std::string pqr = maybe("p") + maybe("q") + maybe("r");
    pattern(Rule::POLAR_OCTONION, false,
            polar + pqr + "(" + part("s") + maybe("t") + maybe("u") + maybe("v") + "|" + part("t") + maybe("u") +
                maybe("v") + "|" + part("u") + maybe("v") + "|" + part("v") + ")");
  }

  std::vector<Step> steps;
};

std::string describe(Rule rule, std::size_t row, const std::string &text) {
  return rulename(rule) + (" " + std::to_string(row) + " ") + text;
}

// Only the first token: what comes after a name or a bracket is read in other conditions.
void expectequal(const Oracle &oracle, const std::string &text) {
  scanfrom(nullptr, text.c_str());
  const Token token = scan(Condition::INITIAL);
  const std::string found = describe(token.rule, token.row, std::string(token.text, token.length));
  const auto read = static_cast<std::size_t>(scanposition() - text.c_str());
  scandone();
  const std::size_t skipped = text.find_first_not_of("\t\r ");
  if (skipped == std::string::npos) {
    EXPECT_EQ(token.rule, Rule::END_OF_INPUT) << text;
    return;
  }
  const Found expected = oracle.find(text.c_str() + skipped);
  EXPECT_EQ(found, describe(expected.rule, expected.row, text.substr(skipped, expected.length))) << text;
  EXPECT_EQ(read, skipped + expected.length) << text;
}

std::string pick(std::mt19937 &random, const std::string &alphabet, std::size_t length) {
  std::string text;
  while (text.size() < length) text += alphabet[random() % alphabet.size()];
  return text;
}

}  // namespace

TEST(ScannerOracle, Numbers) {
  const Oracle oracle;
  std::mt19937 random(1);
  const char *const pieces[] = {"1", "23", "-", "\xAF", "+",   ".",   "E",     "e",   "i",   "j", "k",
                                "l", "m",  "n", "o",    "p",   "q",   "r",     "s",   "t",   "u", "v",
                                "d", "#",  "|", "0#",   "Inf", "inf", "inity", "NaN", "nan", "`", " "};
  for (int round = 0; round < 8000; ++round) {
    std::string text;
    const std::size_t count = 1 + random() % 14;
    for (std::size_t i = 0; i < count; ++i) {
      text += pieces[random() % std::size(pieces)];
      if (random() % 2 != 0) text += '1';
    }
    expectequal(oracle, text);
  }
}

TEST(ScannerOracle, Words) {
  const Oracle oracle;
  std::mt19937 random(2);
  for (int round = 0; round < 6000; ++round) {
    std::string text = oracle.anyword(random);
    if (random() % 4 == 0) text += oracle.anyword(random);
    if (random() % 4 == 0) text.resize(1 + random() % text.size());
    text += pick(random, " \n.x1_[]/\\~^v!?#\xAB\xB0\xC0\xC5%,:;", random() % 4);
    expectequal(oracle, text);
  }
}

TEST(ScannerOracle, Symbols) {
  const Oracle oracle;
  std::mt19937 random(3);
  for (int round = 0; round < 6000; ++round)
    expectequal(oracle,
                pick(random, "+-*/|^v!~=<>#,.[]\\?:;%&_$`'\"\xAB\xB0\xB2\xB3\xC0\xC1\xC5\xC6\xC7\xCC\xDC\xEA x1\n",
                     1 + random() % 8));
}

TEST(ScannerOracle, FunctionOpenings) {
  const Oracle oracle;
  std::mt19937 random(4);
  const char *const pieces[] = {"ARGS", "VARS", "FUNCTION", "NEADIC", "NILADIC", "MONADIC", "DYADIC", "TRIADIC",
                                "1",    "-2",   " ",        " ",      "\n",      "\t",      "\r"};
  for (int round = 0; round < 6000; ++round) {
    std::string text = random() % 2 != 0 ? "ARGS" : "VARS";
    for (std::size_t i = random() % 10; i > 0; --i) text += pieces[random() % std::size(pieces)];
    expectequal(oracle, text);
  }
}
