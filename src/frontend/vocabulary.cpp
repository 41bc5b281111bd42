// The trie, built by the compiler from keywords.def and constants.def.
#include "frontend/vocabulary.h"

#include <array>
#include <initializer_list>

#include "frontend/keywords.h"
#include "frontend/tokens.h"
#include "spaces/point.h"

namespace morvik {

namespace vocabulary {

namespace {

constexpr bool BOUNDED = true, FREE = false;
constexpr bool SIGNED = true, UNSIGNED = false;
// Raise it when the compiler reports an index past the end of `nodes`.
constexpr std::size_t NODES = 2304;

// Node n's children are a list in the order of their bytes. Node 0 is the root.
struct Trie {
  std::array<Node, NODES> nodes;
  std::array<std::uint16_t, 256> firsts;
  std::size_t count;
  std::uint16_t orders;
};

constexpr std::uint16_t stepto(Trie &trie, std::uint16_t parent, unsigned char byte) {
  std::uint16_t before = 0, at = trie.nodes[parent].firstchild;
  while (at != 0 && trie.nodes[at].byte < byte) {
    before = at;
    at = trie.nodes[at].sibling;
  }
  if (at != 0 && trie.nodes[at].byte == byte) return at;
  const auto made = static_cast<std::uint16_t>(trie.count++);
  trie.nodes[made] = {0, at, byte, {}};
  (before == 0 ? trie.nodes[parent].firstchild : trie.nodes[before].sibling) = made;
  return made;
}

constexpr void addspelling(Trie &trie, const Terminal &end, bool minus, const char *spelling) {
  std::uint16_t node = 0;
  if (minus) node = stepto(trie, node, '-');
  for (; *spelling; ++spelling) node = stepto(trie, node, static_cast<unsigned char>(*spelling));
  // A spelling that is there already keeps its earlier rule.
  if (trie.nodes[node].end.sets == 0) trie.nodes[node].end = end;
}

// The next rule in order.
constexpr void addrule(Trie &trie, Terminal end, bool sign, std::initializer_list<const char *> spellings) {
  end.order = trie.orders++;
  for (const char *spelling : spellings) {
    addspelling(trie, end, false, spelling);
    if (sign) addspelling(trie, end, true, spelling);
  }
}

constexpr void addrule(Trie &trie, Rule rule, bool bounded, std::initializer_list<const char *> spellings) {
  addrule(trie, {rule, INITIAL, bounded, 0, 0}, UNSIGNED, spellings);
}

constexpr std::uint8_t setsof(KeywordKind kind) {
  return kind == KeywordKind::MASK ? INITIAL | MASKED : INITIAL;
}
// The empty vector is no member of a vector.
constexpr std::uint8_t setsof(std::int32_t tag) {
  return tag == 0 ? INITIAL : INITIAL | VECTOR;
}

constexpr Trie maketrie() {
  Trie trie = {};
  trie.count = 1;
  addrule(trie, Rule::OPEN_FUNCTION, FREE, {":"});
  addrule(trie, Rule::OPEN_FUNCTION, BOUNDED, {"NEADIC", "FUNCTION", "NILADIC", "MONADIC", "DYADIC", "TRIADIC"});
  addrule(trie, Rule::BUILTIN, FREE, {"::"});
  std::uint16_t row = 0;
#define KEYWORD(kind, boundary, instruction, modifier, mark, hidden, ...) \
  addrule(trie, {Rule::KEYWORD, setsof(KeywordKind::kind), boundary, row++, 0}, UNSIGNED, {__VA_ARGS__});
#include "tables/keywords.def"
#undef KEYWORD
  addrule(trie, Rule::END_OF_TEXT, FREE, {"."});
  addrule(trie, Rule::END_OF_TEXT, BOUNDED, {"END"});
  addrule(trie, Rule::CLOSE_FUNCTION, FREE, {";"});
  addrule(trie, Rule::CLOSE_FUNCTION, BOUNDED, {"FUNCTIONEND"});
  addrule(trie, Rule::OPEN_COMMENT, FREE, {"\"", "\xBC"});
  row = 0;
#define CONSTANT(tag, form, bits, sign, ...) \
  addrule(trie, {Rule::CONSTANT, setsof(tag), BOUNDED, row++, 0}, sign, {__VA_ARGS__});
#include "tables/constants.def"
#undef CONSTANT
  for (std::uint16_t node = trie.nodes[0].firstchild; node != 0; node = trie.nodes[node].sibling)
    trie.firsts[trie.nodes[node].byte] = node;
  return trie;
}

constexpr Trie trie = maketrie();

const Node *nodeat(std::uint16_t at) {
  return at != 0 ? &trie.nodes[at] : nullptr;
}

}  // namespace

const Node *firstnode(int byte) {
  return byte < 0 ? nullptr : nodeat(trie.firsts[static_cast<std::size_t>(byte)]);
}

const Node *childnode(const Node &node, int byte) {
  std::uint16_t at = node.firstchild;
  while (at != 0 && trie.nodes[at].byte < byte) at = trie.nodes[at].sibling;
  return at != 0 && trie.nodes[at].byte == byte ? &trie.nodes[at] : nullptr;
}

}  // namespace vocabulary

}  // namespace morvik
