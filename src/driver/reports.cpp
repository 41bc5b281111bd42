// What the process says about its own work when it ends: a table of the instructions, the flops of each processor, and
// a summary. A row of the table takes several lines, so that none is longer than a terminal is wide; its columns take
// the width of their widest figure.
#include "driver/reports.h"

#include <sys/resource.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <span>
#include <string_view>

#include "driver/figures.h"
#include "machine/timing.h"
#include "spaces/counters.h"
#include "spaces/work.h"

namespace morvik {

namespace {

constexpr std::size_t TAB = 8;

struct Column {
  const char *label;  // before the figure, where there is one; a tab leads to the same place in every row
  Cell (*figure)(const Timing &row, const Timing &all);
  std::size_t width;
};

bool iscounted(const Timing &row) {
  return row.operations > 0;
}

Timing total() {
  Timing all{};
  for (const Timing &row : InstructionTiming) {
    if (!iscounted(row)) continue;
    all.time += row.time;
    all.squares += row.squares;
    all.operations += row.operations;
    all.flops += row.flops;
  }
  return all;
}

// ---- The figures of a row.

double average(const Timing &row) {
  return iscounted(row) ? row.time / row.operations : 0;
}

// What rounding leaves of equal times may lie below 0.
double deviation(const Timing &row) {
  if (!iscounted(row)) return 0;
  return std::sqrt(std::max(row.squares / row.operations - average(row) * average(row), 0.0));
}

Cell rate(const Timing &row, const Timing &) {
  return operationrate(persecond(row.operations, row.time));
}
Cell rateofflops(const Timing &row, const Timing &) {
  return flops && row.flops != 0 ? floprate(persecond(row.flops, row.time)) : NOTHING_TO_SHOW;
}
Cell averagetime(const Timing &row, const Timing &) {
  return timespan(average(row));
}
Cell deviationtime(const Timing &row, const Timing &) {
  return timespan(deviation(row));
}
Cell share(const Timing &row, const Timing &all) {
  return percentage(all.time > 0 ? row.time / all.time : 0);
}
Cell howmany(const Timing &row, const Timing &) {
  return operationcount(row.operations);
}
Cell cycles(const Timing &row, const Timing &) {
  return processor_performance ? cyclesperoperation(static_cast<double>(MHz) * average(row)) : NOTHING_TO_SHOW;
}
Cell cyclesaflop(const Timing &row, const Timing &) {
  if (!flops || !processor_performance || row.flops == 0) return NOTHING_TO_SHOW;
  return cyclesperflop(static_cast<double>(MHz) * row.time / row.flops);
}
// Where cycles are shown too, these have no room beside the operations, and are below them.
Cell flopsanoperation(const Timing &row, const Timing &) {
  if (!flops || processor_performance || row.flops == 0) return NOTHING_TO_SHOW;
  return flopsperoperation(row.flops / row.operations);
}
Cell flopsanoperationbelow(const Timing &row, const Timing &) {
  return flops && processor_performance && row.flops != 0 ? flopsperoperation(row.flops / row.operations)
                                                          : NOTHING_TO_SHOW;
}

// ---- The table.

std::size_t lengthof(const Cell &cell) {
  return std::strlen(cell.text.data());
}

void measure(std::span<Column> columns, const Timing &all) {
  for (const Timing &row : InstructionTiming)
    for (Column &column : columns)
      if (iscounted(row)) column.width = std::max(column.width, lengthof(column.figure(row, all)));
}

// The figures of one line, with no blanks at its end. A line that has none is left out, its beginning too.
void printline(const char *beginning, std::span<const Column> columns, const Timing &row, const Timing &all) {
  std::size_t owed = 0;
  bool begun = false;
  for (const Column &column : columns) {
    const Cell cell = column.figure(row, all);
    const bool isempty = lengthof(cell) == 0, istabbed = *column.label == '\t';
    if (!isempty || istabbed) {
      std::printf("%s%*s%s%s", begun ? "" : beginning, static_cast<int>(owed), "", column.label, cell.text.data());
      begun = true;
      owed = 0;
    } else if (column.width > 0) {
      owed += std::strlen(column.label);
    }
    owed += column.width - lengthof(cell);
  }
  if (begun) std::putchar('\n');
}

// A tab follows the name and its blank, and one more follows a name of fewer than 7 characters.
constexpr std::size_t SHORT_NAME = 7;
std::size_t widthofname(const char *name) {
  const std::size_t length = std::strlen(name);
  return (length + 1) / TAB * TAB + (length < SHORT_NAME ? 2 : 1) * TAB;
}

// Where the figures begin: after the longest name.
std::size_t namewidth() {
  std::size_t width = 0;
  for (std::size_t number = 0; number < instructions::COUNT; ++number)
    if (iscounted(InstructionTiming[number])) width = std::max(width, widthofname(Instructions[number]));
  return width;
}

void printname(const char *name, std::size_t width) {
  const bool isshort = std::strlen(name) < SHORT_NAME;
  std::printf("%s %s%*s", name, isshort ? "\t\t" : "\t", static_cast<int>(width - widthofname(name)), "");
}

void printtable(const Timing &all) {
  Column first[] = {
      {"", rate, 0}, {terse_ops ? "\t" : " ", rateofflops, 0}, {terse_ops ? "  " : "", averagetime, 0}, {"", share, 0}};
  Column second[] = {{"", cycles, 0},
                     {"avg", averagetime, 0},
                     {" sdev", deviationtime, 0},
                     {" ", howmany, 0},
                     {" ", flopsanoperation, 0}};
  Column third[] = {{"", cyclesaflop, 0}, {" ", flopsanoperationbelow, 0}};
  measure(first, all);
  measure(second, all);
  measure(third, all);
  const std::size_t width = namewidth();
  std::fputs("\n\nExecution timing", stdout);
  std::fputs(flops ? "\n" : " per operation:\n", stdout);
  for (std::size_t number = 0; number < instructions::COUNT; ++number) {
    const Timing &row = InstructionTiming[number];
    if (!iscounted(row)) continue;
    if (!terse_ops) printname(Instructions[number], width);
    printline("", first, row, all);
    if (terse_ops) continue;
    printline("\t", second, row, all);
    printline("\t", third, row, all);
  }
}

// ---- After the table.

void printprocessors() {
  constexpr const char *RULE = "--------------------------------------------------------------------------------";
  static_assert(std::string_view(RULE).size() == 80);
  std::printf("%s\nPer processor (thread) floating point perfomance:\n", RULE);
  for (std::uint32_t slot = 0; slot < cpus; ++slot) {
    const double rate = persecond(from_coprocessor[slot].total_flops, totaltime);
    std::printf("Processor %d:\t%s\n", static_cast<int>(slot), floprate(rate).text.data());
  }
}

double seconds(const timeval &time) {
  constexpr double MICROSECOND = 1e-06;
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * MICROSECOND;
}

void printsummary(const Timing &all) {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const double user = seconds(usage.ru_utime), system = seconds(usage.ru_stime), process = user + system;
  std::printf("\nSummary:\tavg%s sdev%s n=%.0lf", timespan(average(all)).text.data(),
              timespan(deviation(all)).text.data(), all.operations);
  if (all.flops > 0) std::printf(" %s", flopcount(all.flops).text.data());
  const double raw = iscounted(all) ? process / all.operations : 0;
  std::printf("\nRaw timing:\tavg%s\t(proc time)\n", timespan(raw).text.data());
  std::printf("proc:\t%7.3lf S (utime: %7.3lf S, stime: %7.3lf S)", process, user, system);
  std::printf("\treal:\t%7.3lf S\n", std::max(clocktime() - starttime, 0.0));
  std::printf("\tMorvik verbs per second:   %s %s\n", verbrate(persecond(verbs, process)).text.data(),
              verbcount(verbs).text.data());
}

}  // namespace

void exitreport() {
  if (!opstime) return;
  const Timing all = total();
  const bool tabled = iscounted(all) && !just_summary;
  if (tabled) printtable(all);
  if (tabled && flops && cpus > 1) printprocessors();
  if (!tabled) std::putchar('\n');
  printsummary(all);
}

double starttime;

}  // namespace morvik
