// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// pavo-modem: the emulated modem in a process of its own; "pavo-modem ctl", which speaks to its
// control channel; and "pavo-modem replay", which serves a recording of it.
#include "modem/faults/FaultJson.h"
#include "modem/program/Commands.h"
#include "modem/program/RunningServer.h"

#include <CLI/CLI.hpp>

namespace {

using modem::ControlArguments;
using modem::ReplayArguments;
using modem::ServeArguments;
using modem::UsageError;

CLI::Option* addSocketOption(CLI::App& app, std::string& path, const char* what) {
  return app.add_option("--socket", path, what)->envname("OVIX_MODEM");
}

void addReadyOptions(CLI::App& app, int& readyFd, bool& printReady) {
  auto* toFd = app.add_option("--ready-fd", readyFd,
                              "Write the ready line to this descriptor, not to stdout");
  app.add_flag("--print-ready", printReady, "Write the ready line to stdout (the default)")
      ->excludes(toFd);
}

void describeServe(CLI::App& app, ServeArguments& arguments, bool& printReady) {
  addSocketOption(app, arguments.socketPath, "Where to listen");
  addReadyOptions(app, arguments.readyFd, printReady);
  app.add_option("--profiles", arguments.profilesPath, "JSON file of the modem's own profiles");
  app.add_option("--store", arguments.storePath, "JSON file that keeps persistent profiles");
  app.add_option("--capacity", arguments.capacity, "Size of the profile table")
      ->check(CLI::Range(size_t{1}, modem::ProfileTable::capacityMax))
      ->capture_default_str();
  app.add_option("--script", arguments.scriptPath, "JSON file of the faults to begin with");
  app.add_option("--seed", arguments.seed, "Decides the faults' dice in the place of the script's")
      ->check(CLI::Range(uint64_t{0}, modem::seedMax));
  app.add_option("--trace", arguments.tracePath, "Record the traffic in this file");
}

CLI::App* describeReplay(CLI::App& app, ReplayArguments& arguments, bool& printReady) {
  CLI::App* replay = app.add_subcommand("replay", "Serve a recorded trace again.");
  addSocketOption(*replay, arguments.socketPath, "Where to listen")->required();
  addReadyOptions(*replay, arguments.readyFd, printReady);
  replay->add_option("trace", arguments.tracePath, "The file that --trace has written")->required();
  return replay;
}

CLI::App* describeControl(CLI::App& app, ControlArguments& arguments) {
  CLI::App* ctl = app.add_subcommand("ctl", "Send one verb to a running modem's control channel.");
  addSocketOption(*ctl, arguments.socketPath, "The modem's socket")->required();
  ctl->add_option("verb", arguments.verb,
                  "show, create, modify, delete, indicate, power-cycle, power-on, "
                  "fail, script, faults, clear, transcript, clear-transcript, quit")
      ->required();
  ctl->add_option("arguments", arguments.words, "A JSON object, key=value, or @FILE");
  return ctl;
}

}  // namespace

int main(int argc, char** argv) {
  ServeArguments serving;
  ReplayArguments replaying;
  ControlArguments controlling;
  bool printReady = false;
  CLI::App app("An emulated modem that serves packet-data profiles on a Unix socket.",
               "pavo-modem");
  app.set_version_flag("--version", "pavo-modem " PAVO_VERSION, "Print the version");
  describeServe(app, serving, printReady);
  CLI::App* replay = describeReplay(app, replaying, printReady);
  CLI::App* ctl = describeControl(app, controlling);
  try {
    app.parse(argc, argv);
    if (ctl->parsed()) {
      return modem::control(controlling);
    }
    if (replay->parsed()) {
      return modem::replay(replaying);
    }
    if (serving.socketPath.empty()) {
      throw UsageError("--socket or OVIX_MODEM is needed");
    }
    return modem::serve(serving);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? modem::exitDone : modem::exitBadUsage;
  } catch (const UsageError& error) {
    modem::writeLog(error.what());
    return modem::exitBadUsage;
  } catch (const std::exception& error) {
    modem::writeLog(error.what());
    return modem::exitRefused;
  }
}
