// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Lines on standard error that say why a message of the modem was refused or dropped. They are
// written only when the environment variable OVIX_MODEM_TRACE was set when the library was loaded.
// Any thread may write them.
#pragma once

namespace ovix {

[[gnu::format(printf, 1, 2)]] void writeDebugLine(const char* format, ...);

}  // namespace ovix
