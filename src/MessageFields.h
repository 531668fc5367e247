// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The conversion between a member of a profile and an optional field of a message. A list of
// members, fields and conversions (mapFields) is run with a codec. The codec fills a request or
// reads a response.
#pragma once

#include <pavo/ProfileTypes.h>

#include "Conversions.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>

namespace pavo {

// An optional field of a message: its valid flag and its value.
template <typename Flag, typename Value>
struct MessageField {
  Flag& valid;
  Value& value;
};

template <typename Flag, typename Value>
MessageField<Flag, Value> messageField(Flag& valid, Value& value) {
  return {valid, value};
}

#define MESSAGE_FIELD(message, field) messageField((message).field##_valid, (message).field)

// The conversions: toMessage writes the value of a present member, and fromMessage reads a valid
// field into the member.

struct AsMask {
  static void toMessage(unsigned long long member, std::uint64_t& field) { field = member; }
  static void fromMessage(std::uint64_t field, std::optional<unsigned long long>& member) {
    member = field;
  }
};

struct AsFlag {
  static void toMessage(bool member, std::uint8_t& field) { field = member ? 1 : 0; }
  static void fromMessage(std::uint8_t field, std::optional<bool>& member) { member = field != 0; }
};

// The modem receives the low bits of a number that does not fit.
struct AsNumber {
  template <typename Field>
  static void toMessage(int member, Field& field) {
    field = static_cast<Field>(member);
  }
  template <typename Field>
  static void fromMessage(Field field, std::optional<int>& member) {
    member = field;
  }
};

struct AsApnClass {
  static void toMessage(ApnClass member, std::uint8_t& field) {
    field = static_cast<std::uint8_t>(member);
  }
  static void fromMessage(std::uint8_t field, std::optional<ApnClass>& member) {
    member = static_cast<ApnClass>(field);
  }
};

struct AsAuthPreference {
  static void toMessage(AuthType member, std::uint8_t& field) {
    field = convertToOvixAuthPref(member);
  }
  static void fromMessage(std::uint8_t field, std::optional<AuthType>& member) {
    member = convertToAuthType(field);
  }
};

struct AsPdpType {
  static void toMessage(IPType member, wds_pdp_type_enum_v01& field) {
    field = convertToOvixPdpType(member);
  }
  static void fromMessage(wds_pdp_type_enum_v01 field, std::optional<IPType>& member) {
    member = convertPdpType(field);
  }
};

struct AsCommonPdpType {
  static void toMessage(IPType member, wds_common_pdp_type_enum_v01& field) {
    field = convertToOvixCommonPdpType(member);
  }
  static void fromMessage(wds_common_pdp_type_enum_v01 field, std::optional<IPType>& member) {
    member = convertPdpType(field);
  }
};

// An unspecified roaming type leaves the member absent.
struct AsRoamingPdpType : AsCommonPdpType {
  static void fromMessage(wds_common_pdp_type_enum_v01 field, std::optional<IPType>& member) {
    if (field != WDS_COMMON_PDP_TYPE_UNSPECIFIED_V01) {
      AsCommonPdpType::fromMessage(field, member);
    }
  }
};

// toMessage cuts the text to what the field can hold beside its NUL, and at the first NUL.
// fromMessage does not rely on the modem to send a NUL.
struct AsText {
  template <std::size_t size>
  static void toMessage(const std::string& member, char (&field)[size]) {
    const std::size_t length = ::strnlen(member.c_str(), std::min(member.size(), size - 1));
    std::memcpy(field, member.data(), length);
    field[length] = '\0';
  }
  template <std::size_t size>
  static void fromMessage(const char (&field)[size], std::optional<std::string>& member) {
    member.emplace(field, ::strnlen(field, size - 1));
  }
};

struct AsApnName : AsText {
  template <std::size_t size>
  static void fromMessage(const char (&field)[size], std::optional<std::string>& member) {
    AsText::fromMessage(field, member);
    member = convertToLower(*member);
  }
};

// The codecs: FillMessage fills a request, and ReadMessage reads a response.

struct FillMessage {
  template <typename Member, typename Flag, typename Value, typename Conversion>
  void operator()(const std::optional<Member>& member, MessageField<Flag, Value> field,
                  Conversion /*conversion*/) const {
    if (member) {
      field.valid = 1;
      Conversion::toMessage(*member, field.value);
    }
  }
};

struct ReadMessage {
  template <typename Member, typename Flag, typename Value, typename Conversion>
  void operator()(std::optional<Member>& member, MessageField<Flag, Value> field,
                  Conversion /*conversion*/) const {
    if (field.valid != 0) {
      Conversion::fromMessage(field.value, member);
    }
  }
};

}  // namespace pavo
