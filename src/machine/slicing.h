// What the pool's threads run.
#pragma once

#include "coprocessor/threads.h"

namespace morvik {

Worker workslice;

}  // namespace morvik
