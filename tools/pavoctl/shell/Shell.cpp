// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "shell/Shell.h"

#include "Context.h"
#include "manual/Description.h"
#include "profiles/Profile.h"
#include "session/Patience.h"
#include "shell/Completion.h"
#include "shell/KeyRing.h"
#include "shell/LineReader.h"
#include "shell/Words.h"

#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <array>

namespace pavoctl {
namespace {

constexpr const char* prompt = "pavoctl> ";

class Shell {
 public:
  Shell(const CommandLine& commandLine, Context& surroundings)
      : start(commandLine),
        context(surroundings),
        stop(context.stopSignal()),
        keys(start.session.timeout),
        isInteractive(::isatty(STDIN_FILENO) == 1 && ::isatty(STDERR_FILENO) == 1) {
    context.keys = &keys;
    Patience::outlast(stop);
  }

  ExitStatus run() {
    const auto reader = isInteractive ? editedLines(readerSurroundings(), prompt)
                                      : plainLines(readerSurroundings());
    while (!context.isShellOver) {
      const auto text = reader->next();
      if (!text) {
        break;
      }
      ++lineNumber;
      runLine(*text);
      tellExpired([] {}, [] {});
      // Ctrl-C was meant for the command, so only another signal ends the shell.
      if (const int signal = stop.take(); signal != 0 && signal != SIGINT) {
        break;
      }
    }
    releaseAll();
    return isInteractive ? exitDone : status;
  }

 private:
  LineReader::Surroundings readerSurroundings() {
    return {[this](const auto& before, const auto& after) { return waitForInput(before, after); },
            [this](const std::string& line) { return completions(description, wordsSoFar(line)); }};
  }

  LineReader::Waited waitForInput(const std::function<void()>& before,
                                  const std::function<void()>& after) {
    while (true) {
      std::array<pollfd, 3> fds{pollfd{STDIN_FILENO, POLLIN, 0}, pollfd{stop.fd(), POLLIN, 0},
                                pollfd{keys.fd(), POLLIN, 0}};
      if (::poll(fds.data(), fds.size(), /*timeout=*/-1) < 0) {
        continue;
      }
      if (fds[2].revents != 0) {
        tellExpired(before, after);
      }
      if (fds[1].revents != 0) {
        return stop.take() == SIGINT ? LineReader::Waited::interrupt : LineReader::Waited::end;
      }
      if (fds[0].revents != 0) {
        return LineReader::Waited::input;
      }
    }
  }

  void tellExpired(const std::function<void()>& before, const std::function<void()>& after) {
    const auto expired = keys.takeExpired();
    if (expired.empty()) {
      return;
    }
    before();
    for (const auto& [number, profileId] : expired) {
      const std::string text = "key " + std::to_string(number) + ": profile " +
                               std::to_string(profileId) + " has gone or changed";
      context.output.line(
          start.isJson
              ? dumpJson(Json{{"event", "expired"}, {"key", number}, {"profile", profileId}})
              : text);
    }
    after();
  }

  void runLine(const std::string& text) {
    try {
      const auto words = wordsOf(text);
      if (!words.empty()) {
        runWords(words);
      }
    } catch (const OutputFailure&) {
      // The reader of the output has gone, so the shell ends.
      throw;
    } catch (const UsageError& error) {
      fail(exitUsage, error.what());
    } catch (const std::exception& error) {
      fail(exitFailed, error.what());
    }
  }

  void runWords(const std::vector<std::string>& words) {
    const CommandLine line = CommandLine::parseInShell(words, start);
    if (!line.help.empty()) {
      context.output.write(line.help);
      return;
    }
    status = std::max(status, line.action(line, context));
  }

  void fail(ExitStatus commandStatus, const std::string& text) {
    status = std::max(status, commandStatus);
    complain(isInteractive ? text : "line " + std::to_string(lineNumber) + ": " + text);
  }

  void releaseAll() {
    if (!keys.numbers().empty()) {
      runLine("release all");
    }
  }

  const CommandLine& start;
  Context& context;
  StopSignal& stop;
  KeyRing keys;
  const bool isInteractive;
  const Description description = CommandLine::describe().shell;
  ExitStatus status = exitDone;
  unsigned long lineNumber = 0;
};

}  // namespace

ExitStatus runShell(const CommandLine& line, Context& context) {
  return Shell(line, context).run();
}

}  // namespace pavoctl
