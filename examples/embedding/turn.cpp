// Morvik from C++: quaternions turn points, a function is broken off by another thread.
//
//     c++ -std=c++17 turn.cpp $(pkg-config --cflags --libs morvik) -pthread -o turn && ./turn
#include <morvik.h>

#include <chrono>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

void must(morvik_status status) {
  if (status != MORVIK_OK) throw std::runtime_error(morvik_status_text(status));
}

class Session {
 public:
  Session() { must(morvik_open(nullptr)); }
  ~Session() { morvik_close(); }
  Session(const Session &) = delete;
  Session &operator=(const Session &) = delete;

  morvik_status run(const std::string &text) { return morvik_run(text.data(), text.size(), "turn"); }
  void push(const std::vector<double> &numbers, std::size_t parts) {
    const std::size_t count = numbers.size() / parts;
    must(morvik_push_parts(parts, numbers.data(), 1, &count));
  }
  std::vector<double> pop(std::size_t parts) {
    morvik_value value;
    must(morvik_look(0, &value));
    std::vector<double> numbers(value.size * parts);
    must(morvik_parts(&value, parts, 0, value.size, numbers.data()));
    must(morvik_drop(1));
    return numbers;
  }
};

}  // namespace

int main() {
  Session session;
  // Half a turn about the third axis is the quaternion k; a point p goes to k p / k.
  session.push({0, 1, 2, 3, 0, -1, 0, 5}, 4);
  must(session.run("@points SET 0i0j0k1 points * 0i0j0k1 / ."));
  const std::vector<double> turned = session.pop(4);
  for (std::size_t i = 0; i < turned.size(); i += 4)
    std::printf("%g %g %g\n", turned[i + 1] + 0.0, turned[i + 2] + 0.0, turned[i + 3] + 0.0);

  std::thread impatient([] {
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    morvik_interrupt();
  });
  const morvik_status status = session.run("1000 SLEEP .");
  impatient.join();
  std::printf("%s\n", morvik_status_text(status));
  return 0;
}
