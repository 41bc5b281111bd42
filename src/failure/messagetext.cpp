// The texts of the numbered messages, made from messages.def.
#include "failure/messagetext.h"

namespace morvik {

namespace {

constexpr const char *GOODBYE =
#define MESSAGE(row, text) (row) == 999 ? (text):
#include "tables/messages.def"
#undef MESSAGE
    nullptr;
static_assert(GOODBYE, "the text of a number without a row");

}  // namespace

// The texts stand in the image of the programme, so that a report of message 27 asks for no storage.
const char *errors(std::uint32_t number) {
  switch (number) {
#define MESSAGE(row, text) \
  case row:                \
    return text;
#include "tables/messages.def"
#undef MESSAGE
    default:
      return GOODBYE;
  }
}

}  // namespace morvik
