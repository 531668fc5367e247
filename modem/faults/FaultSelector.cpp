// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/faults/FaultSelector.h"

#include "modem/common/Json.h"
#include "modem/core/Messages.h"
#include "wire/Hello.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace modem {

using wire::Purpose;

using nlohmann::json;

namespace {

struct Name {
  std::string_view name;
  uint32_t code;
};

struct KindRow {
  std::string_view selector;
  std::vector<Name> names;
  uint32_t codeMax;  // the largest code that may be given as a number
};

std::vector<Name> requestNames() {
  std::vector<Name> names;
  for (const MessageName& known : messageNames()) {
    if (known.id != MessageId::ProfileChanged) {
      names.push_back({known.name, numberOf(known.id)});
    }
  }
  return names;
}

std::vector<Name> indicationNames() {
  std::vector<Name> names;
  for (const EventName& known : eventNames()) {
    names.push_back({known.name, known.event});
  }
  return names;
}

std::vector<Name> purposeNames() {
  std::vector<Name> names;
  for (const Purpose purpose : {Purpose::Open, Purpose::Find, Purpose::Watch, Purpose::Object}) {
    names.push_back({wire::purposeName(purpose), static_cast<uint32_t>(purpose)});
  }
  return names;
}

// In the order of Subject::Kind. The rows are never destroyed, because an embedded modem's thread
// may use them while the process exits.
const std::array<KindRow, 3>& kindRows() {
  static const auto& rows =
      *new std::array<KindRow, 3>{{{"message", requestNames(), 0xFFFF},
                                   {"indication", indicationNames(), 0xFFFFFFFF},
                                   {"service", purposeNames(), /*codeMax=*/3}}};
  return rows;
}

const KindRow& rowOf(Subject::Kind kind) { return kindRows()[static_cast<size_t>(kind)]; }

[[noreturn]] void refuse(const KindRow& row) {
  std::string known;
  for (const Name& name : row.names) {
    known += std::string(name.name) + ", ";
  }
  throw Error(std::string(row.selector) + " has to be one of " + known + "any or a number");
}

uint32_t codeFromJson(const json& value, const KindRow& row) {
  if (!value.is_string()) {
    const auto code =
        static_cast<uint32_t>(numberFromJson(value, row.codeMax, std::string(row.selector)));
    if (row.selector == "message" &&
        MessageId{static_cast<uint16_t>(code)} == MessageId::ProfileChanged) {
      refuse(row);
    }
    return code;
  }
  const auto named = std::ranges::find(row.names, value.get_ref<const std::string&>(), &Name::name);
  if (named == row.names.end()) {
    refuse(row);
  }
  return named->code;
}

}  // namespace

Selector selectorFromJson(const json& args) {
  std::optional<Selector> selector;
  for (size_t i = 0; i < kindRows().size(); ++i) {
    const KindRow& row = kindRows()[i];
    const auto value = args.find(std::string(row.selector));
    if (value == args.end()) {
      continue;
    }
    if (selector) {
      throw Error("message, indication and service exclude each other");
    }
    selector.emplace().kind = static_cast<Subject::Kind>(i);
    if (*value != "any") {
      selector->code = codeFromJson(*value, row);
    }
  }
  if (!selector) {
    throw Error("one of message, indication and service is missing");
  }
  return *selector;
}

void selectorToJson(const Selector& selector, json& out) {
  const KindRow& row = rowOf(selector.kind);
  json& value = out[std::string(row.selector)];
  if (!selector.code) {
    value = "any";
    return;
  }
  const auto named = std::ranges::find(row.names, *selector.code, &Name::code);
  value = named != row.names.end() ? json(named->name) : json(*selector.code);
}

std::string selectorName(Subject::Kind kind) { return std::string(rowOf(kind).selector); }

bool isSelected(const Selector& selector, Subject subject) {
  return selector.kind == subject.kind && (!selector.code || *selector.code == subject.code);
}

std::vector<Subject> subjectsOf(const Selector& selector) {
  if (selector.code) {
    return {{selector.kind, *selector.code}};
  }
  std::vector<Subject> subjects;
  for (const Name& name : rowOf(selector.kind).names) {
    subjects.push_back({selector.kind, name.code});
  }
  return subjects;
}

}  // namespace modem
