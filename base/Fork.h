// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// fork() gives a child process a copy of every object of the library, but none of its threads. The
// child shares the parent's descriptors and its connection to the modem. Therefore a child leaves
// alone what its parent made.
#pragma once

#include "base/Mutex.h"

namespace pavo {

// Remembers the process in which it was constructed.
class ProcessMark {
 public:
  ProcessMark();
  // Returns true in a child process, or a child's child, that was forked after the construction.
  bool isInForkedChild() const;

 private:
  unsigned int generation;
};

// Makes fork() wait until no thread holds mutex, so that the mutex is free in the child. Such a
// mutex must never be destroyed and must be held for a few instructions only. No thread may lock
// one of these mutexes while it holds another.
void keepFreeAcrossFork(Mutex& mutex);

}  // namespace pavo
