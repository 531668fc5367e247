#include "policies/LogRecorder.h"

#include <algorithm>
#include <chrono>

#include "session/Session.h"

namespace pavoctl {
namespace {

// The library writes few lines in this time: most follow a hand-over between threads.
constexpr std::chrono::microseconds lookInterval{100};

}  // namespace

LogRecorder::LogRecorder() : last(Session::dump().log), thread([this] { run(); }) {}

LogRecorder::~LogRecorder() { stop(); }

void LogRecorder::stop() {
  isStopped = true;
  if (thread.joinable()) {
    thread.join();
  }
}

std::optional<std::vector<std::string>> LogRecorder::finish() {
  stop();
  look();
  return isComplete ? std::optional(std::move(messages)) : std::nullopt;
}

void LogRecorder::run() {
  while (!isStopped) {
    look();
    std::this_thread::sleep_for(lookInterval);
  }
}

void LogRecorder::look() {
  std::vector<std::string> now = Session::dump().log;
  const std::size_t count = newLines(last, now);
  isComplete = isComplete && (last.empty() || count < now.size());
  for (auto line = now.end() - static_cast<std::ptrdiff_t>(count); line != now.end(); ++line) {
    messages.emplace_back(messageOf(*line));
  }
  last = std::move(now);
}

std::size_t LogRecorder::newLines(const std::vector<std::string>& earlier,
                                  const std::vector<std::string>& later) {
  // The buffer drops old lines and appends new ones: the end of the earlier is the start of the
  // later.
  for (auto start = earlier.begin(); start != earlier.end(); ++start) {
    const auto common = earlier.end() - start;
    if (static_cast<std::size_t>(common) <= later.size() &&
        std::equal(start, earlier.end(), later.begin())) {
      return later.size() - static_cast<std::size_t>(common);
    }
  }
  return later.size();
}

}  // namespace pavoctl
