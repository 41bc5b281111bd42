// The instruction set as the table has it, for tests that go through all of it.
#pragma once

#include <string>
#include <vector>

#include "spaces/instructions.h"

namespace rows {

enum class Answer { WORKS, NOT_IMPLEMENTED, RESTRICTED, NOTHING };

struct Row {
  int number;
  std::string name;
  int argumentclass;
  Answer answer;  // what becomes of it when it passes its class check
};

inline Answer answerof(const std::string &handler) {
  if (handler == "NOTIMPLEMENTED") return Answer::NOT_IMPLEMENTED;
  if (handler == "RESTRICTED") return Answer::RESTRICTED;
  return handler == "NOTHING" ? Answer::NOTHING : Answer::WORKS;
}

inline const std::vector<Row> ROWS = {
#define INSTRUCTION(number, name, argumentclass, key, handler, effect, meaning) \
  {number, #name, morvik::classes::argumentclass, answerof(#handler)},
#include "tables/instructions.def"
#undef INSTRUCTION
};

}  // namespace rows
