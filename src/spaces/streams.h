// The three streams of the system: those of the process, or what a program that has it for a library puts in their
// place.
#pragma once

#include <cstdio>

namespace morvik {

extern std::FILE *outputstream;  // values, and what the conversation says
extern std::FILE *errorstream;   // messages
extern std::FILE *inputstream;   // what INPUT and its like read

}  // namespace morvik
