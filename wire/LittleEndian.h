// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Numbers of the frames and hellos, which are little-endian.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace wire {

inline void putLittleEndian(std::vector<uint8_t>& out, uint32_t value, size_t width) {
  for (size_t i = 0; i < width; ++i) {
    out.push_back(static_cast<uint8_t>(value >> (8 * i)));
  }
}

inline uint32_t getLittleEndian(const uint8_t* bytes, size_t width) {
  uint32_t value = 0;
  for (size_t i = 0; i < width; ++i) {
    value |= uint32_t{bytes[i]} << (8 * i);
  }
  return value;
}

}  // namespace wire
