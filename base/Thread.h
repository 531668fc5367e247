// Starts the threads of the messaging library: with all signals blocked, so that the host program's
// handlers never run on them, and with a name for debuggers.
#pragma once

#include <functional>
#include <thread>

namespace ovix {

// Throws std::system_error when there is no thread to be had. name has at most 15 characters.
std::thread startThread(const char* name, std::function<void()> body);

}  // namespace ovix
