// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The messages of the modem's data service: ids, field tags, codes and their names.
//
// This file states the encoded form by tag. It shares nothing with the C structures of the clients,
// so that each of the two statements of the layout checks the other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace modem {

enum class MessageId : uint16_t {
  IndicationRegister = 0x0003,
  CreateProfile = 0x0027,
  ModifyProfile = 0x0028,
  DeleteProfile = 0x0029,
  ProfileList = 0x002A,
  ProfileSettings = 0x002B,
  ConfigureEvents = 0x00A7,
  ProfileChanged = 0x00A8,
  BindSubscription = 0x00AF,
};

constexpr uint16_t numberOf(MessageId id) { return static_cast<uint16_t>(id); }

// The tags of the fields. Settings have the same tags in every message; the other fields of a
// message may share a tag with a setting that the message does not have.
enum FieldTag : uint8_t {
  tagProfile = 0x01,  // profile type in a create request, profile id in the others
  tagResult = 0x02,   // in every response
  tagAnswer = 0x03,   // the id or the list in a response
  tagBindSubscription = 0x01,
  tagListType = 0x10,
  tagEventList = 0x10,
  tagReportSwitch = 0x11,
  tagChangedProfile = 0x10,
  tagReportEvents = 0x20,

  tagName = 0x10,
  tagPdpType = 0x11,
  tagApn = 0x12,
  tagUser = 0x13,
  tagPassword = 0x14,
  tagAuth = 0x15,
  tagDisabled = 0x16,
  tagApnClass = 0x17,
  tagEmergency = 0x18,
  tagMaxPdnPerBlock = 0x19,
  tagMaxPdnTimer = 0x1A,
  tagPdnWaitInterval = 0x1B,
  tagLteRoam = 0x1C,
  tagUmtsRoam = 0x1D,
  tagOverrideHome = 0x1E,
  tagPersistent = 0x1F,
  tagApnTypes = 0x20,
  tagClat = 0x21,
};

enum class ErrorCode : int32_t {
  None = 0,
  MalformedMessage = 1,
  Internal = 2,
  NoResources = 3,
  InvalidProfileIndex = 4,
  InvalidProfileType = 5,
  ArgumentTooLong = 6,
  InvalidArgument = 7,
  NotSupported = 8,
  NotReady = 9,
};

enum EventCode : uint32_t {
  eventCreate = 1,
  eventDelete = 2,
  eventModify = 3,
  eventSubscriptionChange = 4,
  eventReady = 5,
};

// A profile id is a type and an index.
inline constexpr std::size_t profileIdBytes = 5;
inline constexpr uint32_t profileType3gpp = 0;
// In an event list these stand for every type and every index. A ready indication has this index,
// because it names no profile.
inline constexpr uint32_t profileTypeAny = 255;
inline constexpr uint8_t profileIndexAny = 255;

inline constexpr int32_t resultSuccess = 0;
inline constexpr int32_t resultFailure = 1;

struct MessageName {
  MessageId id;
  std::string_view name;
};

// Returns the messages that the modem knows, requests first.
std::span<const MessageName> messageNames();

// Returns the name of a message, or its number such as 0x1234 if it has none.
std::string messageName(MessageId id);
std::optional<MessageId> messageIdOf(std::string_view name);

std::string_view errorName(ErrorCode code);

struct EventName {
  uint32_t event;
  std::string_view name;
};

// Returns the events that a modem reports.
std::span<const EventName> eventNames();

}  // namespace modem
