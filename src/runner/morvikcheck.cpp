// morvik-check: looks for mistakes in files, and runs nothing.
#include <cstdio>
#include <cstring>

#include "runner/choices.h"
#include "runner/script.h"

namespace {

constexpr char USAGE[] =
    "usage: morvik-check [-l NAME] FILE...\n\n"
    "Looks for mistakes in programmes, and runs nothing. -l NAME takes the names of a library for set, as morvik-run\n"
    "does. Status: 0; 1 where it warned; 2 where a file is of no use.\n";

}  // namespace

// Each file is checked by itself.
int main(int argc, char **argv) {
  static morvik::Choices choices;
  int file = 1;
  for (; file + 1 < argc && std::strcmp(argv[file], "-l") == 0; file += 2) choices.libraries.append(argv[file + 1]);
  if (file < argc && std::strcmp(argv[file], "--help") == 0) {
    std::fputs(USAGE, stdout);
    return morvik::STATUS_DONE;
  }
  if (file >= argc || (argv[file][0] == '-' && argv[file][1] != 0)) {
    std::fputs(USAGE, stderr);
    return morvik::STATUS_UNUSABLE;
  }
  choices.check = true;
  int worst = morvik::STATUS_DONE;
  for (; file < argc; ++file) {
    choices.file = argv[file];
    const int status = morvik::runscript(choices);
    worst = status > worst ? status : worst;
  }
  return worst;
}
