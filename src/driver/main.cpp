// Morvik: an interactive interpreter of a postfix array language.
#include "driver/options.h"
#include "driver/prompt.h"
#include "driver/system.h"

int main(int argc, char **argv) {
  readoptions(argc, argv);
  startsystem();
  promptloop();
  return shutdownsystem();
}
