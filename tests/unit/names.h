// Names by hand, for tests.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "failure/custody.h"
#include "failure/exception.h"
#include "frontend/contexts.h"
#include "frontend/symtab.h"
#include "spaces/making.h"
#include "spaces/refderef.h"
#include "spaces/symbols.h"

using namespace morvik;

namespace names {

// Every test gives back all that it took.
class Given : public testing::Test {
 protected:
  void SetUp() override {
    blocks = liveblocks();
    ASSERT_EQ(custody, nullptr);
  }
  void TearDown() override { EXPECT_EQ(liveblocks(), blocks); }
  std::int64_t blocks = 0;
};

inline void bind(Entry *entry, std::int64_t value) {
  dereferencepoint(entry->meaning);
  makeinteger(*entry->meaning, value);
}

inline std::int64_t valueof(const Entry *entry) {
  return entry->meaning->data_pointer->integer;
}

inline void set(Entry *table, const std::string &name, std::int64_t value, char sigil = 0) {
  bind(entername(table, stringdup(name.c_str()), sigil), value);
}

inline Entry *find(Entry *table, const std::string &name) {
  return table->kind == SMALL_TABLE ? checksmallhash(table, name.c_str()) : checkhash(table, name.c_str());
}

// A chain of the global table, a small one and a large one, innermost last.
struct Chain {
  Entry *global = makehashtab();
  Context *base = makemeaning(global);
  Context *middle = opentable(base, SMALL_TABLE);
  Context *inner = opentable(middle, LARGE_TABLE);
  void end() {
    EXPECT_EQ(popsymtabs(inner), middle);
    EXPECT_EQ(popsymtabs(middle), base);
    release(base);
    releasetable(global);
  }
};

}  // namespace names
