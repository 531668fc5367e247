// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The failure idiom of the modem: a function that fails throws Error with one line of text, which
// names the file, member or argument that is wrong.
//
// Two derived classes select a code: a Refusal the error code of a response, a UsageError the exit
// status of the program. Control::handle and Modem::handle turn an exception into the answer to one
// request, so that it does not end the server.
#pragma once

#include <stdexcept>

namespace modem {

class Error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace modem
