// A list that grows: storage of the standard library, which no jump may leave half done and none is taken from.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace morvik {

// Of records that can be copied byte by byte. For static storage, or in the hand of who clears it.
template <typename T>
struct List {
  T *records = nullptr;
  std::size_t count = 0, capacity = 0;

  T &operator[](std::size_t i) { return records[i]; }
  const T &operator[](std::size_t i) const { return records[i]; }
  T *begin() const { return records; }
  T *end() const { return records + count; }
  T &last() { return records[count - 1]; }

  // Reserves capacity for so many more; false where there is no memory.
  bool reserve(std::size_t more) {
    constexpr std::size_t FIRST_CAPACITY = 16;
    if (count + more <= capacity) return true;
    std::size_t larger = capacity == 0 ? FIRST_CAPACITY : 2 * capacity;
    if (larger < count + more) larger = count + more;
    // NOLINTNEXTLINE(bugprone-sizeof-expression): a record may be a pointer
    void *block = std::realloc(static_cast<void *>(records), larger * sizeof(T));
    if (!block) return false;
    records = static_cast<T *>(block);
    capacity = larger;
    return true;
  }
  bool append(const T &record) {
    if (!reserve(1)) return false;
    records[count++] = record;
    return true;
  }
  void clear() {
    std::free(static_cast<void *>(records));
    *this = {};
  }
};

}  // namespace morvik
