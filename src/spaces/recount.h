// Recounts every reference word from those who hold values, by the tags of the records alone. For the checking build,
// and for tests.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "spaces/point.h"

namespace morvik {

class Recount {
 public:
  // One who holds a Point, a block that owns nothing, a block of one Point. Null is nothing, and so is a permanent
  // block. The one of a block tells whether this is its first owner.
  void hold(const Point &point);
  bool hold(const void *block);
  void holdbox(const Point *box);

  // After all of these, how many blocks that are.
  std::int64_t reached();
  // And what is wrong, empty for nothing: counts that are not those of the owners, flag words that
  // break a promise, and more or fewer blocks alive than were met.
  std::string faults(std::int64_t alive);

 private:
  // What the first owner of a data block said of it.
  struct Records {
    std::uint32_t count;
    bool own;
  };

  void finish();
  void holdspace(const Point &point);
  void holdsymbolic(const Point &point);
  bool holdrecords(const Point &space);
  void holdrecord(const Element &e);
  void walkprogramme(const Point *header);
  void complain(const Point &space, const char *what);

  std::unordered_map<const void *, std::int64_t> owners_;
  std::unordered_map<const void *, Records> records_;
  std::vector<const Point *> boxes_, programmes_;  // met, and not looked into yet
  std::string complaints_;
};

}  // namespace morvik
