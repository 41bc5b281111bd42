// Figures for people: each kind of figure has a ladder of units, and takes the unit that keeps it readable.
#pragma once

#include <array>

namespace morvik {

// The text of one figure, as it is in a column. The blanks in a format set the units apart: the larger the unit,
// the further left it is.
struct Cell {
  std::array<char, 64> text;
};
// The cell that a column has for nothing.
inline constexpr Cell NOTHING_TO_SHOW{};

// By decimal units from 1 up to a thousand million. Operations, floating point operations and verbs a second:
Cell operationrate(double rate);
Cell floprate(double rate);
Cell verbrate(double rate);  // below one a second: seconds a verb
// How many there were:
Cell operationcount(double count);
Cell flopcount(double count);
Cell verbcount(double count);
Cell flopsperoperation(double flops);

// A time of so many seconds, from nanoseconds to minutes.
Cell timespan(double seconds);

// A part of the whole, 0 to 1, in hundredths.
Cell percentage(double part);

// Cycles of a processor, given in millions.
Cell cyclesperoperation(double millions);
Cell cyclesperflop(double millions);

}  // namespace morvik
