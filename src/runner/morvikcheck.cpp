// morvik-check: looks for mistakes in files, and runs nothing.
#include <algorithm>

#include "runner/choices.h"
#include "runner/script.h"

// Each file is checked by itself.
int main(int argc, char **argv) {
  static morvik::Choices choices;
  int status = morvik::readcheckchoices(choices, argc, argv);
  if (status != morvik::GOES_ON) return status;
  status = morvik::runscript(choices);
  for (std::size_t i = 0; i < choices.wordcount; ++i) {
    choices.file = choices.words[i];
    status = std::max(status, morvik::runscript(choices));
  }
  return status;
}
