// The editors' grammars, made from the scanner's own vocabulary: a word is coloured exactly where it would be a token.
// Files are taken to be in the 8-bit set that the editor shows as Latin-1, or in UTF-8 with signs for private bytes.
#pragma once

#include <algorithm>
#include <cstdio>
#include <initializer_list>
#include <string>
#include <vector>

#include "frontend/tokens.h"
#include "frontend/vocabulary.h"

using namespace morvik;

namespace grammars {

struct Spelling {
  std::string text;
  Rule rule;
  bool bounded;
};

inline void walk(const vocabulary::Node &node, std::string text, std::vector<Spelling> &all) {
  text += static_cast<char>(node.byte);
  if (node.end.sets != 0) all.push_back({text, node.end.rule, node.end.bounded});
  for (int byte = 1; byte < 256; ++byte)
    if (const vocabulary::Node *next = vocabulary::childnode(node, byte)) walk(*next, text, all);
}

// Every spelling, the longer ones first: both editors take the first alternative that fits.
inline std::vector<Spelling> vocabularywords() {
  std::vector<Spelling> all;
  for (int byte = 1; byte < 256; ++byte)
    if (const vocabulary::Node *first = vocabulary::firstnode(byte)) walk(*first, "", all);
  std::stable_sort(all.begin(), all.end(),
                   [](const Spelling &a, const Spelling &b) { return a.text.size() > b.text.size(); });
  return all;
}

struct Glyph {
  int byte;
  const char *sign;
};

inline constexpr Glyph GLYPHS[] = {
#define GLYPH(byte, sign, typed, twin) {byte, sign},
#include "tables/glyphs.def"
#undef GLYPH
};

inline const char *signof(int byte) {
  for (const Glyph &glyph : GLYPHS)
    if (glyph.byte == byte) return glyph.sign;
  return "";
}

// How an editor writes its patterns.
struct Dialect {
  const char *open, *bar, *close;  // of a group of alternatives
  const char *word;                // opens the group that is the word itself
  const char *notaword;            // no word byte comes next
  const char *special;             // bytes that a backslash makes plain
  std::string (*high)(int byte);
};

inline std::string literal(const Dialect &dialect, const std::string &text) {
  std::string pattern;
  for (const char byte : text) {
    const int value = static_cast<unsigned char>(byte);
    if (value >= 128) {
      pattern += dialect.high(value);
      continue;
    }
    if (std::string(dialect.special).find(byte) != std::string::npos) pattern += '\\';
    pattern += byte;
  }
  return pattern;
}

// The spellings of some rules as one pattern: by falling length, neighbours that need a boundary under one test for it.
inline std::string words(const Dialect &dialect, std::initializer_list<Rule> rules) {
  std::string pattern = dialect.open, group;
  bool bounded = false;
  const auto endgroup = [&] {
    if (!group.empty())
      pattern += (pattern == dialect.open ? "" : dialect.bar) + std::string(dialect.word) + group + dialect.close +
                 (bounded ? dialect.notaword : "");
    group.clear();
  };
  for (const Spelling &word : vocabularywords()) {
    if (std::find(rules.begin(), rules.end(), word.rule) == rules.end()) continue;
    if (word.bounded != bounded) endgroup();
    bounded = word.bounded;
    group += (group.empty() ? "" : dialect.bar) + literal(dialect, word.text);
  }
  endgroup();
  return pattern + dialect.close;
}

inline std::string format(const char *pattern, int byte) {
  char text[16];
  std::snprintf(text, sizeof text, pattern, byte);
  return text;
}

inline const std::string NOTE = signof(0xBC);  // begins and ends a comment

// ---- Vim: of the items that match at one place the last one counts.

inline constexpr Dialect VIM = {"\\V\\%(", "\\|", "\\)", "\\V\\%(", "\\m[0-9A-Za-z_]\\@!\\V", "\\{", [](int byte) {
                                  return format("\\[\\x%02x", byte) + signof(byte) + "]";
                                }};

inline std::string vimsyntax() {
  const std::string minus = "[-\\xaf]", digits = "[0-9]\\+";
  const std::string component = "\\%(" + minus + "\\?\\%(" + digits + "\\%(\\." + digits + "\\)\\?\\|\\." + digits +
                                "\\)\\%([Ee][-+\\xaf]\\?" + digits + "\\)\\?\\|" + minus +
                                "\\?\\%(Infinity\\|Inf\\|inf\\)\\|NaN\\|nan\\)";
  const std::string count = minus + "\\?" + digits;
  std::string text =
      "\" Morvik. Made by editors/generate from the vocabulary of the scanner; not to be edited.\n"
      "scriptencoding utf-8\nif exists('b:current_syntax')\n  finish\nendif\nsyntax case match\n";
  const auto match = [&text](const char *group, const std::string &pattern) {
    text += "syntax match " + std::string(group) + " {" + pattern + "{\n";
  };
  match("morvikName", "[^ \\t\\r][^ \\t\\r!.;]*");
  match("morvikStructure", words(VIM, {Rule::OPEN_FUNCTION, Rule::CLOSE_FUNCTION, Rule::END_OF_TEXT}));
  match("morvikKeyword", words(VIM, {Rule::KEYWORD, Rule::BUILTIN}));
  match("morvikConstant", words(VIM, {Rule::CONSTANT}));
  match("morvikStructure",
        "\\%(ARGS\\|VARS\\)\\s*" + count + "\\s*\\%(\\%(ARGS\\|VARS\\) *" + count +
            " *\\)\\?\\%(FUNCTION\\|NEADIC\\|NILADIC\\|MONADIC\\|DYADIC\\|TRIADIC\\)[0-9A-Za-z_]\\@!");
  match("morvikVariable", "[_$.%][A-Za-z_][0-9A-Za-z_]*\\|&" + count);
  match("morvikNumber", component);
  match("morvikNumber", "\\%(#\\|#\\?r\\)\\?" + component + "\\%([i-o]" + component + "\\)\\+");
  match("morvikNumber", "\\%(d\\|d\\?r\\)\\?" + component + "\\%([p-v]" + component + "\\)\\+");
  match("morvikNumber", "0#[01|]\\+\\|`0#[01|]\\+`");
  match("morvikBracket", "`(\\|)`\\|[()]");
  match("morvikAddress", "@\\%([_$.%][A-Za-z_][0-9A-Za-z_]*\\|&" + count + "\\|[^ \\t\\r][^ \\t\\r.;]*\\)");
  match("morvikVariable", "@\\?[_$.]\\?\\%x02[^\\x03]*\\%x03");
  text += std::string("syntax region morvikString start={'{ skip={''{ end={'{\n") +
          "syntax region morvikComment start={[\"\\xbc" + NOTE + "]{ end={[\"\\xbc" + NOTE + "]{\n";
  for (const char *link :
       {"Name Identifier", "Keyword Operator", "Structure Statement", "Constant Constant", "Variable Identifier",
        "Number Number", "Bracket Delimiter", "Address Special", "String String", "Comment Comment"})
    text += "highlight default link morvik" + std::string(link) + "\n";
  return text + "let b:current_syntax = 'morvik'\n";
}

// ---- TextMate: of the patterns that match at one place the first one counts.

inline constexpr Dialect TEXTMATE = {"(?:", "|", ")", "(?:", "(?![0-9A-Za-z_])", "\\^$.|?*+()[]{}/", [](int byte) {
                                       return format("[\\x{%02X}", byte) + signof(byte) + "]";
                                     }};

inline std::string textmate() {
  const std::string minus = "[-\\x{AF}]";
  const std::string component = "(?:" + minus + "?(?:[0-9]+(?:\\.[0-9]+)?|\\.[0-9]+)(?:[Ee][-+\\x{AF}]?[0-9]+)?|" +
                                minus + "?(?:Infinity|Inf|inf)|NaN|nan)";
  const std::string count = minus + "?[0-9]+";
  std::string text =
      "{\n  \"information_for_contributors\": "
      "\"Made by editors/generate from the vocabulary of the scanner; not to be edited.\",\n"
      "  \"name\": \"Morvik\",\n  \"scopeName\": \"source.morvik\",\n  \"fileTypes\": [\"morvik\"],\n  \"patterns\": [";
  const char *comma = "\n";
  const auto quoted = [](const std::string &pattern) {
    std::string json = "\"";
    for (const char byte : pattern) {
      if (byte == '"' || byte == '\\') json += '\\';
      json += byte;
    }
    return json + "\"";
  };
  const auto add = [&](const char *scope, const std::string &fields) {
    text += comma + ("    {\"name\": \"" + std::string(scope) + ".morvik\", ") + fields + "}";
    comma = ",\n";
  };
  const auto match = [&](const char *scope, const std::string &pattern) {
    add(scope, "\"match\": " + quoted(pattern));
  };
  const std::string delimiter = "[\"\\x{BC}" + NOTE + "]";
  add("comment.block", "\"begin\": " + quoted(delimiter) + ", \"end\": " + quoted(delimiter));
  add("string.quoted.single", "\"begin\": " + quoted("'") + ", \"end\": " + quoted("'(?!')") +
                                  ", \"patterns\": [{\"name\": \"constant.character.escape.morvik\", \"match\": " +
                                  quoted("''|`0#[01|]+`") + "}]");
  match("variable.other", "@?[_$.]?\\x{02}[^\\x{03}]*\\x{03}");
  match("entity.name", "@(?:[_$.%][A-Za-z_][0-9A-Za-z_]*|&" + count + "|[^ \\t\\r\\n][^ \\t\\r\\n.;]*)");
  match("constant.numeric", "0#[01|]+|`0#[01|]+`");
  match("constant.numeric", "(?:#r?|r)?" + component + "(?:[i-o]" + component + ")+|(?:dr?|r)?" + component +
                                "(?:[p-v]" + component + ")+|" + component);
  match("keyword.control", "(?:ARGS|VARS)\\s*" + count + "\\s*(?:(?:ARGS|VARS) *" + count +
                               " *)?(?:FUNCTION|NEADIC|NILADIC|MONADIC|DYADIC|TRIADIC)(?![0-9A-Za-z_])");
  match("constant.language", words(TEXTMATE, {Rule::CONSTANT}));
  match("variable.other", "[_$.%][A-Za-z_][0-9A-Za-z_]*|&" + count);
  match("keyword.operator", words(TEXTMATE, {Rule::KEYWORD, Rule::BUILTIN}));
  match("keyword.control", words(TEXTMATE, {Rule::OPEN_FUNCTION, Rule::CLOSE_FUNCTION, Rule::END_OF_TEXT}));
  match("punctuation", "`\\(|\\)`|[()]");
  match("variable", "[^ \\t\\r\\n][^ \\t\\r\\n!.;]*");
  return text + "\n  ]\n}\n";
}

// ---- Emacs: patterns for the matcher of the mode, which looks at one place after another. Group 1 is the word.

inline constexpr Dialect EMACS = {
    "\\(?:", "\\|", "\\)", "\\(?1:", "\\(?:[^0-9A-Za-z_]\\|\\'\\)", "\\^$.?*+[]", [](int byte) {
      const std::string letter = {static_cast<char>(0xC0 | byte >> 6), static_cast<char>(0x80 | (byte & 0x3F))};
      return "[" + letter + (letter == signof(byte) ? "" : signof(byte)) + "]";
    }};

inline std::string emacs() {
  std::string text =
      ";;; morvik-grammar.el --- The words of Morvik  -*- lexical-binding: t; coding: utf-8 -*-\n"
      ";; Made by editors/generate from the vocabulary of the scanner; not to be edited.\n"
      ";;; Code:\n\n";
  const auto constant = [&text](const char *name, const std::string &pattern) {
    text += "(defconst morvik-" + std::string(name) + "-regexp\n  \"";
    for (const char byte : pattern) {
      if (byte == '"' || byte == '\\') text += '\\';
      text += byte;
    }
    text += "\")\n";
  };
  constant("keyword", words(EMACS, {Rule::KEYWORD, Rule::BUILTIN}));
  constant("constant", words(EMACS, {Rule::CONSTANT}));
  constant("structure", words(EMACS, {Rule::OPEN_FUNCTION, Rule::CLOSE_FUNCTION, Rule::END_OF_TEXT}));
  text += "\n(defconst morvik-signs\n  '(";
  for (const Glyph &glyph : GLYPHS)
    text += (&glyph == GLYPHS ? "(?" : "\n    (?") + std::string(glyph.sign) + " . " + std::to_string(glyph.byte) + ")";
  return text +
         ")\n  \"Signs, and the bytes that they stand for.\")\n\n(provide 'morvik-grammar)\n;;; morvik-grammar.el ends "
         "here\n";
}

}  // namespace grammars
