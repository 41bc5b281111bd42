/* Morvik from C: a table goes in, sums and a message come out.
 *
 *     cc table.c $(pkg-config --cflags --libs morvik) -o table && ./table
 */
#include <morvik.h>
#include <stdio.h>
#include <stdlib.h>

static void takemessage(void *data, const morvik_message *message) {
  (void)data;
  printf("%s, line %lu: %s\n", message->source ? message->source : "somewhere", (unsigned long)message->line,
         message->text);
}

static void takeoutput(void *data, const char *bytes, size_t length) {
  (void)data;
  fwrite(bytes, 1, length, stdout);
}

/* What must not fail here. */
static void must(morvik_status status, const char *what) {
  if (status == MORVIK_OK) return;
  fprintf(stderr, "%s: %s\n", what, morvik_status_text(status));
  exit(1);
}

static morvik_status run(const char *text) {
  size_t length = 0;
  while (text[length]) ++length;
  return morvik_run(text, length, "table");
}

int main(void) {
  /* Two rows of three, the fastest axis first. */
  static const int64_t cells[] = {1, 2, 3, 10, 20, 30};
  static const size_t extents[] = {3, 2};
  int64_t sums[2];
  morvik_value value;
  char *text;
  morvik_options options = MORVIK_OPTIONS;
  options.message = takemessage;
  options.output = takeoutput;
  must(morvik_open(&options), "open");

  must(morvik_push_integers(cells, 2, extents), "push");
  must(morvik_set("table"), "set");
  must(run("'Rows summed:' PRINT table + // ."), "run");
  must(morvik_look(0, &value), "look");
  must(morvik_integers(&value, 0, value.size, sums), "integers");
  printf("%ld and %ld\n", (long)sums[0], (long)sums[1]);

  must(run("table 0.5 * ."), "run");
  must(morvik_look(0, &value), "look");
  must(morvik_text(&value, MORVIK_SOURCE, &text, NULL), "text");
  printf("halved:%s\n", text);
  morvik_free(text);

  if (run("1 PRINT .\n'a' 1 + .") == MORVIK_MESSAGE) printf("a message came\n");
  must(morvik_close(), "close");
  return 0;
}
