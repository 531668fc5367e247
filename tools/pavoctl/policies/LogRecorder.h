// Records what the library logs, beyond what its own buffer of 200 lines holds.
#pragma once

#include <atomic>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace pavoctl {

// From construction on. A thread looks at the log again and again, because a policy that finds many
// profiles writes more lines than the buffer holds. On a busy machine it may still come too late.
class LogRecorder {
 public:
  LogRecorder();
  LogRecorder(const LogRecorder&) = delete;
  LogRecorder& operator=(const LogRecorder&) = delete;
  ~LogRecorder();

  // Ends the recording; the messages, oldest first. Nothing when lines were lost.
  std::optional<std::vector<std::string>> finish();

  // How many of the later lines are new, that is, do not overlap with the earlier ones. All of them
  // when the two have nothing in common.
  static std::size_t newLines(const std::vector<std::string>& earlier,
                              const std::vector<std::string>& later);

 private:
  void run();
  void look();
  void stop();

  std::vector<std::string> last;  // The log as last seen.
  std::vector<std::string> messages;
  bool isComplete = true;
  std::atomic<bool> isStopped = false;
  std::thread thread;
};

}  // namespace pavoctl
