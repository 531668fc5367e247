// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/trace/MessageJson.h"

#include "modem/core/FieldReader.h"
#include "modem/core/Messages.h"
#include "modem/core/ProfileJson.h"
#include "modem/core/Refusal.h"
#include "wire/Hello.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>

namespace modem {

using nlohmann::json;

namespace {

// Removes a number from the front. Throws Refusal if the value is too short.
uint64_t takeNumber(ByteView& bytes, size_t width) {
  if (bytes.size() < width) {
    throw Refusal(ErrorCode::MalformedMessage, "a value is too short");
  }
  const uint64_t number = numberFrom(bytes.first(width));
  bytes = bytes.subspan(width);
  return number;
}

json takeId(ByteView& bytes) {
  const uint64_t type = takeNumber(bytes, /*width=*/4);
  return json{{"type", type}, {"index", takeNumber(bytes, /*width=*/1)}};
}

json eventListToJson(ByteView list) {
  json ids = json::array();
  for (uint64_t left = takeNumber(list, /*width=*/2); left > 0; --left) {
    ids.push_back(takeId(list));
  }
  return ids;
}

json profileListToJson(ByteView list) {
  json profiles = json::array();
  for (uint64_t left = takeNumber(list, /*width=*/2); left > 0; --left) {
    json profile = takeId(list);
    const size_t nameBytes = takeNumber(list, /*width=*/1);
    if (nameBytes > list.size()) {
      throw Refusal(ErrorCode::MalformedMessage, "a name is too short");
    }
    profile["name"] = textToJson({reinterpret_cast<const char*>(list.data()), nameBytes});
    list = list.subspan(nameBytes);
    profiles.push_back(std::move(profile));
  }
  return profiles;
}

void putNumber(json& out, const char* name, const FieldReader& fields, uint8_t tag) {
  if (const auto value = fields.bytes(tag)) {
    out[name] = numberFrom(value->first(std::min<size_t>(value->size(), sizeof(uint64_t))));
  }
}

json requestToJson(MessageId messageId, const FieldReader& fields) {
  json out = json::object();
  if (messageId == MessageId::CreateProfile || messageId == MessageId::ModifyProfile) {
    out = toJson(readSettings(fields));
  }
  if (messageId == MessageId::CreateProfile) {
    putNumber(out, "type", fields, tagProfile);
  } else if (auto id = fields.bytes(tagProfile); id && id->size() == profileIdBytes) {
    out["profile"] = takeId(*id);
  }
  if (messageId == MessageId::ProfileList) {
    putNumber(out, "type", fields, tagListType);
  } else if (messageId == MessageId::IndicationRegister) {
    putNumber(out, "reportEvents", fields, tagReportEvents);
  } else if (messageId == MessageId::BindSubscription) {
    if (const auto subscription = fields.i32(tagBindSubscription)) {
      out["subscription"] = *subscription;
    }
  } else if (messageId == MessageId::ConfigureEvents) {
    putNumber(out, "reportSwitch", fields, tagReportSwitch);
    if (const auto list = fields.bytes(tagEventList)) {
      out["events"] = eventListToJson(*list);
    }
  }
  return out;
}

json responseToJson(MessageId messageId, const FieldReader& fields) {
  json out = json::object();
  if (messageId == MessageId::ProfileSettings) {
    out = toJson(readSettings(fields));
  }
  const auto answer = fields.bytes(tagAnswer);
  if (answer && messageId == MessageId::CreateProfile) {
    ByteView id = *answer;
    out["profile"] = takeId(id);
  } else if (answer && messageId == MessageId::ProfileList) {
    out["profiles"] = profileListToJson(*answer);
  }
  return out;
}

json indicationToJson(const FieldReader& fields) {
  json out = json::object();
  if (auto value = fields.bytes(tagChangedProfile)) {
    out["profile"] = takeId(*value);
    out["event"] = takeNumber(*value, /*width=*/4);
  }
  return out;
}

json resultToJson(const FieldReader& fields) {
  auto value = fields.bytes(tagResult);
  if (!value || value->size() != 8) {
    return nullptr;
  }
  const auto result = static_cast<int32_t>(takeNumber(*value, /*width=*/4));
  return json{{"result", result}, {"error", static_cast<int32_t>(takeNumber(*value, /*width=*/4))}};
}

json helloToJson(Direction direction, const Frame& frame) {
  json out = {{"value", numberFrom(frame.payload)}};
  if (direction == Direction::Out) {
    const auto answer = wire::decodeHelloAnswer(frame.payload);
    out["value"] = answer ? answer->boot : 0;
    if (answer && answer->refusal != 0) {
      out["refusal"] = answer->refusal;
    }
  } else if (const auto hello = wire::decodeHello(frame.payload)) {
    out["purpose"] = wire::purposeName(hello->purpose);
    out["sawAbsence"] = hello->sawAbsence;
  }
  return out;
}

}  // namespace

void decodeInto(json& out, Direction direction, const Frame& frame) {
  try {
    if (frame.kind == FrameKind::Hello) {
      out["fields"] = helloToJson(direction, frame);
      return;
    }
    const FieldReader fields(frame.payload);
    if (frame.kind == FrameKind::Response || frame.kind == FrameKind::UncheckedResponse) {
      out["result"] = resultToJson(fields);
      out["fields"] = responseToJson(MessageId{frame.messageId}, fields);
    } else if (frame.kind == FrameKind::Indication) {
      out["fields"] = indicationToJson(fields);
    } else {
      out["fields"] = requestToJson(MessageId{frame.messageId}, fields);
    }
  } catch (const Refusal& refusal) {
    out["malformed"] = refusal.what();
  }
}

std::string_view kindName(FrameKind kind) {
  // By the number of the kind.
  static constexpr std::array<std::string_view, 7> names = {
      "request",          "response", "indication",        "control-request",
      "control-response", "hello",    "unchecked-response"};
  const auto number = static_cast<size_t>(kind);
  return number < names.size() ? names[number] : "unknown";
}

}  // namespace modem
