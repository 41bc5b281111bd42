// Who hears of failures: the error stream, or a layer above that reports them in its own form.
#pragma once

#include <cstdint>

#include "spaces/point.h"

namespace morvik {

// What there is to report, without the line feeds around it.
struct Report {
  std::int32_t number;       // of the message; SIGNAL_NUMBERS - n: signal n; 0: a complaint without a number
  const char *text;          // valid for the call
  const Point *instruction;  // the Point at work, or null
  const Point *top;          // the top of the stack, or null
};
// Who hears of it in place of the error stream; null, as at the start, for nobody. May jump where an exception does.
extern void (*hearreport)(const Report &report);
// A complaint without a number, on the error stream as it is.
void complain(const char *text);

// Does a person talk with the system? Then failures are talked about on the output too.
extern char conversing;

}  // namespace morvik
