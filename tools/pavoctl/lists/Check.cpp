// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "lists/Check.h"

#include "Context.h"
#include "Text.h"
#include "lists/ApnCheck.h"
#include "profiles/Profile.h"

namespace pavoctl {

ExitStatus checkFile(const CommandLine& line, Context& context) {
  const XmlElement root = readApnXml(line.file);
  const auto entries = apnFileOf(root).entries;
  const auto findings = checkApnList(root, entries);
  if (line.isJson) {
    Json list = Json::array();
    for (const auto& finding : findings) {
      list.push_back(
          Json{{"line", finding.line}, {"kind", finding.kind}, {"finding", finding.text}});
    }
    context.output.line(
        dumpJson(Json{{"entries", entries.size()}, {"findings", list}}, /*indent=*/2));
  } else {
    for (const auto& finding : findings) {
      context.output.line(printable(line.file) + ":" + std::to_string(finding.line) + ": " +
                          printable(finding.text));
    }
    context.output.line(std::to_string(entries.size()) + " entries, " +
                        std::to_string(findings.size()) + " findings");
  }
  return findings.empty() ? exitDone : exitFailed;
}

}  // namespace pavoctl
