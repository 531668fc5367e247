// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "wire/Hello.h"

#include "wire/LittleEndian.h"

namespace wire {

namespace {

// A hello is one byte: bit 0 is sawAbsence, the two bits above are the purpose.
constexpr unsigned purposeShift = 1;
constexpr unsigned helloMax = (static_cast<unsigned>(Purpose::Object) << purposeShift) | 1;

// A welcome is the boot number. A refusal is the boot number and the code.
constexpr size_t numberBytes = 4;

}  // namespace

std::string_view purposeName(Purpose purpose) {
  constexpr std::string_view names[] = {"open", "find", "watch", "object"};
  return names[static_cast<size_t>(purpose)];
}

std::vector<uint8_t> encodeHello(Hello hello) {
  const unsigned purpose = static_cast<unsigned>(hello.purpose) << purposeShift;
  return {static_cast<uint8_t>(purpose | (hello.sawAbsence ? 1u : 0u))};
}

std::optional<Hello> decodeHello(std::span<const uint8_t> payload) {
  if (payload.size() != 1 || payload[0] > helloMax) {
    return std::nullopt;
  }
  return Hello{static_cast<Purpose>(payload[0] >> purposeShift), (payload[0] & 1) != 0};
}

std::vector<uint8_t> encodeHelloAnswer(HelloAnswer answer) {
  std::vector<uint8_t> payload;
  putLittleEndian(payload, answer.boot, numberBytes);
  if (answer.refusal != 0) {
    putLittleEndian(payload, static_cast<uint32_t>(answer.refusal), numberBytes);
  }
  return payload;
}

std::optional<HelloAnswer> decodeHelloAnswer(std::span<const uint8_t> payload) {
  if (payload.size() != numberBytes && payload.size() != 2 * numberBytes) {
    return std::nullopt;
  }
  HelloAnswer answer{getLittleEndian(payload.data(), numberBytes), 0};
  if (payload.size() > numberBytes) {
    answer.refusal = static_cast<int32_t>(getLittleEndian(&payload[numberBytes], numberBytes));
    if (answer.refusal == 0) {
      return std::nullopt;
    }
  }
  return answer;
}

}  // namespace wire
