#include "inspection/FreshLibrary.h"

#include <chrono>
#include <thread>

#include "Errors.h"

namespace pavoctl {
namespace {

constexpr std::chrono::milliseconds pollInterval{20};

}  // namespace

FreshLibrary::FreshLibrary(const Session::Options& sessionOptions) : options(sessionOptions) {
  const Patience patience(options.timeout, lateText());
  manager.init(options.subscription, options.useAndroidLog);
}

Snapshot FreshLibrary::read() {
  const Patience patience(options.timeout, lateText());
  const auto deadline = std::chrono::steady_clock::now() + options.timeout;
  while (true) {
    manager.refresh(pavo::PDC_REFRESH_COMPLETED);
    // Both libraries write one log.
    const Dump log = Session::dump();
    const auto messages = log.messagesSince("Manager::refresh > ");
    if (!messages || contains(*messages, message::listRead)) {
      return Snapshot::takeOf(manager);
    }
    if (std::chrono::steady_clock::now() >= deadline) {
      throw NoAnswer(lateText());
    }
    std::this_thread::sleep_for(pollInterval);
  }
}

std::string FreshLibrary::lateText() const {
  return "the modem could not be read afresh: " + Session::noAnswerText(options.timeout);
}

}  // namespace pavoctl
