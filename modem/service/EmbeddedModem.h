// The modem inside a process that has no other: for programs that run without a modem process.
#pragma once

namespace modem {

// One end of a new connection to the process's own modem, for the caller to own; -1 and errno when
// there is none to be had. The modem starts on first use, with an empty table of the usual capacity
// and no store, on a thread of its own that ends with the process. It serves control connections
// too. It does not follow its process into a forked child.
int connectEmbedded();

}  // namespace modem
