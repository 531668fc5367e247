// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The functions with which each room declares its verbs.
#pragma once

#include "VerbRegistry.h"

namespace pavoctl {

void declareList(VerbRegistry& verbs);
void declareProfileVerbs(VerbRegistry& verbs);  // get, add, modify, delete
void declarePolicies(VerbRegistry& verbs);
void declareLibraryVerbs(VerbRegistry& verbs);  // refresh, dump, watch
void declareInspection(VerbRegistry& verbs);    // verify, usage
void declareImport(VerbRegistry& verbs);
void declareShell(VerbRegistry& verbs);
void declareShellVerbs(VerbRegistry& verbs);  // the verbs that exist in the shell only, as keys

}  // namespace pavoctl
