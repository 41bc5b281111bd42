// Every token that is spelled one way: keywords, named constants, the words that open and close functions, one trie.
#pragma once

#include <cstdint>

#include "frontend/tokens.h"

namespace morvik {

namespace vocabulary {

// The conditions in which a word counts.
enum ConditionSet : std::uint8_t { INITIAL = 1, VECTOR = 2, MASKED = 4 };

// What ends at a node. `order` ranks the rules: of two matches of equal length the lower wins.
struct Terminal {
  Rule rule;
  std::uint8_t sets;  // 0: nothing ends here
  bool bounded;
  std::uint16_t row;
  std::uint16_t order;
};

struct Node {
  std::uint16_t firstchild;  // 0: none
  std::uint16_t sibling;     // the next child of the same parent, by rising byte; 0: none
  unsigned char byte;
  Terminal end;
};

// The node of a first byte, and that of one byte more; null for none. EOF leads nowhere.
const Node *firstnode(int byte);
const Node *childnode(const Node &node, int byte);

}  // namespace vocabulary

}  // namespace morvik
