// The printer against a loop of fprintf over the same records, both to a stream that drops what it gets; and how the
// cost of an element stays the same from small values to large ones. Every run checks what it wrote.
#include <benchmark/benchmark.h>

#include <cinttypes>
#include <cstdio>
#include <random>

#include "spaces/refderef.h"
#include "text/keys.h"
#include "text/text.h"

using namespace morvik;

namespace {

constexpr std::int64_t SMALL = 1000, MIDDLE = 100000, LARGE = 10000000, MILLION = 1000000;

Point makevector(std::int64_t count, std::uint32_t kind) {
  Point p{};
  p.rank = ranks::VECTOR;
  p.type = ISVECTOR | kind;
  p.depth = 1;
  p.elements = static_cast<std::uint32_t>(count);
  p.shape_pointer = newshape(count);
  p.data_pointer = newelements(p.elements);
  for (std::uint32_t i = 0; i < p.elements; ++i) p.data_pointer[i] = {};
  return p;
}

Point makereals(std::int64_t count) {
  std::mt19937_64 random(1);
  std::uniform_real_distribution<double> spread(-1000, 1000);
  Point p = makevector(count, HASREAL);
  for (std::uint32_t i = 0; i < p.elements; ++i) {
    Element &e = p.data_pointer[i];
    e.tag = tags::REAL;
    e.form = forms::COMPUTED;
    e.real = spread(random);
  }
  return p;
}

Point makeintegers(std::int64_t count) {
  std::mt19937_64 random(2);
  Point p = makevector(count, HASINTEGER);
  for (std::uint32_t i = 0; i < p.elements; ++i) {
    Element &e = p.data_pointer[i];
    e.tag = tags::INTEGER;
    e.form = forms::NUMBER;
    e.integer = static_cast<std::int64_t>(random() >> (random() % 64));
  }
  return p;
}

Point makecharacters(std::int64_t count) {
  Point p = makevector(count, HASASCII);
  for (std::uint32_t i = 0; i < p.elements; ++i) {
    p.data_pointer[i].tag = tags::ASCII;
    p.data_pointer[i].ascii = static_cast<std::uint8_t>('a' + i % 26);
  }
  return p;
}

// A stream that counts its bytes and sums them up.
struct Sink {
  std::FILE *stream;
  std::uint64_t bytes, sum;

  static ssize_t take(void *cookie, const char *text, std::size_t length) {
    auto *sink = static_cast<Sink *>(cookie);
    sink->bytes += length;
    sink->sum = sink->sum * 31 + static_cast<unsigned char>(text[length / 2]) + length;
    return static_cast<ssize_t>(length);
  }
  Sink() : stream(fopencookie(this, "w", {nullptr, take, nullptr, nullptr})), bytes(0), sum(0) {}
  ~Sink() { std::fclose(stream); }
  Sink(const Sink &) = delete;
  Sink &operator=(const Sink &) = delete;
};

using Maker = Point(std::int64_t);

void print(benchmark::State &state, Maker *make, int source, const char *format, std::size_t frame) {
  Point p = make(state.range(0));
  Sink sink;
  for (auto _ : state) disass(sink.stream, "", &p, 0, source);
  std::fflush(sink.stream);
  // What printf writes of the same, but for the brackets or the line feed.
  std::uint64_t expected = frame;
  for (std::uint32_t i = 0; i < p.elements; ++i) {
    const Element &e = p.data_pointer[i];
    expected += static_cast<std::uint64_t>(e.tag == tags::REAL      ? std::snprintf(nullptr, 0, format, e.real)
                                           : e.tag == tags::INTEGER ? std::snprintf(nullptr, 0, format, e.integer)
                                                                    : 1);
  }
  if (sink.bytes != expected * static_cast<std::uint64_t>(state.iterations())) state.SkipWithError("wrong text");
  state.SetItemsProcessed(state.iterations() * state.range(0));
  state.SetBytesProcessed(static_cast<std::int64_t>(sink.bytes));
  dereferencepoint(&p);
}

void sourcereals(benchmark::State &state) {
  print(state, makereals, 1, " %.17lg", 4);
}
void displayreals(benchmark::State &state) {
  print(state, makereals, 0, " %.10lg", 1);
}
void sourceintegers(benchmark::State &state) {
  print(state, makeintegers, 1, " %" PRId64, 4);
}
void sourcecharacters(benchmark::State &state) {
  print(state, makecharacters, 1, "", 3);
}
BENCHMARK(sourcereals)->Arg(SMALL)->Arg(MIDDLE)->Arg(MILLION)->Arg(LARGE);
BENCHMARK(displayreals)->Arg(MILLION);
BENCHMARK(sourceintegers)->Arg(SMALL)->Arg(MIDDLE)->Arg(LARGE);
BENCHMARK(sourcecharacters)->Arg(SMALL)->Arg(MIDDLE)->Arg(LARGE);

void printfreals(benchmark::State &state) {
  Point p = makereals(state.range(0));
  Sink sink;
  for (auto _ : state)
    for (std::uint32_t i = 0; i < p.elements; ++i) std::fprintf(sink.stream, " %.17lg", p.data_pointer[i].real);
  std::fflush(sink.stream);
  if (sink.bytes == 0) state.SkipWithError("no text");
  state.SetItemsProcessed(state.iterations() * state.range(0));
  dereferencepoint(&p);
}
BENCHMARK(printfreals)->Arg(MILLION);

void memotext(benchmark::State &state) {
  Point p = makereals(state.range(0));
  std::size_t length = 0;
  for (auto _ : state) {
    char *text = TOAddr1(nullptr, &p);
    length = std::char_traits<char>::length(text);
    release(text);
  }
  if (length < 10 * p.elements) state.SkipWithError("wrong text");
  state.SetItemsProcessed(state.iterations() * state.range(0));
  dereferencepoint(&p);
}
BENCHMARK(memotext)->Arg(SMALL)->Arg(MIDDLE)->Arg(LARGE / 10);

}  // namespace
