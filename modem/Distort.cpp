#include "Distort.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

#include "FieldReader.h"
#include "FieldWriter.h"
#include "Messages.h"
#include "Refusal.h"

namespace modem {

namespace {

using Bytes = std::vector<uint8_t>;
using View = std::span<const uint8_t>;

constexpr size_t fieldHeaderBytes = 3;
constexpr size_t fieldBytesMax = UINT16_MAX;
constexpr size_t eventIndexAt = 4;  // behind the type
constexpr size_t eventCodeAt = 5;
constexpr size_t eventBytes = 9;
constexpr uint8_t unusedTag = 0x7F;  // of no field of any message

Bytes toBytes(View view) { return {view.begin(), view.end()}; }

// The message with each of its fields replaced by what change makes of its value; nothing leaves it
// out.
Bytes withFields(const Bytes& payload,
                 const std::function<std::optional<Bytes>(uint8_t tag, View value)>& change) {
  try {
    const FieldReader fields(payload);
    FieldWriter out;
    for (unsigned tag = 0; tag <= UINT8_MAX; ++tag) {
      const auto value = fields.bytes(static_cast<uint8_t>(tag));
      if (const auto changed = value ? change(static_cast<uint8_t>(tag), *value) : std::nullopt) {
        out.bytes(static_cast<uint8_t>(tag), *changed);
      }
    }
    return out.take();
  } catch (const Refusal&) {
    return payload;
  }
}

Bytes withField(const Bytes& payload, uint8_t wanted,
                const std::function<Bytes(View value)>& change) {
  return withFields(payload, [&](uint8_t tag, View value) -> std::optional<Bytes> {
    return tag == wanted ? change(value) : toBytes(value);
  });
}

Bytes spoiled(Bytes payload, Spoil::How how) {
  if (how == Spoil::How::Noise || payload.size() < fieldHeaderBytes) {
    return Bytes(16, 0xFF);
  }
  const size_t first = fieldHeaderBytes + numberFrom(View(payload).subspan(1, 2));
  switch (how) {
    case Spoil::How::Twice: {
      const Bytes copy(payload.begin(), payload.begin() + static_cast<std::ptrdiff_t>(first));
      payload.insert(payload.end(), copy.begin(), copy.end());
      break;
    }
    case Spoil::How::Overrun:
      payload[1] = 0xFF;
      payload[2] = 0xFF;
      break;
    default: {  // Wide: no value of a first field comes near 255 bytes.
      ++payload[1];
      payload.insert(payload.begin() + static_cast<std::ptrdiff_t>(first), 0);
      break;
    }
  }
  return payload;
}

Bytes withoutField(const Bytes& payload, uint8_t left) {
  Bytes out = withFields(payload, [left](uint8_t tag, View value) -> std::optional<Bytes> {
    return tag == left ? std::nullopt : std::optional(toBytes(value));
  });
  if (out.empty()) {
    // An empty message is another fault: this one is there and says nothing.
    FieldWriter filler;
    filler.number(unusedTag, uint8_t{0});
    out = filler.take();
  }
  return out;
}

Bytes withEventNumber(const Bytes& payload, size_t at, uint32_t number, size_t width) {
  return withField(payload, tagChangedProfile, [&](View value) {
    Bytes changed = toBytes(value);
    for (size_t i = 0; i < width && changed.size() == eventBytes; ++i) {
      changed[at + i] = static_cast<uint8_t>(number >> (8 * i));
    }
    return changed;
  });
}

// As many nameless profiles behind those that are there as count says, and bytesMax has room for.
Bytes overcounted(View list, uint16_t count, size_t bytesMax) {
  constexpr size_t elementBytes = 6;
  Bytes out;
  FieldWriter::appendNumber(out, count);
  out.insert(out.end(), list.begin() + 2, list.end());
  const size_t present = numberFrom(list.first(2));
  for (size_t i = present; i < count && out.size() + elementBytes <= bytesMax; ++i) {
    FieldWriter::appendNumber(out, profileType3gpp);
    FieldWriter::appendNumber(out, static_cast<uint8_t>(i));
    FieldWriter::appendNumber(out, uint8_t{0});
  }
  return out;
}

// One byte more than its bound: no room is left for a terminator.
std::string brimful(std::string text, size_t bytesMax) {
  text.resize(bytesMax + 1, 'x');
  return text;
}

Profile brimfulTexts(Profile profile) {
  forEachSetting(
      []<typename Value>(const Setting& setting, std::optional<Value>& value) {
        if constexpr (std::is_same_v<Value, std::string>) {
          value = brimful(value.value_or(""), setting.textBytesMax);
        }
      },
      profile);
  return profile;
}

Bytes listOfBrimfulNames(View list) {
  constexpr size_t idBytes = 5;
  constexpr size_t nameBytesMax = 50;
  Bytes out(list.begin(), list.begin() + 2);
  for (View rest = list.subspan(2); rest.size() > idBytes;) {
    const size_t nameBytes = std::min<size_t>(rest[idBytes], rest.size() - idBytes - 1);
    const View name = rest.subspan(idBytes + 1, nameBytes);
    const std::string full = brimful({name.begin(), name.end()}, nameBytesMax);
    out.insert(out.end(), rest.begin(), rest.begin() + idBytes);
    out.push_back(static_cast<uint8_t>(full.size()));
    out.insert(out.end(), full.begin(), full.end());
    rest = rest.subspan(idBytes + 1 + nameBytes);
  }
  return out;
}

// What is said of a list holds for the answers that have one: a refusal has none.
Bytes withList(const Bytes& payload, const std::function<Bytes(View list)>& change) {
  return withField(payload, tagAnswer,
                   [&](View list) { return list.size() < 2 ? toBytes(list) : change(list); });
}

bool isSuccess(const Bytes& payload) {
  const auto result = FieldReader(payload).bytes(tagResult);
  return result && result->size() >= 4 && numberFrom(result->first(4)) == 0;
}

Bytes unterminated(const Bytes& payload, uint16_t messageId) {
  if (messageId == profileList) {
    return withList(payload, listOfBrimfulNames);
  }
  return isSuccess(payload)
             ? withSettings(payload, brimfulTexts(readSettings(FieldReader(payload))))
             : payload;
}

void markUnchecked(Frame& frame, bool isUnchecked) {
  if (isUnchecked) {
    frame.kind = FrameKind::UncheckedResponse;
  }
}

// What an effect does to a frame; the general case leaves it alone.
struct Distortion {
  Frame& frame;

  void operator()(const CutTo& cut) const {
    frame.payload.resize(std::min(cut.bytes, frame.payload.size()));
  }
  void operator()(const Spoil& spoil) const {
    frame.payload = spoiled(std::move(frame.payload), spoil.how);
  }
  void operator()(const LeaveOutField& field) const {
    frame.payload = withoutField(frame.payload, field.tag);
  }
  void operator()(const SendAsMessage& other) const { frame.messageId = other.messageId; }
  void operator()(const TellIndex& index) const {
    frame.payload = withEventNumber(frame.payload, eventIndexAt, index.index, /*width=*/1);
  }
  void operator()(const TellEvent& event) const {
    frame.payload = withEventNumber(frame.payload, eventCodeAt, event.event, /*width=*/4);
  }
  void operator()(const UseSettings& use) const {
    if (frame.messageId == profileSettings && isSuccess(frame.payload)) {
      frame.payload = withSettings(frame.payload, use.settings);
    }
  }
  void operator()(const Overcount& over) const {
    const size_t messageBytes = frame.payload.size();
    frame.payload = withList(frame.payload, [&](View list) {
      const size_t others = messageBytes - list.size();
      return overcounted(list, over.count,
                         std::min(fieldBytesMax, wire::framePayloadBytesMax - others));
    });
    markUnchecked(frame, over.isUnchecked);
  }
  void operator()(const LeaveUnterminated& texts) const {
    frame.payload = unterminated(frame.payload, frame.messageId);
    markUnchecked(frame, texts.isUnchecked);
  }
  template <typename Other>
  void operator()(const Other&) const {}
};

}  // namespace

Frame distorted(Frame frame, const Effect& effect) {
  std::visit(Distortion{frame}, effect);
  return frame;
}

std::vector<uint8_t> withSettings(std::span<const uint8_t> payload, const Profile& settings) {
  FieldWriter written;
  writeSettings(written, settings);
  Bytes out = written.take();
  const FieldReader replaced(out);
  const Bytes kept = withFields(toBytes(payload), [&](uint8_t tag, View value) {
    return replaced.bytes(tag) ? std::nullopt : std::optional(toBytes(value));
  });
  out.insert(out.end(), kept.begin(), kept.end());
  return out;
}

}  // namespace modem
