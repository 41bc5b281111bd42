// The pool itself, with threads that do what the test tells them: who is woken, what is joined when, and what becomes
// of the operands.
#include <gtest/gtest.h>
#include <pthread.h>
#include <semaphore.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <string>
#include <utility>
#include <vector>

#include "coprocessor/coprocessor.h"
#include "coprocessor/threads.h"
#include "failures.h"
#include "operators/interval.h"
#include "spaces/instructions.h"
#include "spaces/refderef.h"
#include "spaces/sysvars.h"
#include "spaces/work.h"

using namespace morvik;

namespace {

constexpr std::int32_t NOTCONFORMABLE = 17;
constexpr std::uint32_t MOST = 8;

// What the threads of a test do: they wait where they are told to, and answer what they are told to.
sem_t gate;
bool gated;
std::int32_t failing[MOST];
std::uint32_t found[MOST];
std::uint32_t seen[MOST];  // how many times each was woken with work

void obey(const Point &instruction, std::uint32_t index, std::uint64_t *) noexcept {
  if (instruction.instruction == instructions::RANDOMISE) return;
  ++seen[index];
  if (gated)
    while (sem_wait(&gate) != 0) {
    }
  from_coprocessor[index].failure = failing[index];
  from_coprocessor[index].flags = found[index];
}

Point instructionof(std::uint16_t number) {
  Point p{};
  p.rank = ranks::OPERATOR;
  p.type = ISOPERATOR;
  p.instruction = number;
  return p;
}

class Pool : public failures::Quiet {
 protected:
  std::uint32_t oldprocessors = processors, oldcpus = cpus;
  std::int64_t oldleast = MIN_PARALLEL, before = liveblocks();
  Point slots[8] = {};
  Point *top = slots;

  void begin(std::uint32_t count, Worker *worker = obey) {
    for (std::uint32_t i = 0; i < MOST; ++i) failing[i] = 0, found[i] = seen[i] = 0;
    gated = false;
    sem_init(&gate, 0, 0);
    processors = count;
    MIN_PARALLEL = count;
    startcoprocessors(worker);
    ASSERT_EQ(processors, count);
  }
  void end() {
    endcoprocessors();
    freereplies();
    sem_destroy(&gate);
    processors = oldprocessors;
    cpus = oldcpus;
    MIN_PARALLEL = oldleast;
  }
  // An instruction at work over slots[1], as a frame leaves it: a new result, its operand kept back.
  void post(std::uint16_t number, const Point &result, const Point &operand) {
    instruction = instructionof(number);
    slots[1] = result;
    top = slots + 1;
    to_coprocessors = {};
    to_coprocessors.instruction = &instruction;
    to_coprocessors.operand = slots + 1;
    to_coprocessors.count = result.elements;
    to_coprocessors.result = result.data_pointer;
    ASSERT_TRUE(postcoprocessors());
    deferoperands(operand);
  }
  void open(std::uint32_t times) {
    for (std::uint32_t i = 0; i < times; ++i) sem_post(&gate);
  }
  Point instruction;
};

Point ones(int count, std::int64_t value) {
  Point p{};
  p.rank = ranks::VECTOR;
  p.type = ISVECTOR | HASINTEGER;
  p.depth = 1;
  p.elements = static_cast<std::uint32_t>(count);
  p.shape_pointer = newshape(count);
  p.data_pointer = newelements(p.elements);
  for (int i = 0; i < count; ++i) {
    p.data_pointer[i] = {};
    p.data_pointer[i].tag = tags::INTEGER;
    p.data_pointer[i].form = forms::NUMBER;
    p.data_pointer[i].integer = value;
  }
  return p;
}

// The messages that a join reported, each by its number; it jumps if there is one.
std::string reported(Point *&top) {
  Point **const at = &top;
  int landed = 0;
  const failures::Printed printed =
      failures::printed([at, &landed] { landed = failures::landingof([at] { wait_for_coprocessors(*at, 2); }); });
  const std::string text = printed.err.substr(0, printed.err.find(" - "));
  return (landed == 0 ? "goes on" : "jumps") + text;
}

TEST_F(Pool, TheGateWantsMoreThanTheThresholdAndOneElementASlot) {
  processors = 4;
  MIN_PARALLEL = 4004;
  EXPECT_FALSE(goesparallel(4004));
  EXPECT_TRUE(goesparallel(4005));
  MIN_PARALLEL = 2;  // which SERIAL never leaves below the number of slots
  EXPECT_FALSE(goesparallel(3));
  EXPECT_TRUE(goesparallel(4));
  processors = 1;
  EXPECT_FALSE(goesparallel(1000000));
  end();
}

TEST_F(Pool, TheMainThreadGoesOnWhileSlicesAreInFlight) {
  begin(3);
  gated = true;
  post(instructions::NEGATIVE, ones(9, 5), ones(9, -5));
  // Small work, with counts that change and storage that comes and goes, while both threads are held.
  for (int i = 0; i < 1000; ++i) {
    Point small = ones(3, i), copy = small;
    referencepoint(&copy);
    dereferencepoint(&copy);
    EXPECT_EQ(referencecount(small.data_pointer), 1);
    dereferencepoint(&small);
  }
  EXPECT_EQ(resultinflight, slots + 1);
  EXPECT_EQ(from_coprocessor[1].done, 0);
  EXPECT_EQ(from_coprocessor[2].done, 0);
  open(2);
  wait_for_coprocessors(top, 1);
  EXPECT_EQ(resultinflight, nullptr);
  EXPECT_EQ(from_coprocessor[1].done, 1);
  dereferencepoint(slots + 1);
  end();
  EXPECT_EQ(liveblocks(), before);
}

TEST_F(Pool, TheJoinPutsTogetherWhatTheSlicesFound) {
  begin(4);
  found[1] = HASREAL;
  found[3] = STRUCTURED | ISPROBABLE;
  post(instructions::NEGATIVE, ones(9, 5), ones(9, -5));
  wait_for_coprocessors(top, 0);
  EXPECT_EQ(slots[1].type, ISVECTOR | HASINTEGER | HASREAL | COMPLEXED | STRUCTURED | ISPROBABLE);
  slots[1].type = ISVECTOR | HASINTEGER;
  found[1] = HASCOMPLEX;
  wait_for_coprocessors(top, 0);  // nothing is in flight: nothing is applied
  EXPECT_EQ(slots[1].type, ISVECTOR | HASINTEGER);
  dereferencepoint(slots + 1);
  end();
  EXPECT_EQ(liveblocks(), before);
}

TEST_F(Pool, AFailedSliceIsReportedOnceAndTheOperandIsBack) {
  begin(4);
  failing[2] = NOTCONFORMABLE;
  failing[3] = 162;
  post(instructions::NEGATIVE, ones(9, 5), ones(9, -5));
  EXPECT_EQ(reported(top), "jumps\n17") << "that of the lowest slot";
  EXPECT_EQ(top, slots + 1);
  EXPECT_EQ(slots[1].data_pointer[8].integer, -5);
  EXPECT_EQ(reported(top), "goes on");
  dereferencepoint(slots + 1);
  end();
  EXPECT_EQ(liveblocks(), before);
}

// A dyadic instruction over its left operand, with what came on the stack since.
TEST_F(Pool, TheRightOperandIsBackWhereItsSlotIsFree) {
  for (const bool grown : {false, true}) {
    begin(2);
    failing[1] = NOTCONFORMABLE;
    Point left = ones(5, 1), right = ones(5, 2), result = left;
    reference(result.shape_pointer);
    left.data_pointer = nullptr;
    slots[1] = result;
    top = slots + 1;
    instruction = instructionof(instructions::ADD);
    to_coprocessors = {};
    to_coprocessors.instruction = &instruction;
    to_coprocessors.operand = slots + 1;
    to_coprocessors.first = result.data_pointer;
    to_coprocessors.count = 5;
    ASSERT_TRUE(postcoprocessors());
    deferoperands(left, right);
    if (grown) *++top = ones(1, 7);
    EXPECT_EQ(reported(top), "jumps\n17");
    EXPECT_EQ(top, slots + 2);
    EXPECT_EQ(slots[1].data_pointer[0].integer, 1);
    EXPECT_EQ(slots[2].data_pointer[0].integer, grown ? 7 : 2);
    for (; top > slots; --top) dereferencepoint(top);
    end();
    EXPECT_EQ(liveblocks(), before);
  }
}

// The Programme may be gone when the join reports.
TEST_F(Pool, TheInstructionOutlivesItsProgramme) {
  for (const std::int32_t message : {0, 162}) {
    begin(3);
    failing[2] = message;
    instruction = instructionof(instructions::NEGATIVE);
    Point &point = instruction;
    point.name = stringdup("unlikely");
    slots[1] = ones(9, 5);
    top = slots + 1;
    to_coprocessors = {};
    to_coprocessors.instruction = &instruction;
    to_coprocessors.operand = slots + 1;
    to_coprocessors.count = 9;
    to_coprocessors.result = slots[1].data_pointer;
    ASSERT_TRUE(postcoprocessors());
    deferoperands(ones(9, -5));
    dereferencepoint(&point);
    Point **const at = &top;
    const std::string err =
        failures::printed([at] { failures::landingof([at] { wait_for_coprocessors(*at, 1); }); }).err;
    EXPECT_EQ(err.find("unlikely") != std::string::npos, message != 0) << err;
    dereferencepoint(slots + 1);
    end();
    EXPECT_EQ(liveblocks(), before);
  }
}

void write(const Point &instruction, std::uint32_t index, std::uint64_t *) noexcept {
  if (instruction.instruction == instructions::INTERVAL) vec_interval(index);
  from_coprocessor[index].failure = failing[index];
}

// The work record holds what was handed out last: of two operands' work nothing is left when an INTERVAL fails.
TEST_F(Pool, AnIntervalThatFailsGivesBackItsOperandAlone) {
  begin(2, write);
  post(instructions::ADD, ones(9, 5), ones(9, -5));
  to_coprocessors.first = slots[1].data_pointer;
  wait_for_coprocessors(top, 2);
  dereferencepoint(slots + 1);
  failing[1] = 162;
  slots[1] = ones(1, 20);
  instruction = instructionof(instructions::INTERVAL);
  Point system[16] = {};
  system[IO_SLOT] = ones(1, 1);
  system[CT_SLOT] = ones(1, 0);
  interval(&top, &instruction, system);
  ASSERT_EQ(resultinflight, slots + 1);
  EXPECT_EQ(reported(top), "jumps\n162");
  EXPECT_EQ(top, slots + 1);
  EXPECT_EQ(slots[1].elements, 1U);
  EXPECT_EQ(slots[1].data_pointer[0].integer, 20);
  for (Point *p : {slots + 1, system + IO_SLOT, system + CT_SLOT}) dereferencepoint(p);
  end();
  EXPECT_EQ(liveblocks(), before);
}

int unblocked[MOST];

void countunblocked(const Point &, std::uint32_t index, std::uint64_t *) noexcept {
  sigset_t mask;
  pthread_sigmask(SIG_BLOCK, nullptr, &mask);
  unblocked[index] = 0;
  for (const int signal : {SIGINT, SIGQUIT, SIGTERM, SIGPIPE, SIGUSR1, SIGALRM, SIGWINCH})
    unblocked[index] += sigismember(&mask, signal) == 0;
}

TEST_F(Pool, ThreadsTakeNoSignalAndTheMainThreadTakesThemAsBefore) {
  std::fill(unblocked, unblocked + MOST, -1);
  sigset_t old, mask;
  pthread_sigmask(SIG_BLOCK, nullptr, &old);
  begin(3, countunblocked);
  pthread_sigmask(SIG_BLOCK, nullptr, &mask);
  for (int signal = 1; signal < SIGRTMIN; ++signal) EXPECT_EQ(sigismember(&mask, signal), sigismember(&old, signal));
  post(instructions::NEGATIVE, ones(9, 5), ones(9, -5));
  wait_for_coprocessors(top, 1);
  EXPECT_EQ(unblocked[1], 0);
  EXPECT_EQ(unblocked[2], 0);
  dereferencepoint(slots + 1);
  end();
}

// ---- Slices that go on until they are stopped, or for a while.

void linger(const Point &instruction, std::uint32_t index, std::uint64_t *) noexcept {
  constexpr int LOOKS = 3000;
  if (instruction.instruction == instructions::RANDOMISE) return;
  for (int i = 0; i < LOOKS && !isstopped(); ++i) usleep(1000);
  from_coprocessor[index].failure = isstopped() ? INTERRUPTED : 0;
}

Point *atwork;
void joinwork() {
  joinpool(atwork);
}

// On the main thread's way to the join, at the join, and on the way of another failure, which is the first one's place.
TEST_F(Pool, AnInterruptStopsTheSlices) {
  for (void (*body)() : {+[] { takeinterrupt(); }, +[] { joinpool(atwork); }, +[] { exceptionjump(23); }}) {
    begin(3, linger);
    post(instructions::NEGATIVE, ones(9, 5), ones(9, -5));
    atwork = top;
    interrupted = SIGINT;
    const failures::Printed printed = failures::printed([body] { failures::landingof(body, nullptr, joinwork); });
    EXPECT_EQ(printed.out, "\n** User interrupt. **\n");
    EXPECT_EQ(printed.err, "");
    EXPECT_EQ(interrupted, 0);
    EXPECT_EQ(resultinflight, nullptr);
    EXPECT_EQ(slots[1].data_pointer[0].integer, -5) << "the operand is back";
    dereferencepoint(slots + 1);
    end();
    EXPECT_EQ(liveblocks(), before);
  }
}

// The main thread's own slice failed: nobody waits for the end of the others.
TEST_F(Pool, RecalledSlicesStop) {
  begin(3, linger);
  post(instructions::NEGATIVE, ones(9, 5), ones(9, -5));
  recallslices();
  EXPECT_EQ(from_coprocessor[1].failure, INTERRUPTED);
  EXPECT_EQ(from_coprocessor[2].failure, INTERRUPTED);
  dereferencepoint(&from_coprocessor[0].deferred);
  from_coprocessor[0].deferred = {};
  dereferencepoint(slots + 1);
  end();
  EXPECT_EQ(liveblocks(), before);
}

// ---- Draws: where one slice fails, none has drawn.

void draw(const Point &instruction, std::uint32_t index, std::uint64_t *state) noexcept {
  if (instruction.instruction == instructions::RANDOMISE) *state = index;
  if (instruction.instruction == instructions::RANDOMISE || instruction.instruction == instructions::NEGATIVE) return;
  notedraws(index, state);
  *state += 100;
  found[index] = static_cast<std::uint32_t>(*state);
  from_coprocessor[index].failure = failing[index];
}

TEST_F(Pool, WhereASliceFailsNoneHasDrawn) {
  for (const std::uint32_t bad : {0u, 1u, 2u, 3u}) {
    begin(4, draw);
    failing[bad] = 994;
    std::uint64_t main = 0;
    for (const bool again : {false, true}) {
      if (again) failing[bad] = 0;
      post(instructions::ROLL, ones(9, 5), ones(9, -5));
      notedraws(0, &main);
      main += 100;
      if (bad == 0 && !again) {
        recallslices();
        dereferencepoint(&from_coprocessor[0].deferred);
        from_coprocessor[0].deferred = {};
      } else {
        EXPECT_EQ(reported(top), again ? "goes on" : "jumps\n994");
      }
      EXPECT_EQ(main, again ? 100u : 0u);
      dereferencepoint(slots + 1);
    }
    for (std::uint32_t i = 1; i < 4; ++i) EXPECT_EQ(found[i], 100 + i) << "drawn once";
    // What does not draw leaves the generators alone, though it fails.
    failing[bad] = 0;
    post(instructions::NEGATIVE, ones(9, 5), ones(9, -5));
    recallslices();
    dereferencepoint(&from_coprocessor[0].deferred);
    from_coprocessor[0].deferred = {};
    EXPECT_EQ(main, 100u);
    dereferencepoint(slots + 1);
    end();
    EXPECT_EQ(liveblocks(), before);
  }
}

TEST_F(Pool, OnlyTheSlotsInUseAreWokenButASeedReachesAll) {
  begin(5);
  processors = 3;
  post(instructions::NEGATIVE, ones(9, 5), ones(9, -5));
  wait_for_coprocessors(top, 1);
  dereferencepoint(slots + 1);
  EXPECT_EQ(std::vector<std::uint32_t>(seen + 1, seen + 5), (std::vector<std::uint32_t>{1, 1, 0, 0}));
  wakecoprocessors(instructionof(instructions::SEED), 1);
  EXPECT_EQ(std::vector<std::uint32_t>(seen + 1, seen + 5), (std::vector<std::uint32_t>{2, 2, 1, 1}));
  end();
  EXPECT_EQ(liveblocks(), before);
}

// ---- A coprocessor that needs the main thread.

int served;
std::uint32_t asker;
void serve(Point **operand, const Point *instruction, Point *context) {
  ++served;
  EXPECT_EQ(*operand, to_coprocessors.operand);
  EXPECT_EQ(instruction, to_coprocessors.instruction);
  EXPECT_EQ(context, quads);
  sem_post(&gate);
}

void request(const Point &instruction, std::uint32_t index, std::uint64_t *state) noexcept {
  obey(instruction, index, state);
  if (index != asker || seen[index] != 1 || instruction.instruction == instructions::RANDOMISE) return;
  from_coprocessor[index].request_function = serve;
  from_coprocessor[index].request = 1;
}

TEST_F(Pool, ARequestOfAnySlotIsServedAtTheJoinWhichReturnsAtOnce) {
  Point variables[16] = {};
  Point *const outer = std::exchange(quads, variables);
  for (const std::uint32_t slot : {1u, 2u}) {
    asker = slot;
    begin(3, request);
    found[3 - asker] = HASREAL;
    served = 0;
    post(instructions::NEGATIVE, ones(9, 5), ones(9, -5));
    testing::internal::CaptureStdout();
    wait_for_coprocessors(top, 1);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "REQ");
    EXPECT_EQ(served, 1);
    EXPECT_EQ(resultinflight, slots + 1) << "the work goes on";
    EXPECT_EQ(from_coprocessor[asker].done, 0);
    // What it asked for is there: it is woken to go on, and is done.
    postslot(asker);
    wait_for_coprocessors(top, 1);
    EXPECT_EQ(resultinflight, nullptr);
    EXPECT_EQ(seen[asker], 2u);
    EXPECT_EQ(slots[1].type, ISVECTOR | HASINTEGER | HASREAL | COMPLEXED) << "what the others found is not lost";
    dereferencepoint(slots + 1);
    end();
    EXPECT_EQ(liveblocks(), before);
  }
  quads = outer;
}

}  // namespace
