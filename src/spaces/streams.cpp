// The three streams of the system.
#include "spaces/streams.h"

namespace morvik {

std::FILE *outputstream = stdout;
std::FILE *errorstream = stderr;
std::FILE *inputstream = stdin;

}  // namespace morvik
