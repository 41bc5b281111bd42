// What a coprocessor does: it sleeps until it is posted, works its slice, and says so. It never reports and never
// jumps, takes no signal, and ends with ENDPROCESS alone.
#include <pthread.h>
#include <semaphore.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>

#include "coprocessor/threads.h"
#include "failure/signals.h"
#include "spaces/blocks.h"
#include "spaces/instructions.h"
#include "spaces/processstack.h"
#include "spaces/work.h"

namespace morvik {

namespace {

constexpr long POLL_NANOSECONDS = 20'000'000;  // nanoseconds between two polls for a noted interrupt
constexpr long NANOSECONDS_A_SECOND = 1'000'000'000;

// One a slot; that of slot 0 is not used.
struct Thread {
  pthread_t handle;
  std::uint32_t index;
  sem_t coprocess;    // posted by the main thread: there is work
  sem_t mainprocess;  // posted by the thread: it is done
};
Thread *threads;
Worker *workfunction;

Point makeinstruction(std::uint16_t number) {
  Point p{};
  p.rank = ranks::OPERATOR;
  p.type = ISOPERATOR;
  p.instruction = number;
  return p;
}

void waitfor(sem_t &semaphore) {
  while (sem_wait(&semaphore) != 0) {
  }
}

// Takes the next work. Is there any?
bool takework(Reply &reply) {
  waitfor(threads[&reply - from_coprocessor].coprocess);
  reply.instruction = to_coprocessors.instruction;
  if (!reply.instruction) return false;
  reply.flags = 0;
  reply.failure = 0;
  reply.flops = reply.operations = 0;
  reply.operand = to_coprocessors.operand;
  reply.context = to_coprocessors.context;
  return true;
}

void vector_coprocessor(std::uint32_t index) {
  Reply &reply = from_coprocessor[index];
  std::uint64_t state;
  workfunction(makeinstruction(instructions::RANDOMISE), index, &state);
  sem_post(&threads[index].mainprocess);  // it is there
  for (;;) {
    if (!takework(reply)) continue;
    const Point &instruction = *reply.instruction;
    const bool ends = instruction.instruction == instructions::ENDPROCESS;
    if (isoperator(instruction) && !ends) workfunction(instruction, index, &state);
    flushlivecount();
    sem_post(&threads[index].mainprocess);
    if (ends) return;
  }
}

void *vector_coprocessor_thread(void *index) {
  measurestack();
  vector_coprocessor(*static_cast<const std::uint32_t *>(index));
  return nullptr;
}

bool startthread(std::uint32_t slot) {
  Thread &thread = threads[slot];
  thread.index = slot;
  sem_init(&thread.coprocess, 0, 0);
  sem_init(&thread.mainprocess, 0, 0);
  from_coprocessor[slot].done = 1;
  if (pthread_create(&thread.handle, nullptr, vector_coprocessor_thread, &thread.index) == 0) return true;
  sem_destroy(&thread.coprocess);
  sem_destroy(&thread.mainprocess);
  return false;
}

}  // namespace

bool poolstarted() {
  return threads != nullptr;
}

void postslot(std::uint32_t slot) {
  sem_post(&threads[slot].coprocess);
}

void awaitslot(std::uint32_t slot) {
  sem_t &done = threads[slot].mainprocess;
  while (sem_trywait(&done) != 0) {
    if (interrupted != 0) slicesstopped = true;
    timespec until;
    clock_gettime(CLOCK_REALTIME, &until);
    until.tv_nsec += POLL_NANOSECONDS;
    if (until.tv_nsec >= NANOSECONDS_A_SECOND) {
      until.tv_nsec -= NANOSECONDS_A_SECOND;
      ++until.tv_sec;
    }
    if (sem_timedwait(&done, &until) == 0) return;
  }
}

void startcoprocessors(Worker *worker) {
  cpus = processors;
  if (processors < 2) return;
  threads = static_cast<Thread *>(std::calloc(processors, sizeof(Thread)));
  auto *replies = static_cast<Reply *>(std::calloc(processors, sizeof(Reply)));
  if (!threads || !replies) outofstorage();
  workfunction = worker;
  replies[0] = mainreply;
  from_coprocessor = replies;
  // The threads take over the mask.
  sigset_t all, old;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &old);
  coprocessors_running = true;
  to_coprocessors.origin = CLOCK_SEED;
  std::uint32_t started = 1;
  while (started < processors && startthread(started)) ++started;
  pthread_sigmask(SIG_SETMASK, &old, nullptr);
  processors = cpus = started;
  for (std::uint32_t i = 1; i < started; ++i) waitfor(threads[i].mainprocess);
  coprocessors_running = false;
}

void endcoprocessors() {
  if (!threads) return;
  const Point end = makeinstruction(instructions::ENDPROCESS);
  to_coprocessors = {};
  to_coprocessors.instruction = &end;
  coprocessors_running = true;
  for (std::uint32_t i = cpus - 1; i > 0; --i) postslot(i);
  for (std::uint32_t i = 1; i < cpus; ++i) {
    pthread_join(threads[i].handle, nullptr);
    sem_destroy(&threads[i].coprocess);
    sem_destroy(&threads[i].mainprocess);
  }
  coprocessors_running = false;
  std::free(threads);
  threads = nullptr;
  to_coprocessors = {};
}

void freereplies() {
  if (from_coprocessor == &mainreply) return;
  mainreply = from_coprocessor[0];
  std::free(from_coprocessor);
  from_coprocessor = &mainreply;
}

}  // namespace morvik
