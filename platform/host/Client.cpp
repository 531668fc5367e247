// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Client.h"

#include "DebugLine.h"
#include "MessageCodec.h"
#include "base/Thread.h"

#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace ovix {

using pavo::Deadline;
using pavo::MutexLock;
using wire::Frame;
using wire::FrameKind;
using wire::FrameReader;

Client::Client(const ovix_service_object& serviceObject, ModemConnection connection,
               ovix_client_ind_cb callback, void* callbackData)
    : service(serviceObject),
      socket(std::move(connection.socket)),
      indicationCallback(callback),
      indicationData(callbackData),
      frames(std::move(connection.frames)) {}

Client::~Client() { stop(); }

void Client::start(ovix_client_type ownHandle) {
  handle = ownHandle;
  callbacks.start();
  const MutexLock lock(mutex);
  reader = pavo::startThread("ovix-reader", [this] { read(); });
}

void Client::stop() {
  std::thread ended;
  {
    const MutexLock lock(mutex);
    isStopping = true;
    ended.swap(reader);
  }
  ::shutdown(socket.get(), SHUT_RDWR);
  callbacks.stop();
  if (ended.joinable()) {
    ended.join();
  }
}

void Client::setErrorCallback(ovix_client_error_cb callback, void* data) {
  const MutexLock lock(mutex);
  errorCallback = callback;
  errorData = data;
  if (isLost) {
    reportError();
  }
}

void Client::reportError() {
  if (isErrorReported || isStopping || errorCallback == nullptr) {
    return;
  }
  isErrorReported = true;
  callbacks.post([callback = errorCallback, self = handle, data = errorData] {
    callback(self, OVIX_CLIENT_SERVICE_ERROR, data);
  });
}

void Client::read() {
  std::array<uint8_t, 16384> bytes;
  Frame frame;
  while (true) {
    FrameReader::Status status = frames.next(frame);
    while (status == FrameReader::Status::Ready) {
      accept(frame);
      status = frames.next(frame);
    }
    if (status == FrameReader::Status::Broken) {
      writeDebugLine("connection ended: %s", frames.reason().c_str());
      break;
    }
    const ssize_t count = ::recv(socket.get(), bytes.data(), bytes.size(), /*flags=*/0);
    if (count > 0) {
      frames.append(bytes.data(), static_cast<size_t>(count));
    } else if (count == 0 || errno != EINTR) {
      break;
    }
  }
  markLost();
}

void Client::accept(Frame& frame) {
  if (frame.kind == FrameKind::Response || frame.kind == FrameKind::UncheckedResponse) {
    acceptResponse(frame);
  } else if (frame.kind == FrameKind::Indication) {
    if (indicationCallback != nullptr) {
      callbacks.postIfRoom([callback = indicationCallback, self = handle, data = indicationData,
                            id = frame.messageId, payload = std::move(frame.payload)]() mutable {
        callback(self, id, payload.data(), static_cast<unsigned int>(payload.size()), data);
      });
    }
  } else {
    writeDebugLine("a frame of kind %d dropped", static_cast<int>(frame.kind));
  }
}

void Client::acceptResponse(Frame& frame) {
  {
    const MutexLock lock(mutex);
    const auto waiting = waiters.find(frame.transaction);
    // The sender has given up, or already has its response.
    if (waiting == waiters.end() || waiting->second->response) {
      writeDebugLine("message 0x%04X: an answer that nobody waits for dropped", frame.messageId);
      return;
    }
    waiting->second->response = std::move(frame);
  }
  changed.notifyAll();
}

void Client::markLost() {
  // After a broken frame the modem still has its end open. The shutdown lets it see the end.
  ::shutdown(socket.get(), SHUT_RDWR);
  {
    const MutexLock lock(mutex);
    isLost = true;
    if (!isStopping) {
      noteConnectionLost();
    }
    reportError();
  }
  changed.notifyAll();
}

const Message* Client::findMessage(uint32_t messageId) const {
  const auto found = std::ranges::find(service.messages, messageId, &Message::id);
  return found == service.messages.end() ? nullptr : &*found;
}

ovix_client_error_type Client::send(uint32_t messageId, const void* request, uint32_t requestSize,
                                    void* response, uint32_t responseSize, uint32_t timeoutMs) {
  const Deadline deadline = pavo::Clock::now() + std::chrono::milliseconds(timeoutMs);
  const Message* message = findMessage(messageId);
  if (message == nullptr || message->request.size == 0 || request == nullptr ||
      response == nullptr || requestSize != message->request.size ||
      responseSize != message->response.size) {
    return OVIX_CLIENT_INVALID_ARGUMENT;
  }
  std::vector<uint8_t> payload;
  if (const auto error = encodeMessage(message->request, request, payload)) {
    writeDebugLine("message 0x%04X: request not encoded: %s", messageId, error->reason.c_str());
    return OVIX_CLIENT_ENCODE_ERROR;
  }
  Waiter waiter{message->id, std::nullopt};
  const ovix_client_error_type failed = exchange(waiter, std::move(payload), deadline);
  if (failed != OVIX_CLIENT_NO_ERROR) {
    return failed;
  }
  const Frame& answer = *waiter.response;
  const Bounds bounds =
      answer.kind == FrameKind::UncheckedResponse ? Bounds::Trusted : Bounds::Judged;
  const auto error = answer.messageId == message->id
                         ? decodeMessage(message->response, answer.payload, response, bounds)
                         : CodecError{"the answer is to another message"};
  if (error) {
    writeDebugLine("message 0x%04X: response not decoded: %s", messageId, error->reason.c_str());
    return OVIX_CLIENT_DECODE_ERROR;
  }
  return OVIX_CLIENT_NO_ERROR;
}

ovix_client_error_type Client::exchange(Waiter& waiter, std::vector<uint8_t> payload,
                                        Deadline deadline) {
  const MutexLock lock(mutex);
  const uint32_t transaction = nextTransaction();
  const std::vector<uint8_t> bytes =
      wire::encodeFrame({FrameKind::Request, waiter.messageId, transaction, std::move(payload)});
  waiters.emplace(transaction, &waiter);
  ovix_client_error_type result = write(bytes, deadline);
  if (result == OVIX_CLIENT_NO_ERROR) {
    while (!waiter.response && !isLost && changed.waitUntil(mutex, deadline)) {
    }
    // A response that came before the loss counts.
    if (!waiter.response) {
      result = isLost ? OVIX_CLIENT_SERVICE_ERROR : OVIX_CLIENT_TIMEOUT_ERROR;
    }
  }
  waiters.erase(transaction);
  return result;
}

uint32_t Client::nextTransaction() {
  // 0 stands for no transaction, and after a wrap old transactions may still be under way.
  do {
    ++lastTransaction;
  } while (lastTransaction == 0 || waiters.contains(lastTransaction));
  return lastTransaction;
}

ovix_client_error_type Client::write(const std::vector<uint8_t>& bytes, Deadline deadline) {
  while (isWriting && !isLost && changed.waitUntil(mutex, deadline)) {
  }
  if (isLost) {
    return OVIX_CLIENT_SERVICE_ERROR;
  }
  if (isWriting) {
    return OVIX_CLIENT_TIMEOUT_ERROR;
  }
  isWriting = true;
  mutex.unlock();
  const WriteResult result = writeAll(bytes, deadline);
  if (result == WriteResult::Broken) {
    // Part of a frame may be on the connection, so no other can follow. The reader sees the end.
    ::shutdown(socket.get(), SHUT_RDWR);
  }
  mutex.lock();
  isWriting = false;
  changed.notifyAll();
  switch (result) {
    case WriteResult::Written:
      return OVIX_CLIENT_NO_ERROR;
    case WriteResult::TimedOut:
      return OVIX_CLIENT_TIMEOUT_ERROR;
    default:
      return OVIX_CLIENT_SERVICE_ERROR;
  }
}

Client::WriteResult Client::writeAll(const std::vector<uint8_t>& bytes, Deadline deadline) const {
  size_t written = 0;
  while (written < bytes.size()) {
    const ssize_t count = ::send(socket.get(), bytes.data() + written, bytes.size() - written,
                                 MSG_NOSIGNAL | MSG_DONTWAIT);
    if (count >= 0) {
      written += static_cast<size_t>(count);
      continue;
    }
    if (errno == EINTR) {
      continue;
    }
    if (errno != EAGAIN) {
      return WriteResult::Broken;
    }
    std::array<pollfd, 1> fds{{{socket.get(), POLLOUT, 0}}};
    if (!pavo::pollUntil(fds, deadline)) {
      return written == 0 ? WriteResult::TimedOut : WriteResult::Broken;
    }
  }
  return WriteResult::Written;
}

ovix_client_error_type Client::decode(int kind, uint32_t messageId, const void* source,
                                      uint32_t sourceSize, void* target,
                                      uint32_t targetSize) const {
  const Message* message = findMessage(messageId);
  if (message == nullptr || target == nullptr) {
    return OVIX_CLIENT_INVALID_ARGUMENT;
  }
  const Layout none{};
  const Layout& layout = kind == OVIX_MESSAGE_REQUEST      ? message->request
                         : kind == OVIX_MESSAGE_RESPONSE   ? message->response
                         : kind == OVIX_MESSAGE_INDICATION ? message->indication
                                                           : none;
  if (layout.size == 0 || targetSize != layout.size || (source == nullptr && sourceSize != 0)) {
    return OVIX_CLIENT_INVALID_ARGUMENT;
  }
  if (const auto error =
          decodeMessage(layout, {static_cast<const uint8_t*>(source), sourceSize}, target)) {
    writeDebugLine("message 0x%04X: not decoded: %s", messageId, error->reason.c_str());
    return OVIX_CLIENT_DECODE_ERROR;
  }
  return OVIX_CLIENT_NO_ERROR;
}

}  // namespace ovix
