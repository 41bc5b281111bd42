// What the tests of the scanner share: a text scanned to its end as a list of lines, one a token.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "frontend/keywords.h"
#include "frontend/scanner.h"
#include "frontend/tokens.h"
#include "frontend/window.h"

using namespace morvik;

inline const char *rulename(Rule rule) {
  static const char *const names[] = {
      "ENDOFINPUT",  "KEYWORD",        "OPENFUNCTION",  "BUILTIN",         "ENDOFTEXT",       "CLOSEFUNCTION",
      "OPENCOMMENT", "CONSTANT",       "BINARYNUMBER",  "BINARYCHARACTER", "INTEGER",         "REAL",
      "COMPLEX",     "QUATERNION",     "OCTONION",      "POLARCOMPLEX",    "POLARQUATERNION", "POLAROCTONION",
      "OPENSTRING",  "OPENVECTOR",     "OPENSTRUCTURE", "ADDRESS",         "SIGILNAME",       "BRACKETNAME",
      "LABEL",       "LOCAL",          "LINEFEED",      "NAMESTART",       "NAMEPART",        "NAMEEND",
      "CLOSEVECTOR", "CLOSESTRUCTURE", "CLOSETOSHAPE",  "CLOSETONOOP",     "CHARACTERS",      "QUOTEDQUOTE",
      "CLOSESTRING", "STRINGTOSHAPE",  "EXTENT",        "CLOSESHAPE",      "COMMENTTEXT",     "CLOSECOMMENT",
      "UNMASKED"};
  static_assert(sizeof names / sizeof *names == static_cast<std::size_t>(Rule::UNMASKED) + 1);
  return names[static_cast<std::size_t>(rule)];
}

// The conditions as the actions lead through them.
struct ConditionPath {
  Condition condition = Condition::INITIAL;
  int level = 0;  // open vectors

  void outofstring() { condition = level > 0 ? Condition::VECTOR : Condition::INITIAL; }
  void outofvector() {
    if (level > 0) --level;
    outofstring();
  }
  void toshape() { condition = level > 0 ? Condition::SUBSHAPE : Condition::SHAPE; }

  void follow(const Token &token) {
    const bool address = condition == Condition::ADDRESSED;
    if (address) condition = Condition::INITIAL;
    switch (token.rule) {
      case Rule::KEYWORD:
        condition = Keywords[token.row].kind == KeywordKind::MASK_FORM ? Condition::MASKED : Condition::INITIAL;
        break;
      case Rule::ADDRESS:
        condition = Condition::ADDRESSED;
        break;
      case Rule::NAME_START:
        condition = address ? Condition::ADDRESSNAME : Condition::NAME;
        break;
      case Rule::OPEN_COMMENT:
        condition = Condition::COMMENT;
        break;
      case Rule::OPEN_STRING:
        condition = Condition::QUOTED;
        break;
      case Rule::OPEN_VECTOR:
      case Rule::OPEN_STRUCTURE:
        ++level;
        condition = Condition::VECTOR;
        break;
      case Rule::CLOSE_VECTOR:
      case Rule::CLOSE_STRUCTURE:
      case Rule::CLOSE_TO_NOOP:
        outofvector();
        break;
      case Rule::CLOSE_TO_SHAPE:
        outofvector();
        toshape();
        break;
      case Rule::CLOSE_STRING:
      case Rule::CLOSE_SHAPE:
        outofstring();
        break;
      case Rule::STRING_TO_SHAPE:
        toshape();
        break;
      case Rule::NAME_END:
      case Rule::CLOSE_COMMENT:
      case Rule::UNMASKED:
        condition = Condition::INITIAL;
        break;
      default:
        break;
    }
  }
};

struct Scanned {
  std::vector<std::string> tokens;  // "RULE text", without the end of the input
  std::string echo;
  bool operator==(const Scanned &) const = default;
};

inline std::FILE *streamof(const std::string &text) {
  std::FILE *stream = std::tmpfile();
  std::fwrite(text.data(), 1, text.size(), stream);
  std::rewind(stream);
  return stream;
}

// Scans what scanfrom was given, from a condition on.
inline Scanned scanall(Condition condition) {
  Scanned scanned;
  ConditionPath path = {condition, condition == Condition::SUBSHAPE ? 1 : 0};
  testing::internal::CaptureStdout();
  for (;;) {
    const Token token = scan(path.condition);
    if (token.rule == Rule::END_OF_INPUT) break;
    const std::string text(token.text, token.length);
    EXPECT_EQ(token.text[token.length], 0);
    EXPECT_EQ(text.find('\0'), std::string::npos);
    scanned.tokens.push_back(text.empty() ? rulename(token.rule) : rulename(token.rule) + (" " + text));
    path.follow(token);
  }
  scandone();
  scanned.echo = testing::internal::GetCapturedStdout();
  return scanned;
}

// The tokens of a text that is read from a string, and that gives the same read from a stream.
inline Scanned scantext(const std::string &text, Condition condition = Condition::INITIAL) {
  scanfrom(nullptr, text.c_str());
  Scanned fromstring = scanall(condition);
  std::FILE *stream = streamof(text);
  scanfrom(stream, nullptr);
  const Scanned fromstream = scanall(condition);
  std::fclose(stream);
  EXPECT_EQ(fromstring.tokens, fromstream.tokens) << text;
  EXPECT_EQ(fromstring.echo, fromstream.echo) << text;
  return fromstring;
}

using Tokens = std::vector<std::string>;

inline Tokens tokensof(const std::string &text, Condition condition = Condition::INITIAL) {
  return scantext(text, condition).tokens;
}
