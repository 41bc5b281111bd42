// The texts of the numbered messages.
#pragma once

#include <cstdint>

namespace morvik {

// The text of a message; a number without a row gives the text of 999.
const char *errors(std::uint32_t number);

}  // namespace morvik
