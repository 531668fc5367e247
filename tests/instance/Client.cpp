// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This client is a shared object of its own.
#include <pavo/Manager.h>

extern "C" PAVO_API const void* clientInstance() { return &pavo::Manager::getInstance(); }
