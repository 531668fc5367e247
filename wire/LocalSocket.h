// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Unix stream sockets by path.
#pragma once

#include "base/UniqueFd.h"

#include <sys/types.h>
#include <sys/un.h>

#include <chrono>
#include <optional>
#include <stdexcept>
#include <string>

namespace wire {

// The text says in one line what is wrong with a socket, and names its path.
class SocketError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A longer path does not fit into a socket's address.
inline constexpr size_t socketPathBytesMax = sizeof sockaddr_un::sun_path - 1;

// Throws SocketError. With isBlocking false, a server that has stopped accepting is an error at
// once.
pavo::UniqueFd connectToSocket(const std::string& path, bool isBlocking = true);

// Only the user "server", which serves a socket, and root may use it. The socket's mode says the
// same, but the owner of the socket's folder may change the mode.
bool mayConnect(uid_t peer, uid_t server);

// The user that made the connection at the other end; empty when the system does not know.
std::optional<uid_t> peerOf(int connectedSocket);

// Listens on a path, for its own user. It replaces a socket file that a dead process left there; a
// socket that is served, or a file of another kind, is a SocketError. The destructor removes the
// file if it is still the one that this object made. Accepting never blocks.
class ListeningSocket {
 public:
  // The time for which another process may hold the lock of the socket's folder. A modem that
  // starts there holds it for an instant.
  static constexpr std::chrono::seconds lockTimeout{1};

  explicit ListeningSocket(std::string socketPath);
  ~ListeningSocket();
  ListeningSocket(const ListeningSocket&) = delete;
  ListeningSocket& operator=(const ListeningSocket&) = delete;

  int get() const { return fd.get(); }

 private:
  const std::string path;
  pavo::UniqueFd fd;
  dev_t device = 0;
  ino_t inode = 0;
};

}  // namespace wire
