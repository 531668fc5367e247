// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "DryRun.h"

#include "Context.h"
#include "Table.h"

namespace pavoctl {
namespace {

// Returns the profile as the cache holds it.
CachedProfile cachedProfile(const CommandLine& line, Context& context) {
  for (auto& cached : context.session(line.session).snapshot().profiles) {
    if (cached.profile.id == line.profileId) {
      return std::move(cached);
    }
  }
  // get() throws with the reason, unless the profile has appeared since.
  context.session(line.session).get(line.profileId);
  throw Failure("profile " + std::to_string(line.profileId) + " has just come");
}

void print(const CommandLine& line, Context& context, const std::string& text,
           const Json& members) {
  if (line.isJson) {
    Json json{{"isDryRun", true}};
    json.update(members);
    context.output.line(dumpJson(json, /*indent=*/2));
    return;
  }
  context.output.line(text);
  context.output.write(profileText(members.at("profile")));
}

}  // namespace

ExitStatus wouldAdd(const CommandLine& line, Context& context) {
  const CachedProfile profile =
      created(pavo::AddProfileParams(line.attributes, line.isPersistent, line.isInitialAttach));
  Json json = toJson(profile.profile, line.secrets);
  // The modem chooses the id.
  json.erase("id");
  print(line, context, "a profile would be added",
        Json{{"would", "add"}, {"isPersistent", line.isPersistent}, {"profile", json}});
  return exitDone;
}

ExitStatus wouldModify(const CommandLine& line, Context& context) {
  const CachedProfile before = cachedProfile(line, context);
  const auto after = changed(before, pavo::ModifyProfileParams(line.attributes));
  const Profile& profile = after ? after->profile : before.profile;
  const Json change = changes(before.profile, profile, line.secrets);
  const std::string name = "profile " + std::to_string(line.profileId);
  print(line, context,
        after ? name + " would be changed: " + changesText(change) : name + " is like that already",
        Json{{"would", after ? "modify" : "nothing"},
             {"id", line.profileId},
             {"changes", change},
             {"profile", toJson(profile, line.secrets)}});
  return exitDone;
}

ExitStatus wouldDelete(const CommandLine& line, Context& context) {
  const CachedProfile cached = cachedProfile(line, context);
  print(line, context, "profile " + std::to_string(line.profileId) + " would be deleted",
        Json{{"would", "delete"},
             {"id", line.profileId},
             {"profile", toJson(cached.profile, line.secrets)}});
  return exitDone;
}

}  // namespace pavoctl
