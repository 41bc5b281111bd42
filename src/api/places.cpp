// Where what runs was written.
#include "api/places.h"

#include <algorithm>

#include "api/list.h"
#include "api/session.h"
#include "frontend/compiler.h"
#include "frontend/scanner.h"
#include "frontend/tokens.h"
#include "frontend/window.h"

namespace morvik {

void (*heartokentoo)(const Token &token, Condition was, SourcePlace place);

namespace {

// The Points of a body, in their order, and the bytes that they were read from.
struct Body {
  const Source *source;
  std::size_t *offsets;
  std::size_t points;
};

List<Body> bodies;  // origin 1 is the first
// Of the text that is compiled, or was last: its own Points, and while it is compiled those of the bodies that are
// open, each after what came before it.
List<std::size_t> offsets;
const Source *textsource;
bool compiling;
std::size_t tokenoffset;      // where the token at work begins
std::size_t quoteoffset;      // where the quote begins that was opened last
std::size_t pointoffset;      // where the word or literal begins that the token is a part of
List<SourcePlace> functions;  // that are open
List<Opening> leftopen;

std::size_t offsetnow() {
  return static_cast<std::size_t>(scanposition() - textsource->bytes);
}

// What the end of the source finds open.
void noteopen(Condition was) {
  switch (was) {
    case Condition::COMMENT:
      leftopen.append({"a comment", {textsource, pointoffset}});
      break;
    case Condition::QUOTED:
      leftopen.append({"a quote", {textsource, quoteoffset}});
      if (pointoffset == quoteoffset) break;
      [[fallthrough]];
    case Condition::VECTOR:
    case Condition::SHAPE:
    case Condition::SUBSHAPE:
      leftopen.append({"a bracket", {textsource, pointoffset}});
      break;
    case Condition::ADDRESSED:
      leftopen.append({"an address", {textsource, pointoffset}});
      break;
    case Condition::MASKED:
      leftopen.append({"a mask", {textsource, pointoffset}});
      break;
    default:
      break;
  }
  for (std::size_t i = functions.count; i > 0; --i) leftopen.append({"a function", functions[i - 1]});
}

void heartoken(const Token &token, Condition was) {
  tokenoffset = offsetnow() - token.length;
  if (heartokentoo) heartokentoo(token, was, {textsource, tokenoffset});
  if (was == Condition::INITIAL || was == Condition::MASKED) pointoffset = tokenoffset;
  if (token.rule == Rule::OPEN_STRING) quoteoffset = tokenoffset;
  if (token.rule == Rule::OPEN_FUNCTION) functions.append({textsource, tokenoffset});
  if (token.rule == Rule::END_OF_INPUT) noteopen(was);
}

void hearpoint() {
  offsets.append(pointoffset);
}

// The last offsets are those of the body. Where there was no storage for all of them, the places of none are known.
void hearbody(Point &header) {
  if (functions.count > 0) --functions.count;
  const std::size_t points = header.elements;
  if (points > offsets.count) return;
  offsets.count -= points;
  auto *own = static_cast<std::size_t *>(std::malloc(std::max<std::size_t>(points, 1) * sizeof(std::size_t)));
  if (!own) return;
  std::copy_n(offsets.end(), points, own);
  if (bodies.append({textsource, own, points}))
    header.origin = bodies.count;
  else
    std::free(own);
}

constexpr Listener NOTING = {heartoken, hearpoint, hearbody};

const Body *bodyof(std::uint64_t origin) {
  return origin > 0 && origin <= bodies.count ? &bodies[origin - 1] : nullptr;
}

}  // namespace

bool opensource(Source &source, const char *name, const char *bytes, std::size_t length) {
  source = {name, bytes, length, nullptr, 0, bytes};
  List<std::size_t> starts;
  if (!starts.append(0)) return false;
  for (std::size_t i = 0; i < length; ++i)
    if (bytes[i] == '\n' && i + 1 < length && !starts.append(i + 1)) {
      starts.clear();
      return false;
    }
  source.linestarts = starts.records;
  source.lines = starts.count;
  return true;
}

void closesource(Source &source) {
  std::free(source.linestarts);
  source = {};
}

std::size_t lineof(const SourcePlace &place) {
  if (!place.source) return 0;
  const std::size_t *first = place.source->linestarts, *end = first + place.source->lines;
  return static_cast<std::size_t>(std::upper_bound(first, end, place.offset) - first);
}

std::size_t columnof(const SourcePlace &place) {
  return place.source ? place.offset - place.source->linestarts[lineof(place) - 1] : 0;
}

std::int64_t compilesource(Source &source) {
  textsource = &source;
  offsets.count = functions.count = leftopen.count = 0;
  tokenoffset = pointoffset = static_cast<std::size_t>(source.read - source.bytes);
  listener = &NOTING;
  compiling = true;
  const std::int64_t points = compilenext(nullptr, &source.read);
  compiling = false;
  listener = nullptr;
  return points;
}

std::size_t openings() {
  return leftopen.count;
}

Opening opening(std::size_t number) {
  return leftopen[number];
}

bool iscompiling() {
  return compiling;
}

SourcePlace placeoftoken() {
  return {textsource, std::min(tokenoffset, textsource->length)};
}

std::uint64_t originof(const Level &level) {
  return level.header ? level.header->origin : 0;
}

SourcePlace placein(std::uint64_t origin, std::size_t point) {
  if (origin == 0) return point < offsets.count ? SourcePlace{textsource, offsets[point]} : SourcePlace{};
  const Body *body = bodyof(origin);
  return body && body->points > 0 ? SourcePlace{body->source, body->offsets[std::min(point, body->points - 1)]}
                                  : SourcePlace{};
}

SourcePlace placeof(const Level &level) {
  for (const Level *l = &level; l; l = l->caller) {
    if (originof(*l) == 0 && (l->caller || l->header)) continue;
    return placein(originof(*l), static_cast<std::size_t>(l->current - l->start));
  }
  return {};
}

std::size_t placedbodies() {
  return bodies.count;
}

void forgetplaces() {
  for (const Body &body : bodies) std::free(body.offsets);
  bodies.clear();
  offsets.clear();
  functions.clear();
  leftopen.clear();
  textsource = nullptr;
}

}  // namespace morvik
