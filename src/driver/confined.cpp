// morvik-confined: Morvik with its files confined to the folder that it starts in, wherever links lead, and no editor.
// For a front end that runs what it does not know.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "driver/options.h"
#include "driver/prompt.h"
#include "driver/system.h"
#include "files/files.h"

int main(int argc, char **argv) {
  if (!morvik::confinefiles()) {
    std::fprintf(stderr, "morvik-confined: the present folder: %s\n", std::strerror(errno));
    return EXIT_FAILURE;
  }
  morvik::readoptions(argc, argv);
  morvik::startsystem();
  morvik::promptloop();
  return morvik::shutdownsystem();
}
