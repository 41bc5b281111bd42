// The bytes that the scanner and the printer must agree on.
#pragma once

namespace morvik {
// A name that holds any byte is between these two.
inline constexpr char NAME_OPENS = 2, NAME_CLOSES = 3;
// A minus that belongs to its number.
inline constexpr char HIGH_MINUS = '\xAF';

}  // namespace morvik
