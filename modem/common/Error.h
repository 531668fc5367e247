// The one way in which the modem's code fails: it throws an exception whose text is one line for
// people and names the file, member or argument that is wrong.
//
// Two failures carry a code besides: a Refusal has the error code of a response, a UsageError the
// program's exit status. The functions that face the sockets (Server::run, Control::handle,
// Modem::handle, connectEmbedded) catch what belongs to one request or one connection.
#pragma once

#include <stdexcept>

namespace modem {

class Error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace modem
