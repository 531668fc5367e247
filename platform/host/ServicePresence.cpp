#include "ServicePresence.h"

#include "Greeting.h"

namespace ovix {

bool isServiceKnown() noexcept {
  try {
    const char* path = modemPath();
    const modem::UniqueFd fd = path != nullptr ? connectToSocket(path) : modem::UniqueFd();
    modem::FrameReader frames;
    const auto answer =
        fd.isOpen() ? greet(fd.get(), {modem::Purpose::Object, /*sawAbsence=*/false}, frames)
                    : std::nullopt;
    return !answer || answer->refusal == 0;
  } catch (...) {
    return true;
  }
}

}  // namespace ovix
