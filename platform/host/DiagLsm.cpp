// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The diagnostic channel of a host: a line per message, appended to the file that the environment
// variable PAVO_DIAG_FILE names, or to standard error when it names none. Messages hold passwords,
// so the file has to be a PrivateFile. When it cannot be used, one line on standard error says why,
// and the messages follow it there. Symbolic links such as /dev/stderr are such files.
//
// Any thread may call. The channel is open from the first Diag_LSM_Init to the last
// Diag_LSM_DeInit, because a writer may be made before the one that it replaces is destroyed. The
// thread that opens the channel reads the variable. Messages outside of that time are dropped; a
// message longer than messageCharsMax is cut.
#include "base/Fork.h"
#include "base/Mutex.h"
#include "base/PrivateFile.h"
#include "diag_lsm.h"

#include <unistd.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <type_traits>

namespace {

constexpr size_t messageCharsMax = 2047;

// The channel is never destroyed, because writers live to the end of the process.
struct Channel {
  pavo::Mutex mutex;
  int users GUARDED_BY(mutex) = 0;
  int fd GUARDED_BY(mutex) = -1;
};
static_assert(std::is_trivially_destructible_v<Channel>);
constinit Channel channel;

// A forked child that logs finds the channel's mutex free. Called when the channel opens.
void keepChannelFreeAcrossFork() {
  [[maybe_unused]] static const bool isKept = [] {
    pavo::keepFreeAcrossFork(channel.mutex);
    return true;
  }();
}

int openOutput() {
  const char* path = std::getenv("PAVO_DIAG_FILE");
  if (path == nullptr || *path == '\0') {
    return STDERR_FILENO;
  }
  pavo::PrivateFile file = pavo::openPrivateFile(path);
  if (file.fd.isOpen()) {
    return file.fd.release();
  }
  const std::string line =
      std::string("diag_lsm: ") + path + ": " + file.problem + "; its lines go to standard error\n";
  [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, line.data(), line.size());
  return STDERR_FILENO;
}

}  // namespace

int Diag_LSM_Init(unsigned char* /*env*/) {
  keepChannelFreeAcrossFork();
  const pavo::MutexLock lock(channel.mutex);
  if (channel.users++ == 0) {
    channel.fd = openOutput();
  }
  return 1;
}

int Diag_LSM_DeInit(void) {
  const pavo::MutexLock lock(channel.mutex);
  if (channel.users == 0) {
    return 0;
  }
  if (--channel.users == 0 && channel.fd != STDERR_FILENO) {
    ::close(channel.fd);
  }
  return 1;
}

void msg_sprintf(const diag_msg_descriptor* descriptor, ...) {
  if (descriptor == nullptr || descriptor->format == nullptr) {
    return;
  }
  char line[messageCharsMax + 1];
  std::va_list arguments;
  va_start(arguments, descriptor);
  const int wanted = std::vsnprintf(line, sizeof line, descriptor->format, arguments);
  va_end(arguments);
  size_t length = std::min(wanted < 0 ? 0 : static_cast<size_t>(wanted), messageCharsMax);
  line[length++] = '\n';  // In place of the terminator.
  const pavo::MutexLock lock(channel.mutex);
  if (channel.users > 0) {
    // A failure cannot be reported.
    [[maybe_unused]] const ssize_t written = ::write(channel.fd, line, length);
  }
}
