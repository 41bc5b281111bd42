// Failures on purpose, for tests: landings, what was printed, and processes that may end.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "failure/custody.h"
#include "failure/exception.h"
#include "failure/jump.h"
#include "failure/signals.h"

using namespace morvik;

namespace failures {

#ifdef MORVIK_SYSTEM_HEAP
inline constexpr bool SANITIZED = true;
#else
inline constexpr bool SANITIZED = false;
#endif

// Runs the body with a landing; the value of the jump, 0 if none was made. No frame in between holds an object.
template <typename Body>
inline int landingof(Body body, void (*unwind)() = nullptr, void (*join)() = nullptr) {
  Landing outer;
  armlanding(outer, unwind, join);
  const int value = setjmp(error_jump);
  if (value == 0) body();
  disarmlanding(outer);
  return value;
}

class Quiet : public testing::Test {
 protected:
  void SetUp() override {
    pendingproblem = 0;
    violations = 0;
    printing = stepping = endprocess = 0;
    interrupted = 0;
    ASSERT_EQ(custody, nullptr);
  }
  void TearDown() override {
    pendingproblem = 0;
    printing = stepping = endprocess = 0;
    interrupted = 0;
  }
};

struct Printed {
  std::string out, err;
};

template <typename Body>
Printed printed(Body body) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  body();
  std::fflush(stdout);
  Printed p;
  p.out = testing::internal::GetCapturedStdout();
  p.err = testing::internal::GetCapturedStderr();
  return p;
}

// What a child process printed and how it ended.
struct Ended {
  std::string out, err;
  int status;
};

inline std::string drain(int descriptor) {
  std::string text;
  char bytes[4096];
  for (ssize_t n; (n = read(descriptor, bytes, sizeof bytes)) > 0;) text.append(bytes, static_cast<std::size_t>(n));
  close(descriptor);
  return text;
}

// Runs the body in a child of its own, which ends with status 77 if the body comes back.
template <typename Body>
Ended child(Body body) {
  int out[2], err[2];
  EXPECT_EQ(pipe(out), 0);
  EXPECT_EQ(pipe(err), 0);
  std::fflush(nullptr);
  const pid_t pid = fork();
  if (pid == 0) {
    dup2(out[1], STDOUT_FILENO);
    dup2(err[1], STDERR_FILENO);
    for (const int end : {out[0], out[1], err[0], err[1]}) close(end);
    body();
    std::fflush(stdout);
    _exit(77);
  }
  close(out[1]);
  close(err[1]);
  Ended ended;
  ended.out = drain(out[0]);
  ended.err = drain(err[0]);
  waitpid(pid, &ended.status, 0);
  return ended;
}

inline int exitstatus(const Ended &ended) {
  return WIFEXITED(ended.status) ? WEXITSTATUS(ended.status) : -1;
}

}  // namespace failures
