// Points as text: any of them, those without a value, and spaces.
#pragma once

#include "spaces/point.h"

namespace morvik {

namespace printer {

// Any Point inside a print. `inner`: in a literal, where not all that has a text of its own can be written.
void putpoint(Point &point, int indent, bool source, bool inner);
// A symbolic Point; a function at nesting `indent`.
void putsymbolic(Point &point, int indent, bool source);
// A space. `close` null, or what closes the literal in place of its own bracket.
void putspace(Point &space, bool source, bool inner, const char *close = nullptr);

}  // namespace printer

}  // namespace morvik
