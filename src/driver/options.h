// The command line.
#pragma once

#include <cstdint>

namespace morvik {

extern char quiet;          // no banner, no prompt, no text of start and end
extern std::int32_t argsc;  // the low 8 bits of argc: arguments beyond them do not exist
extern char **argsv;

// Reads the options from the last argument back to the first and sets the switches. Ends the process after usage,
// version and complaints.
void readoptions(int argc, char **argv);

}  // namespace morvik
