// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Starts the threads of a library, with all signals blocked: the handlers of the program must not
// run on threads that it does not know of.
#pragma once

#include <functional>
#include <thread>

namespace pavo {

// Throws std::system_error when the system has no thread left. Debuggers show the name, which has
// at most 15 characters.
std::thread startThread(const char* name, std::function<void()> body);

}  // namespace pavo
