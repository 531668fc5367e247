#include "ServicePresence.h"

#include "Greeting.h"

namespace ovix {

bool isServiceKnown(const std::string& modemPath) noexcept {
  try {
    const modem::UniqueFd fd = modemPath.empty() ? modem::UniqueFd() : connectToSocket(modemPath);
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
