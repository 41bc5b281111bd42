// What this build is: the banner, the line about its making, and the sizes that it works with.
#pragma once

namespace morvik {

// The banner that greets a person, on standard output.
void banner();
// The target system, the time of the build and the compiler line.
const char *system_architecture();
// The report of sizes and precisions, on standard output.
void internals();

}  // namespace morvik
