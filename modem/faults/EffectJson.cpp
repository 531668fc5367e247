#include "modem/faults/EffectJson.h"

#include <algorithm>
#include <array>
#include <limits>

#include "modem/core/Messages.h"
#include "modem/core/ProfileJson.h"

namespace modem {

using nlohmann::json;
using std::chrono::milliseconds;

namespace {

constexpr uint64_t i32Max = std::numeric_limits<int32_t>::max();
constexpr uint64_t delayMsMax = 3'600'000;
// Longer texts than a profile may have are the point of some faults, but a fault has to fit into a
// control frame.
constexpr size_t settingTextBytesMax = 512;

// Where effects make sense.

bool onMessage(Subject subject) { return subject.kind == Subject::Kind::Message; }
bool onIndication(Subject subject) { return subject.kind == Subject::Kind::Indication; }
bool onService(Subject subject) { return subject.kind == Subject::Kind::Service; }
bool onCall(Subject subject) { return !onIndication(subject); }
bool onOutgoing(Subject subject) { return !onService(subject); }
bool onAny(Subject) { return true; }
bool onList(Subject subject) { return onMessage(subject) && subject.code == profileList; }
bool onTexts(Subject subject) {
  return onList(subject) || (onMessage(subject) && subject.code == profileSettings);
}
bool onSettings(Subject subject) {
  return onMessage(subject) && (subject.code == createProfile || subject.code == modifyProfile ||
                                subject.code == profileSettings);
}

// What the rows of the table below are made of. `name` is the argument that asks for the effect.

void requireTrue(const json& args, const std::string& name) {
  if (args[name] != true) {
    throw JsonError(name + " has to be true");
  }
}

template <typename Plain>
Effect plainFrom(const json& args, const std::string& name) {
  requireTrue(args, name);
  return Plain{};
}

json plainTo(const Effect&) { return true; }

template <typename Numbered, auto member, uint64_t max>
Effect numberedFrom(const json& args, const std::string& name) {
  Numbered effect{};
  using Number = std::remove_reference_t<decltype(effect.*member)>;
  effect.*member = static_cast<Number>(numberFromJson(args[name], max, name));
  return effect;
}

template <typename Numbered, auto member>
json numberedTo(const Effect& effect) {
  return std::get<Numbered>(effect).*member;
}

template <typename Delayed>
Effect delayedFrom(const json& args, const std::string& name) {
  return Delayed{milliseconds(numberFromJson(args[name], delayMsMax, name))};
}

template <typename Delayed>
json delayedTo(const Effect& effect) {
  return std::get<Delayed>(effect).delay.count();
}

struct Word {
  std::string_view name;
  int value;
};

template <typename Words>
int wordFrom(const json& value, const Words& words, const std::string& what) {
  std::string known;
  for (const Word& word : words) {
    if (value == word.name) {
      return word.value;
    }
    known += (known.empty() ? "" : ", ") + std::string(word.name);
  }
  throw JsonError(what + " has to be one of " + known);
}

template <typename Words>
json wordTo(int value, const Words& words) {
  return std::ranges::find(words, value, &Word::value)->name;
}

// The effects of which there is more to say.

Effect errorFrom(const json& args, const std::string& name) {
  const uint64_t error = numberFromJson(args[name], i32Max, name);
  const uint64_t result = args.contains("result") ? numberFromJson(args["result"], i32Max, "result")
                                                  : static_cast<uint64_t>(resultFailure);
  return AnswerError{static_cast<int32_t>(result), static_cast<int32_t>(error)};
}

json errorTo(const Effect& effect) { return std::get<AnswerError>(effect).error; }

void judgeSettings(const json& wanted) {
  if (!wanted.is_object() || wanted.empty()) {
    throw JsonError("settings has to be an object with settings");
  }
  for (const auto& [setting, value] : wanted.items()) {
    if (!isSettingName(setting)) {
      throw JsonError("settings has the unknown member \"" + setting + "\"");
    }
  }
}

Effect settingsFrom(const json& args, const std::string& name) {
  judgeSettings(args[name]);
  try {
    UseSettings effect{profileFromJson(args[name])};
    forEachSetting(
        []<typename Value>(const Setting& setting, const std::optional<Value>& value) {
          if constexpr (std::is_same_v<Value, std::string>) {
            if (value && value->size() > settingTextBytesMax) {
              throw JsonError(std::string(setting.name) + " has more than " +
                              std::to_string(settingTextBytesMax) + " bytes");
            }
          }
        },
        effect.settings);
    return effect;
  } catch (const JsonError& error) {
    throw JsonError(name + "." + error.what());
  }
}

json settingsTo(const Effect& effect) { return toJson(std::get<UseSettings>(effect).settings); }

constexpr std::array<Word, 3> moments = {
    {{"before", static_cast<int>(LosePower::Moment::Before)},
     {"unanswered", static_cast<int>(LosePower::Moment::Unanswered)},
     {"after", static_cast<int>(LosePower::Moment::After)}}};

Effect powerFrom(const json& args, const std::string& name) {
  return LosePower{static_cast<LosePower::Moment>(wordFrom(args[name], moments, name)),
                   powerCycleFromJson(args)};
}

json powerTo(const Effect& effect) {
  return wordTo(static_cast<int>(std::get<LosePower>(effect).moment), moments);
}

Effect refuseFrom(const json& args, const std::string& name) {
  const int64_t code = args[name].is_number_integer() ? args[name].get<int64_t>() : 0;
  if (code == 0 || code != static_cast<int32_t>(code)) {
    throw JsonError(name + " has to be a whole number of 32 bits other than 0");
  }
  return RefuseHello{static_cast<int32_t>(code)};
}

json refuseTo(const Effect& effect) { return std::get<RefuseHello>(effect).code; }

constexpr std::array<Word, 4> spoilings = {{{"noise", static_cast<int>(Spoil::How::Noise)},
                                            {"twice", static_cast<int>(Spoil::How::Twice)},
                                            {"overrun", static_cast<int>(Spoil::How::Overrun)},
                                            {"wide", static_cast<int>(Spoil::How::Wide)}}};

Effect spoilFrom(const json& args, const std::string& name) {
  return Spoil{static_cast<Spoil::How>(wordFrom(args[name], spoilings, name))};
}

json spoilTo(const Effect& effect) {
  return wordTo(static_cast<int>(std::get<Spoil>(effect).how), spoilings);
}

bool uncheckedIn(const json& args) {
  if (args.contains("unchecked")) {
    requireTrue(args, "unchecked");
  }
  return args.contains("unchecked");
}

Effect overcountFrom(const json& args, const std::string& name) {
  const uint64_t count = numberFromJson(args[name], std::numeric_limits<uint16_t>::max(), name);
  return Overcount{static_cast<uint16_t>(count), uncheckedIn(args)};
}

json overcountTo(const Effect& effect) { return std::get<Overcount>(effect).count; }

Effect unterminatedFrom(const json& args, const std::string& name) {
  requireTrue(args, name);
  return LeaveUnterminated{uncheckedIn(args)};
}

// The arguments that go with the one that names the effect.
void optionsToJson(const Effect& effect, json& out) {
  if (const auto* answer = std::get_if<AnswerError>(&effect)) {
    out["result"] = answer->result;
  } else if (const auto* power = std::get_if<LosePower>(&effect)) {
    powerCycleToJson(power->cycle, out);
  }
  const auto* list = std::get_if<Overcount>(&effect);
  const auto* texts = std::get_if<LeaveUnterminated>(&effect);
  if ((list != nullptr && list->isUnchecked) || (texts != nullptr && texts->isUnchecked)) {
    out["unchecked"] = true;
  }
}

struct EffectRow {
  std::string_view name;
  bool (*fits)(Subject subject);
  Effect (*from)(const json& args, const std::string& name);
  json (*to)(const Effect& effect);
  std::array<std::string_view, 3> options = {};  // further arguments
};

// In the order of the alternatives of Effect.
// clang-format off
constexpr std::array<EffectRow, std::variant_size_v<Effect>> effectRows = {{
    {"error", onMessage, errorFrom, errorTo, {"result"}},
    {"silent", onCall, plainFrom<StaySilent>, plainTo},
    {"delayMs", onCall, delayedFrom<TakeUpLate>, delayedTo<TakeUpLate>},
    {"settings", onSettings, settingsFrom, settingsTo},
    {"power", onAny, powerFrom, powerTo, {"offMs", "onMs", "times"}},
    {"refuse", onService, refuseFrom, refuseTo},
    {"lost", onOutgoing, plainFrom<Lose>, plainTo},
    {"doubled", onOutgoing, plainFrom<Double>, plainTo},
    {"lateMs", onOutgoing, delayedFrom<SendLate>, delayedTo<SendLate>},
    {"cutTo", onOutgoing, numberedFrom<CutTo, &CutTo::bytes, 65536>,
     numberedTo<CutTo, &CutTo::bytes>},
    {"undecodable", onOutgoing, spoilFrom, spoilTo},
    {"withoutField", onOutgoing, numberedFrom<LeaveOutField, &LeaveOutField::tag, 255>,
     numberedTo<LeaveOutField, &LeaveOutField::tag>},
    {"asMessage", onOutgoing, numberedFrom<SendAsMessage, &SendAsMessage::messageId, 65535>,
     numberedTo<SendAsMessage, &SendAsMessage::messageId>},
    {"early", onIndication, plainFrom<SendEarly>, plainTo},
    {"reordered", onIndication, plainFrom<HoldBack>, plainTo},
    {"index", onIndication, numberedFrom<TellIndex, &TellIndex::index, 255>,
     numberedTo<TellIndex, &TellIndex::index>},
    {"event", onIndication, numberedFrom<TellEvent, &TellEvent::event, 0xFFFFFFFF>,
     numberedTo<TellEvent, &TellEvent::event>},
    {"listCount", onList, overcountFrom, overcountTo, {"unchecked"}},
    {"unterminated", onTexts, unterminatedFrom, plainTo, {"unchecked"}},
}};
// clang-format on

const EffectRow& rowOf(const Effect& effect) { return effectRows[effect.index()]; }

[[noreturn]] void refuseNoEffect() {
  std::string known;
  for (const EffectRow& row : effectRows) {
    known += (known.empty() ? "" : ", ") + std::string(row.name);
  }
  throw JsonError("one of " + known + " is needed");
}

}  // namespace

Effect effectFromJson(const json& args) {
  const EffectRow* asked = nullptr;
  for (const EffectRow& row : effectRows) {
    if (!args.contains(std::string(row.name))) {
      continue;
    }
    if (asked != nullptr) {
      throw JsonError(std::string(asked->name) + " and " + std::string(row.name) +
                      " exclude each other");
    }
    asked = &row;
  }
  if (asked == nullptr) {
    refuseNoEffect();
  }
  return asked->from(args, std::string(asked->name));
}

void effectToJson(const Effect& effect, json& out) {
  out[effectName(effect)] = rowOf(effect).to(effect);
  optionsToJson(effect, out);
}

std::string effectName(const Effect& effect) { return std::string(rowOf(effect).name); }

bool isArgumentOf(const Effect& effect, std::string_view argument) {
  const EffectRow& row = rowOf(effect);
  return argument == row.name ||
         (!argument.empty() && std::ranges::count(row.options, argument) > 0);
}

bool canBefall(const Effect& effect, Subject subject) {
  const auto* power = std::get_if<LosePower>(&effect);
  // Between a request and its answer there is a moment; an indication and a hello have none.
  const bool isUnanswered = power != nullptr && power->moment == LosePower::Moment::Unanswered;
  return isUnanswered ? onMessage(subject) : rowOf(effect).fits(subject);
}

std::vector<std::string_view> effectNamesFor(Subject subject) {
  std::vector<std::string_view> names;
  for (const EffectRow& row : effectRows) {
    if (row.fits(subject)) {
      names.push_back(row.name);
    }
  }
  return names;
}

}  // namespace modem
