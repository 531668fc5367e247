// The messages of the modem's data service: ids, field tags, codes and their names.
//
// Everything here is stated by tag, in the encoded form, and shares nothing with the C structures
// that clients see: the two statements of one layout check each other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace modem {

enum MessageId : uint16_t {
  indicationRegister = 0x0003,
  createProfile = 0x0027,
  modifyProfile = 0x0028,
  deleteProfile = 0x0029,
  profileList = 0x002A,
  profileSettings = 0x002B,
  configureEvents = 0x00A7,
  profileChanged = 0x00A8,
  bindSubscription = 0x00AF,
};

// Tags of the fields that are not profile settings; Profile.h has those.
enum FieldTag : uint8_t {
  tagProfile = 0x01,  // profile type of a create, profile id of the others
  tagResult = 0x02,   // of every response
  tagAnswer = 0x03,   // the id or the list in a response
  tagBindSubscription = 0x01,
  tagListType = 0x10,
  tagEventList = 0x10,
  tagReportSwitch = 0x11,
  tagChangedProfile = 0x10,
  tagReportEvents = 0x20,
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

// A type and an index.
inline constexpr std::size_t profileIdBytes = 5;
inline constexpr uint32_t profileType3gpp = 0;
// In an event list: every type, every index. A ready indication names no profile and bears it too.
inline constexpr uint32_t profileTypeAny = 255;
inline constexpr uint8_t profileIndexAny = 255;

inline constexpr int32_t resultSuccess = 0;
inline constexpr int32_t resultFailure = 1;

struct MessageName {
  uint16_t id;
  std::string_view name;
};

// Every message that the modem knows, requests first.
std::span<const MessageName> messageNames();

// The name of a message, or its number as 0x1234 when it has none.
std::string messageName(uint16_t id);
std::optional<uint16_t> messageIdOf(std::string_view name);

std::string_view errorName(ErrorCode code);

struct EventName {
  uint32_t event;
  std::string_view name;
};

// The events that a modem tells of.
std::span<const EventName> eventNames();

}  // namespace modem
