// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "DiagWriter.h"

#include "diag_lsm.h"

#include <cstdint>

namespace pavo {

namespace {

constexpr std::uint16_t descriptorLine = 118;
constexpr std::uint16_t subsystemId = 63;
constexpr int maskLow = 1;
constexpr int maskHigh = 4;
constexpr int maskFatal = 16;
constexpr int maskAll = 0x1F;

}  // namespace

DiagWriter::DiagWriter() { Diag_LSM_Init(/*env=*/nullptr); }

DiagWriter::~DiagWriter() { Diag_LSM_DeInit(); }

void DiagWriter::write(LogLevel level, std::string tag, std::string message) {
  const int mask = convertPrio(level);
  if ((mask & maskAll) == 0) {
    return;
  }
  // The channel needs a descriptor that lives as long as the process. There is only this one, so
  // every message carries the mask of the first message, whatever its own level.
  static const diag_msg_descriptor descriptor{descriptorLine, subsystemId,
                                              static_cast<std::uint32_t>(mask), "|%s| %s",
                                              "src/LocalLogBuffer.cpp"};
  msg_sprintf(&descriptor, tag.c_str(), message.c_str());
}

int DiagWriter::convertPrio(LogLevel level) {
  switch (level) {
    case LogLevel::Error:
    case LogLevel::High:
      return maskHigh;
    case LogLevel::Fatal:
      return maskFatal;
    case LogLevel::Verbose:
    case LogLevel::Debug:
    case LogLevel::Info:
    default:
      return maskLow;
  }
}

}  // namespace pavo
