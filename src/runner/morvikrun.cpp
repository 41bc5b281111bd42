// morvik-run: runs a programme from a file.
#include "runner/choices.h"
#include "runner/script.h"

int main(int argc, char **argv) {
  static morvik::Choices choices;
  const int status = morvik::readchoices(choices, argc, argv);
  return status == morvik::GOES_ON ? morvik::runscript(choices) : status;
}
