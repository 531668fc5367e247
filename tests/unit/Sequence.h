// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// A Sequence is the record of a test as lines of text, so that tests compare whole sequences.
#pragma once

#include "CapturingLogWriter.h"
#include "FakePlatform.h"
#include "LogLevel.h"
#include "LogWrapper.h"
#include "LogWriter.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace pavo::test {

using Sequence = std::vector<std::string>;

// Replaces the parts that differ from run to run, descriptors and addresses, by '#'.
inline std::string masked(std::string line) {
  static const std::string prefixes[] = {"epollFd:",     "Handler(int ", "Callback 0x",
                                         "void* 0x",     "callback:0x",  "data:0x",
                                         "descriptor '", " for ",        "on fd "};
  for (const std::string& prefix : prefixes) {
    const char* const digits = prefix.back() == 'x' ? "0123456789abcdef" : "0123456789";
    for (auto at = line.find(prefix); at != std::string::npos; at = line.find(prefix, at)) {
      at += prefix.size();
      const auto end = std::min(line.find_first_not_of(digits, at), line.size());
      if (end != at) {
        line.replace(at, end - at, "#");
      }
    }
  }
  return line;
}

// Returns the level's letter, a blank and the line. A tag that is not the library's stands in
// front.
inline std::string described(char level, const std::string& tag, const std::string& message) {
  return (tag == "PAVO" ? "" : "tag " + tag + ": ") + level + " " + message;
}

inline Sequence sequenceOf(const std::vector<CapturedLine>& lines) {
  Sequence sequence;
  for (const CapturedLine& line : lines) {
    sequence.push_back(described("VDIEFH"[static_cast<int>(line.level)], line.tag, line.message));
  }
  return sequence;
}

// Writes the library's lines, with their own levels, into the platform's record, so one sequence
// holds both the lines and the library's calls. The recorder is installed while it lives.
class LogRecorder {
 public:
  using Hook = std::function<void(const std::string& message)>;

  // @param hook runs with each line, on the thread that logs it
  explicit LogRecorder(Hook hook = {}) {
    LogWrapper::getInstance().setLogWriter(std::make_unique<Writer>(std::move(hook)));
  }
  LogRecorder(const LogRecorder&) = delete;
  LogRecorder& operator=(const LogRecorder&) = delete;
  ~LogRecorder() { LogWrapper::getInstance().setLogWriter(nullptr); }

 private:
  class Writer : public LogWriter {
   public:
    explicit Writer(Hook theHook) : hook(std::move(theHook)) {}
    void write(LogLevel level, std::string tag, std::string message) override {
      FakePlatform::instance().record({.kind = FakePlatform::Kind::Log,
                                       .priority = convertPrio(level),
                                       .tag = std::move(tag),
                                       .message = message});
      if (hook) {
        hook(message);
      }
    }
    int convertPrio(LogLevel level) override { return static_cast<int>(level); }

   private:
    const Hook hook;
  };
};

// Returns the letter of the priority or, for a line of a LogRecorder, of the level.
inline char letterOf(const PlatformCall& line) {
  const bool isRecorded = line.format.empty();
  return isRecorded ? "VDIEFH"[line.priority] : "??VDI?EF"[line.priority];
}

inline std::string described(const PlatformCall& call) {
  using Kind = PlatformCall::Kind;
  switch (call.kind) {
    case Kind::GetServiceObject:
      return "get service object";
    case Kind::NotifierInit:
      return "init notifier";
    case Kind::RegisterNotifyCb:
      return "register notify callback";
    case Kind::GetAnyService:
      return "get any service";
    case Kind::ClientInit:
      return "init client";
    case Kind::RegisterErrorCb:
      return "register error callback";
    case Kind::Send: {
      char text[16];
      std::snprintf(text, sizeof text, "send 0x%02x", call.msgId);
      return text;
    }
    case Kind::Decode:
      return "decode";
    case Kind::Release:
      for (const FakePlatform::Notifier& notifier : FakePlatform::instance().notifiers()) {
        if (notifier.handle == call.handle) {
          return "release notifier";
        }
      }
      return "release client";
    case Kind::Log:
      return described(letterOf(call), call.tag, masked(call.message));
    case Kind::DiagInit:
    case Kind::DiagDeInit:
    case Kind::DiagMessage:
    default:
      return "diagnostics";
  }
}

inline Sequence sequenceOf(const std::vector<PlatformCall>& calls) {
  Sequence sequence;
  for (const PlatformCall& call : calls) {
    sequence.push_back(described(call));
  }
  return sequence;
}

// Returns the calls and lines of one thread.
inline Sequence sequenceOn(std::thread::id thread, const std::vector<PlatformCall>& calls) {
  Sequence sequence;
  for (const PlatformCall& call : calls) {
    if (call.thread == thread) {
      sequence.push_back(described(call));
    }
  }
  return sequence;
}

// Returns the calls and lines of all other threads. Given the caller's own thread, these are the
// worker's.
inline Sequence sequenceNotOn(std::thread::id thread, const std::vector<PlatformCall>& calls) {
  Sequence sequence;
  for (const PlatformCall& call : calls) {
    if (call.thread != thread) {
      sequence.push_back(described(call));
    }
  }
  return sequence;
}

// Returns the event loop's lines for the only event of a wait, before its callback runs.
inline Sequence oneEvent() {
  return {"V there are 1 file descriptor(s) with events pending",
          "V processing event number: 0, handling 1 for #",
          "V file descriptor '#' is processing events [callback:0x#, data:0x#]"};
}

inline Sequence operator+(Sequence first, const Sequence& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

// Removes the lines that the event loop logs for each event.
inline Sequence withoutEventLines(Sequence sequence) {
  std::erase_if(sequence, [](const std::string& line) {
    return line.rfind("V there are ", 0) == 0 || line.rfind("V processing event", 0) == 0 ||
           line.rfind("V file descriptor", 0) == 0;
  });
  return sequence;
}

}  // namespace pavo::test
