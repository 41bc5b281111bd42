// A fixture that compiles texts on a chain of its own and looks at the Points.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "failure/custody.h"
#include "failure/exception.h"
#include "failure/jump.h"
#include "failure/messagetext.h"
#include "frontend/assembly.h"
#include "frontend/contexts.h"
#include "frontend/limits.h"
#include "frontend/symtab.h"
#include "spaces/instructions.h"
#include "spaces/making.h"
#include "spaces/refderef.h"
#include "spaces/symbols.h"

using namespace morvik;

class Compiled : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(custody, nullptr);
    blocks = liveblocks();
    table = makehashtab();
    chain = makemeaning(table);
  }

  // Whatever a test does, every block is given back.
  void TearDown() override {
    cleanup(programme);
    releasetable(table);
    release(chain);
    EXPECT_EQ(liveblocks(), blocks);
    EXPECT_EQ(custody, nullptr);
    pendingproblem = 0;
    stepping = 0;
  }

  // Compiles one text; what is left of it is in `rest`. Returns what fill returns.
  std::int64_t compile(const std::string &text, int flag = SKIPPED) {
    cleanup(programme);
    const char *position = text.c_str();
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    points = fill(programme, chain, &below, nullptr, &position, flag);
    out = testing::internal::GetCapturedStdout();
    err = testing::internal::GetCapturedStderr();
    rest = position;
    return points;
  }

  // The one Point of a text that has no other.
  Point &single(const std::string &text) {
    EXPECT_EQ(compile(text + " ."), 2) << text << err;
    return programme[0];
  }

  Element &element(const std::string &text) { return *single(text).data_pointer; }

  bool reported(int number) const {
    return err.find("\n" + std::string(errors(static_cast<std::uint32_t>(number)))) != std::string::npos;
  }

  // Point number n of a function's body, counted from 0.
  static Point &body(const Point &function, std::size_t n) { return function.programme[n + 1]; }

  void bind(const char *name, std::int64_t value, char sigil = 0) {
    Entry *entry = entername(table, stringdup(name), sigil);
    dereferencepoint(entry->meaning);
    makeinteger(*entry->meaning, value);
  }

  Point programme[PROGRAMME_POINTS] = {};
  Point below = {};
  Entry *table = nullptr;
  Context *chain = nullptr;
  std::int64_t blocks = 0, points = 0;
  std::string out, err, rest;
};
