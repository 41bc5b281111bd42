// Names as text: sigils, the lists, and the definitions that a workspace is made of.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "failure/jump.h"
#include "frontend/contexts.h"
#include "frontend/remember.h"
#include "spaces/making.h"
#include "spaces/symbols.h"
#include "unit/names.h"

using namespace morvik;

namespace {

using namespace names;

class Remember : public Given {};

TEST_F(Remember, SigilsAreSplitOffNames) {
  const auto split = [](const char *text, char sigil, const char *rest) {
    const char *name = text;
    EXPECT_EQ(splitsigil(name), sigil) << text;
    EXPECT_STREQ(name, rest);
  };
  split("x", 0, "x");
  split("_x", '_', "x");
  split("$x1", '$', "x1");
  split(".x", '.', "x");
  split("__", '_', "_");
  split("%x", 0, "%x");
  split("_", 0, "_");
  split(".", 0, ".");
  split("$5", 0, "$5");
  split("x_y", 0, "x_y");
  split("", 0, "");
}

std::vector<std::string> texts(const Point &space) {
  std::vector<std::string> names;
  for (std::uint32_t i = 0; i < space.elements; ++i) {
    const Element &record = space.data_pointer[i];
    EXPECT_EQ(record.tag, tags::SUBARRAY);
    const Point &member = *record.subarray;
    EXPECT_EQ(member.rank, 1);
    EXPECT_EQ(member.type, ISVECTOR | HASASCII);
    EXPECT_EQ(member.depth, 1);
    EXPECT_EQ(member.shape_pointer->integer, member.elements);
    std::string name;
    for (std::uint32_t j = 0; j < member.elements; ++j) {
      EXPECT_EQ(member.data_pointer[j].tag, tags::ASCII);
      name += static_cast<char>(member.data_pointer[j].ascii);
    }
    names.push_back(name);
  }
  std::sort(names.begin(), names.end());
  return names;
}

TEST_F(Remember, ListsGoByTheSigilOfEntry) {
  for (Entry *table : {makehashtab(), makesmallhashtab()}) {
    Point list;
    makeempty(list);
    list_symbols(&list, table, '_');
    EXPECT_EQ(list.elements, 0u);
    EXPECT_EQ(list.type, EMPTY_VECTOR);
    set(table, "one", 1, '_');
    set(table, "_plain", 2);
    set(table, "fun", 3, '.');
    list_symbols(&list, table, '_');
    EXPECT_EQ(list.type, ISVECTOR | ISONEELEMENT | STRUCTURED);
    EXPECT_EQ(texts(list), (std::vector<std::string>{"_one"}));
    entername(table, stringdup("valueless"), '_');
    entername(table, stringdup("dollar"), '$');
    list_symbols(&list, table, '_');
    EXPECT_EQ(list.type, ISVECTOR | STRUCTURED);
    EXPECT_EQ(list.depth, 2);
    EXPECT_EQ(list.shape_pointer->integer, 3);
    EXPECT_EQ(texts(list), (std::vector<std::string>{"_one", "_one", "_valueless"})) << "appends to what was there";
    dereferencepoint(&list);
    releasetable(table);
  }
}

TEST_F(Remember, ListsGoInBucketOrder) {
  Entry *table = makesmallhashtab();
  for (const char *name : {"ba", "x", "ab", "a"}) entername(table, stringdup(name), '.');  // buckets 8F 69 8F F0
  Point list;
  makeempty(list);
  list_symbols(&list, table, '.');
  std::string order;
  for (std::uint32_t i = 0; i < list.elements; ++i)
    order += static_cast<char>(list.data_pointer[i].subarray->data_pointer[1].ascii);
  EXPECT_EQ(order, "xbaa");
  dereferencepoint(&list);
  releasetable(table);
}

std::string remembered(const Context *chain) {
  char *text = nullptr;
  std::size_t length = 0;
  std::FILE *stream = open_memstream(&text, &length);
  remember(stream, chain);
  std::fclose(stream);
  const std::string all(text, length);
  std::free(text);
  return all;
}

TEST_F(Remember, RememberWritesTheWrittenName) {
  const std::map<std::string, std::pair<std::string, char>> names = {
      {" 7 @_under SET\n.\n", {"under", '_'}},
      {" 7 @$dollar SET\n.\n", {"dollar", '$'}},
      {" 7 @.dot SET\n.\n", {"dot", '.'}},
      {" 7 @\2%label\3 SET\n.\n", {"%label", 0}},
      {" 7 @\2plain\3 SET\n.\n", {"plain", 0}},
      {" 7 @\2a+b\3 SET\n.\n", {"a+b", 0}},
      {" 7 @\2_x\3 SET\n.\n", {"_x", 0}},
      {" 7 @\2any thing!\3 SET\n.\n", {"any thing!", 0}},
      {" 7 @_\2any thing\3 SET\n.\n", {"any thing", '_'}},
      {" 7 @\2%5 \3 SET\n.\n", {"%5 ", 0}},
      {".\n", {"no\3name", 0}},
  };
  for (const auto &[text, name] : names) {
    Entry *table = makehashtab();
    Context *chain = makemeaning(table);
    set(table, name.first, 7, name.second);
    EXPECT_EQ(remembered(chain), text);
    EXPECT_EQ(printing, 0);
    release(chain);
    releasetable(table);
  }
}

TEST_F(Remember, RememberSkipsNamesWithoutAValueAndEndsWithAPoint) {
  Chain c;
  entername(c.global, stringdup("valueless"));
  smallhashtab(c.middle->table, stringdup(""));
  EXPECT_EQ(remembered(c.inner), ".\n");
  c.end();
}

TEST_F(Remember, RememberGoesFromTheInsideOutAndMeetsEachTableOnce) {
  Chain c;
  set(c.global, "g", 1, '_');
  set(c.middle->table, "m", 2, '_');
  set(c.inner->table, "i", 3, '_');
  Context *basic = pushtable(c.inner, c.global);
  EXPECT_EQ(remembered(c.inner), " 3 @_i SET\n 2 @_m SET\n 1 @_g SET\n.\n");
  EXPECT_EQ(remembered(basic), " 1 @_g SET\n 3 @_i SET\n 2 @_m SET\n.\n");
  popsymtabs(basic);
  c.end();
}

std::vector<int> portions(const Context *chain) {
  std::vector<int> sizes = {0};
  std::string line;
  for (const char c : remembered(chain)) {
    line += c;
    if (c != '\n') continue;
    if (line == ".\n")
      sizes.push_back(0);
    else
      ++sizes.back();
    line.clear();
  }
  return sizes;
}

TEST_F(Remember, RememberPartsATableAfterEvery257Definitions) {
  Entry *table = makehashtab();
  Context *chain = makemeaning(table);
  const auto upto = [&](int count) {
    for (int i = 0; i < count; ++i) {
      set(table, "n" + std::to_string(i), i, '_');
      entername(table, stringdup(("v" + std::to_string(i)).c_str()));  // counts for nothing
    }
  };
  upto(256);
  EXPECT_EQ(portions(chain), (std::vector<int>{256, 0}));
  upto(257);
  EXPECT_EQ(portions(chain), (std::vector<int>{257, 0, 0}));
  upto(600);
  EXPECT_EQ(portions(chain), (std::vector<int>{257, 257, 86, 0}));
  // Each table counts for itself.
  Context *inner = opentable(chain, SMALL_TABLE);
  for (int i = 0; i < 200; ++i) set(inner->table, "i" + std::to_string(i), i, '_');
  EXPECT_EQ(portions(inner), (std::vector<int>{457, 257, 86, 0}));
  popsymtabs(inner);
  release(chain);
  releasetable(table);
}

}  // namespace
