// Messages of a script: where it happened, the line, and the functions that run.
#pragma once

#include "api/places.h"
#include "failure/hearing.h"

namespace morvik {

// Told on standard error from now on: every report, with its place.
void begintelling(bool keepgoing);

// What came of it so far.
bool isfailed();          // a message came
bool isinterruptheard();  // an interrupt

// Tells of what is at a place, which counts as a message.
void tellat(const SourcePlace &place, const char *text);

}  // namespace morvik
