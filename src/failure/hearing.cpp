// Who hears of failures.
#include "failure/hearing.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "spaces/streams.h"

namespace morvik {

void (*hearreport)(const Report &report);
char conversing = 1;

namespace {

// The longest complaint names a token.
constexpr std::size_t COMPLAINT_BYTES = 512;

}  // namespace

void complain(const char *text) {
  if (!hearreport) {
    std::fputs(text, errorstream);
    return;
  }
  text += std::strspn(text, " \n");
  char bare[COMPLAINT_BYTES];
  std::size_t length = std::min(std::strlen(text), sizeof bare - 1);
  while (length > 0 && text[length - 1] == '\n') --length;
  std::memcpy(bare, text, length);
  bare[length] = 0;
  hearreport({0, bare, nullptr, nullptr});
}

}  // namespace morvik
