// The grammars of the editors are the ones that the vocabulary makes.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "../../editors/grammars.h"
#include "frontend/constants.h"
#include "frontend/keywords.h"

using namespace morvik;

namespace {

std::string contents(const std::string &path) {
  std::ifstream file(MORVIK_EDITORS "/" + path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

TEST(Editors, TheGrammarsAreUpToDate) {
  EXPECT_EQ(contents("vim/syntax/morvik.vim"), grammars::vimsyntax()) << "run editors/generate";
  EXPECT_EQ(contents("vscode/syntaxes/morvik.tmLanguage.json"), grammars::textmate()) << "run editors/generate";
  EXPECT_EQ(contents("emacs/morvik-grammar.el"), grammars::emacs()) << "run editors/generate";
}

TEST(Editors, EverySpellingIsAmongTheWords) {
  std::size_t keywords = 0, constants = 0, keywordwords = 0, constantwords = 0;
  for (const Keyword &row : Keywords) keywords += row.spellings.size();
  for (const Constant &row : Constants) constants += row.spellings.size() * (row.issigned ? 2 : 1);
  for (const grammars::Spelling &word : grammars::vocabularywords()) {
    if (word.rule == Rule::KEYWORD) ++keywordwords;
    if (word.rule == Rule::CONSTANT) ++constantwords;
  }
  EXPECT_EQ(keywordwords, keywords);
  EXPECT_EQ(constantwords, constants);
}
