// The frame of the monadic scalar instructions: what an instruction needs beside its cores, and how it gets its two
// functions, the plain one for the stack and the `vec_` twin for a slice. A further instruction is a struct of cores
//
//   struct Core : FlopCounter {
//     R operator()(A);                        one for each kind of element that has a formula of its own
//     R operator()(A, Heading);               the same, where form and marks of the operand matter
//     void operator()(A, Give &&give);        the same, where several formulas each end with give(R)
//     std::int32_t check(A, Heading) const;   optional, for a kind that fails for some values: a message number, 0
//     static std::int32_t refusal(tag);       optional: the message for tags without a core, otherwise 994
//     double tolerance;                       optional: is set to what #CT held when the instruction began
//     std::int64_t origin;                    optional: the same of #IO
//     std::uint64_t *state;                   optional: the state of the thread's generator
//     bool drawn;                             optional: set where a draw decided a value
//     static bool draws(A);                   optional: may a draw decide? Without it, each value draws
//     std::int32_t failure;                   optional: a core that finds out late sets a message number here
//   };
//
// and a line MONADIC_SCALAR(conjugate, Conjugate), or DRAWING_SCALAR where it draws random numbers. An integer without
// an operator() is taken as a real. R is any kind of kinds.h, or Formed where the value stays.
#pragma once

#include "arithmetic/frame.h"
#include "arithmetic/pairwalk.h"
#include "arithmetic/scalars.h"
#include "spaces/loose.h"
#include "spaces/messages.h"
#include "spaces/sysvars.h"

namespace morvik {

// One instruction as data: its loops, by kinds. Of a run only `left` and the result count, both in steps of 1.
struct Monadic : Loops<KINDS> {
  bool tolerant, counting;                    // reads #CT, reads #IO
  bool inorder;                               // each element has to wait for the one before it
  bool failslate;                             // must not write over its operand
  std::int32_t (*refusal)(std::int32_t tag);  // the message for a tag without a loop
};

// Characters are refused as no numbers, everything else as what no core takes.
inline std::int32_t nocharacters(std::int32_t tag) {
  return tag == tags::ASCII || tag == tags::UNICODE ? messages::NOT_BINARY : messages::RESTRICTION;
}

// What the macros' functions call: the frame on the stack, and one slice of what to_coprocessors holds. The slice's
// flags, flops and failure go into its reply; its message number is returned.
void monadicframe(const Monadic &m, Point *point, const Point *instruction, const Point *context, bool nested,
                  std::uint64_t *state);
std::int32_t monadicslice(const Monadic &m, std::uint32_t index, std::uint64_t *state) noexcept;
// Works all of a run, whatever its records are, nested spaces included; `run.done` tells how far it came. Returns a
// message number, 0 for none, or INTERRUPTED; never jumps.
std::int32_t work(const Monadic &m, Run &run, Tally &tally) noexcept;

// ---- What cores see of a record and may say about their result.

// Tag, form and marks in one word, as headingof gives it.
struct Heading {
  std::uint64_t word;
};
// The operand's value, under another heading.
struct Formed {
  std::uint64_t head;
};

inline constexpr std::uint64_t FORM_BITS = heading(0, 0xFFFF);

inline constexpr std::uint16_t formof(std::uint64_t head) {
  return static_cast<std::uint16_t>(head >> FORM_SHIFT);
}
inline constexpr std::uint64_t withform(std::uint64_t head, std::uint16_t form) {
  return (head & ~FORM_BITS & INHERITED_BITS) | heading(0, form);
}
// How a hypercomplex result looks: in the operand's coordinates, where it has any, with the operand's marks.
inline constexpr std::uint64_t carriedheading(std::uint64_t head) {
  const bool coordinates = (formof(head) & (forms::CARTESIAN | forms::POLAR)) != 0;
  return coordinates ? head & INHERITED_BITS : withform(head, forms::NUMBER);
}

// ---- Which formula serves a kind.

template <class Core, class A>
concept Headed = requires(Core core, const A &a, Heading head) {
  requires !std::is_void_v<decltype(core(a, head))>;
};
template <class Core, class A>
concept Plain = requires(Core core, const A &a) {
  core(a);
};
template <class Core, class A>
concept Choosing = requires(Core core, const A &a) {
  core(a, Anywhere{});
};
template <class Core, class A>
concept Direct = Headed<Core, A> || Plain<Core, A> || Choosing<Core, A>;
template <class Core, class A>
concept Accepts = Direct<Core, A> ||(std::same_as<A, Integer> &&Direct<Core, double>);

template <class Core, class A>
concept MayWait = requires(const A &a) {
  Core::draws(a);
};

// Passes the result to `give`.
template <class Core, class A, class Give>
inline void applymonadic(Core &core, const A &a, Heading head, Give &&give) {
  if constexpr (std::same_as<A, Integer> && !Direct<Core, Integer>)
    applymonadic(core, static_cast<double>(a.value), head, give);
  else if constexpr (Headed<Core, A>)
    give(core(a, head));
  else if constexpr (Plain<Core, A>)
    give(core(a));
  else
    core(a, give);
}

// ---- From a result to a record. Each returns the HAS bit of what it wrote.

template <class T>
inline void rewrite(Element &to, std::uint64_t head, const T &value) {
  if constexpr (Hyper<T>) {
    writerecord(to, head, value);
  } else {
    setunnamedheading(to, head);
    if constexpr (std::same_as<T, double>)
      to.real = value;
    else
      to.integer = value.value;
  }
}

// Over the operand's record, or into a fresh one; an octonion into its block.
template <std::int32_t tag, class Value>
inline std::uint32_t writemonadic(Element &to, std::uint64_t head, const Kind<tag> &operand, const Value &value,
                                  bool fresh, Octonion *target) {
  if constexpr (std::same_as<Value, Formed> && tag == tags::OCTONION) {
    return writerecord(to, value.head, operand, target, fresh);
  } else if constexpr (std::same_as<Value, Formed>) {
    rewrite(to, value.head, operand);
    return kindbit(tag);
  } else {
    const std::uint64_t carriedhead = carriedheading(head);
    return writeresult<tag, tag>(to, carriedhead, carriedhead, value, fresh, target);
  }
}

// ---- The loop.

template <class Core>
inline Core startmonadic(const Tally &tally) {
  Core core = startcore<Core>(tally);
  if constexpr (requires { core.origin; }) core.origin = tally.origin;
  if constexpr (requires { core.state; }) core.state = tally.state;
  return core;
}

template <class Core, class A>
concept ValueChecked = requires(const Core core, const A &a, Heading head) {
  core.check(a, head);
};
template <class Core, std::int32_t tag>
inline std::int32_t checkvalue(const Element &e) {
  return Core{}.check(valueof<tag>(e), Heading{headingof(e)});
}

// Works one record: reads it before it writes the result, which may be the same. Passes the HAS bit of the result to
// `note`. False where the record is not for this formula, or fails, which sets `failure`.
template <class Core, std::int32_t tag, class Note>
[[gnu::always_inline]] inline bool workrecord(Core &core, const Element &source, Element &result, bool fresh,
                                              std::int32_t &failure, Note &&note) {
  if (source.tag != tag) [[unlikely]]
    return false;
  if constexpr (ValueChecked<Core, Kind<tag>>) {
    failure = checkvalue<Core, tag>(source);
    if (failure != 0) [[unlikely]]
      return false;
  }
  const std::uint64_t head = headingof(source);
  applymonadic(core, valueof<tag>(source), Heading{head}, [&](const auto &value) {
    using Value = std::remove_cvref_t<decltype(value)>;
    if constexpr (requires { core.failure; })
      if (core.failure != 0) [[unlikely]]
        return static_cast<void>(failure = core.failure);
    Octonion *target = nullptr;
    if constexpr (std::same_as<Value, Octonion> || (tag == tags::OCTONION && std::same_as<Value, Formed>)) {
      target = octonionblock(result, fresh);
      if (!target) [[unlikely]]
        return static_cast<void>(failure = messages::OUT_OF_STORAGE);
    }
    note(writemonadic<tag>(result, head, valueof<tag>(source), value, fresh, target));
  });
  return failure == 0;
}

// What a draw adds to the kinds of a result.
template <class Core>
inline std::uint32_t drawnbit(const Core &core) {
  if constexpr (requires { core.drawn; })
    return core.drawn ? ISPROBABLE : 0;
  else
    return 0;
}

// Works records by one formula: `along(one)` calls one(source, result) for each, until it says no.
template <class Core, std::int32_t tag, class Along>
[[gnu::always_inline]] inline void workalong(Run &run, Tally &tally, Along &&along) {
  Core core = startmonadic<Core>(tally);
  const bool fresh = run.fresh;
  std::uint32_t kinds = 0;
  std::int32_t failure = 0;
  along([&](const Element &source, Element &result) __attribute__((always_inline)) {
    return workrecord<Core, tag>(core, source, result, fresh, failure, [&](std::uint32_t kind) { kinds |= kind; });
  });
  run.kinds |= kinds | drawnbit(core);
  tally.failure = failure;
  tally.flops += static_cast<double>(core.flops);
}

// Under a flag word that is not exact a space may hold any record: each is looked at, and the first that is not
// expected ends the loop.
template <class Core, std::int32_t tag>
std::size_t monadicloop(Run &run, std::size_t from, std::size_t to, Tally &tally) {
  const Element *source = run.left + from;
  Element *const first = run.result + from, *const end = run.result + to, *result = first;
  workalong<Core, tag>(
      run, tally, [&](auto one) __attribute__((always_inline)) {
        while (result != end && one(*source, *result)) ++source, ++result;
      });
  return from + static_cast<std::size_t>(result - first);
}

template <class Core, std::int32_t tag>
PlaceMask maskedmonadic(Run &run, PlaceMask places, Tally &tally) {
  const Element *const source = run.left;
  Element *const result = run.result;
  PlaceMask waiting = 0;
  workalong<Core, tag>(
      run, tally, [&](auto one) __attribute__((always_inline)) {
        for (; places != 0; places &= places - 1) {
          const std::size_t i = lowestplace(places);
          if constexpr (MayWait<Core, Kind<tag>>)
            if (Core::draws(valueof<tag>(source[i]))) [[unlikely]] {
              waiting |= PlaceMask{1} << i;
              continue;
            }
          if (!one(source[i], result[i])) break;
        }
      });
  return places | waiting;
}

// The message for the first record whose value fails, up to the first of another kind.
template <class Core, std::int32_t tag>
std::int32_t checkvalues(const Run &run, std::size_t from, std::size_t to) {
  for (std::size_t i = from; i < to && run.left[i * run.leftstep].tag == tag; ++i)
    if (const std::int32_t message = checkvalue<Core, tag>(run.left[i * run.leftstep]); message != 0) return message;
  return 0;
}

// ---- The table of a struct of cores.

template <class Core, std::int32_t tag>
constexpr void setloops(Monadic &m) {
  if constexpr (Accepts<Core, Kind<tag>>) m.kernels[kindof(tag)] = &monadicloop<Core, tag>;
  if constexpr (Accepts<Core, Kind<tag>>) m.masked[kindof(tag)] = &maskedmonadic<Core, tag>;
  if constexpr (ValueChecked<Core, Kind<tag>>) m.checks[kindof(tag)] = &checkvalues<Core, tag>;
}

template <class Core>
constexpr Monadic monadic() {
  Monadic m{};
  m.tolerant = requires(Core core) {
    core.tolerance;
  };
  m.counting = requires(Core core) {
    core.origin;
  };
  m.failslate = requires(Core core) {
    core.failure;
  };
  m.inorder = m.failslate || (!MayWait<Core, double> && requires(Core core) { core.state; });
  if constexpr (requires { Core::refusal(0); })
    m.refusal = Core::refusal;
  else
    m.refusal = [](std::int32_t) { return messages::RESTRICTION; };
  [&]<std::size_t... kind>(std::index_sequence<kind...>) {
    (setloops<Core, tagof(kind)>(m), ...);
  }
  (std::make_index_sequence<LOOP_TAGS>{});
  return m;
}

// ---- The fast path for a plain scalar.

// The block for the result of a scalar, which nobody else sees. Message 27, the operand left whole.
inline Element *ownscalarblock(Point *point) {
  Element *const old = point->data_pointer;
  if (referencecount(old) == 1) return old;
  Element *const target = newelements(1);
  release(old);
  return point->data_pointer = target;
}

// False where the frame has to look closer.
template <class Core, std::int32_t tag>
inline bool workscalarof(Point *point, const Tally &tally) {
  if constexpr (Accepts<Core, Kind<tag>>) {
    const Element &e = *point->data_pointer;
    if constexpr (ValueChecked<Core, Kind<tag>>)
      if (checkvalue<Core, tag>(e) != 0) return false;
    Core core = startmonadic<Core>(tally);
    const std::uint64_t head = headingof(e);
    bool done = true;
    applymonadic(core, valueof<tag>(e), Heading{head}, [&](const auto &value) {
      if constexpr (requires { core.failure; })
        if (core.failure != 0) return static_cast<void>(done = false);
      std::uint32_t kinds = writemonadic<tag>(*ownscalarblock(point), head, valueof<tag>(e), value, true, nullptr);
      if constexpr (requires { core.drawn; }) kinds |= core.drawn ? ISPROBABLE : 0;
      point->type = ISSCALAR | kinds;
      countwork(1, 1 + static_cast<double>(core.flops));
    });
    return done;
  } else {
    return false;
  }
}

template <class Core>
inline bool workscalar(Point *point, const Point *context, std::uint64_t *state) {
  if (!isplainscalar(*point)) return false;
  Tally tally;
  tally.state = state;
  if constexpr (requires(Core core) { core.tolerance; }) tally.tolerance = context ? tolerance(context) : 0;
  if constexpr (requires(Core core) { core.origin; }) tally.origin = context ? indexorigin(context) : 1;
  const std::uint64_t head = headingof(*point->data_pointer) & heading(-1, 0, attributes::NAMED);
  if (head == heading(tags::INTEGER, 0)) return workscalarof<Core, tags::INTEGER>(point, tally);
  if (head == heading(tags::REAL, 0)) return workscalarof<Core, tags::REAL>(point, tally);
  return false;
}

// ---- The same for a loose scalar, which the quick loop holds.

template <class Core, std::int32_t tag>
inline std::uint64_t workloosescalar(Point &point, const Element &e, const Tally &tally) {
  std::uint64_t done = 0;
  if constexpr (Accepts<Core, Kind<tag>>) {
    static_assert(!ValueChecked<Core, Kind<tag>>);  // what is drawn fails by one, and is never quick
    Core core = startmonadic<Core>(tally);
    const std::uint64_t head = headingof(e);
    applymonadic(core, valueof<tag>(e), Heading{head}, [&](const auto &value) {
      if constexpr (requires { core.failure; })
        if (core.failure != 0) return;
      Element made;
      const std::uint32_t kind = writemonadic<tag>(made, head, valueof<tag>(e), value, true, nullptr);
      if ((kind != HASINTEGER && kind != HASREAL) || made.attributes != 0) return;
      putloose(point, LOOSE | ISSCALAR | kind, made.form, static_cast<std::uint64_t>(made.integer));
      done = 1 + core.flops;
    });
  }
  return done;
}

template <class Core>
inline std::uint64_t workloose(Point &point) {
  Tally tally;
  if constexpr (requires(Core core) { core.tolerance; }) tally.tolerance = quads ? tolerance(quads) : 0;
  if constexpr (requires(Core core) { core.origin; }) tally.origin = quads ? indexorigin(quads) : 1;
  Element e;
  setrecord(e, point);
  if (e.tag == tags::INTEGER) return workloosescalar<Core, tags::INTEGER>(point, e, tally);
  return workloosescalar<Core, tags::REAL>(point, e, tally);
}

#define MONADIC_TABLE(name, Core)     \
  extern const Monadic name##monadic; \
  constinit const Monadic name##monadic = monadic<Core>();

#define MONADIC_SCALAR(name, Core)                                                         \
  MONADIC_TABLE(name, Core)                                                                \
  void name(Point *point, const Point *instruction, Point *context, char nested) {         \
    if (nested == 0 && workscalar<Core>(point, context, nullptr)) return;                  \
    monadicframe(name##monadic, point, instruction, context, nested != 0, nullptr);        \
  }                                                                                        \
  std::uint64_t loose_##name(Point &point) {                                               \
    return workloose<Core>(point);                                                         \
  }                                                                                        \
  std::int32_t vec_##name(Point *, const Point *, Point *, std::uint32_t index) noexcept { \
    return monadicslice(name##monadic, index, nullptr);                                    \
  }

#define DRAWING_SCALAR(name, Core)                                                                               \
  MONADIC_TABLE(name, Core)                                                                                      \
  void name(Point *point, const Point *instruction, Point *context, char nested, std::uint64_t *state) {         \
    if (nested == 0 && workscalar<Core>(point, context, state)) return;                                          \
    monadicframe(name##monadic, point, instruction, context, nested != 0, state);                                \
  }                                                                                                              \
  std::int32_t vec_##name(Point *, const Point *, Point *, std::uint32_t index, std::uint64_t *state) noexcept { \
    return monadicslice(name##monadic, index, state);                                                            \
  }

}  // namespace morvik
