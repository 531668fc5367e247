// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "ChildProcess.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace pavo::test {

namespace {

constexpr int cannotExecute = 127;

int memoryFile(const char* name, const std::string& content = {}) {
  const int fd = memfd_create(name, MFD_CLOEXEC);
  if (fd < 0 ||
      pwrite(fd, content.data(), content.size(), 0) != static_cast<ssize_t>(content.size())) {
    throw std::system_error(errno, std::generic_category(), "memfd_create");
  }
  return fd;
}

std::string readAll(int fd) {
  std::string text;
  std::array<char, 4096> part;
  for (;;) {
    const ssize_t count = pread(fd, part.data(), part.size(), static_cast<off_t>(text.size()));
    if (count <= 0) {
      return text;
    }
    text.append(part.data(), static_cast<std::size_t>(count));
  }
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) {
    pointers.push_back(text.data());
  }
  pointers.push_back(nullptr);
  return pointers;
}

std::vector<std::string> mergedEnvironment(const std::vector<std::string>& additions) {
  const auto nameOf = [](const std::string& setting) {
    return setting.substr(0, setting.find('='));
  };
  std::vector<std::string> merged;
  for (char** setting = environ; *setting != nullptr; ++setting) {
    merged.emplace_back(*setting);
  }
  for (const std::string& addition : additions) {
    std::erase_if(merged, [&](const std::string& s) { return nameOf(s) == nameOf(addition); });
    merged.push_back(addition);
  }
  return merged;
}

struct Plan {
  pid_t parent;
  char* const* arguments;
  char* const* environment;
  const char* workingFolder;
  int inputFd;
  int outputFd;
  int errorsFd;
};

// This function runs in the forked child, where only system calls are safe.
[[noreturn]] void execute(const Plan& plan) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  const bool isOrphan = getppid() != plan.parent;
  const bool isReady = !isOrphan && dup2(plan.inputFd, STDIN_FILENO) >= 0 &&
                       dup2(plan.outputFd, STDOUT_FILENO) >= 0 &&
                       dup2(plan.errorsFd, STDERR_FILENO) >= 0 &&
                       (plan.workingFolder == nullptr || chdir(plan.workingFolder) == 0);
  if (isReady) {
    execvpe(plan.arguments[0], plan.arguments, plan.environment);
  }
  _exit(cannotExecute);
}

}  // namespace

ChildProcess::ChildProcess(std::vector<std::string> arguments, ChildProcessOptions options)
    : outputFd(memoryFile("stdout")), errorsFd(memoryFile("stderr")) {
  std::vector<std::string> environment = mergedEnvironment(options.environment);
  const std::vector<char*> argumentPointers = pointersTo(arguments);
  const std::vector<char*> environmentPointers = pointersTo(environment);
  const int inputFd = memoryFile("stdin", options.input);
  const Plan plan{getpid(),
                  argumentPointers.data(),
                  environmentPointers.data(),
                  options.workingFolder.empty() ? nullptr : options.workingFolder.c_str(),
                  inputFd,
                  outputFd,
                  errorsFd};
  processId = fork();
  if (processId == 0) {
    execute(plan);
  }
  const int error = errno;
  close(inputFd);
  if (processId < 0) {
    throw std::system_error(error, std::generic_category(), "fork");
  }
}

ChildProcess::~ChildProcess() {
  sendSignal(SIGKILL);
  reap(/*flags=*/0);
  close(outputFd);
  close(errorsFd);
}

void ChildProcess::reap(int flags) {
  if (exit) {
    return;
  }
  int status = 0;
  pid_t reaped = 0;
  do {
    reaped = waitpid(processId, &status, flags);
  } while (reaped < 0 && errno == EINTR);
  if (reaped == processId) {
    exit = WIFSIGNALED(status) ? Exit{.code = -1, .signal = WTERMSIG(status)}
                               : Exit{.code = WEXITSTATUS(status), .signal = 0};
  }
}

bool ChildProcess::isRunning() {
  reap(WNOHANG);
  return !exit;
}

void ChildProcess::sendSignal(int signal) {
  if (isRunning()) {
    kill(processId, signal);
  }
}

std::optional<ChildProcess::Exit> ChildProcess::waitForExit(std::chrono::milliseconds limit) {
  waitUntil([this] { return !isRunning(); }, limit);
  return exit;
}

std::string ChildProcess::output() const { return readAll(outputFd); }

std::string ChildProcess::errors() const { return readAll(errorsFd); }

bool ChildProcess::waitForOutput(const std::string& text, std::chrono::milliseconds limit) {
  const auto contains = [&] { return output().find(text) != std::string::npos; };
  waitUntil([&] { return contains() || !isRunning(); }, limit);
  return contains();
}

}  // namespace pavo::test
