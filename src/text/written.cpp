// A Point as text that somebody holds.
#include "text/written.h"

#include <cstdlib>

#include "text/text.h"

namespace morvik {

namespace {

void releasewritten(Custody &c) {
  auto *text = static_cast<WrittenText *>(c.held);
  if (text->stream) std::fclose(text->stream);
  std::free(text->bytes);
}

}  // namespace

bool writepoint(WrittenText &text, Point *point, int source) {
  text = {};
  text.stream = open_memstream(&text.bytes, &text.length);
  if (!text.stream) return false;
  takecustody(text.custody, releasewritten, &text);
  disass(text.stream, "", point, 0, source);
  const bool written = std::fclose(text.stream) == 0;
  text.stream = nullptr;
  if (written) return true;
  endcustody(text.custody);
  std::free(text.bytes);
  return false;
}

}  // namespace morvik
