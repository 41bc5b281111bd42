// Where bytes come from and go back to: streams that must not be read too far, strings, endings, and noise.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <random>
#include <string>
#include <thread>

#include "frontend/tokens.h"
#include "frontend/window.h"
#include "spaces/blocks.h"
#include "unit/scan_tokens.h"

using namespace morvik;

namespace {

// A pipe whose writing end stays open: reading past what was written waits for ever, which the alarm turns into an end.
class Pipe {
 public:
  Pipe() {
    if (pipe(ends) != 0) std::abort();
    stream = fdopen(ends[0], "r");
    alarm(20);
  }
  ~Pipe() {
    alarm(0);
    std::fclose(stream);
    if (ends[1] >= 0) close(ends[1]);
  }
  Pipe(const Pipe &) = delete;
  Pipe &operator=(const Pipe &) = delete;
  void write(const std::string &text) const {
    ASSERT_EQ(::write(ends[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }
  void end() {
    close(ends[1]);
    ends[1] = -1;
  }
  std::FILE *stream;

 private:
  int ends[2];
};

// Scans to the end of the text, and no further.
Tokens onetext(std::FILE *stream) {
  Tokens tokens;
  ConditionPath path;
  scanfrom(stream, nullptr);
  for (;;) {
    const Token token = scan(path.condition);
    tokens.push_back(rulename(token.rule) + (" " + std::string(token.text, token.length)));
    path.follow(token);
    if (token.rule == Rule::END_OF_TEXT || token.rule == Rule::END_OF_INPUT) break;
  }
  scandone();
  return tokens;
}

}  // namespace

TEST(ScannerSources, ATextIsReadNoFurtherThanItsEnd) {
  const Pipe pipe;
  for (const char *text : {"1 2 + .\n", "x END\n", "(1 2)[2] 'a' .\n", "12.\n", "VARS .\n", "ADD.\n", "3i4.\n",
                           "\"c\".\n", "@x .\n", "_x.\n", "1.5E2 .\n", "0#1.\n", "d.\n", "Inf.\n", ": 1 ; .\n"}) {
    pipe.write(text);
    const Tokens tokens = onetext(pipe.stream);
    const std::string word = text[2] == 'E' ? "END\n" : ".\n";
    EXPECT_EQ(tokens.back(), "ENDOFTEXT " + word) << text;
  }
}

TEST(ScannerSources, AfterAPointOneByteIsLookedAt) {
  const Pipe pipe;
  pipe.write("1 .2 .\n");
  EXPECT_EQ(onetext(pipe.stream), (Tokens{"INTEGER 1", "REAL .2", "ENDOFTEXT .\n"}));
  pipe.write("1 . ");
  EXPECT_EQ(onetext(pipe.stream), (Tokens{"INTEGER 1", "ENDOFTEXT ."}));
  EXPECT_EQ(std::getc(pipe.stream), ' ') << "it goes back to the stream";
  pipe.write(".]1 .\n");
  EXPECT_EQ(onetext(pipe.stream), (Tokens{"ENDOFTEXT ."}));
  EXPECT_EQ(onetext(pipe.stream), (Tokens{"NAMESTART ]", "NAMEPART 1", "NAMEEND ", "ENDOFTEXT .\n"}))
      << "both bytes that were looked at";
}

TEST(ScannerSources, EachTokenComesAsSoonAsItIsComplete) {
  const Pipe pipe;
  scanfrom(pipe.stream, nullptr);
  const struct {
    const char *written;
    Rule rule;
    const char *text;
  } steps[] = {{"12 ", Rule::INTEGER, "12"},   {"+", Rule::KEYWORD, "+"},        {";", Rule::CLOSE_FUNCTION, ";"},
               {"SIN(", Rule::KEYWORD, "SIN"}, {"", Rule::OPEN_VECTOR, "("},     {"'", Rule::OPEN_STRING, "'"},
               {"@", Rule::ADDRESS, "@"},      {"\n", Rule::LINE_FEED, "\n"},    {"\"", Rule::OPEN_COMMENT, "\""},
               {"::", Rule::BUILTIN, "::"},    {".\n", Rule::END_OF_TEXT, ".\n"}};
  for (const auto &step : steps) {
    pipe.write(step.written);
    const Token token = scan(Condition::INITIAL);
    EXPECT_EQ(token.rule, step.rule) << step.text;
    EXPECT_STREQ(token.text, step.text);
  }
  scandone();
}

TEST(ScannerSources, ANulEndsTheInput) {
  const std::string text(
      "1\0"
      "2 .\n",
      6);
  std::FILE *stream = streamof(text);
  EXPECT_EQ(onetext(stream), (Tokens{"INTEGER 1", "ENDOFINPUT "}));
  EXPECT_EQ(onetext(stream), (Tokens{"INTEGER 2", "ENDOFTEXT .\n"})) << "it is used up with its text";
  std::fclose(stream);
  stream = streamof(std::string("ADD\0 ", 5));
  EXPECT_EQ(onetext(stream), (Tokens{"NAMESTART A", "NAMEPART DD", "ENDOFINPUT "})) << "and is no boundary";
  std::fclose(stream);
  stream =
      streamof(std::string("1.\0"
                           "2",
                           4));
  EXPECT_EQ(onetext(stream), (Tokens{"INTEGER 1", "ENDOFTEXT ."}));
  EXPECT_EQ(onetext(stream), (Tokens{"ENDOFINPUT "})) << "looked at only, it ends the next text";
  EXPECT_EQ(onetext(stream), (Tokens{"INTEGER 2", "ENDOFINPUT "}));
  std::fclose(stream);
}

TEST(ScannerSources, AStringIsLeftWhereItWasReadTo) {
  const char *const text = "1 .2 . x ";
  scanfrom(nullptr, text);
  scan(Condition::INITIAL);
  EXPECT_STREQ(scanposition(), " .2 . x ");
  scan(Condition::INITIAL);
  EXPECT_EQ(scan(Condition::INITIAL).rule, Rule::END_OF_TEXT);
  EXPECT_STREQ(scanposition(), " x ");
  scandone();
  EXPECT_STREQ(scanposition(), " x ") << "after the end as well";
  scanfrom(nullptr, scanposition());
  EXPECT_STREQ(scan(Condition::INITIAL).text, "x");
  scandone();
}

TEST(ScannerSources, InputAndUnput) {
  scanfrom(nullptr, "SIN(ab");
  EXPECT_STREQ(scan(Condition::INITIAL).text, "SIN");
  EXPECT_EQ(input(), '(') << "the boundary byte that was given back";
  EXPECT_EQ(input(), 'a');
  yyunput('Z');
  yyunput('Y');
  EXPECT_EQ(input(), 'Y');
  EXPECT_EQ(input(), 'Z');
  EXPECT_EQ(input(), 'b');
  EXPECT_EQ(input(), EOF);
  EXPECT_EQ(input(), EOF);
  yyunput(';');
  EXPECT_EQ(scan(Condition::INITIAL).rule, Rule::CLOSE_FUNCTION) << "given back after the end";
  EXPECT_EQ(scan(Condition::INITIAL).rule, Rule::END_OF_INPUT);
  scandone();
}

TEST(ScannerSources, WhatCanNotBeGivenBack) {
  const char *const text = "1 ";
  scanfrom(nullptr, text);
  yyunput('2');
  EXPECT_EQ(scanposition(), text) << "never ahead of the string";
  yyunput(EOF);
  yyunput(0);
  EXPECT_EQ(input(), '2');
  EXPECT_EQ(input(), '1');
  scandone();
  EXPECT_STREQ(scanposition(), " ");
}

TEST(ScannerSources, ManyBytesGivenBack) {
  scanfrom(nullptr, "SIN( ");
  scan(Condition::INITIAL);
  const std::size_t count = 300000;
  for (std::size_t i = 0; i < count; ++i) yyunput(static_cast<int>('0' + (count - i) % 10));
  Token token = scan(Condition::INITIAL);
  ASSERT_EQ(token.rule, Rule::INTEGER);
  ASSERT_EQ(token.length, count);
  for (std::size_t i = 0; i < count; ++i) ASSERT_EQ(token.text[i], static_cast<char>('0' + (i + 1) % 10)) << i;
  EXPECT_EQ(scan(Condition::INITIAL).rule, Rule::OPEN_VECTOR);
  EXPECT_EQ(scan(Condition::INITIAL).rule, Rule::END_OF_INPUT);
  scandone();
}

// A token that fills the window to the last byte, or nearly so, is given back whole, and more bytes ahead of it.
TEST(ScannerSources, BytesGivenBackToAFullWindow) {
  constexpr std::size_t CAPACITY = 2 * window::LONGEST_RUN;
  for (std::size_t count = CAPACITY - 4; count <= CAPACITY + 4; ++count) {
    const std::string number(count, '7'), text = number + " x ";
    scanfrom(nullptr, text.c_str());
    ASSERT_EQ(scan(Condition::INITIAL).length, count);
    for (std::size_t i = 0; i < count; ++i) yyunput('7');
    for (const int byte : {'6', '5', '4'}) yyunput(byte);
    const Token token = scan(Condition::INITIAL);
    EXPECT_EQ(std::string(token.text, token.length), "456" + number) << count;
    EXPECT_STREQ(scan(Condition::INITIAL).text, "x") << count;
    scandone();
  }
}

TEST(ScannerSources, AnInterruptedReadIsTakenUpAgain) {
  struct sigaction action = {}, before;
  action.sa_handler = [](int) {};  // without SA_RESTART: read gives EINTR
  sigaction(SIGUSR1, &action, &before);
  Pipe pipe;
  std::atomic<bool> done = false;
  const pthread_t reader = pthread_self();
  std::thread writer([&] {
    pipe.write("12");
    for (int i = 0; i < 20; ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
      pthread_kill(reader, SIGUSR1);
    }
    pipe.write("34 .\n");
    while (!done) std::this_thread::yield();
  });
  EXPECT_EQ(onetext(pipe.stream), (Tokens{"INTEGER 1234", "ENDOFTEXT .\n"}));
  done = true;
  writer.join();
  sigaction(SIGUSR1, &before, nullptr);
}

TEST(ScannerSources, ALongTokenLeavesNoBlock) {
  const std::int64_t blocks = liveblocks();
  void *probe = newblock(1);
  const std::int64_t one = liveblocks() - blocks;  // 0 where blocks are not counted
  release(probe);
  const std::string digits(1000000, '1');
  for (const char *last : {" ", ".", ""}) {
    const std::string text = digits + last;
    scanfrom(nullptr, text.c_str());
    EXPECT_EQ(scan(Condition::INITIAL).length, digits.size());
    EXPECT_EQ(liveblocks(), blocks + one);
    EXPECT_EQ(scan(Condition::INITIAL).rule, *last == '.' ? Rule::END_OF_TEXT : Rule::END_OF_INPUT);
    EXPECT_EQ(liveblocks(), blocks);
    scandone();
    scanfrom(nullptr, text.c_str());
    scan(Condition::INITIAL);
    scandone();
    EXPECT_EQ(liveblocks(), blocks) << "a text that was left";
  }
}

// Whatever the bytes: the scan ends, and every byte is in a token, echoed, or white space that is skipped.
TEST(ScannerSources, NoiseIsReadToItsEnd) {
  std::mt19937 random(7);
  const std::string likely =
      " \n\t.;:'\"()[]`@_$%&#0123456789-\xAF"
      "EeijkpqdrvINVARSGFUNCTIOWPMK\x02|!~";
  for (int round = 0; round < 1500; ++round) {
    std::string text;
    const std::size_t length = random() % 200;
    while (text.size() < length)
      text += random() % 4 == 0 ? static_cast<char>(1 + random() % 255) : likely[random() % likely.size()];
    const auto condition = static_cast<Condition>(random() % 10);
    const Scanned scanned = scantext(text, condition);
    std::size_t counts[256] = {};
    for (const char byte : text) ++counts[static_cast<unsigned char>(byte)];
    for (const char byte : scanned.echo) --counts[static_cast<unsigned char>(byte)];
    for (const std::string &token : scanned.tokens) {
      const std::size_t blank = token.find(' ');
      if (blank == std::string::npos) continue;
      for (const char byte : token.substr(blank + 1)) --counts[static_cast<unsigned char>(byte)];
    }
    for (const char skipped : {' ', '\t', '\r', '\n'}) counts[static_cast<unsigned char>(skipped)] = 0;
    for (int byte = 0; byte < 256; ++byte) EXPECT_EQ(counts[byte], 0u) << byte << ": " << text;
  }
}
