// The texts of the numbered messages, made from messages.def.
#include "failure/messagetext.h"

#include "spaces/messages.h"

namespace morvik {

namespace {

constexpr const char *WITHOUT_A_ROW =
#define MESSAGE(number, name, text, ...) (number) == messages::GOODBYE ? (text):
#include "tables/messages.def"
#undef MESSAGE
    nullptr;
static_assert(WITHOUT_A_ROW, "the text of a number without a row");

}  // namespace

// The texts are part of the programme's image, so that a report of message 27 asks for no storage.
const char *errors(std::uint32_t number) {
  switch (number) {
#define MESSAGE(number, name, text, ...) \
  case number:                           \
    return text;
#include "tables/messages.def"
#undef MESSAGE
    default:
      return WITHOUT_A_ROW;
  }
}

}  // namespace morvik
