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
struct Decimal {
  const char *giga, *mega, *kilo, *plain;
};

constexpr Decimal OPERATION_RATE = {"%7.3lf Gop/S", "%7.3lf  Mop/S", "%7.3lf   Kop/S", "%7.3lf    op/S"};
constexpr Decimal FLOP_RATE = {"%7.3lf Gflop/S", "%7.3lf Mflop/S", "%7.3lf Kflop/S", "%7.3lf  flop/S"};
constexpr Decimal VERB_RATE = {"%7.3lf Gv/S", "%7.3lf  Mv/S", "%7.3lf   Kv/S", "%7.3lf    v/S"};
constexpr const char *SECONDS_A_VERB = "%7.3lf    S/v";
constexpr Decimal OPERATIONS = {"%7.3lf Gops", "%7.3lf  Mops", "%7.3lf   Kops", "%7.3lf    ops"};
constexpr Decimal FLOPS = {"%7.3lf Gflops", "%7.3lf Mflops", "%7.3lf Kflops", "%7.3lf  flops"};
constexpr Decimal VERBS = {"%7.3lf Gverbs", "%7.3lf  Mverbs", "%7.3lf   Kverbs", "%7.0lf    verbs"};
constexpr Decimal FLOPS_AN_OPERATION = {"%7.3lf Gflop/op", "%7.3lf Mflop/op", "%7.3lf Kflop/op", "%7.3lf  flop/op"};

template <class... Values>
Cell written(const char *format, Values... values) {
  Cell cell;
  std::snprintf(cell.text.data(), cell.text.size(), format, values...);
  return cell;
}

Cell decimal(const Decimal &ladder, double value) {
  if (value >= GIGA) return written(ladder.giga, value / GIGA);
  if (value >= MEGA) return written(ladder.mega, value / MEGA);
  if (value >= KILO) return written(ladder.kilo, value / KILO);
  return written(ladder.plain, value);
}

// Cycles come in millions.
Cell cycles(const Decimal &ladder, double millions) {
  if (millions < MILLI) return written(ladder.plain, millions / MICRO);
  if (millions < 1) return written(ladder.kilo, millions / MILLI);
  if (millions < KILO) return written(ladder.mega, millions);
  return written(ladder.giga, millions / KILO);
}

// Rounded before it is cut in two, so that no time has 60 seconds beside its minutes.
Cell minutes(double seconds) {
  const double rounded = std::round(seconds * KILO) / KILO, whole = std::floor(rounded / MINUTE);
  const auto shown = static_cast<int>(std::min<std::int64_t>(saturate(whole), std::numeric_limits<int>::max()));
  const double rest = rounded - whole * MINUTE;
  return written(" %7d:%.3lf m:S,", shown, rest >= 0 ? rest : 0.0);
}

}  // namespace

Cell operationrate(double rate) {
  return decimal(OPERATION_RATE, rate);
}
Cell floprate(double rate) {
  return decimal(FLOP_RATE, rate);
}
Cell verbrate(double rate) {
  return rate > 0 && rate < 1 ? written(SECONDS_A_VERB, 1 / rate) : decimal(VERB_RATE, rate);
}
Cell operationcount(double count) {
  return decimal(OPERATIONS, count);
}
Cell flopcount(double count) {
  return decimal(FLOPS, count);
}
Cell verbcount(double count) {
  return decimal(VERBS, count);
}
Cell flopsperoperation(double flops) {
  return decimal(FLOPS_AN_OPERATION, flops);
}

Cell timespan(double seconds) {
  if (seconds < MICRO) return written(" %7.3lf   nS,", seconds / NANO);
  if (seconds < MILLI) return written(" %7.3lf  uS,", seconds / MICRO);
  if (seconds < 1) return written(" %7.3lf mS,", seconds / MILLI);
  if (seconds < MINUTE) return written(" %7.3lf S,", seconds);
  return minutes(seconds);
}

Cell percentage(double part) {
  constexpr double HUNDREDTHS = 100;
  return written(" %7.3lf %%t", part * HUNDREDTHS);
}

Cell cyclesperoperation(double millions) {
  return cycles({"%6.2lf Gcy/op    ", "%6.2lf  Mcy/op   ", "%6.2lf   Kcy/op  ", "%6.2lf     cy/op "}, millions);
}
Cell cyclesperflop(double millions) {
  return cycles({"%6.2lf Gcy/flop  ", "%6.2lf  Mcy/flop ", "%6.2lf   Kcy/flop", "%6.2lf     cy/flop"}, millions);
}

}  // namespace morvik
