// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The effects that change answers with a list or with texts.
#include "modem/core/FieldReader.h"
#include "modem/core/FieldWriter.h"
#include "modem/core/Profile.h"
#include "modem/faults/PayloadEdit.h"
#include "modem/faults/effects/EffectFamilies.h"

#include <algorithm>
#include <limits>

namespace modem {

using nlohmann::json;

namespace {

constexpr size_t listCountBytes = 2;

bool isList(Subject subject) { return isMessage(subject, MessageId::ProfileList); }

// Reads the option that makes the host library pass the answer on without a check.
bool uncheckedIn(const json& args) {
  if (!args.contains("unchecked")) {
    return false;
  }
  requireTrue(args, "unchecked");
  return true;
}

void setUnchecked(Frame& frame, bool isUnchecked) {
  if (isUnchecked) {
    frame.kind = FrameKind::UncheckedResponse;
  }
}

// Replaces the list of an answer that has one; a refusal has none.
template <typename Change>
void changeList(Frame& frame, const Change& change) {
  frame.payload = withField(frame.payload, tagAnswer, [&](ByteView list) {
    return list.size() < listCountBytes ? toBytes(list) : change(list);
  });
}

// The list claims this number of elements. Nameless ones are added up to that number, or to what
// the message can hold.
struct OtherCount final : ContentEffect {
  static constexpr EffectType type{"listCount", isList, parse<OtherCount>, {"unchecked"}};
  OtherCount(const EffectType&, const json& args)
      : ContentEffect(type, args),
        count(static_cast<uint16_t>(
            numberArgument(args, type.name, std::numeric_limits<uint16_t>::max()))),
        isUnchecked(uncheckedIn(args)) {}
  void change(Frame& frame) const override {
    const size_t messageBytes = frame.payload.size();
    changeList(frame, [&](ByteView list) {
      const size_t otherBytes = messageBytes - list.size();
      return withCount(list, std::min<size_t>(UINT16_MAX, wire::framePayloadBytesMax - otherBytes));
    });
    setUnchecked(frame, isUnchecked);
  }

  Bytes withCount(ByteView list, size_t bytesMax) const {
    constexpr size_t namelessBytes = profileIdBytes + 1;
    Bytes out;
    FieldWriter::appendNumber(out, count);
    out.insert(out.end(), list.begin() + listCountBytes, list.end());
    const size_t present = numberFrom(list.first(listCountBytes));
    for (size_t i = present; i < count && out.size() + namelessBytes <= bytesMax; ++i) {
      FieldWriter::appendNumber(out, profileType3gpp);
      FieldWriter::appendNumber(out, static_cast<uint8_t>(i));
      FieldWriter::appendNumber(out, uint8_t{0});
    }
    return out;
  }

  const uint16_t count;
  const bool isUnchecked;
};

// Every text is one byte longer than its bound, so that a terminator does not fit.
struct UnterminatedTexts final : ContentEffect {
  static constexpr EffectType type{"unterminated",
                                   [](Subject subject) {
                                     return isList(subject) ||
                                            isMessage(subject, MessageId::ProfileSettings);
                                   },
                                   parse<UnterminatedTexts>,
                                   {"unchecked"}};

  UnterminatedTexts(const EffectType&, const json& args) : ContentEffect(type, args) {
    requireTrue(args, type.name);
    isUnchecked = uncheckedIn(args);
  }
  void change(Frame& frame) const override {
    if (MessageId{frame.messageId} == MessageId::ProfileList) {
      changeList(frame, withLongNames);
    } else if (isSuccess(frame.payload)) {
      Profile settings = readSettings(FieldReader(frame.payload));
      forEachSetting(lengthenText, settings);
      frame.payload = withSettings(frame.payload, settings);
    }
    setUnchecked(frame, isUnchecked);
  }

  static std::string lengthened(std::string text, size_t bytesMax) {
    text.resize(bytesMax + 1, 'x');
    return text;
  }

  static constexpr auto lengthenText = []<typename Value>(const Setting& setting,
                                                          std::optional<Value>& value) {
    if constexpr (std::is_same_v<Value, std::string>) {
      value = lengthened(value.value_or(""), setting.textBytesMax);
    }
  };

  static Bytes withLongNames(ByteView list) {
    Bytes out = toBytes(list.first(listCountBytes));
    for (ByteView rest = list.subspan(listCountBytes); rest.size() > profileIdBytes;) {
      const size_t nameBytes =
          std::min<size_t>(rest[profileIdBytes], rest.size() - profileIdBytes - 1);
      const ByteView name = rest.subspan(profileIdBytes + 1, nameBytes);
      const std::string full = lengthened({name.begin(), name.end()}, nameBytesMax);
      out.insert(out.end(), rest.begin(), rest.begin() + profileIdBytes);
      out.push_back(static_cast<uint8_t>(full.size()));
      out.insert(out.end(), full.begin(), full.end());
      rest = rest.subspan(profileIdBytes + 1 + nameBytes);
    }
    return out;
  }

  bool isUnchecked = false;
};

constexpr const EffectType* answerTypes[] = {&OtherCount::type, &UnterminatedTexts::type};

}  // namespace

std::span<const EffectType* const> answerEffects() { return answerTypes; }

}  // namespace modem
