// Writes the grammars into the folder of this file, or whichever is named:  editors/generate
#include <cstdio>
#include <string>

#include "grammars.h"

namespace {

bool write(const std::string &path, const std::string &text) {
  std::FILE *file = std::fopen(path.c_str(), "w");
  if (!file) return false;
  const bool whole = std::fwrite(text.data(), 1, text.size(), file) == text.size();
  return (std::fclose(file) == 0) && whole;
}

}  // namespace

int main(int argc, char **argv) {
  const std::string folder = argc > 1 ? argv[1] : ".";
  const bool written = write(folder + "/vim/syntax/morvik.vim", grammars::vimsyntax()) &&
                       write(folder + "/vscode/syntaxes/morvik.tmLanguage.json", grammars::textmate()) &&
                       write(folder + "/emacs/morvik-grammar.el", grammars::emacs());
  if (!written) std::perror(folder.c_str());
  return written ? 0 : 1;
}
