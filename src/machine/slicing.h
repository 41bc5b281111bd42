// What the pool's threads run.
#pragma once

#include "coprocessor/coprocessor.h"

Worker workslice;
