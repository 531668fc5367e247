// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "ServicePresence.h"

#include "Handshake.h"

namespace ovix {

bool isServiceKnown(const std::string& modemPath) noexcept {
  try {
    const pavo::UniqueFd fd = modemPath.empty() ? pavo::UniqueFd() : openSocket(modemPath);
    wire::FrameReader frames;
    const auto answer =
        fd.isOpen()
            ? exchangeHellos(fd.get(), {wire::Purpose::Object, /*sawAbsence=*/false}, frames)
            : std::nullopt;
    return !answer || answer->refusal == 0;
  } catch (...) {
    return true;
  }
}

}  // namespace ovix
