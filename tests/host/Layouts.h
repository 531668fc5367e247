// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This header states the C structures of the messages a second time as plain numbers: the offsets
// of a field's flag and value, and the field's tag. Nothing here knows the structures'
// declarations.
#pragma once

#include "Bytes.h"

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace pavo::test {

enum Form { createForm, modifyForm, readForm };

struct Setting {
  const char* name;
  unsigned tag;
  size_t flagAt[3];  // by Form
  size_t valueAt[3];
  size_t width;    // the width of a number
  size_t textMax;  // 0 for a number

  Bytes sample() const {
    Bytes bytes;
    const size_t count = textMax == 0 ? width : textMax;
    for (size_t i = 0; i < count; ++i) {
      bytes.push_back(static_cast<uint8_t>(textMax == 0 ? 0xF1 - tag + i : 'A' + i % 26));
    }
    return bytes;
  }
};

inline std::ostream& operator<<(std::ostream& out, const Setting& setting) {
  return out << setting.name;
}

// clang-format off
inline const std::vector<Setting> settings{
    {"profile name",              0x10, {4, 8, 8},          {5, 9, 9},          0, 50},
    {"PDP type",                  0x11, {56, 60, 60},       {60, 64, 64},       4, 0},
    {"APN name",                  0x12, {80, 84, 84},       {81, 85, 85},       0, 150},
    {"user name",                 0x13, {400, 404, 404},    {401, 405, 405},    0, 127},
    {"password",                  0x14, {529, 533, 533},    {530, 534, 534},    0, 127},
    {"authentication preference", 0x15, {658, 662, 662},    {659, 663, 663},    1, 0},
    {"APN disabled",              0x16, {980, 984, 984},    {981, 985, 985},    1, 0},
    {"APN class",                 0x17, {988, 992, 992},    {989, 993, 993},    1, 0},
    {"emergency calls",           0x18, {1000, 1008, 1008}, {1001, 1009, 1009}, 1, 0},
    {"PDN connections",           0x19, {1016, 1024, 1024}, {1018, 1026, 1026}, 2, 0},
    {"PDN time block",            0x1A, {1020, 1028, 1028}, {1022, 1030, 1030}, 2, 0},
    {"PDN wait interval",         0x1B, {1024, 1032, 1032}, {1026, 1034, 1034}, 2, 0},
    {"LTE roaming PDP type",      0x1C, {1042, 1050, 1050}, {1044, 1052, 1052}, 4, 0},
    {"UMTS roaming PDP type",     0x1D, {1048, 1056, 1056}, {1052, 1060, 1060}, 4, 0},
    {"home PDP type",             0x1E, {1104, 1112, 1112}, {1108, 1116, 1116}, 4, 0},
    {"persistent",                0x1F, {2180, 2188, 2188}, {2181, 2189, 2189}, 1, 0},
    {"APN-type mask",             0x20, {3232, 3236, 3240}, {3240, 3240, 3248}, 8, 0},
    {"CLAT",                      0x21, {3248, 3248, 3256}, {3249, 3249, 3257}, 1, 0},
};
// clang-format on

// A SettingsMessage is a message that carries settings: its structure and the fields before the
// settings.
struct SettingsMessage {
  const char* name;
  Form form;
  unsigned id;
  int kind;  // as ovix_client_message_decode counts
  size_t size;
  Bytes structStart;
  Bytes encodedStart;
};

inline std::ostream& operator<<(std::ostream& out, const SettingsMessage& message) {
  return out << message.name;
}

// clang-format off
inline const std::vector<SettingsMessage> settingsMessages{
    {"create request", createForm, 0x0027, 0, 3256, u32(0x04030201),
     field(0x01, u32(0x04030201))},
    {"modify request", modifyForm, 0x0028, 0, 3256, u32(0x04030201) + u8(0xC8),
     field(0x01, u32(0x04030201) + u8(0xC8))},
    {"settings response", readForm, 0x002B, 1, 3272, u32(0) + u32(0x0A0B0C0D),
     field(0x02, u32(0) + u32(0x0A0B0C0D))},
};
// clang-format on

inline void place(Bytes& structure, size_t at, const Bytes& bytes) {
  std::copy(bytes.begin(), bytes.end(), structure.begin() + static_cast<std::ptrdiff_t>(at));
}

}  // namespace pavo::test
