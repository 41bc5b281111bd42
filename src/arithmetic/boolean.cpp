// BOOLEAN and PROBABLY: probable truths become plain ones, BOOLEAN by the nearer end, PROBABLY by chance. A component
// that is NaN marks a row with fewer truths and stays.
#include "arithmetic/monadic.h"
#include "arithmetic/random.h"

namespace {

constexpr double UNDECIDED = 0.5;

// Is x above a draw?
bool outdraws(double x, std::uint64_t *state, std::uint64_t &flops, bool &drawn) {
  flops += 1;
  drawn = true;
  return x > drawbeside(state, x);
}

// Of a real that is not exactly between the two nothing is drawn.
bool BOOL_R(double x, std::uint64_t *state, std::uint64_t &flops, bool &drawn) {
  flops += 1;
  return x == UNDECIDED ? outdraws(x, state, flops, drawn) : x > UNDECIDED;
}

// True with probability x; what is certain draws nothing.
bool probable_r(double x, std::uint64_t *state, std::uint64_t &flops, bool &drawn) {
  flops += 1;
  if (x >= 1) return true;
  if (x <= 0) return false;
  return outdraws(x, state, flops, drawn);
}

template <bool (*decide)(double, std::uint64_t *, std::uint64_t &, bool &)>
struct Decision : Counted {
  static constexpr auto refusal = nocharacters;
  std::uint64_t *state = nullptr;
  bool drawn = false;

  Truth operator()(Integer x) { return {x.value > 0}; }
  Truth operator()(double x) { return {decide(x, state, flops, drawn)}; }
  template <Hyper T>
  T operator()(const T &x) {
    return assemble<T>([&](auto i) {
      const double truth = part(x, i);
      return std::isnan(truth) ? truth : decide(truth, state, flops, drawn) ? 1.0 : 0.0;
    });
  }
};

}  // namespace

DRAWING_SCALAR(boolean, Decision<BOOL_R>)
DRAWING_SCALAR(probably, Decision<probable_r>)
