// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// MessageBytes is a modem message as bytes at numeric offsets. It states the layout a second time,
// beside the structures of the platform's header.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace pavo::test {

class MessageBytes {
 public:
  explicit MessageBytes(std::size_t size) : bytes(size) {}
  template <typename Message>
  static MessageBytes of(const Message& message) {
    MessageBytes copy(sizeof message);
    std::memcpy(copy.bytes.data(), &message, sizeof message);
    return copy;
  }
  static MessageBytes of(const std::vector<std::uint8_t>& message) {
    MessageBytes copy(message.size());
    copy.bytes = message;
    return copy;
  }

  MessageBytes& u8(std::size_t at, std::uint8_t value) { return put(at, value); }
  MessageBytes& u16(std::size_t at, std::uint16_t value) { return put(at, value); }
  MessageBytes& u32(std::size_t at, std::uint32_t value) { return put(at, value); }
  MessageBytes& u64(std::size_t at, std::uint64_t value) { return put(at, value); }
  MessageBytes& text(std::size_t at, std::string_view value) {
    std::memcpy(&bytes.at(at), value.data(), value.size());
    return *this;
  }

  template <typename Message>
  Message as() const {
    Message message{};
    if (bytes.size() == sizeof message) {
      std::memcpy(&message, bytes.data(), sizeof message);
    }
    return message;
  }

  // Returns one line for each byte in which actual differs, none when the messages are the same.
  std::vector<std::string> differences(const MessageBytes& actual) const {
    std::vector<std::string> lines;
    if (actual.bytes.size() != bytes.size()) {
      lines.push_back("length " + std::to_string(actual.bytes.size()) + ", expected " +
                      std::to_string(bytes.size()));
      return lines;
    }
    for (std::size_t at = 0; at < bytes.size(); ++at) {
      if (actual.bytes[at] != bytes[at]) {
        lines.push_back("byte " + std::to_string(at) + " is " + std::to_string(actual.bytes[at]) +
                        ", expected " + std::to_string(bytes[at]));
      }
    }
    return lines;
  }

 private:
  template <typename Value>
  MessageBytes& put(std::size_t at, Value value) {
    bytes.at(at + sizeof value - 1);
    std::memcpy(&bytes[at], &value, sizeof value);
    return *this;
  }

  std::vector<std::uint8_t> bytes;
};

inline constexpr std::size_t createRequestSize = 3256;
inline constexpr std::size_t modifyRequestSize = 3256;
inline constexpr std::size_t settingsResponseSize = 3272;

// Returns a successful settings response without a field.
inline MessageBytes emptySettings() { return MessageBytes(settingsResponseSize); }

}  // namespace pavo::test
