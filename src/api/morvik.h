/* Morvik as a library, for C and for whatever can call C.
 *
 * There is one session a process: a value stack, names, and perhaps a pool of threads. morvik_open begins it and
 * morvik_close ends it; a second morvik_open in between is refused with MORVIK_OPEN_ALREADY. Calls come from any
 * thread, but one at a time, and none from inside a callback: those are refused with MORVIK_BUSY. morvik_interrupt
 * alone may be called at any time, from any thread and from a signal handler.
 *
 * No call ends the process, and none jumps over frames of its caller: what fails comes back as a status. The library
 * sets no signal handler, changes no limit and no folder of the process, and its names begin with morvik_. A thread
 * that calls has a stack of its own of 64 KB at least; with less left of it, a call gives MORVIK_NO_STORAGE. A callback
 * must return: it may not leave by a jump or an exception. It may come when a recursion has used the stack up, and
 * finds an eighth of it left, or 64 KB, or half where it is smaller than 128 KB.
 *
 * Every call returns a status unless its comment says otherwise. Sizes count records (elements of a space), lengths
 * count bytes, extents count records along an axis, the fastest axis first, as SHAPE gives them. What a call returns
 * through a pointer is written only with MORVIK_OK.
 */
#ifndef MORVIK_H
#define MORVIK_H
#pragma once

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__)
#define MORVIK_API __attribute__((visibility("default")))
#else
#define MORVIK_API
#endif

/* ---- Statuses. */

enum {
  MORVIK_OK = 0,
  MORVIK_MESSAGE,     /* a message came while the text was compiled or run; the stack keeps what stood on it */
  MORVIK_INTERRUPTED, /* morvik_interrupt broke the run off */
  MORVIK_ENDED,       /* the programme asked for its end (OFF); what follows in the text was not run */
  MORVIK_UNFINISHED, /* the text ends inside a quote, a bracket, a comment or a function, and that last part did not run
                      */
  MORVIK_OPEN_ALREADY, /* there is a session in this process */
  MORVIK_NOT_OPEN,     /* there is none */
  MORVIK_BUSY,         /* another call is at work */
  MORVIK_BAD_ARGUMENT, /* null where there must be something, an extent or a size that cannot be */
  MORVIK_NO_STORAGE,   /* there is no storage for it; nothing was changed */
  MORVIK_STACK_FULL,   /* the value stack holds no more */
  MORVIK_NO_VALUE,     /* the stack is not so high, the name has no value, there is no such member */
  MORVIK_WRONG_KIND,   /* a record is not of the kind that was asked for */
  MORVIK_STALE         /* the value was looked at before a call that may have changed it */
};
typedef int morvik_status;

/* A sentence about a status, without a line feed. Owned by the library, valid for ever. */
MORVIK_API const char *morvik_status_text(morvik_status status);

/* The version, as pkg-config tells it. Owned by the library. */
MORVIK_API const char *morvik_version(void);

/* ---- The session. */

/* A message: a text without line feeds around it, and where it came up. Valid for the call of the callback. */
typedef struct morvik_message {
  int number;         /* of the message; 0 for a complaint without a number */
  const char *text;   /* zero-terminated */
  const char *source; /* the name that morvik_run was given with the text; null where the place is not known */
  size_t line;        /* of that text, from 1; 0 where it is not known */
  size_t column;      /* bytes ahead of it on the line */
} morvik_message;

/* What a session is opened with. Set `size` to sizeof(morvik_options) and everything else that is not wanted to 0; the
 * initialiser MORVIK_OPTIONS does so. Fields may be added at the end: the size says which of them the caller knows. */
typedef struct morvik_options {
  size_t size;
  unsigned processors; /* threads beside the caller's for large spaces; 0: none */
  int unconstrained;   /* files in any folder? Else only the present one and those below it */
  int stop_at_message; /* does the first message end a morvik_run? Else it ends what it says, and the texts go on */
  int echo;            /* is the top shown on the output after each text? */
  void *data;          /* handed to each callback */
  /* Takes what the programme writes. Null: the standard output of the process. */
  void (*output)(void *data, const char *bytes, size_t length);
  /* Takes a message. Null: a line on the standard error of the process. */
  void (*message)(void *data, const morvik_message *message);
  /* Writes at most `most` bytes of what the programme reads (INPUT, QUOTEDIN); returns how many, 0 at the end. Null:
   * the standard input of the process. */
  size_t (*input)(void *data, char *bytes, size_t most);
} morvik_options;

#define MORVIK_OPTIONS \
  { sizeof(morvik_options), 0, 0, 0, 0, NULL, NULL, NULL, NULL }

/* Begins the session. Null options are those of MORVIK_OPTIONS; the structure is copied. MORVIK_OPEN_ALREADY,
 * MORVIK_BAD_ARGUMENT, MORVIK_NO_STORAGE. */
MORVIK_API morvik_status morvik_open(const morvik_options *options);

/* Ends the session and gives back all that it holds, the pool's threads included. Another may begin. MORVIK_NOT_OPEN,
 * MORVIK_BUSY. */
MORVIK_API morvik_status morvik_close(void);

/* Runs the texts in these bytes, one after the other; the last needs no end of text. `name` says what they are in
 * messages (null: "text"). What they leave on the stack and in names stays. The status is that of the worst that came:
 * MORVIK_INTERRUPTED, MORVIK_ENDED, MORVIK_UNFINISHED, MORVIK_MESSAGE, MORVIK_OK. MORVIK_BAD_ARGUMENT for a byte 0. */
MORVIK_API morvik_status morvik_run(const char *text, size_t length, const char *name);

/* Breaks a run off at its next safe point, within 50 ms but for a callback or a device that waits; with no run at work
 * it does nothing that lasts. For any thread and for signal handlers. */
MORVIK_API void morvik_interrupt(void);

/* ---- Values: looking at them. */

/* What the records of a value are, as bits. */
enum {
  MORVIK_CHARACTERS = 1,
  MORVIK_INTEGERS = 2,
  MORVIK_REALS = 4,
  MORVIK_COMPLEX = 8,      /* two parts */
  MORVIK_QUATERNIONS = 16, /* four */
  MORVIK_OCTONIONS = 32,   /* eight */
  MORVIK_NESTED = 64,      /* other values */
  MORVIK_FILES = 128,
  MORVIK_FUNCTION = 256, /* the value is a function, an instruction or a name, and has no records */
  MORVIK_OTHER = 512
};

/* A value that is looked at. `point` is the library's. Valid until a call runs, pushes, drops, sets, gets or closes
 * anything; after that it is refused with MORVIK_STALE. */
typedef struct morvik_value {
  const void *point;
  uint64_t moment;
  int rank;       /* number of axes: 0 for a scalar */
  size_t size;    /* number of records */
  unsigned kinds; /* MORVIK_CHARACTERS and so on, for all records together */
} morvik_value;

/* A record as it lies in storage, 40 bytes each, for who would not copy. `kind`, `form` and `attributes` are the
 * system's own; which part of `value` counts follows from the kind. */
enum {
  MORVIK_RECORD_NESTED = 1,
  MORVIK_RECORD_CHARACTER = 2,
  MORVIK_RECORD_INTEGER = 4,
  MORVIK_RECORD_REAL = 5,
  MORVIK_RECORD_COMPLEX = 6,
  MORVIK_RECORD_QUATERNION = 7,
  MORVIK_RECORD_OCTONION = 8
};
typedef struct morvik_record {
  int32_t kind;
  uint16_t form, attributes;
  union {
    const char *name;
    double first; /* of a quaternion */
  } head;
  union {
    int64_t integer;
    double real;
    double parts[3];        /* of a complex number two; of a quaternion those after the first */
    const double *octonion; /* eight */
    unsigned char character;
    const void *nested;
  } value;
} morvik_record;

/* How many values are on the stack. MORVIK_NOT_OPEN, MORVIK_BUSY. */
MORVIK_API morvik_status morvik_height(size_t *height);

/* Looks at the value so far below the top: 0 is the top. MORVIK_NO_VALUE. */
MORVIK_API morvik_status morvik_look(size_t depth, morvik_value *value);

/* Writes the extents of the axes, fastest first: `rank` of them. */
MORVIK_API morvik_status morvik_extents(const morvik_value *value, size_t *extents);

/* Where the records begin: `size` of them, the library's, not to be written to. Null for an empty value. */
MORVIK_API morvik_status morvik_records(const morvik_value *value, const morvik_record **records);

/* Copies `count` records from `first` on (counted from 0). MORVIK_NO_VALUE where there are not so many,
 * MORVIK_WRONG_KIND where a record is something else; what was written then means nothing. morvik_integers: integers.
 * morvik_doubles: integers and reals. morvik_bytes: characters. morvik_parts: any numbers of at most so many parts (1,
 * 2, 4 or 8) as so many doubles each; missing parts are 0. */
MORVIK_API morvik_status morvik_integers(const morvik_value *value, size_t first, size_t count, int64_t *integers);
MORVIK_API morvik_status morvik_doubles(const morvik_value *value, size_t first, size_t count, double *doubles);
MORVIK_API morvik_status morvik_bytes(const morvik_value *value, size_t first, size_t count, char *bytes);
MORVIK_API morvik_status morvik_parts(const morvik_value *value, size_t parts, size_t first, size_t count,
                                      double *doubles);

/* Looks at the value that a record encloses. MORVIK_NO_VALUE, MORVIK_WRONG_KIND. */
MORVIK_API morvik_status morvik_member(const morvik_value *value, size_t record, morvik_value *member);

/* A value as text: in display form as people read it, in source form as the scanner reads it back. Zero-terminated, and
 * its length without that; `length` may be null. The text is the caller's, who gives it to morvik_free. */
enum { MORVIK_DISPLAY = 0, MORVIK_SOURCE = 1 };
MORVIK_API morvik_status morvik_text(const morvik_value *value, int form, char **text, size_t *length);
MORVIK_API void morvik_free(char *text);

/* ---- Values: making them. */

/* Pushes a value of this rank and these extents (null for rank 0, a scalar), filled with as many records as the product
 * of the extents says, which are copied. MORVIK_STACK_FULL, MORVIK_BAD_ARGUMENT (more than 2^32 - 1 records, or a rank
 * above MORVIK_MOST_AXES), MORVIK_NO_STORAGE.
 * morvik_push_parts: numbers of 1 (reals), 2, 4 or 8 parts, so many doubles each. */
#define MORVIK_MOST_AXES 64
MORVIK_API morvik_status morvik_push_integers(const int64_t *integers, size_t rank, const size_t *extents);
MORVIK_API morvik_status morvik_push_parts(size_t parts, const double *doubles, size_t rank, const size_t *extents);
MORVIK_API morvik_status morvik_push_bytes(const char *bytes, size_t rank, const size_t *extents);

/* Takes the topmost `members` values and pushes a vector that holds them, the lowest first. */
MORVIK_API morvik_status morvik_push_nested(size_t members);

/* Pushes a value that was looked at once more. */
MORVIK_API morvik_status morvik_push_value(const morvik_value *value);

/* Drops the topmost values. MORVIK_NO_VALUE where there are not so many, with none dropped. */
MORVIK_API morvik_status morvik_drop(size_t count);

/* ---- Names, of the global table; without a sigil. */

/* Takes the top and makes it the value of the name. MORVIK_NO_VALUE for an empty stack. */
MORVIK_API morvik_status morvik_set(const char *name);
/* Pushes the value of the name; a function is not run. MORVIK_NO_VALUE where it has none. */
MORVIK_API morvik_status morvik_get(const char *name);

#ifdef __cplusplus
}
#endif

#endif
