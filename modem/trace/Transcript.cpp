// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/trace/Transcript.h"

#include "modem/core/Messages.h"
#include "modem/core/ProfileJson.h"
#include "modem/trace/MessageJson.h"

#include <algorithm>
#include <span>
#include <utility>

namespace modem {

using nlohmann::json;

namespace {

constexpr size_t shownPayloadBytesMax = 4096;

}  // namespace

void Transcript::add(Direction direction, ClientNumber client, const Frame& frame,
                     std::string fault) {
  entries.push_back({direction, client, frame, std::move(fault)});
  payloadBytes += frame.payload.size();
  ++nextSequence;
  while (entries.size() > entriesMax || payloadBytes > payloadBytesMax) {
    payloadBytes -= entries.front().frame.payload.size();
    entries.pop_front();
    ++droppedCount;
  }
}

void Transcript::clear() {
  entries.clear();
  payloadBytes = 0;
  droppedCount = 0;
}

json Transcript::entryToJson(uint64_t sequence) const {
  const Entry& entry = entries.at(sequence - firstSequence());
  const Frame& frame = entry.frame;
  json out = {{"seq", sequence},
              {"direction", entry.direction == Direction::In ? "in" : "out"},
              {"client", entry.client},
              {"kind", kindName(frame.kind)},
              {"message",
               frame.kind == FrameKind::Hello ? "hello" : messageName(MessageId{frame.messageId})},
              {"id", frame.messageId},
              {"transaction", frame.transaction},
              {"payload", hexOf(frame.payload)}};
  if (!entry.fault.empty()) {
    out["fault"] = entry.fault;
  }
  decodeInto(out, entry.direction, frame);
  if (dumpLine(out).size() > entryJsonBytesMax) {
    const size_t shown = std::min(frame.payload.size(), shownPayloadBytesMax);
    out["payload"] = hexOf(std::span(frame.payload).first(shown));
    out["payloadBytes"] = frame.payload.size();
    out.erase("fields");
  }
  return out;
}

}  // namespace modem
