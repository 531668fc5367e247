// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "TerminalProcess.h"

#include "Deadline.h"

#include <fcntl.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <stdexcept>
#include <system_error>

namespace pavo::test {

TerminalProcess::TerminalProcess(std::vector<std::string> arguments,
                                 const std::vector<std::string>& environment) {
  // env(1) sets the variables, so the forked child makes system calls only.
  std::vector<std::string> command{"env", "TERM=xterm"};
  command.insert(command.end(), environment.begin(), environment.end());
  command.insert(command.end(), arguments.begin(), arguments.end());
  std::vector<char*> pointers;
  for (std::string& text : command) {
    pointers.push_back(text.data());
  }
  pointers.push_back(nullptr);
  winsize size{};
  size.ws_row = 50;
  size.ws_col = 200;
  processId = forkpty(&fd, /*name=*/nullptr, /*termp=*/nullptr, &size);
  if (processId == 0) {
    execvp(pointers[0], pointers.data());
    _exit(127);
  }
  if (processId < 0) {
    throw std::system_error(errno, std::generic_category(), "forkpty");
  }
  fcntl(fd, F_SETFD, FD_CLOEXEC);
  fcntl(fd, F_SETFL, O_NONBLOCK);
}

TerminalProcess::~TerminalProcess() {
  if (!exit) {
    kill(processId, SIGKILL);
    waitpid(processId, nullptr, /*options=*/0);
  }
  close(fd);
}

void TerminalProcess::type(const std::string& keys) {
  if (write(fd, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size())) {
    throw std::runtime_error("the terminal does not take what is typed");
  }
}

bool TerminalProcess::waitForOutput(const std::string& text) {
  std::size_t at = std::string::npos;
  waitUntil([&] { return (at = output().find(text, found)) != std::string::npos; });
  if (at == std::string::npos) {
    return false;
  }
  found = at + text.size();
  return true;
}

const std::string& TerminalProcess::output() {
  readAll();
  return written;
}

std::optional<ChildProcess::Exit> TerminalProcess::waitForExit() {
  waitUntil([&] {
    // The program would wait for ever if its output were not read.
    readAll();
    int status = 0;
    if (!exit && waitpid(processId, &status, WNOHANG) == processId) {
      exit = WIFSIGNALED(status) ? ChildProcess::Exit{.code = -1, .signal = WTERMSIG(status)}
                                 : ChildProcess::Exit{.code = WEXITSTATUS(status), .signal = 0};
      readAll();
    }
    return exit.has_value();
  });
  return exit;
}

void TerminalProcess::readAll() {
  std::array<char, 4096> part;
  ssize_t count = 0;
  while ((count = read(fd, part.data(), part.size())) > 0) {
    written.append(part.data(), static_cast<std::size_t>(count));
  }
}

}  // namespace pavo::test
