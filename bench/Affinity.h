// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sched.h>

namespace pavo::bench {

// Binds the calling thread, and the threads that it starts from now on, to one processor.
inline void pinToCpu(int cpu) {
  cpu_set_t set;
  CPU_ZERO(&set);
  CPU_SET(cpu, &set);
  ::sched_setaffinity(/*pid=*/0, sizeof set, &set);
}

// Lets the calling thread run anywhere again.
inline void unpin() {
  cpu_set_t set;
  CPU_ZERO(&set);
  for (int cpu = 0; cpu < CPU_SETSIZE; ++cpu) {
    CPU_SET(cpu, &set);
  }
  ::sched_setaffinity(/*pid=*/0, sizeof set, &set);
}

}  // namespace pavo::bench
