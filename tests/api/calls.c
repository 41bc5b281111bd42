/* Every function of morvik.h and every status, from C99. Says where something is not as it should be. */
#include <morvik.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

static int faults;

#define CHECK(condition)                                                            \
  do {                                                                              \
    if (!(condition)) ++faults, printf("line %d: not so: %s\n", __LINE__, #condition); \
  } while (0)
#define GIVES(expected, call)                                                                              \
  do {                                                                                                     \
    const morvik_status status_ = (call);                                                                  \
    if (status_ != (expected))                                                                             \
      ++faults, printf("line %d: %s gives %d (%s)\n", __LINE__, #call, status_, morvik_status_text(status_)); \
  } while (0)

static char written[65536];
static size_t writtenlength;
static morvik_message last;
static char lasttext[1024], lastsource[256];
static int messages;
static morvik_status inside;
static const char *typed = "";

static void takeoutput(void *data, const char *bytes, size_t length) {
  CHECK(data == &faults);
  if (writtenlength + length < sizeof written) memcpy(written + writtenlength, bytes, length), writtenlength += length;
  written[writtenlength] = 0;
}

static void takemessage(void *data, const morvik_message *message) {
  volatile char used[24000]; /* there is room for a callback's own */
  memset((char *)used, 0, sizeof used);
  CHECK(data == &faults);
  ++messages;
  last = *message;
  strncpy(lasttext, message->text, sizeof lasttext - 1);
  strncpy(lastsource, message->source ? message->source : "", sizeof lastsource - 1);
  inside = morvik_drop(0); /* refused: a call is at work */
}

static size_t giveinput(void *data, char *bytes, size_t room) {
  size_t length = strlen(typed);
  CHECK(data == &faults);
  if (length > room) length = room;
  memcpy(bytes, typed, length);
  typed += length;
  return length;
}

static morvik_status run(const char *text) {
  writtenlength = 0;
  written[0] = 0;
  messages = 0;
  memset(&last, 0, sizeof last);
  return morvik_run(text, strlen(text), "calls");
}

static void testclosed(void) {
  size_t size;
  morvik_value value;
  char *text;
  memset(&value, 0, sizeof value);
  GIVES(MORVIK_NOT_OPEN, morvik_close());
  GIVES(MORVIK_NOT_OPEN, run("1"));
  GIVES(MORVIK_NOT_OPEN, morvik_height(&size));
  GIVES(MORVIK_NOT_OPEN, morvik_look(0, &value));
  GIVES(MORVIK_NOT_OPEN, morvik_extents(&value, &size));
  GIVES(MORVIK_NOT_OPEN, morvik_text(&value, 0, &text, NULL));
  GIVES(MORVIK_NOT_OPEN, morvik_drop(1));
  GIVES(MORVIK_NOT_OPEN, morvik_set("x"));
  GIVES(MORVIK_NOT_OPEN, morvik_get("x"));
  GIVES(MORVIK_NOT_OPEN, morvik_push_nested(0));
  morvik_interrupt();
  morvik_free(NULL);
}

static void testopen(void) {
  morvik_options options = MORVIK_OPTIONS;
  options.size = 1;
  GIVES(MORVIK_BAD_ARGUMENT, morvik_open(&options));
  options.size = sizeof options;
  options.processors = 100000;
  GIVES(MORVIK_BAD_ARGUMENT, morvik_open(&options));
  options.processors = 2;
  options.data = &faults;
  options.output = takeoutput;
  options.message = takemessage;
  options.input = giveinput;
  GIVES(MORVIK_OK, morvik_open(&options));
  GIVES(MORVIK_OPEN_ALREADY, morvik_open(&options));
  GIVES(MORVIK_OPEN_ALREADY, morvik_open(NULL));
}

static void testrun(void) {
  size_t height;
  GIVES(MORVIK_OK, run("1 2 + PRINT"));
  CHECK(strcmp(written, " 3\n") == 0);
  GIVES(MORVIK_OK, run(""));
  GIVES(MORVIK_OK, morvik_run(NULL, 0, NULL));
  GIVES(MORVIK_BAD_ARGUMENT, morvik_run(NULL, 1, NULL));
  GIVES(MORVIK_BAD_ARGUMENT, morvik_run("1\0 2", 4, NULL));
  GIVES(MORVIK_MESSAGE, run("1 PRINT .\n 'a' 1 + .\n2 PRINT ."));
  CHECK(strcmp(written, " 1\n 2\n") == 0);
  CHECK(messages == 1 && last.number == 17 && last.line == 2 && last.column == 7);
  CHECK(strcmp(lastsource, "calls") == 0);
  CHECK(strcmp(lasttext, "17 - dyadic function arguments are not conformable.") == 0);
  CHECK(inside == MORVIK_BUSY);
  GIVES(MORVIK_MESSAGE, run("1 ; ."));
  CHECK(last.number == 0 && strcmp(lasttext, "[Trelk] error: No FUNCTION pending!") == 0);
  GIVES(MORVIK_OK, run("CLEAR : \n\n'a' 1 + ; @bad SET ."));
  GIVES(MORVIK_MESSAGE, morvik_run("\nbad !", 6, "other"));
  CHECK(last.line == 3 && strcmp(lastsource, "calls") == 0);
  GIVES(MORVIK_UNFINISHED, run("1 PRINT . 2 PRINT 'abc"));
  CHECK(strcmp(written, " 1\n") == 0);
  GIVES(MORVIK_UNFINISHED, run(": 1 2"));
  GIVES(MORVIK_OK, run("3 PRINT"));
  GIVES(MORVIK_ENDED, run("4 PRINT OFF . 5 PRINT ."));
  CHECK(strcmp(written, " 4\n") == 0);
  GIVES(MORVIK_OK, run("6 PRINT ."));
  GIVES(MORVIK_MESSAGE, run(": deep ! 1 + ; @deep SET deep ! ."));
  CHECK(last.number == 27 || last.number == 806);
  GIVES(MORVIK_OK, run("CLEAR 7 PRINT ."));
  typed = "line\n1 2 +\n";
  GIVES(MORVIK_OK, run("QUOTEDIN PRINT INPUT PRINT ."));
  CHECK(strcmp(written, "line\n\n 3\n") == 0);
  GIVES(MORVIK_OK, run("CLEAR (1 100000) INTERVAL DUP + + // PRINT ."));
  CHECK(strcmp(written, " 10000100000\n") == 0);
  GIVES(MORVIK_OK, run("CLEAR ."));
  GIVES(MORVIK_OK, morvik_height(&height));
  CHECK(height == 0);
}

static void testvalues(void) {
  static const int64_t numbers[] = {1, -2, INT64_MAX, INT64_MIN, 5, 6};
  static const double parts[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
  static const size_t two[] = {2}, matrix[] = {3, 2}, none[] = {0}, huge[] = {65536, 65536}, most[] = {SIZE_MAX};
  size_t extents[2], length;
  int64_t integers[6];
  double doubles[16];
  char bytes[8], *text;
  const morvik_record *records;
  morvik_value value, member;
  size_t i;
  GIVES(MORVIK_OK, morvik_push_integers(numbers, 2, matrix));
  GIVES(MORVIK_OK, morvik_look(0, &value));
  CHECK(value.rank == 2 && value.size == 6 && value.kinds == MORVIK_INTEGERS);
  GIVES(MORVIK_OK, morvik_extents(&value, extents));
  CHECK(extents[0] == 3 && extents[1] == 2);
  GIVES(MORVIK_OK, morvik_integers(&value, 0, 6, integers));
  CHECK(memcmp(integers, numbers, sizeof numbers) == 0);
  GIVES(MORVIK_OK, morvik_integers(&value, 6, 0, NULL));
  GIVES(MORVIK_NO_VALUE, morvik_integers(&value, 6, 1, integers));
  GIVES(MORVIK_NO_VALUE, morvik_integers(&value, 1, SIZE_MAX, integers));
  GIVES(MORVIK_BAD_ARGUMENT, morvik_integers(&value, 0, 1, NULL));
  GIVES(MORVIK_WRONG_KIND, morvik_bytes(&value, 0, 1, bytes));
  GIVES(MORVIK_OK, morvik_doubles(&value, 0, 2, doubles));
  CHECK(doubles[0] == 1 && doubles[1] == -2);
  GIVES(MORVIK_OK, morvik_records(&value, &records));
  CHECK(records[1].kind == MORVIK_RECORD_INTEGER && records[1].value.integer == -2);
  GIVES(MORVIK_WRONG_KIND, morvik_member(&value, 0, &member));
  GIVES(MORVIK_NO_VALUE, morvik_member(&value, 6, &member));
  GIVES(MORVIK_NO_VALUE, morvik_look(1, &member));
  GIVES(MORVIK_OK, morvik_push_integers(numbers, 0, NULL));
  GIVES(MORVIK_STALE, morvik_extents(&value, extents));
  for (i = 1; i <= 8; i *= 2) {
    size_t k;
    GIVES(MORVIK_OK, morvik_push_parts(i, parts, 1, two));
    GIVES(MORVIK_OK, morvik_look(0, &value));
    GIVES(MORVIK_OK, morvik_parts(&value, i, 0, 2, doubles));
    CHECK(memcmp(doubles, parts, 2 * i * sizeof *parts) == 0);
    if (i > 1) GIVES(MORVIK_WRONG_KIND, morvik_parts(&value, i / 2, 0, 2, doubles));
    if (i > 1) GIVES(MORVIK_WRONG_KIND, morvik_integers(&value, 0, 2, integers));
    if (i < 8) {
      GIVES(MORVIK_OK, morvik_parts(&value, 2 * i, 0, 1, doubles));
      for (k = 0; k < 2 * i; ++k) CHECK(doubles[k] == (k < i ? parts[k] : 0));
    }
    CHECK(value.kinds == (unsigned)(i == 1 ? MORVIK_REALS : i == 2 ? MORVIK_COMPLEX : i == 4 ? MORVIK_QUATERNIONS : MORVIK_OCTONIONS));
  }
  GIVES(MORVIK_BAD_ARGUMENT, morvik_push_parts(3, parts, 1, two));
  GIVES(MORVIK_BAD_ARGUMENT, morvik_parts(&value, 3, 0, 1, doubles));
  GIVES(MORVIK_BAD_ARGUMENT, morvik_push_integers(numbers, 2, huge));
  GIVES(MORVIK_BAD_ARGUMENT, morvik_push_integers(numbers, 1, most));
  GIVES(MORVIK_BAD_ARGUMENT, morvik_push_integers(numbers, 65, huge));
  GIVES(MORVIK_BAD_ARGUMENT, morvik_push_integers(numbers, 1, NULL));
  GIVES(MORVIK_BAD_ARGUMENT, morvik_push_integers(NULL, 1, two));
  GIVES(MORVIK_OK, morvik_drop(6));
  GIVES(MORVIK_NO_VALUE, morvik_drop(1));

  GIVES(MORVIK_OK, morvik_push_bytes("ab", 1, two));
  GIVES(MORVIK_OK, morvik_push_bytes("c", 0, NULL));
  GIVES(MORVIK_OK, morvik_push_bytes(NULL, 1, none));
  GIVES(MORVIK_NO_VALUE, morvik_push_nested(4));
  GIVES(MORVIK_OK, morvik_push_nested(3));
  GIVES(MORVIK_OK, morvik_look(0, &value));
  CHECK(value.rank == 1 && value.size == 3 && value.kinds == MORVIK_NESTED);
  GIVES(MORVIK_OK, morvik_member(&value, 0, &member));
  GIVES(MORVIK_OK, morvik_bytes(&member, 0, 2, bytes));
  CHECK(memcmp(bytes, "ab", 2) == 0 && member.kinds == MORVIK_CHARACTERS);
  GIVES(MORVIK_OK, morvik_member(&value, 2, &member));
  CHECK(member.rank == 1 && member.size == 0);
  GIVES(MORVIK_OK, morvik_records(&member, &records));
  CHECK(records == NULL);
  GIVES(MORVIK_OK, morvik_push_value(&value));
  GIVES(MORVIK_STALE, morvik_push_value(&value));
  GIVES(MORVIK_OK, run("MATCH 1 = PRINT ."));
  GIVES(MORVIK_OK, run("CLEAR ."));
  GIVES(MORVIK_OK, morvik_push_nested(0));
  GIVES(MORVIK_OK, run("SHAPE PRINT ."));
  CHECK(strcmp(written, " 0\n\n") == 0);

  GIVES(MORVIK_OK, run("CLEAR (1.5 2 3i4 'a' (1 2)) ."));
  GIVES(MORVIK_OK, morvik_look(0, &value));
  CHECK(value.kinds == (MORVIK_REALS | MORVIK_INTEGERS | MORVIK_COMPLEX | MORVIK_NESTED));
  GIVES(MORVIK_OK, morvik_text(&value, MORVIK_SOURCE, &text, &length));
  CHECK(strlen(text) == length);
  GIVES(MORVIK_OK, morvik_set("value1"));
  GIVES(MORVIK_OK, run(text));
  morvik_free(text);
  GIVES(MORVIK_OK, morvik_get("value1"));
  GIVES(MORVIK_OK, run("MATCH PRINT ."));
  GIVES(MORVIK_BAD_ARGUMENT, morvik_text(&value, 2, &text, NULL));
  GIVES(MORVIK_STALE, morvik_text(&value, MORVIK_DISPLAY, &text, NULL));
  GIVES(MORVIK_OK, run("CLEAR : 1 + ; ."));
  GIVES(MORVIK_OK, morvik_look(0, &value));
  CHECK(value.kinds == MORVIK_FUNCTION && value.size == 0 && value.rank == 0);
  GIVES(MORVIK_NO_VALUE, morvik_integers(&value, 0, 1, integers));
  GIVES(MORVIK_OK, morvik_set("inc"));
  GIVES(MORVIK_OK, run("4 inc ! PRINT ."));
  CHECK(strcmp(written, " 5\n") == 0);
}

static void testnames(void) {
  GIVES(MORVIK_BAD_ARGUMENT, morvik_get(NULL));
  GIVES(MORVIK_BAD_ARGUMENT, morvik_get(""));
  GIVES(MORVIK_BAD_ARGUMENT, morvik_set(""));
  GIVES(MORVIK_NO_VALUE, morvik_get("nobody"));
  GIVES(MORVIK_OK, run("CLEAR ."));
  GIVES(MORVIK_NO_VALUE, morvik_set("x"));
}

static void testfull(void) {
  static const int64_t one = 1;
  size_t pushed = 0, height;
  morvik_status status;
  while ((status = morvik_push_integers(&one, 0, NULL)) == MORVIK_OK) ++pushed;
  CHECK(status == MORVIK_STACK_FULL && pushed > 16000);
  GIVES(MORVIK_STACK_FULL, morvik_push_nested(0));
  GIVES(MORVIK_STACK_FULL, morvik_get("inc"));
  GIVES(MORVIK_OK, morvik_height(&height));
  CHECK(height == pushed);
  GIVES(MORVIK_OK, morvik_drop(pushed));
}

static volatile int broken;

/* Again and again: one that comes before the run has begun is dropped. */
static void *interrupting(void *unused) {
  while (!broken) {
    usleep(100000);
    morvik_interrupt();
  }
  return unused;
}

static void testinterrupt(void) {
  static const char *const texts[] = {"1000 SLEEP .", "1000000000000 : ; REPEAT .", "1000 SLEEP . 1000 SLEEP ."};
  size_t i;
  morvik_interrupt(); /* nothing runs: dropped */
  for (i = 0; i < sizeof texts / sizeof *texts; ++i) {
    pthread_t thread;
    broken = 0;
    pthread_create(&thread, NULL, interrupting, NULL);
    GIVES(MORVIK_INTERRUPTED, run(texts[i]));
    broken = 1;
    pthread_join(thread, NULL);
    CHECK(messages == 0);
  }
  GIVES(MORVIK_OK, run("CLEAR ."));
}

static void *calling(void *result) {
  size_t height;
  usleep(500000);
  *(morvik_status *)result = morvik_height(&height);
  return NULL;
}

static void testthreads(void) {
  pthread_t thread;
  morvik_status status = MORVIK_OK;
  pthread_create(&thread, NULL, calling, &status);
  GIVES(MORVIK_OK, run("3 SLEEP ."));
  pthread_join(thread, NULL);
  CHECK(status == MORVIK_BUSY);
  pthread_create(&thread, NULL, calling, &status);
  pthread_join(thread, NULL);
  CHECK(status == MORVIK_OK);
}

static void *recursing(void *result) {
  *(morvik_status *)result = run("CLEAR : deep ! 1 + ; @deep SET deep ! .");
  return NULL;
}

/* A recursion ends with a message on any stack; what is no stack for it is said. */
static void teststacks(void) {
  static const size_t sizes[] = {16384, 65536, 131072, 1 << 20};
  static const morvik_status answers[] = {MORVIK_NO_STORAGE, MORVIK_MESSAGE, MORVIK_MESSAGE, MORVIK_MESSAGE};
  size_t i;
  for (i = 0; i < sizeof sizes / sizeof *sizes; ++i) {
    pthread_attr_t attributes;
    pthread_t thread;
    morvik_status status = MORVIK_OK;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, sizes[i]);
    CHECK(pthread_create(&thread, &attributes, recursing, &status) == 0);
    pthread_join(thread, NULL);
    GIVES(answers[i], status);
    pthread_attr_destroy(&attributes);
    GIVES(MORVIK_OK, run("CLEAR ."));
  }
}

static void testoptions(void) {
  morvik_options options = MORVIK_OPTIONS;
  options.data = &faults;
  options.output = takeoutput;
  options.message = takemessage;
  options.stop_at_message = 1;
  options.echo = 1;
  GIVES(MORVIK_OK, morvik_open(&options));
  GIVES(MORVIK_MESSAGE, run("nothing 1 . 2 ."));
  CHECK(strstr(written, "2") == NULL && messages == 1);
  GIVES(MORVIK_OK, run("CLEAR 1 2 + ."));
  CHECK(strcmp(written, "\n\n 3") == 0);
  GIVES(MORVIK_MESSAGE, run("'/etc/hostname' READ ."));
  CHECK(last.number == 720);
  GIVES(MORVIK_OK, morvik_close());
}

/* What nobody reads any more ends no process. */
static void testbrokenpipe(void) {
  int ends[2], before = dup(1);
  fflush(stdout);
  CHECK(pipe(ends) == 0);
  close(ends[0]);
  dup2(ends[1], 1);
  GIVES(MORVIK_OK, morvik_open(NULL));
  GIVES(MORVIK_OK, morvik_run("1 PRINT .", 9, NULL));
  GIVES(MORVIK_OK, morvik_close());
  dup2(before, 1);
  clearerr(stdout);
  close(ends[1]);
  close(before);
}

int main(void) {
  int i;
  CHECK(strcmp(morvik_version(), VERSION) == 0);
  for (i = MORVIK_OK; i <= MORVIK_STALE; ++i) CHECK(strcmp(morvik_status_text(i), "no status") != 0);
  CHECK(strcmp(morvik_status_text(-1), "no status") == 0 && strcmp(morvik_status_text(MORVIK_STALE + 1), "no status") == 0);
  setvbuf(stdout, NULL, _IONBF, 0);
  for (i = 0; i < 2; ++i) { /* a session may follow another */
    testclosed();
    testopen();
    testrun();
    testvalues();
    testnames();
    testfull();
    testinterrupt();
    testthreads();
    teststacks();
    GIVES(MORVIK_OK, morvik_close());
    testoptions();
    testbrokenpipe();
  }
  if (faults == 0) printf("all well\n");
  return faults != 0;
}
