// Morvik: an interactive interpreter of a postfix array language.
#include "driver/options.h"
#include "driver/prompt.h"
#include "driver/system.h"

int main(int argc, char **argv) {
  morvik::readoptions(argc, argv);
  morvik::startsystem();
  morvik::promptloop();
  return morvik::shutdownsystem();
}
