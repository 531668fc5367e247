// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "RawClient.h"

#include "Answers.h"
#include "Deadline.h"

#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>

namespace modem::test {

std::optional<uint32_t> RawClient::hello(bool sawAbsence) {
  sendBytes(encodeFrame({.kind = FrameKind::Hello,
                         .messageId = 0,
                         .transaction = 0,
                         .payload = {static_cast<uint8_t>(sawAbsence)}}));
  const auto answer = receive();
  if (!answer || answer->kind != FrameKind::Hello || answer->payload.size() != 4) {
    return std::nullopt;
  }
  return static_cast<uint32_t>(numberFrom(answer->payload));
}

void RawClient::registerForAll() {
  request(MessageId::IndicationRegister, registerRequest());
  request(MessageId::ConfigureEvents, allEventsRequest());
}

Payload RawClient::request(MessageId message, const Payload& payload) {
  const uint32_t transaction = send(FrameKind::Request, message, payload);
  while (auto frame = receive()) {
    if (frame->kind == FrameKind::Indication) {
      indications.push_back(std::move(*frame));
    } else if (frame->transaction == transaction && MessageId{frame->messageId} == message) {
      return frame->payload;
    }
  }
  return {};
}

uint32_t RawClient::send(FrameKind kind, MessageId message, const Payload& payload) {
  sendBytes(encodeFrame({kind, numberOf(message), ++lastTransaction, payload}));
  return lastTransaction;
}

void RawClient::sendBytes(std::span<const uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::send(fd.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (count < 0 && errno != EINTR) {
      return;  // The modem hung up; receive() will show it.
    }
    bytes = bytes.subspan(count > 0 ? static_cast<size_t>(count) : 0);
  }
}

std::optional<Frame> RawClient::receive() {
  Frame frame;
  while (reader.next(frame) == FrameReader::Status::NeedMore) {
    if (!receiveSome()) {
      return std::nullopt;
    }
  }
  return frame;
}

bool RawClient::isHungUp() { return !receive() && isEnded; }

std::string RawClient::nextEvent() {
  while (indications.empty()) {
    auto frame = receive();
    if (!frame) {
      return "none";
    }
    if (frame->kind == FrameKind::Indication) {
      indications.push_back(std::move(*frame));
    }
  }
  const Frame frame = std::move(indications.front());
  indications.pop_front();
  return eventOf(frame.payload);
}

std::vector<std::string> RawClient::eventsUntilNow() {
  request(MessageId::ProfileList, listRequest());
  std::vector<std::string> events;
  for (const Frame& frame : indications) {
    events.push_back(eventOf(frame.payload));
  }
  indications.clear();
  return events;
}

void RawClient::endSending() { shutdown(fd.get(), SHUT_WR); }

bool RawClient::receiveSome() {
  pollfd polled = {fd.get(), POLLIN, 0};
  int ready = 0;
  do {
    ready = poll(&polled, 1, static_cast<int>(pavo::test::patience().count()));
  } while (ready < 0 && errno == EINTR);
  if (ready <= 0) {
    return false;
  }
  std::array<uint8_t, 64 << 10> bytes;
  const ssize_t count = recv(fd.get(), bytes.data(), bytes.size(), /*flags=*/0);
  if (count <= 0) {
    isEnded = true;
    return false;
  }
  reader.append(bytes.data(), static_cast<size_t>(count));
  return true;
}

}  // namespace modem::test
