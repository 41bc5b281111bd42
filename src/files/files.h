// Host files as the language sees them: names out of character spaces, the path constraint, and the FILE element.
#pragma once

#include <cstdint>
#include <cstdio>

#include "failure/custody.h"
#include "spaces/point.h"

namespace morvik {

// 1 at the start; the option -u clears it.
extern char constraindirectories;

// May a file of this name be opened while the constraint holds? One scan by component, whose gaps are kept.
bool checkpath(const char *path);

// What a space lacks to be a file name, as the message to report: `data` if it is not all characters, `structure` if
// its rank is 2 or more, 0 for nothing.
int namefault(const Point &name, int data, int structure);
// The bytes of a space that has no such fault, as a counted string, owned by the caller; a NUL ends the name.
// Message 27.
char *filename(const Point &name);
// Is a name refused by the constraint, as it is now?
bool isrefused(const char *name);

// Opens a host file; a child process does not inherit it. Null where it can't be opened; a directory never can.
// Takes an interrupt that comes while the host keeps it waiting, by a jump.
std::FILE *openstream(const char *name, const char *mode);
// Custody of a stream (held: std::FILE *): a jump closes it.
void releasestream(Custody &);

// Opens the file named by the top of the stack, which stays there. The name goes to `*nameblock` as a counted string,
// owned by the caller, or is given back if that is null. Reports 706, 707, 720, 712 and jumps; 27.
std::FILE *openfile(const Point *instruction, Point **stackpointer, const char *mode, char **nameblock);
// Act on the stream in the first element of the space on top of the stack, however deep that is enclosed; a stream that
// is closed already is left alone. Report 727 and jump where there is none.
void closefile(Point **stackpointer, const Point *instruction);
void rewindfile(Point **stackpointer, const Point *instruction);

// Makes `file` the scalar FILE space of an open stream. Takes over the counted name and what `descriptor` holds.
// Message 27, with nothing taken over.
void makefile(Point &file, std::FILE *stream, char *name, const Point &descriptor, bool small);
// Opens the file of a FILE element again, in place of its stream, which is closed. Could it be opened?
bool reopenfile(Element &file);

}  // namespace morvik
