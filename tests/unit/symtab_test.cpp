// Symbol tables: the hash functions, entering, finding and removing names.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

#include "frontend/hashes.h"
#include "spaces/symbols.h"
#include "unit/names.h"

using namespace morvik;

namespace {

using namespace names;

class Symtab : public Given {};

#if defined(MORVIK_SYSTEM_HEAP) || defined(MORVIK_CHECKING)
constexpr bool PLAIN_HEAP = false;
#else
constexpr bool PLAIN_HEAP = true;
#endif

TEST_F(Symtab, Rand8IsAPermutation) {
  std::vector<int> met(256);
  for (const std::uint8_t byte : rand8) ++met[byte];
  EXPECT_EQ(std::count(met.begin(), met.end(), 1), 256);
}

// Worked out by hand along the table; each step is rand8[byte ^ h], the last one with the terminating zero.
TEST_F(Symtab, SmallHashByHand) {
  EXPECT_EQ(smallhash("a"), 0xF0);   // 61; rand8[00^61 = 61] = F0
  EXPECT_EQ(smallhash("x"), 0x69);   // 78; rand8[00^78 = 78] = 69
  EXPECT_EQ(smallhash("ab"), 0x8F);  // 61; rand8[62^61 = 03] = 43; rand8[43] = 8F
  EXPECT_EQ(smallhash("ba"), 0x8F);  // 62; rand8[61^62 = 03] = 43; rand8[43] = 8F: the same bucket
  // 63; rand8[6F^63 = 0C] = A2; rand8[75^A2 = D7] = CC; rand8[6E^CC = A2] = D9; rand8[74^D9 = AD] = 18; rand8[18] = 9C
  EXPECT_EQ(smallhash("count"), 0x9C);
  EXPECT_EQ(smallhash("\xFF"), 0xC4);  // FF; rand8[00^FF = FF] = C4: bytes are unsigned
  EXPECT_EQ(smallhash(""), 0);
}

// h1 as above, h2 from the first byte + 1; the index is h2 + 256 * h1.
TEST_F(Symtab, LargeHashByHand) {
  EXPECT_EQ(largehash("a"), 0xF0D3);   // h1 F0 as above; h2: 62; rand8[62] = D3
  EXPECT_EQ(largehash("x"), 0x6919);   // h1 69; h2: 79; rand8[79] = 19
  EXPECT_EQ(largehash("ab"), 0x8FEE);  // h1 8F; h2: 62; rand8[62^62 = 00] = 83; rand8[83] = EE
  // h1 9C; h2: 64; rand8[6F^64 = 0B] = 82; rand8[75^82 = F7] = 38; rand8[6E^38 = 56] = 9B; rand8[74^9B = EF] = EC;
  // rand8[EC] = 4C
  EXPECT_EQ(largehash("count"), 0x9C4C);
  EXPECT_EQ(largehash("\xFF"), 0xC483);  // h1 C4; h2: FF + 1 wraps to 00; rand8[00] = 83
}

TEST_F(Symtab, KindsAndSizes) {
  Entry *large = makehashtab();
  Entry *small = makesmallhashtab();
  EXPECT_EQ(large->kind, 0);
  EXPECT_EQ(small->kind, 4);
  EXPECT_EQ(referencecount(large), 1);
  EXPECT_EQ(referencecount(small), 1);
  EXPECT_EQ(sizeof(Entry), 32u);
  EXPECT_EQ(LARGE_BUCKETS * sizeof(Entry), 2097152u);
  EXPECT_EQ(SMALL_BUCKETS * sizeof(Entry), 8192u);
  releasetable(large);
  releasetable(small);
}

TEST_F(Symtab, AnEntryIsWhereItsHashSays) {
  Entry *large = makehashtab();
  Entry *small = makesmallhashtab();
  EXPECT_EQ(hashtab(large, stringdup("a")), large + 0xF0D3);
  EXPECT_EQ(smallhashtab(small, stringdup("a")), small + 0xF0);
  Entry *first = smallhashtab(small, stringdup("ab"));
  Entry *second = smallhashtab(small, stringdup("ba"));
  EXPECT_EQ(first, small + 0x8F);
  EXPECT_EQ(first->next, second);
  EXPECT_EQ(second->kind, SMALL_TABLE);
  ASSERT_NE(second->next, nullptr) << "the empty tail";
  EXPECT_EQ(second->next->name, nullptr);
  EXPECT_EQ(second->next->next, nullptr);
  EXPECT_EQ(second->next->kind, SMALL_TABLE);
  releasetable(large);
  releasetable(small);
}

TEST_F(Symtab, ANewNameHasNoValue) {
  Entry *table = makehashtab();
  const Entry *entry = hashtab(table, stringdup("new"), '_');
  EXPECT_STREQ(entry->name, "new");
  EXPECT_EQ(entry->sigil, '_');
  EXPECT_EQ(referencecount(entry->name), 1);
  EXPECT_EQ(referencecount(entry->meaning), 1);
  EXPECT_EQ(entry->meaning->rank, ranks::ADDRESS);
  EXPECT_EQ(entry->meaning->type, 0u);
  EXPECT_EQ(entry->meaning->name, nullptr);
  EXPECT_EQ(entry->meaning->data_pointer, nullptr);
  releasetable(table);
}

TEST_F(Symtab, AFoundNameDropsTheOneHandedOver) {
  for (Entry *table : {makehashtab(), makesmallhashtab()}) {
    Entry *entry = entername(table, stringdup("n"), '.');
    char *again = stringdup("n");
    reference(again);
    EXPECT_EQ(entername(table, again, '_'), entry);
    EXPECT_EQ(referencecount(again), 1);
    EXPECT_EQ(entry->sigil, '.') << "the first one stays";
    EXPECT_EQ(find(table, "n"), entry);
    EXPECT_EQ(find(table, "m"), nullptr);
    release(again);
    releasetable(table);
  }
}

TEST_F(Symtab, TheEmptyName) {
  Entry *large = makehashtab();
  Entry *small = makesmallhashtab();
  EXPECT_EQ(hashtab(large, stringdup("")), nullptr);
  EXPECT_EQ(checkhash(large, ""), nullptr);
  Entry *entry = smallhashtab(small, stringdup(""));
  EXPECT_EQ(entry, small);
  EXPECT_EQ(smallhashtab(small, stringdup("")), entry);
  EXPECT_EQ(checksmallhash(small, ""), nullptr);
  bind(entry, 1);
  releasetable(large);
  releasetable(small);
}

TEST_F(Symtab, ForgettingTheFirstOfABucketMovesTheSecondUp) {
  Entry *small = makesmallhashtab();
  set(small, "ab", 1);
  set(small, "ba", 2);
  Entry *head = find(small, "ab");
  forgethash(head);
  EXPECT_STREQ(head->name, "ba");
  EXPECT_EQ(valueof(head), 2);
  EXPECT_EQ(find(small, "ba"), head);
  EXPECT_EQ(find(small, "ab"), nullptr);
  ASSERT_NE(head->next, nullptr);
  EXPECT_EQ(head->next->name, nullptr);
  forgethash(head);
  EXPECT_EQ(head->name, nullptr);
  forgethash(head);
  set(small, "ba", 3);
  EXPECT_EQ(valueof(head), 3);
  releasetable(small);
}

// What a Point was bound to outlives the name, and reads as a name without a value.
TEST_F(Symtab, ABoundPointKeepsAForgottenMeaning) {
  Entry *table = makehashtab();
  set(table, "x", 5);
  Point *bound = find(table, "x")->meaning;
  reference(bound);
  forgethash(find(table, "x"));
  EXPECT_EQ(referencecount(bound), 1);
  EXPECT_EQ(bound->type, 0u);
  EXPECT_EQ(bound->data_pointer, nullptr);
  set(table, "x", 6);
  EXPECT_NE(find(table, "x")->meaning, bound);
  bound = (release(bound), find(table, "x")->meaning);
  reference(bound);
  hashwipe(table);
  EXPECT_EQ(bound->type, 0u);
  EXPECT_EQ(referencecount(bound), 1);
  release(bound);
  releasetable(table);
}

TEST_F(Symtab, WipingABucketFromAnEntryOn) {
  Entry *small = makesmallhashtab();
  for (const char *name : {"aa", "bb", "cc", "dd"}) set(small, name, 1);  // one bucket
  Entry *second = find(small, "bb");
  subwipe(second);
  EXPECT_NE(find(small, "aa"), nullptr);
  for (const char *name : {"bb", "cc", "dd"}) EXPECT_EQ(find(small, name), nullptr) << name;
  set(small, "dd", 2);
  EXPECT_EQ(find(small, "dd"), second);
  subwipe(find(small, "aa"));
  EXPECT_EQ(find(small, "dd"), nullptr);
  releasetable(small);
}

TEST_F(Symtab, ALongBucketIsWholeAndWipedWhole) {
  constexpr int NAMES = 5000;
  Entry *table = makesmallhashtab();
  for (int i = 0; i < NAMES; ++i) {
    // One last byte in 255 leads to any bucket.
    std::string name = std::to_string(i) + "?";
    for (int last = 1; smallhash(name.c_str()) != 7 && last < 256; ++last) name.back() = static_cast<char>(last);
    if (smallhash(name.c_str()) == 7) set(table, name, i);
  }
  int links = 0;
  for (const Entry *entry = table + 7; entry->name; entry = entry->next) ++links;
  EXPECT_GT(links, NAMES * 9 / 10);
  hashwipe(table);
  EXPECT_EQ(table[7].name, nullptr);
  EXPECT_EQ(table[7].next, nullptr);
  releasetable(table);
}

// A table under many random steps holds exactly what a map of the standard library holds.
void against(Entry *table, unsigned seed, int steps, int names) {
  std::unordered_map<std::string, std::int64_t> model;
  std::mt19937 random(seed);
  for (int step = 0; step < steps; ++step) {
    const unsigned pick = random() % static_cast<unsigned>(names);
    std::string name;
    for (unsigned rest = pick * 2654435761u, i = 0; i <= pick % 9; ++i, rest = rest / 7 + 13)
      name += static_cast<char>(1 + rest % 255);
    name += std::to_string(pick);
    switch (random() % 4) {
      case 0:
      case 1:
        set(table, name, step);
        model[name] = step;
        break;
      case 2:
        if (Entry *entry = find(table, name)) forgethash(entry);
        model.erase(name);
        break;
      default: {
        const Entry *entry = find(table, name);
        const auto met = model.find(name);
        ASSERT_EQ(entry != nullptr, met != model.end()) << name;
        if (entry) {
          ASSERT_EQ(valueof(entry), met->second) << name;
        }
      }
    }
  }
  for (const auto &[name, value] : model) {
    const Entry *entry = find(table, name);
    ASSERT_NE(entry, nullptr) << name;
    ASSERT_EQ(valueof(entry), value);
  }
  EXPECT_GT(model.size(), static_cast<std::size_t>(names) / 3);
  hashwipe(table);
  for (const auto &[name, value] : model) ASSERT_EQ(find(table, name), nullptr) << name;
}

TEST_F(Symtab, AgainstAMapLarge) {
  Entry *table = makehashtab();
  against(table, 1, 200000, 40000);
  against(table, 2, 20000, 500);
  releasetable(table);
}

TEST_F(Symtab, AgainstAMapSmall) {
  Entry *table = makesmallhashtab();
  against(table, 3, 60000, 3000);
  releasetable(table);
}

long faults() {
  rusage usage;
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_minflt;
}

// The start of the process makes two of them and its end wipes them.
TEST_F(Symtab, AFreshLargeTableTouchesFewPages) {
  if (!PLAIN_HEAP) GTEST_SKIP() << "fresh blocks are filled in this build";
  const long before = faults();
  Entry *table = makehashtab();
  for (int i = 0; i < 3; ++i) set(table, "name" + std::to_string(i), i);
  EXPECT_EQ(find(table, "absent"), nullptr);
  hashwipe(table);
  releasetable(table);
  EXPECT_LE(faults() - before, 24) << "of the 512 pages of a table";
}

}  // namespace
