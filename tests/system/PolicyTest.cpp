#include "PolicyTest.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <sstream>
#include <utility>

#include "ProcessWideManager.h"

namespace pavo::test {

namespace {

using nlohmann::json;
using Lines = std::vector<std::string>;
using Texts = std::map<std::string, std::string>;

// The lines but for empty ones; one that begins with a quotation mark continues the one before.
Lines linesOf(const std::string& text) {
  Lines lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    if (line.starts_with('"')) {
      lines.back() += line;
    } else if (!line.empty()) {
      lines.push_back(line);
    }
  }
  return lines;
}

// Takes the first word off the text.
std::string takeWord(std::string& text) {
  const std::size_t end = std::min(text.find(' '), text.size());
  std::string word = text.substr(0, end);
  text.erase(0, end + 1);
  return word;
}

using NumberSetter = void (*)(ProfileParams& params, int value);

const std::map<std::string, NumberSetter>& numberSetters() {
  using P = ProfileParams;
  static const std::map<std::string, NumberSetter> setters = {
      {"AuthType", [](P& p, int v) { p.setAuthType(static_cast<AuthType>(v)); }},
      {"HomeIPType", [](P& p, int v) { p.setHomeIPType(static_cast<IPType>(v)); }},
      {"RoamIPType", [](P& p, int v) { p.setRoamIPType(static_cast<IPType>(v)); }},
      {"ApnTypesMask", [](P& p, int v) { p.setApnTypesMask(static_cast<unsigned int>(v)); }},
      {"ApnClass", [](P& p, int v) { p.setApnClass(static_cast<ApnClass>(v)); }},
      {"IsClatEnabled", [](P& p, int v) { p.setIsClatEnabled(v != 0); }},
      {"MaxPdnsConnPerBlock", [](P& p, int v) { p.setMaxPdnsConnPerBlock(v); }},
      {"MaxPdnConnTimer", [](P& p, int v) { p.setMaxPdnConnTimer(v); }},
      {"PdnReqWaitInterval", [](P& p, int v) { p.setPdnReqWaitInterval(v); }},
      {"IsApnDisabled", [](P& p, int v) { p.setIsApnDisabled(v != 0); }},
      {"IsEmergencySupported", [](P& p, int v) { p.setIsEmergencySupported(v != 0); }},
  };
  return setters;
}

// The number whose dump is the entry: one of an enumeration's few, or a set of named bits.
int numberOf(NumberSetter set, const std::string& entry) {
  constexpr int enumeratorsMax = 5;
  constexpr int bits = 16;
  const auto dumped = [set](int value) {
    ProfileParams probe;
    set(probe, value);
    return probe.dump();
  };
  for (int value = 0; value < enumeratorsMax; ++value) {
    if (dumped(value) == entry + ",") {
      return value;
    }
  }
  int mask = 0;
  for (int bit = 0; bit < bits; ++bit) {
    const std::string text = dumped(1 << bit);
    const std::size_t name = text.find('=') + 1;
    if (entry.find(text.substr(name, text.size() - name - 1)) != std::string::npos) {
      mask |= 1 << bit;
    }
  }
  return mask;
}

ProfileParams paramsFrom(const std::string& dump) {
  ProfileParams params;
  std::istringstream entries(dump);
  for (std::string entry; std::getline(entries, entry, ',');) {
    const std::string key = entry.substr(0, entry.find('='));
    const std::string value = entry.substr(key.size() + 1);
    if (key == "ApnName") {
      params.setApnName(value);
    } else if (key == "UserName") {
      params.setUserName(value);
    } else if (key == "Password") {
      params.setPassword(value);
    } else {
      const NumberSetter set = numberSetters().at(key);
      const bool isNumber = value.find_first_not_of("0123456789") == std::string::npos;
      set(params, isNumber ? std::stoi(value) : numberOf(set, entry));
    }
  }
  EXPECT_EQ(params.dump(), dump) << "the test has misread its own text";
  return params;
}

// What a line of PolicyCase::log stands for.
Lines logLines(std::string line) {
  static const Texts calls = {{"filter", "filter"},   {"get", "getProfile"},
                              {"match", "match"},     {"add", "addProfile"},
                              {"fail", "addProfile"}, {"modify", "modifyProfile"}};
  const auto call = calls.find(line.substr(0, line.find(' ')));
  if (call == calls.end()) {
    return {line};
  }
  const std::string verb = takeWord(line);
  std::string answer;
  if (const std::size_t arrow = line.find(" ->"); arrow != std::string::npos) {
    answer = line.substr(arrow + 3);
    line.erase(arrow);
  }
  // Criteria end with a blank, also when nothing follows.
  line += line.ends_with(':') ? " " : "";
  std::string request;
  std::string response;
  if (verb == "filter") {
    request = "Filter params: " + line;
    response = "Filter Success ";
    std::istringstream numbers(answer);
    for (std::string number; numbers >> number;) {
      response += "@" + number + ",";
    }
  } else if (verb == "add") {
    request = "Add  " + line;
    response = "Add Success @+";
  } else if (verb == "fail") {
    request = "Add  " + line.substr(std::string("to add ").size());
    response = "Add Success ";
  } else {
    const std::string number = takeWord(line);
    if (verb == "get") {
      request = "Get @" + number;
      response = "Get Success %" + number;
    } else if (verb == "match") {
      request = "Match @" + number + " " + line;
      response = "Match Success" + answer;
    } else {
      request = "Modify @" + number + " " + line;
      response = "Modify Success";
    }
  }
  const std::string trace = "H Manager::" + call->second;
  return {trace + " > " + request, trace + " < " + response};
}

std::string expanded(std::string text, const Texts& texts) {
  for (const auto& [placeholder, meaning] : texts) {
    for (auto at = text.find(placeholder); at != std::string::npos;
         at = text.find(placeholder, at + meaning.size())) {
      text.replace(at, placeholder.size(), meaning);
    }
  }
  return text;
}

// One form for the same settings.
std::string normalized(const std::string& request) {
  const std::size_t at = request.find('{');
  return request.substr(0, at) + json::parse(request.substr(at)).dump();
}

// Those that the library has to keep for dumps, which tells High from Info: the Android log does
// not.
Lines keptOf(const Lines& lines) {
  Lines kept;
  for (const std::string& line : lines) {
    if (line.front() != 'D') {
      kept.push_back(line.substr(2));
    }
  }
  return kept;
}

// Those of lines, in their order, that are among the wanted.
Lines selected(const Lines& lines, const Lines& wanted) {
  const std::set<std::string> known(wanted.begin(), wanted.end());
  Lines found;
  std::copy_if(lines.begin(), lines.end(), std::back_inserter(found),
               [&](const std::string& line) { return known.count(line) > 0; });
  return found;
}

}  // namespace

PolicyTest::PolicyTest()
    : SystemTest({.profiles = nullptr, .arguments = {"--capacity", "100"}}, processWideManager) {
  connect();
}

void PolicyTest::put(const std::vector<json>& profiles) {
  for (const auto& [index, profile] : table()) {
    control("delete", {{"index", index}});
  }
  // The modem gives the lowest free index.
  for (const json& profile : profiles) {
    control("create", profile);
  }
  settle();
  refresh();
}

void PolicyTest::place(const std::vector<json>& profiles) {
  // A guess; where filters find what is looked at.
  placed.clear();
  for (std::size_t i = profiles.size(); i > 0; --i) {
    placed.push_back(static_cast<int>(i));
  }
  constexpr int attemptsMax = 5;
  for (int attempt = 0; attempt < attemptsMax; ++attempt) {
    std::vector<json> byIndex(profiles.size());
    for (std::size_t i = 0; i < profiles.size(); ++i) {
      byIndex[static_cast<std::size_t>(placed[i]) - 1] = profiles[i];
    }
    put(byIndex);
    const std::vector<int> wanted = std::exchange(placed, cacheOrder());
    if (placed == wanted) {
      return;
    }
  }
  FAIL() << "the cache's order is another one after every refresh";
}

std::vector<int> PolicyTest::cacheOrder() {
  std::vector<int> order;
  for (const Key& key : manager->filter(FilterProfileParams())) {
    order.push_back(key->getProfileId());
  }
  return order;
}

std::vector<std::string> PolicyTest::ownLinesSince(std::size_t position) {
  Lines lines;
  for (const AndroidLogLine& line : log.linesSince(position)) {
    if (line.thread == std::this_thread::get_id() && line.message != "~ProfileKey") {
      EXPECT_EQ(line.tag, "PAVO") << line.message;
      lines.push_back(std::string(1, "??VDH?E"[line.priority]) + " " + line.message);
    }
  }
  return lines;
}

std::vector<std::string> PolicyTest::requestLines() {
  Lines lines;
  for (const json& entry : transcript()) {
    if (entry["direction"] == "in" && entry["kind"] == "request") {
      json fields = entry["fields"];
      const std::string message = entry["message"];
      std::string line = message.substr(0, message.find("-profile"));
      if (fields.contains("profile")) {
        line += " " + fields["profile"]["index"].dump();
      }
      fields.erase("profile");
      fields.erase("type");
      lines.push_back(line + " " + fields.dump());
    }
  }
  return lines;
}

void PolicyTest::expectTable(ModemTable expected, const std::vector<std::string>& requests) {
  for (const std::string& request : requests) {
    const json settings = json::parse(request.substr(request.find('{')));
    int index = static_cast<int>(expected.size()) + 1;
    std::sscanf(request.c_str(), "modify %d", &index);
    expected[index].update(settings);
  }
  EXPECT_EQ(table(), expected);
}

void PolicyTest::expectCases(const Policy& policy, const std::vector<PolicyCase>& cases) {
  for (const PolicyCase& c : cases) {
    expectCase(policy, c, c.log);
  }
}

void PolicyTest::expectCases(const std::string& name, KeyPolicy policy,
                             const std::vector<PolicyCase>& cases) {
  for (const PolicyCase& c : cases) {
    expectCase(
        [this, policy](Util& util, const Params& params) {
          held = (util.*policy)(params.front());
          return held != nullptr ? held->dump() : "";
        },
        c, "H " + name + " > $1\n" + c.log + "\nH " + name + " < " + c.result);
  }
}

Texts PolicyTest::textsOfPlaced() {
  const ModemTable profiles = table();
  Texts texts;
  int number = 0;
  for (const Key& key : manager->filter(FilterProfileParams())) {
    const std::string suffix = std::to_string(++number);
    texts["#" + suffix] = std::to_string(key->getProfileId());
    texts["@" + suffix] = key->dump();
    texts["%" + suffix] = paramsOf(profiles.at(key->getProfileId())).dump();
  }
  return texts;
}

void PolicyTest::expectCase(const Policy& policy, const PolicyCase& c, const std::string& logText) {
  SCOPED_TRACE(std::string(c.name) + (c.isUpdateAllowed ? ", updates allowed\n" : "\n") + c.modem +
               "\n" + c.params);
  std::vector<json> profiles;
  for (const std::string& line : linesOf(c.modem)) {
    profiles.push_back(json::parse(line));
  }
  ASSERT_NO_FATAL_FAILURE(place(profiles));
  const ModemTable before = table();
  Texts texts = textsOfPlaced();
  Params params;
  for (const std::string& line : linesOf(c.params)) {
    params.push_back(paramsFrom(line));
    texts["$" + std::to_string(params.size())] = line;
  }
  if (c.refused != nullptr) {
    control("fail", {{"message", c.refused}, {"error", 3}, {"count", 8}});
  }
  Util util;
  util.setProfileUpdateAllowed(c.isUpdateAllowed);
  control("clear-transcript");

  const std::size_t position = log.end();
  const std::string result = policy(util, params);
  const Lines lines = ownLinesSince(position);
  const Lines kept = keptLogFrom(lines.empty() ? "" : lines.front().substr(2));

  // Of a profile that is created, only its line tells the token.
  const std::string added = "H Manager::addProfile < Add Success ";
  for (const std::string& line : lines) {
    if (line.starts_with(added + std::to_string(before.size() + 1) + " token=")) {
      texts["@+"] = line.substr(added.size());
    }
  }
  Lines expected;
  for (const std::string& line : linesOf(logText)) {
    for (const std::string& text : logLines(line)) {
      expected.push_back(expanded(text, texts));
    }
  }
  EXPECT_EQ(lines, expected);
  EXPECT_EQ(selected(kept, keptOf(expected)), keptOf(expected)) << "what the library keeps";
  EXPECT_EQ(result, expanded(c.result, texts));
  Lines requests;
  for (const std::string& line : linesOf(c.requests)) {
    requests.push_back(normalized(expanded(line, texts)));
  }
  EXPECT_EQ(requestLines(), requests);
  expectTable(before, c.refused == nullptr ? requests : Lines());
  control("clear");
  expectCacheEqualsTable();
  expectNothingPending();
  held.reset();
}

}  // namespace pavo::test
