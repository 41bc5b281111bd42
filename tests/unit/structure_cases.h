// The fixture of the tests that look at the structural instructions case by case.
#pragma once

#include "failure/jump.h"
#include "operators/compress.h"
#include "structure_values.h"

using namespace morvik;

namespace structured {

class StructureCases : public Lifetimes {
 protected:
  Point instruction = operation(instructions::REPLICATE, "REPLICATE");
  std::string said;

  void TearDown() override {
    Lifetimes::TearDown();
    drop(instruction);
    stepping = 0;
  }
  Point &made(int (*run)(Point &), const Point &data) {
    Point &p = hold(data);
    EXPECT_EQ(run(p), 0);
    return p;
  }
  Point &joined(int (*run)(Point &, Point &), const Point &left, const Point &right) {
    hold(left);
    hold(right);
    EXPECT_EQ(run(held[held.size() - 2], held.back()), 0);
    EXPECT_EQ(held.back().data_pointer, nullptr);
    held.pop_back();
    return held.back();
  }
  // The message, with both operands left whole.
  void expectfault(int number, int (*run)(Point &, Point &), const Point &left, const Point &right) {
    hold(left);
    hold(right);
    Point &l = held[held.size() - 2], &r = held.back();
    const std::string was = textof(l), other = textof(r);
    EXPECT_EQ(run(l, r), number);
    EXPECT_EQ(textof(l), was);
    EXPECT_EQ(textof(r), other);
    expectexact();
  }
  int replicated(const Point &count, const Point &data) {
    hold(count);
    hold(data);
    testing::internal::CaptureStderr();
    const int fault = replicate(held[held.size() - 2], held.back(), &instruction);
    std::fflush(stderr);
    said = testing::internal::GetCapturedStderr();
    if (fault == 0) held.pop_back();
    return fault;
  }
  void expectempty(const Point &p, std::int32_t rank, std::uint32_t type) {
    EXPECT_EQ(p.rank, rank);
    EXPECT_EQ(p.type, type);
    EXPECT_EQ(p.elements, 0u);
    EXPECT_EQ(p.data_pointer, nullptr);
  }
};

}  // namespace structured
