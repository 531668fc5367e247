// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This header belongs to the program's own __android_log_print. It keeps the library's last lines
// and lets the driver wait for one.
#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace pavo::test::model {

// Forgets all lines.
void clearLog();
// Returns the lines since clearLog(), but only the last few hundred.
std::vector<std::string> recentLog();
// Waits until the library has written exactly this line. Returns false when it does not within the
// limit.
bool awaitLine(const std::string& line, std::chrono::milliseconds limit);

}  // namespace pavo::test::model
