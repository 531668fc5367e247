// fork() gives a child a copy of every object of the library and none of its threads, but it shares
// the parent's descriptors and connection to the modem. A child therefore leaves alone what its
// parent made.
#pragma once

#include "base/Mutex.h"

namespace pavo {

// Remembers the process in which it was constructed.
class ProcessMark {
 public:
  ProcessMark();
  // True in a child, or a child's child, that was forked after the construction.
  bool isInForkedChild() const;

 private:
  unsigned int generation;
};

// Has fork() wait until no thread holds mutex, so that the child finds it free. For mutexes that
// are never destroyed and that are held for a few instructions, none of them under another.
void keepFreeAcrossFork(Mutex& mutex);

}  // namespace pavo
