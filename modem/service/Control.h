// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The verbs of the control channel, with JSON requests and responses. docs/modem.md lists them.
//
// Every verb checks all of its arguments before it does anything. A list that does not fit into one
// frame is split: a reply with "more" is continued by the same verb with "since".
#pragma once

#include "modem/core/Modem.h"
#include "modem/faults/Faults.h"
#include "modem/trace/Transcript.h"

#include <nlohmann/json.hpp>

#include <string_view>
#include <vector>

namespace modem {

// What the verbs need of the service that runs them.
class ControlHost {
 public:
  virtual void deliver(const std::vector<Indication>& indications) = 0;
  // Closes the connections of all clients. Throws Error if the power stays on.
  virtual void powerCycle(const PowerCycle& cycle) = 0;
  // Sends the indications that a fault holds back.
  virtual void releaseHeldBack() = 0;
  virtual bool canQuit() const = 0;
  virtual void quit() = 0;
  virtual ~ControlHost() = default;
};

class Control {
 public:
  Control(Modem& modem, Faults& faults, Transcript& transcript, ControlHost& host);

  // Returns the reply to a request. Errors of the request become error replies.
  nlohmann::json handle(std::string_view request);

 private:
  using Json = nlohmann::json;
  struct Verb;
  static const Verb* findVerb(std::string_view name);

  Json show(const Json& args);
  Json create(const Json& args);
  Json modify(const Json& args);
  Json erase(const Json& args);
  Json indicate(const Json& args);
  Json powerCycle(const Json& args);
  Json powerOn(const Json& args);
  Json fail(const Json& args);
  Json script(const Json& args);
  Json listFaults(const Json& args);
  Json clearFaults(const Json& args);
  Json showTranscript(const Json& args);
  Json clearTranscript(const Json& args);
  Json quit(const Json& args);

  void requireOn() const;

  Modem& modem;
  Faults& faults;
  Transcript& transcript;
  ControlHost& host;
};

}  // namespace modem
