// BOOLEAN and PROBABLY: probable truths become plain ones, BOOLEAN by the nearer end, PROBABLY by chance. A component
// that is NaN marks a row with fewer truths and stays.
#include "arithmetic/generator.h"
#include "arithmetic/monadic.h"

namespace morvik {

namespace {

constexpr double UNDECIDED = 0.5;

// A rule tells whether a truth is certain, and then which end it is nearer to. What is plain is certain and a number.

// What is not exactly between the two ends has a nearer one.
struct BOOL_R {
  static bool iscertain(double x) { return x != UNDECIDED; }
  static bool isplain(double x) { return x > UNDECIDED || x < UNDECIDED; }
  static bool nearer(double x) { return x > UNDECIDED; }
};
// What is between the two ends is true with probability x.
struct probable_r {
  static bool iscertain(double x) { return x >= 1 || x <= 0; }
  static bool isplain(double x) { return iscertain(x); }
  static bool nearer(double x) { return x >= 1; }
};

template <class Rule>
struct Decision : FlopCounter {
  static constexpr auto refusal = nocharacters;
  std::uint64_t *state = nullptr;
  bool drawn = false;

  static bool draws(Integer) { return false; }
  static bool draws(double x) { return !Rule::iscertain(x); }
  template <Hyper T>
  static bool draws(const T &x) {
    return !isplain(x);
  }

  Truth operator()(Integer x) { return {x.value > 0}; }
  Truth operator()(double x) { return {decide(x)}; }

  // Most rows have nothing to draw.
  template <Hyper T>
  T operator()(const T &x) {
    if (!isplain(x)) [[unlikely]]
      return drawnparts(x);
    flops += PARTS<T>;
    return assemble<T>([&](auto i) { return Rule::nearer(part(x, i)) ? 1.0 : 0.0; });
  }

 private:
  template <Hyper T>
  static bool isplain(const T &x) {
    return [&]<int... i>(std::integer_sequence<int, i...>) {
      return (Rule::isplain(part(x, i)) && ...);
    }
    (std::make_integer_sequence<int, PARTS<T>>{});
  }
  bool decide(double x) {
    flops += 1;
    if (Rule::iscertain(x)) [[likely]]
      return Rule::nearer(x);
    flops += 1;
    drawn = true;
    return outdraws(x, state);
  }
  [[gnu::noinline]] static bool outdraws(double x, std::uint64_t *state) { return x > drawbeside(state, x); }
  // By a core of its own, so that that of the loop stays in registers.
  template <Hyper T>
  T drawnparts(const T &x) {
    Decision own{};
    own.state = state;
    const T result = assemble<T>([&](auto i) {
      const double truth = part(x, i);
      return std::isnan(truth) ? truth : own.decide(truth) ? 1.0 : 0.0;
    });
    flops += own.flops;
    drawn = drawn || own.drawn;
    return result;
  }
};

}  // namespace

DRAWING_SCALAR(boolean, Decision<BOOL_R>)
DRAWING_SCALAR(probably, Decision<probable_r>)

}  // namespace morvik
