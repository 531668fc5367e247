// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// What a policy did, or would do, in JSON and in text.
#pragma once

#include "CommandLine.h"
#include "policies/PolicyRecorder.h"
#include "policies/StepText.h"

namespace pavoctl {

class PolicyReport {
 public:
  // All three outlive it.
  PolicyReport(const CommandLine& commandLine, const PolicyCall& policyCall,
               const PolicyOutcome& told);

  Json json() const;
  std::string text() const;
  // One line on what the modem refused; empty when it refused nothing.
  std::string refusals() const;

 private:
  std::string headingText() const;
  std::string resultText() const;
  std::string fateText() const;
  std::string answerText() const;
  std::string editsText() const;

  const CommandLine& line;
  const PolicyCall& call;
  const PolicyOutcome& outcome;
  const Telling telling;
  Json profile;  // The result's; null when there is none.
  Json edits = Json::array();
};

}  // namespace pavoctl
