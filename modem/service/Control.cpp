// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/service/Control.h"

#include "modem/core/ProfileJson.h"
#include "modem/core/Refusal.h"

#include <algorithm>
#include <array>
#include <functional>
#include <limits>
#include <string>
#include <utility>

namespace modem {

using nlohmann::json;

namespace {

// The bytes that the elements of a list may take in one reply. The rest of the reply is far smaller
// than the rest of the frame.
constexpr size_t listBytesMax = 32 << 10;
static_assert(Transcript::entryJsonBytesMax <= listBytesMax);
static_assert(2 * listBytesMax <= wire::framePayloadBytesMax);

uint64_t requiredNumber(const json& args, const std::string& name, uint64_t max) {
  if (!args.contains(name)) {
    throw Error(name + " is missing");
  }
  return numberFromJson(args[name], max, name);
}

uint64_t sinceOf(const json& args) {
  return args.contains("since")
             ? numberFromJson(args["since"], std::numeric_limits<int64_t>::max(), "since")
             : 0;
}

uint8_t indexOf(const json& args) {
  return static_cast<uint8_t>(requiredNumber(args, "index", std::numeric_limits<uint8_t>::max()));
}

// Collects elements until the reply is full and then sets "more" to the next element's position.
class PagedList {
 public:
  PagedList(json& wholeReply, std::string listName) : reply(wholeReply), name(std::move(listName)) {
    reply[name] = json::array();
  }

  // Returns false if the element at this position has to wait for the next reply.
  bool add(uint64_t position, json element) {
    bytes += dumpLine(element).size() + 1;
    if (bytes > listBytesMax && !reply[name].empty()) {
      reply["more"] = {{"list", name}, {"since", position}};
      return false;
    }
    reply[name].push_back(std::move(element));
    return true;
  }

 private:
  json& reply;
  const std::string name;
  size_t bytes = 0;
};

}  // namespace

struct Control::Verb {
  std::string_view name;
  json (Control::*run)(const json& args);
  std::vector<std::string_view> arguments;
  bool takesSettings = false;
  bool judgesArgumentsItself = false;
};

const Control::Verb* Control::findVerb(std::string_view name) {
  // The verbs are never destroyed, because an embedded modem's thread may use them during exit.
  static const auto& verbs = *new std::vector<Verb>{
      {"show", &Control::show, {"since"}},
      {"create", &Control::create, {}, /*takesSettings=*/true},
      {"modify", &Control::modify, {"index"}, /*takesSettings=*/true},
      {"delete", &Control::erase, {"index"}},
      {"indicate", &Control::indicate, {"event", "index"}},
      {"power-cycle", &Control::powerCycle, {"offMs", "onMs", "times"}},
      {"power-on", &Control::powerOn, {}},
      {"fail", &Control::fail, {}, /*takesSettings=*/false, /*judgesArgumentsItself=*/true},
      {"script", &Control::script, {}, /*takesSettings=*/false, /*judgesArgumentsItself=*/true},
      {"faults", &Control::listFaults, {"since"}},
      {"clear", &Control::clearFaults, {}},
      {"transcript", &Control::showTranscript, {"since"}},
      {"clear-transcript", &Control::clearTranscript, {}},
      {"quit", &Control::quit, {}},
  };
  const auto found = std::ranges::find(verbs, name, &Verb::name);
  return found == verbs.end() ? nullptr : &*found;
}

Control::Control(Modem& theModem, Faults& theFaults, Transcript& theTranscript,
                 ControlHost& theHost)
    : modem(theModem), faults(theFaults), transcript(theTranscript), host(theHost) {}

json Control::handle(std::string_view request) {
  try {
    json args = json::parse(request);
    if (!args.is_object() || !args.contains("verb") || !args["verb"].is_string()) {
      throw Error("a request has to be an object with the text \"verb\"");
    }
    const std::string name = args["verb"];
    args.erase("verb");
    const Verb* verb = findVerb(name);
    if (verb == nullptr) {
      throw Error("unknown verb \"" + name + "\"");
    }
    for (const auto& [argument, value] : args.items()) {
      const bool isKnown = verb->judgesArgumentsItself ||
                           (verb->takesSettings && isSettingName(argument)) ||
                           std::ranges::count(verb->arguments, std::string_view(argument)) > 0;
      if (!isKnown) {
        throw Error("unknown argument \"" + argument + "\"");
      }
    }
    json reply = std::invoke(verb->run, *this, args);
    reply["ok"] = true;
    return reply;
  } catch (const Refusal& refusal) {
    return {{"ok", false}, {"error", refusal.what()}, {"code", static_cast<int>(refusal.code)}};
  } catch (const std::exception& error) {
    return {{"ok", false}, {"error", error.what()}};
  }
}

json Control::show(const json& args) {
  const uint64_t since = sinceOf(args);
  json clientList = modem.clientsToJson();
  const auto registered = std::ranges::count_if(
      clientList, [](const json& client) { return client["registered"] == true; });
  json reply = {{"on", modem.isOn()},
                {"boot", modem.bootNumber()},
                {"capacity", modem.profiles().capacity()},
                {"clients", clientList.size()},
                {"registered", registered},
                {"clientList", std::move(clientList)}};
  PagedList list(reply, "profiles");
  for (const auto& [index, profile] : modem.profiles().all()) {
    json element = toJson(profile);
    element["index"] = index;
    if (index >= since && !list.add(index, std::move(element))) {
      break;
    }
  }
  return reply;
}

json Control::create(const json& args) {
  requireOn();
  const Modem::Created created = modem.create(profileFromJson(args));
  host.deliver(created.indications);
  return {{"index", created.index}};
}

json Control::modify(const json& args) {
  requireOn();
  if (args.contains("persistent")) {
    throw Error("persistent is fixed when a profile is created");
  }
  host.deliver(modem.modify(indexOf(args), profileFromJson(args)));
  return json::object();
}

json Control::erase(const json& args) {
  requireOn();
  host.deliver(modem.erase(indexOf(args)));
  return json::object();
}

json Control::indicate(const json& args) {
  requireOn();
  const uint64_t event = requiredNumber(args, "event", std::numeric_limits<uint32_t>::max());
  const auto indications =
      modem.raise({.event = static_cast<uint32_t>(event), .index = indexOf(args)});
  host.deliver(indications);
  return {{"told", indications.size()}};
}

json Control::powerCycle(const json& args) {
  requireOn();
  host.powerCycle(powerCycleFromJson(args));
  return {{"on", modem.isOn()}, {"boot", modem.bootNumber()}};
}

json Control::powerOn(const json&) {
  if (!modem.isOn()) {
    modem.powerUp();
  }
  return {{"on", modem.isOn()}, {"boot", modem.bootNumber()}};
}

json Control::fail(const json& args) {
  faults.add(faultFromJson(args));
  return json::object();
}

json Control::script(const json& args) {
  faults.replace(faultScriptFromJson(args));
  return json::object();
}

json Control::listFaults(const json& args) {
  json reply = json::object();
  PagedList list(reply, "faults");
  const json pending = faults.toJson();
  for (uint64_t at = sinceOf(args); at < pending.size(); ++at) {
    if (!list.add(at, pending[at])) {
      break;
    }
  }
  return reply;
}

json Control::clearFaults(const json&) {
  faults.clear();
  host.releaseHeldBack();
  return json::object();
}

json Control::showTranscript(const json& args) {
  json reply = {{"dropped", transcript.dropped()}, {"next", transcript.endSequence()}};
  PagedList list(reply, "entries");
  for (uint64_t sequence = std::max(sinceOf(args), transcript.firstSequence());
       sequence < transcript.endSequence(); ++sequence) {
    if (!list.add(sequence, transcript.entryToJson(sequence))) {
      break;
    }
  }
  return reply;
}

json Control::clearTranscript(const json&) {
  transcript.clear();
  return {{"next", transcript.endSequence()}};
}

json Control::quit(const json&) {
  if (!host.canQuit()) {
    throw Error("an embedded modem lives as long as its process");
  }
  host.quit();
  return json::object();
}

void Control::requireOn() const {
  if (!modem.isOn()) {
    throw Refusal(ErrorCode::NotReady, "the power is off");
  }
}

}  // namespace modem
