// Names as text.
#pragma once

namespace morvik {

namespace printer {

// A name after its sigil, 0 for none; in source form between brackets where the scanner would read it otherwise.
void putname(const char *name, char sigil, bool address, bool source);

}  // namespace printer

}  // namespace morvik
