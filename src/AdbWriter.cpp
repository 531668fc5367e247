// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "AdbWriter.h"

#include <android/log.h>

namespace pavo {

void AdbWriter::write(LogLevel level, std::string tag, std::string message) {
  __android_log_print(convertPrio(level), tag.c_str(), "%s", message.c_str());
}

int AdbWriter::convertPrio(LogLevel level) {
  switch (level) {
    case LogLevel::Verbose:
      return ANDROID_LOG_VERBOSE;
    case LogLevel::Debug:
      return ANDROID_LOG_DEBUG;
    case LogLevel::Info:
      return ANDROID_LOG_INFO;
    case LogLevel::Error:
      return ANDROID_LOG_ERROR;
    case LogLevel::Fatal:
      return ANDROID_LOG_FATAL;
    case LogLevel::High:
    default:
      // These lines are important to this library, but no warning to a reader of the device's log.
      return ANDROID_LOG_INFO;
  }
}

}  // namespace pavo
