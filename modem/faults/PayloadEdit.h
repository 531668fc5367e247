// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Changes the fields of an encoded payload, so that the modem can send what a broken one could.
//
// A payload that is not a sequence of fields is returned as it is.
#pragma once

#include "modem/core/FieldReader.h"
#include "modem/core/FieldWriter.h"
#include "modem/core/Profile.h"
#include "wire/Frame.h"

#include <cstdint>
#include <functional>
#include <optional>

namespace modem {

using wire::Frame;
using wire::FrameKind;

inline Bytes toBytes(ByteView view) { return {view.begin(), view.end()}; }

// Returns the payload with each value replaced by change(tag, value). A field for which it returns
// nothing is left out.
using FieldChange = std::function<std::optional<Bytes>(uint8_t tag, ByteView value)>;
Bytes withFields(ByteView payload, const FieldChange& change);

// Returns the payload with the value of one field replaced, if it has that field.
Bytes withField(ByteView payload, uint8_t tag, const std::function<Bytes(ByteView value)>& change);

// Returns a request or a settings answer with these settings in place of its own.
Bytes withSettings(ByteView payload, const Profile& settings);

// Whether a response says that the request has succeeded.
bool isSuccess(ByteView response);

}  // namespace modem
