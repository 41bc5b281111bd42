// Something for the process to read.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <string>

// What the process reads as its standard input, for as long as this lives.
class StandardInput {
 public:
  explicit StandardInput(const std::string &text) : before(dup(STDIN_FILENO)) {
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    EXPECT_EQ(write(ends[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    close(ends[1]);
    dup2(ends[0], STDIN_FILENO);
    close(ends[0]);
    clearerr(stdin);
  }
  ~StandardInput() {
    while (std::getchar() != EOF) {
    }
    dup2(before, STDIN_FILENO);
    close(before);
    clearerr(stdin);
  }
  StandardInput(const StandardInput &) = delete;
  StandardInput &operator=(const StandardInput &) = delete;

 private:
  int before;
};
