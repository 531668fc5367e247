// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// An Input holds the bytes of one fuzzed input, taken from the front. When they are used up, every
// value is zero.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace pavo::fuzz {

class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : at(data), end(data + size) {}

  bool isOver() const { return at == end; }

  std::uint8_t byte() { return isOver() ? std::uint8_t{0} : *at++; }
  bool flag() { return (byte() & 1) != 0; }
  std::uint16_t number16() { return static_cast<std::uint16_t>(byte() | byte() << 8); }
  std::int32_t number32() {
    return static_cast<std::int32_t>(number16() | static_cast<std::uint32_t>(number16()) << 16);
  }

  // Returns at most that many bytes.
  std::vector<std::uint8_t> bytes(std::size_t most) {
    const std::size_t count = std::min(most, static_cast<std::size_t>(end - at));
    std::vector<std::uint8_t> taken(at, at + count);
    at += count;
    return taken;
  }
  std::vector<std::uint8_t> rest() { return bytes(static_cast<std::size_t>(end - at)); }

  std::string text() {
    const std::vector<std::uint8_t> taken = bytes(byte());
    return {taken.begin(), taken.end()};
  }

  // Writes pieces of the input over a structure, at any offset.
  template <typename Structure>
  void scribbleOn(Structure& structure) {
    auto* const bytesOf = reinterpret_cast<std::uint8_t*>(&structure);
    for (int pieces = byte() % 32; pieces > 0; --pieces) {
      const std::size_t offset = number16() % sizeof structure;
      const std::vector<std::uint8_t> piece = bytes(byte());
      std::copy_n(piece.begin(), std::min(piece.size(), sizeof structure - offset),
                  bytesOf + offset);
    }
  }

 private:
  const std::uint8_t* at;
  const std::uint8_t* const end;
};

}  // namespace pavo::fuzz
