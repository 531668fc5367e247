// pavo-modem: the emulated modem in a process of its own, and "pavo-modem ctl", which speaks to its
// control channel.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "ControlClient.h"
#include "LocalSocket.h"
#include "ProfileFile.h"
#include "ProfileJson.h"
#include "Server.h"

namespace {

using nlohmann::json;

constexpr int exitDone = 0;
constexpr int exitRefused = 1;
constexpr int exitBadUsage = 2;

struct Arguments {
  std::string socketPath;
  std::string profilesPath;
  std::string storePath;
  size_t capacity = modem::ProfileTable::capacityDefault;
  int readyFd = STDOUT_FILENO;
  bool printReady = false;
  std::string verb;
  std::vector<std::string> verbArguments;
};

class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// For the signal handler; set while a server runs.
modem::Server* runningServer = nullptr;

void onTerminate(int) { runningServer->stop(); }

void handleSignals(modem::Server& server) {
  runningServer = &server;
  struct sigaction action = {};
  action.sa_handler = onTerminate;
  sigaction(SIGTERM, &action, nullptr);
  sigaction(SIGINT, &action, nullptr);
  // Whoever reads the ready line may be gone when it is written.
  signal(SIGPIPE, SIG_IGN);
}

void tellReady(int fd, const std::string& socketPath) {
  const std::string line = "pavo-modem: listening on " + socketPath + "\n";
  if (write(fd, line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
    std::cerr << "pavo-modem: cannot write to descriptor " << fd << ": " << std::strerror(errno)
              << std::endl;
  }
}

int serve(const Arguments& arguments) {
  modem::Server::Options options;
  options.modem.capacity = arguments.capacity;
  if (!arguments.profilesPath.empty()) {
    auto profiles = modem::readProfileFile(arguments.profilesPath, arguments.capacity);
    if (!profiles) {
      throw modem::FileError(arguments.profilesPath + ": " + std::strerror(ENOENT));
    }
    options.modem.ownProfiles = std::move(*profiles);
  }
  // The socket first: a modem that is refused it must not touch the store of the one that has it.
  const modem::ListeningSocket listener(arguments.socketPath);
  if (!arguments.storePath.empty()) {
    options.modem.store = std::make_unique<modem::Store>(arguments.storePath, arguments.capacity);
  }
  options.listenFd = listener.get();
  options.canQuit = true;
  options.complain = [](const std::string& line) {
    std::cerr << "pavo-modem: " << line << std::endl;
  };
  modem::Server server(std::move(options));
  handleSignals(server);
  tellReady(arguments.readyFd, arguments.socketPath);
  server.run();
  return exitDone;
}

// A value is JSON when it reads as JSON, otherwise a text: apn=ims, class=3, clat=true.
json valueFromText(const std::string& text) {
  json value = json::parse(text, /*cb=*/nullptr, /*allow_exceptions=*/false);
  return value.is_discarded() ? json(text) : value;
}

json verbArgumentsToJson(const std::vector<std::string>& words) {
  json args = json::object();
  for (const std::string& word : words) {
    if (word.starts_with('{')) {
      const json object = json::parse(word, /*cb=*/nullptr, /*allow_exceptions=*/false);
      if (!object.is_object()) {
        throw UsageError("not a JSON object: " + word);
      }
      args.update(object);
      continue;
    }
    const size_t equals = word.find('=');
    if (equals == std::string::npos || equals == 0) {
      throw UsageError("neither a JSON object nor key=value: " + word);
    }
    args[word.substr(0, equals)] = valueFromText(word.substr(equals + 1));
  }
  return args;
}

int control(const Arguments& arguments) {
  const json args = verbArgumentsToJson(arguments.verbArguments);
  modem::ControlClient client(arguments.socketPath);
  const json reply = client.call(arguments.verb, args);
  std::cout << reply.dump(/*indent=*/2) << std::endl;
  return reply["ok"] == true ? exitDone : exitRefused;
}

void addSocketOption(CLI::App& app, Arguments& arguments) {
  app.add_option("--socket", arguments.socketPath, "The modem's socket")
      ->envname("OVIX_MODEM")
      ->required();
}

}  // namespace

int main(int argc, char** argv) {
  Arguments arguments;
  CLI::App app("An emulated modem that serves packet-data profiles on a Unix socket.",
               "pavo-modem");
  CLI::App* ctl = app.add_subcommand("ctl", "Send one verb to a running modem's control channel.");
  addSocketOption(*ctl, arguments);
  ctl->add_option("verb", arguments.verb,
                  "show, create, modify, delete, indicate, power-cycle, "
                  "fail, faults, clear, transcript, clear-transcript, quit")
      ->required();
  ctl->add_option("arguments", arguments.verbArguments, "A JSON object or key=value");

  app.add_option("--socket", arguments.socketPath, "Where to listen")->envname("OVIX_MODEM");
  app.add_option("--profiles", arguments.profilesPath, "JSON file of the modem's own profiles");
  app.add_option("--store", arguments.storePath, "JSON file that keeps persistent profiles");
  app.add_option("--capacity", arguments.capacity, "Size of the profile table")
      ->check(CLI::Range(size_t{1}, modem::ProfileTable::capacityMax))
      ->capture_default_str();
  auto* readyFd = app.add_option("--ready-fd", arguments.readyFd,
                                 "Write the ready line to this descriptor, not to stdout");
  app.add_flag("--print-ready", arguments.printReady,
               "Write the ready line to stdout (the default)")
      ->excludes(readyFd);

  try {
    app.parse(argc, argv);
    if (!ctl->parsed() && arguments.socketPath.empty()) {
      throw UsageError("--socket or OVIX_MODEM is needed");
    }
    return ctl->parsed() ? control(arguments) : serve(arguments);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? exitDone : exitBadUsage;
  } catch (const UsageError& error) {
    std::cerr << "pavo-modem: " << error.what() << std::endl;
    return exitBadUsage;
  } catch (const std::exception& error) {
    std::cerr << "pavo-modem: " << error.what() << std::endl;
    return exitRefused;
  }
}
