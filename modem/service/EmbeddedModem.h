// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The modem inside a process, for programs that run without a modem process.
#pragma once

namespace modem {

// Returns one end of a new connection to the process's own modem, which the caller owns, or -1 and
// errno. The modem starts on first use, with an empty table of the default capacity and no store,
// on a thread of its own that ends with the process. It also serves control connections. A forked
// child does not have it.
int connectEmbedded();

}  // namespace modem
