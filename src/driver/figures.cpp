// The ladders of units.
#include "driver/figures.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

#include "spaces/convert.h"

namespace morvik {

namespace {

constexpr double GIGA = 1000000000.0, MEGA = 1000000.0, KILO = 1000.0;
constexpr double NANO = 1e-09, MICRO = 1e-06, MILLI = 0.001;
constexpr double MINUTE = 60;

// From giga down to the plain form.
struct UnitLadder {
  const char *giga, *mega, *kilo, *plain;
};

constexpr UnitLadder OPERATION_RATE = {"%7.3lf Gop/S", "%7.3lf  Mop/S", "%7.3lf   Kop/S", "%7.3lf    op/S"};
constexpr UnitLadder FLOP_RATE = {"%7.3lf Gflop/S", "%7.3lf Mflop/S", "%7.3lf Kflop/S", "%7.3lf  flop/S"};
constexpr UnitLadder VERB_RATE = {"%7.3lf Gv/S", "%7.3lf  Mv/S", "%7.3lf   Kv/S", "%7.3lf    v/S"};
constexpr const char *SECONDS_A_VERB = "%7.3lf    S/v";
constexpr UnitLadder OPERATIONS = {"%7.3lf Gops", "%7.3lf  Mops", "%7.3lf   Kops", "%7.3lf    ops"};
constexpr UnitLadder FLOPS = {"%7.3lf Gflops", "%7.3lf Mflops", "%7.3lf Kflops", "%7.3lf  flops"};
constexpr UnitLadder VERBS = {"%7.3lf Gverbs", "%7.3lf  Mverbs", "%7.3lf   Kverbs", "%7.0lf    verbs"};
constexpr UnitLadder FLOPS_AN_OPERATION = {"%7.3lf Gflop/op", "%7.3lf Mflop/op", "%7.3lf Kflop/op", "%7.3lf  flop/op"};

template <class... Values>
Cell formatted(const char *format, Values... values) {
  Cell cell;
  std::snprintf(cell.text.data(), cell.text.size(), format, values...);
  return cell;
}

Cell inunits(const UnitLadder &ladder, double value) {
  if (value >= GIGA) return formatted(ladder.giga, value / GIGA);
  if (value >= MEGA) return formatted(ladder.mega, value / MEGA);
  if (value >= KILO) return formatted(ladder.kilo, value / KILO);
  return formatted(ladder.plain, value);
}

// Cycles come in millions.
Cell inmillions(const UnitLadder &ladder, double millions) {
  if (millions < MILLI) return formatted(ladder.plain, millions / MICRO);
  if (millions < 1) return formatted(ladder.kilo, millions / MILLI);
  if (millions < KILO) return formatted(ladder.mega, millions);
  return formatted(ladder.giga, millions / KILO);
}

// Rounded before it is cut in two, so that no time has 60 seconds beside its minutes.
Cell inminutes(double seconds) {
  const double rounded = std::round(seconds * KILO) / KILO, whole = std::floor(rounded / MINUTE);
  const auto shown = static_cast<int>(std::min<std::int64_t>(saturate(whole), std::numeric_limits<int>::max()));
  const double rest = rounded - whole * MINUTE;
  return formatted(" %7d:%.3lf m:S,", shown, rest >= 0 ? rest : 0.0);
}

}  // namespace

Cell operationrate(double rate) {
  return inunits(OPERATION_RATE, rate);
}
Cell floprate(double rate) {
  return inunits(FLOP_RATE, rate);
}
Cell verbrate(double rate) {
  return rate > 0 && rate < 1 ? formatted(SECONDS_A_VERB, 1 / rate) : inunits(VERB_RATE, rate);
}
Cell operationcount(double count) {
  return inunits(OPERATIONS, count);
}
Cell flopcount(double count) {
  return inunits(FLOPS, count);
}
Cell verbcount(double count) {
  return inunits(VERBS, count);
}
Cell flopsperoperation(double flops) {
  return inunits(FLOPS_AN_OPERATION, flops);
}

Cell timespan(double seconds) {
  if (seconds < MICRO) return formatted(" %7.3lf   nS,", seconds / NANO);
  if (seconds < MILLI) return formatted(" %7.3lf  uS,", seconds / MICRO);
  if (seconds < 1) return formatted(" %7.3lf mS,", seconds / MILLI);
  if (seconds < MINUTE) return formatted(" %7.3lf S,", seconds);
  return inminutes(seconds);
}

Cell percentage(double part) {
  constexpr double HUNDREDTHS = 100;
  return formatted(" %7.3lf %%t", part * HUNDREDTHS);
}

Cell cyclesperoperation(double millions) {
  return inmillions({"%6.2lf Gcy/op    ", "%6.2lf  Mcy/op   ", "%6.2lf   Kcy/op  ", "%6.2lf     cy/op "}, millions);
}
Cell cyclesperflop(double millions) {
  return inmillions({"%6.2lf Gcy/flop  ", "%6.2lf  Mcy/flop ", "%6.2lf   Kcy/flop", "%6.2lf     cy/flop"}, millions);
}

}  // namespace morvik
