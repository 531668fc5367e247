// Files with passwords inside, which their owner alone may read.
//
// The folder may be one that other users write to, such as /tmp. So the name itself has to be the
// file: a link that another user has left there would turn the writes to a file of that user's
// choice.
#pragma once

#include <string>

#include "modem/UniqueFd.h"

namespace modem {

struct PrivateFile {
  UniqueFd fd;          // for writing; closed when the file cannot be used
  std::string problem;  // why it cannot be used, for people; empty when it can
};

// Appends to the file, and makes it when it is missing. A file that is there has to belong to this
// process's user and to have no second name; its mode becomes 0600. Character devices, of which
// /dev/null is one, are taken as they are. Everything else is refused, symbolic links such as
// /dev/stderr among them.
PrivateFile openPrivateFile(const std::string& path);

// A fresh file; one of that name that is left over from before is removed.
PrivateFile createPrivateFile(const std::string& path);

// Takes the rights of all others away from a file that this process's user owns. Everything else
// stays as it is: its mode is not this process's to change.
void makePrivate(const std::string& path);

}  // namespace modem
