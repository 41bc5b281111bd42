// Where what runs was written: for each Point of a text, and of the functions in it, the byte that it was read from.
// Kept beside the Programmes, by a listener of the compiler, so that a run knows nothing of it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "frontend/tokens.h"
#include "machine/level.h"

namespace morvik {

// A text with its lines; what it points to stays the owner's.
struct Source {
  const char *name;   // for messages
  const char *bytes;  // zero-terminated
  std::size_t length;
  std::size_t *linestarts;  // made by opensource, given back by closesource
  std::size_t lines;
  const char *read;  // how far it was compiled
};
// Finds the lines. Is there storage for them?
bool opensource(Source &source, const char *name, const char *bytes, std::size_t length);
void closesource(Source &source);

// A byte of a source; the source is null where it is not known.
struct SourcePlace {
  const Source *source;
  std::size_t offset;
};
// Counted from 1. 0 for a place that is not known.
std::size_t lineof(const SourcePlace &place);
// How many bytes of its line are ahead of it.
std::size_t columnof(const SourcePlace &place);

// Compiles the next text of a source and notes the places of its Points. Returns what fill returns.
std::int64_t compilesource(Source &source);
// What the text that was compiled last has left open at the end of its source, the innermost first.
struct Opening {
  const char *what;  // with its article
  SourcePlace place;
};
std::size_t openings();
Opening opening(std::size_t number);

// Is a text of a source being compiled? The place of the token at work.
bool iscompiling();
SourcePlace placeoftoken();
// Called with what is compiled, ahead of the notes. May be null.
extern void (*heartokentoo)(const Token &token, Condition was, SourcePlace place);

// Of a Point by its number, in the body of this origin or, with 0, in the text that was compiled last.
SourcePlace placein(std::uint64_t origin, std::size_t point);
// Of the Point at work in a level. What a level runs that was compiled elsewhere (a text of EXECUTE) has the place of
// its caller.
SourcePlace placeof(const Level &level);
// Which body a level runs; 0 for a text and for what was compiled elsewhere.
std::uint64_t originof(const Level &level);

// How many bodies have places: as long as it stays, nothing of a source is asked for after its texts have run.
std::size_t placedbodies();
// Forgets all places.
void forgetplaces();

}  // namespace morvik
