// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/client/ControlClient.h"
#include "modem/common/File.h"
#include "modem/common/Json.h"
#include "modem/program/Commands.h"

#include <nlohmann/json.hpp>

#include <iostream>

namespace modem {

using nlohmann::json;

namespace {

// A value that is not JSON is a text: apn=ims, class=3, clat=true.
json valueFromText(const std::string& text) {
  json value = json::parse(text, /*cb=*/nullptr, /*allow_exceptions=*/false);
  return value.is_discarded() ? json(text) : value;
}

json objectFromFile(const std::string& path) {
  return readJson(path, readFile(path), [](json object) {
    if (!object.is_object()) {
      throw Error("it has to be a JSON object");
    }
    return object;
  });
}

void addWord(const std::string& word, json& args) {
  if (word.starts_with('@')) {
    args.update(objectFromFile(word.substr(1)));
    return;
  }
  if (word.starts_with('{')) {
    const json object = json::parse(word, /*cb=*/nullptr, /*allow_exceptions=*/false);
    if (!object.is_object()) {
      throw UsageError("not a JSON object: " + word);
    }
    args.update(object);
    return;
  }
  const size_t equals = word.find('=');
  if (equals == std::string::npos || equals == 0) {
    throw UsageError("neither a JSON object nor key=value nor @FILE: " + word);
  }
  args[word.substr(0, equals)] = valueFromText(word.substr(equals + 1));
}

}  // namespace

int control(const ControlArguments& arguments) {
  json args = json::object();
  for (const std::string& word : arguments.words) {
    addWord(word, args);
  }
  ControlClient client(arguments.socketPath);
  const json reply = client.call(arguments.verb, args);
  std::cout << reply.dump(/*indent=*/2) << std::endl;
  return reply["ok"] == true ? exitDone : exitRefused;
}

}  // namespace modem
