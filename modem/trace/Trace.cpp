// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/trace/Trace.h"

#include "base/PrivateFile.h"
#include "modem/common/Json.h"
#include "modem/core/Messages.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <optional>
#include <sstream>
#include <string_view>
#include <utility>

namespace modem {

using nlohmann::json;
using std::chrono::microseconds;
using std::chrono::steady_clock;

namespace {

constexpr std::string_view firstLine = "# pavo-modem trace 1";
constexpr std::string_view columns =
    "# seconds, client, from (>) or to (<) it, kind, message, transaction, what it says, bytes";
constexpr std::string_view endKind = "end";
constexpr std::string_view none = "-";
constexpr int64_t microsPerSecond = 1'000'000;

constexpr std::array<FrameKind, 5> tracedKinds = {FrameKind::Hello, FrameKind::Request,
                                                  FrameKind::Response, FrameKind::Indication,
                                                  FrameKind::UncheckedResponse};

std::string responseMeaning(const json& said) {
  const json& result = said.value("result", json());
  if (!result.is_object()) {
    return "no result";
  }
  if (result["result"] == resultSuccess) {
    return "success";
  }
  const auto error = static_cast<ErrorCode>(result["error"].get<int32_t>());
  return "failure " + result["result"].dump() + ", error " + result["error"].dump() + " " +
         std::string(errorName(error));
}

std::string textOf(const TraceEvent& event, const std::string& meaning) {
  const Frame& frame = event.frame;
  const std::string kind(event.isEnd ? endKind : kindName(frame.kind));
  const bool isNamed = !event.isEnd && frame.kind != FrameKind::Hello;
  const std::string message = isNamed ? messageName(MessageId{frame.messageId}) : std::string(none);
  std::array<char, 128> head;
  std::snprintf(head.data(), head.size(), "%4lld.%06lld %3u %c %-10s %-19s %4u ",
                static_cast<long long>(event.time.count() / microsPerSecond),
                static_cast<long long>(event.time.count() % microsPerSecond), event.client,
                event.direction == Direction::In ? '>' : '<', kind.c_str(), message.c_str(),
                frame.transaction);
  return head.data() + meaning + " " +
         (frame.payload.empty() ? std::string(none) : hexOf(frame.payload));
}

template <typename Number>
Number numberFromText(std::string_view text, const char* what, int base = 10) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
  if (error != std::errc{} || end != text.data() + text.size()) {
    throw Error("the " + std::string(what) + " \"" + std::string(text) + "\" is no number");
  }
  return number;
}

microseconds timeFromText(const std::string& text) {
  const size_t point = text.find('.');
  const std::string micros = point == std::string::npos ? "" : text.substr(point + 1);
  if (micros.size() != 6) {
    throw Error("the time \"" + text + "\" has no six decimals");
  }
  return microseconds(numberFromText<uint32_t>(text.substr(0, point), "time") * microsPerSecond +
                      numberFromText<uint32_t>(micros, "time"));
}

Direction directionFromText(const std::string& text) {
  if (text != ">" && text != "<") {
    throw Error("the direction \"" + text + "\" is neither > nor <");
  }
  return text == ">" ? Direction::In : Direction::Out;
}

FrameKind kindFromText(const std::string& text) {
  for (const FrameKind kind : tracedKinds) {
    if (kindName(kind) == text) {
      return kind;
    }
  }
  throw Error("there is no kind \"" + text + "\"");
}

uint16_t messageFromText(const std::string& text) {
  if (text == none) {
    return 0;
  }
  if (const auto id = messageIdOf(text)) {
    return numberOf(*id);
  }
  if (!text.starts_with("0x")) {
    throw Error("there is no message \"" + text + "\"");
  }
  return numberFromText<uint16_t>(std::string_view(text).substr(2), "message", /*base=*/16);
}

std::vector<uint8_t> bytesFromText(std::string_view text) {
  std::vector<uint8_t> bytes;
  if (text == none) {
    return bytes;
  }
  if (text.size() % 2 != 0) {
    throw Error("the bytes are cut short");
  }
  for (size_t i = 0; i < text.size(); i += 2) {
    bytes.push_back(numberFromText<uint8_t>(text.substr(i, 2), "byte", /*base=*/16));
  }
  return bytes;
}

TraceEvent eventFromText(const std::string& line) {
  std::istringstream words(line);
  std::string time;
  std::string client;
  std::string direction;
  std::string kind;
  std::string message;
  std::string transaction;
  if (!(words >> time >> client >> direction >> kind >> message >> transaction)) {
    throw Error("columns are missing");
  }
  TraceEvent event;
  event.time = timeFromText(time);
  event.client = numberFromText<ClientNumber>(client, "client");
  event.direction = directionFromText(direction);
  event.isEnd = kind == endKind;
  if (!event.isEnd) {
    event.frame = {kindFromText(kind), messageFromText(message),
                   numberFromText<uint32_t>(transaction, "transaction"),
                   bytesFromText(std::string_view(line).substr(line.rfind(' ') + 1))};
  }
  return event;
}

}  // namespace

TraceWriter::TraceWriter(std::string tracePath)
    : path(std::move(tracePath)), start(steady_clock::now()) {
  pavo::PrivateFile file = pavo::openPrivateFile(path);
  if (!file.fd.isOpen()) {
    throw Error(path + ": cannot create: " + file.problem);
  }
  fd = std::move(file.fd);
  // A device, such as /dev/null, has no content and fails with EINVAL.
  if (ftruncate(fd.get(), 0) != 0 && errno != EINVAL) {
    throw Error(path + ": cannot empty: " + std::strerror(errno));
  }
  writeLine(std::string(firstLine));
  writeLine(std::string(columns));
}

void TraceWriter::add(Direction direction, ClientNumber client, const Frame& frame,
                      const std::string& fault) {
  TraceEvent event;
  event.client = client;
  event.direction = direction;
  event.frame = frame;
  addEvent(event, meaningOf(direction, frame) + (fault.empty() ? "" : " (fault: " + fault + ")"));
}

void TraceWriter::addEnd(ClientNumber client, ClosedBy closedBy) {
  TraceEvent event;
  event.client = client;
  event.direction = closedBy == ClosedBy::Client ? Direction::In : Direction::Out;
  event.isEnd = true;
  addEvent(event, closedBy == ClosedBy::Client ? "the client left" : "the modem hung up");
}

void TraceWriter::addLost(ClientNumber client, const Frame& frame) {
  writeLine("# lost by a fault on its way to client " + std::to_string(client) + ": " +
            std::string(kindName(frame.kind)) + " " + messageName(MessageId{frame.messageId}) +
            " " + meaningOf(Direction::Out, frame));
}

void TraceWriter::addEvent(const TraceEvent& event, const std::string& meaning) {
  TraceEvent timed = event;
  timed.time = std::chrono::duration_cast<microseconds>(steady_clock::now() - start);
  writeLine(textOf(timed, meaning));
}

void TraceWriter::writeLine(const std::string& line) { writeAll(fd.get(), line + "\n", path); }

std::vector<TraceEvent> readTrace(const std::string& path) {
  std::istringstream lines(readFile(path));
  std::vector<TraceEvent> events;
  std::string line;
  if (!std::getline(lines, line) || line != firstLine) {
    throw Error(path + ": line 1: it has to be \"" + std::string(firstLine) + "\"");
  }
  for (size_t number = 2; std::getline(lines, line); ++number) {
    if (line.empty() || line.starts_with('#')) {
      continue;
    }
    try {
      events.push_back(eventFromText(line));
      events.back().line = number;
    } catch (const Error& error) {
      throw Error(path + ": line " + std::to_string(number) + ": " + error.what());
    }
  }
  return events;
}

std::string meaningOf(Direction direction, const Frame& frame) {
  json said = json::object();
  decodeInto(said, direction, frame);
  const std::string fields = dumpLine(said.value("fields", json::object()));
  if (said.contains("malformed")) {
    return "malformed: " + said["malformed"].get<std::string>();
  }
  const bool isResponse =
      frame.kind == FrameKind::Response || frame.kind == FrameKind::UncheckedResponse;
  return isResponse ? responseMeaning(said) + (fields == "{}" ? "" : " " + fields) : fields;
}

}  // namespace modem
