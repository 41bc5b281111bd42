// The pipeline of a line against plain loops: a long literal read from a stream against strtod over the same text, and
// a text of scalar pushes and additions against a loop that copies Points and takes blocks from a free list.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "frontend/assembly.h"
#include "frontend/contexts.h"
#include "frontend/limits.h"
#include "frontend/symtab.h"
#include "kernels.h"
#include "machine/level.h"
#include "machine/machine.h"
#include "spaces/refderef.h"
#include "spaces/symbols.h"

using namespace morvik;

namespace {

constexpr int MEMBERS = 1000000;
constexpr int ROUNDS = 250;  // of four Points each, which fit one text

// Names and a stack of its own, for as long as a measurement lasts.
struct Bank {
  Entry *table = makehashtab();
  Context *chain = makemeaning(table);
  std::vector<Point> stack = std::vector<Point>(64);
  std::vector<Point> programme = std::vector<Point>(PROGRAMME_POINTS);
  Bank() { stacktop = &stack.back(); }
  ~Bank() {
    release(chain);
    releasetable(table);
  }
};

// How the numbers are written; Exact as the printer writes them in source form, with all their digits.
enum Writing : int { Decimals, Exact, Whole };
constexpr const char *FORMATS[] = {"%.6f ", "%.17g ", "%.0f "};

std::string literal(std::int64_t writing) {
  std::mt19937_64 random(1);
  std::uniform_real_distribution<double> spread(-1000, 1000);
  std::string text = "(";
  char number[32];
  for (int i = 0; i < MEMBERS; ++i) {
    std::snprintf(number, sizeof number, FORMATS[writing], spread(random));
    text += number;
  }
  return text + ") .\n";
}

double sumof(const std::string &text) {
  const char *at = text.c_str() + 1;
  double sum = 0;
  for (int i = 0; i < MEMBERS; ++i) {
    char *end;
    sum += std::strtod(at, &end);
    at = end;
  }
  return sum;
}

double sumof(const Point &space) {
  double sum = 0;
  for (const Element *e = space.data_pointer, *end = e + space.elements; e < end; ++e)
    sum += e->tag == tags::REAL ? e->real : static_cast<double>(e->integer);
  return sum;
}

// A Programme of one literal, read from a stream and given up. Is its sum this?
bool reads(Bank &bank, const std::string &text, double sum, double &taken) {
  std::FILE *stream = fmemopen(const_cast<char *>(text.data()), text.size(), "r");
  const double start = kernels::threadtime();
  fill(bank.programme.data(), bank.chain, bank.stack.data(), stream, nullptr, SKIPPED);
  const double read = kernels::threadtime();
  const bool same = bank.programme[0].elements == MEMBERS && sumof(bank.programme[0]) == sum;
  const double checked = kernels::threadtime();
  cleanup(bank.programme.data());
  std::fclose(stream);
  taken = kernels::threadtime() - checked + (read - start);
  return same;
}

// The two in turns, the best of each: `ratio` is what counts.
void readliteral(benchmark::State &state) {
  Bank bank;
  const std::string text = literal(state.range(0));
  const double sum = sumof(text);
  double bestread = std::numeric_limits<double>::infinity(), bestloop = bestread;
  for (auto _ : state) {
    double read;
    if (!reads(bank, text, sum, read)) state.SkipWithError("a literal of another value");
    bestread = std::min(bestread, read);
    const double start = kernels::threadtime();
    benchmark::DoNotOptimize(sumof(text));
    bestloop = std::min(bestloop, kernels::threadtime() - start);
  }
  constexpr double EACH = kernels::NANOSECONDS / MEMBERS;
  state.counters["ns"] = bestread * EACH;
  state.counters["strtod_ns"] = bestloop * EACH;
  state.counters["ratio"] = bestread / bestloop;
}
BENCHMARK(readliteral)->Arg(Decimals)->Arg(Exact)->Arg(Whole)->Unit(benchmark::kMillisecond);

void scalartext(benchmark::State &state) {
  Bank bank;
  std::string text;
  for (int i = 0; i < ROUNDS; ++i) text += "1 2 + DISCARD ";
  text += ".";
  const char *position = text.c_str();
  fill(bank.programme.data(), bank.chain, bank.stack.data(), nullptr, &position, SKIPPED);
  Point *const bottom = bank.stack.data(), *const floor = bottom + 1;
  for (auto _ : state) {
    const Point *top = machine(bank.programme.data(), bank.chain, floor, floor, bottom, &bank.table, 1, 0);
    if (top != bottom) state.SkipWithError("something is left on the stack");
  }
  cleanup(bank.programme.data());
  state.SetItemsProcessed(state.iterations() * ROUNDS * 4);
}
BENCHMARK(scalartext);

// What an addition cannot do without: a Point copied, a block of 64 bytes taken and given back, a sum. One pass is
// compared with one Point of the text above. The block comes from a list in plain sight of the compiler, or from the
// heap of the process, as it does in the machine.
struct Block {
  Block *next;
  double values[7];
};

struct List {
  std::vector<Block> blocks = std::vector<Block>(16);
  Block *free = nullptr;
  List() {
    for (Block &b : blocks) give(&b);
  }
  Block *take() {
    Block *taken = free;
    free = taken->next;
    return taken;
  }
  void give(Block *block) {
    block->next = free;
    free = block;
  }
};

struct Process {
  static Block *take() { return static_cast<Block *>(std::malloc(sizeof(Block))); }
  static void give(Block *block) { std::free(block); }
};

template <typename Heap>
void scalarloop(benchmark::State &state) {
  constexpr int PASSES = 1000;
  Heap heap;
  const Point literal = {};
  Point stack = {};
  double one = 1, two = 2;
  for (auto _ : state)
    for (int i = 0; i < PASSES; ++i) {
      stack = literal;
      benchmark::DoNotOptimize(stack);
      benchmark::DoNotOptimize(one);
      Block *taken = heap.take();
      taken->values[0] = one + two;
      benchmark::DoNotOptimize(taken->values);
      heap.give(taken);
    }
  state.SetItemsProcessed(state.iterations() * PASSES);
}
BENCHMARK_TEMPLATE(scalarloop, List);
BENCHMARK_TEMPLATE(scalarloop, Process);

}  // namespace
