// The run of a script.
#pragma once

#include "runner/choices.h"

namespace morvik {

// Runs the file as the choices say. Returns the status of the process.
int runscript(const Choices &choices);

}  // namespace morvik
