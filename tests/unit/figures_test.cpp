// The ladders of units, on both sides of each boundary.
#include "driver/figures.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

using namespace morvik;

namespace {

constexpr double INFINITE = std::numeric_limits<double>::infinity();

// The largest double below.
double below(double x) {
  return std::nextafter(x, 0.0);
}

using Steps = std::vector<std::pair<double, std::string>>;

void expectladder(Cell (*figure)(double), const Steps &steps) {
  for (const auto &[value, text] : steps) EXPECT_EQ(figure(value).text.data(), text) << value;
}

}  // namespace

TEST(Figures, RatesOfOperations) {
  expectladder(operationrate, {{0, "  0.000    op/S"},
                               {999.9994, "999.999    op/S"},
                               {below(1000), "1000.000    op/S"},
                               {1000, "  1.000   Kop/S"},
                               {below(1e6), "1000.000   Kop/S"},
                               {1e6, "  1.000  Mop/S"},
                               {below(1e9), "1000.000  Mop/S"},
                               {1e9, "  1.000 Gop/S"},
                               {123.4567e9, "123.457 Gop/S"},
                               {INFINITE, "    inf Gop/S"}});
}

TEST(Figures, RatesOfFlops) {
  expectladder(floprate, {{0.5, "  0.500  flop/S"},
                          {below(1000), "1000.000  flop/S"},
                          {1000, "  1.000 Kflop/S"},
                          {below(1e6), "1000.000 Kflop/S"},
                          {1e6, "  1.000 Mflop/S"},
                          {below(1e9), "1000.000 Mflop/S"},
                          {1e9, "  1.000 Gflop/S"}});
}

TEST(Figures, RatesOfVerbs) {
  expectladder(verbrate, {{0, "  0.000    v/S"},
                          {0.25, "  4.000    S/v"},
                          {below(1), "  1.000    S/v"},
                          {1, "  1.000    v/S"},
                          {below(1000), "1000.000    v/S"},
                          {1000, "  1.000   Kv/S"},
                          {1e6, "  1.000  Mv/S"},
                          {below(1e9), "1000.000  Mv/S"},
                          {1e9, "  1.000 Gv/S"}});
}

TEST(Figures, Counts) {
  expectladder(operationcount, {{1, "  1.000    ops"},
                                {999, "999.000    ops"},
                                {1000, "  1.000   Kops"},
                                {999999, "999.999   Kops"},
                                {1e6, "  1.000  Mops"},
                                {1e9, "  1.000 Gops"}});
  expectladder(flopcount,
               {{999, "999.000  flops"}, {1000, "  1.000 Kflops"}, {1e6, "  1.000 Mflops"}, {1e9, "  1.000 Gflops"}});
  expectladder(verbcount, {{0, "      0    verbs"},
                           {999, "    999    verbs"},
                           {1000, "  1.000   Kverbs"},
                           {1e6, "  1.000  Mverbs"},
                           {1e9, "  1.000 Gverbs"}});
  expectladder(
      flopsperoperation,
      {{0.5, "  0.500  flop/op"}, {1000, "  1.000 Kflop/op"}, {1e6, "  1.000 Mflop/op"}, {1e9, "  1.000 Gflop/op"}});
}

TEST(Figures, Times) {
  expectladder(timespan, {{0, "   0.000   nS,"},
                          {1e-9, "   1.000   nS,"},
                          {below(1e-6), " 1000.000   nS,"},
                          {1e-6, "   1.000  uS,"},
                          {below(0.001), " 1000.000  uS,"},
                          {0.001, "   1.000 mS,"},
                          {below(1), " 1000.000 mS,"},
                          {1, "   1.000 S,"},
                          {59.9994, "  59.999 S,"},
                          {below(60), "  60.000 S,"},
                          {60, "       1:0.000 m:S,"},
                          {61.5, "       1:1.500 m:S,"},
                          {119.9994, "       1:59.999 m:S,"},
                          {119.9996, "       2:0.000 m:S,"},
                          {3600, "      60:0.000 m:S,"},
                          {1e300, " 2147483647:0.000 m:S,"}});
}

TEST(Figures, Shares) {
  expectladder(percentage, {{0, "   0.000 %t"}, {0.123456, "  12.346 %t"}, {1, " 100.000 %t"}});
}

TEST(Figures, Cycles) {
  expectladder(cyclesperoperation, {{0, "  0.00     cy/op "},
                                    {0.00012345, "123.45     cy/op "},
                                    {below(0.001), "1000.00     cy/op "},
                                    {0.001, "  1.00   Kcy/op  "},
                                    {below(1), "1000.00   Kcy/op  "},
                                    {1, "  1.00  Mcy/op   "},
                                    {below(1000), "1000.00  Mcy/op   "},
                                    {1000, "  1.00 Gcy/op    "},
                                    {9223372036854775807.0, "9223372036854776.00 Gcy/op    "}});
  expectladder(cyclesperflop, {{0.0001, "100.00     cy/flop"},
                               {0.001, "  1.00   Kcy/flop"},
                               {1, "  1.00  Mcy/flop "},
                               {1000, "  1.00 Gcy/flop  "}});
}
