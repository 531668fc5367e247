// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

// Marks what libpavor.so exports. Everything else in it is hidden. Clients do not define it; it
// needs g++ or clang.
#define PAVO_API __attribute__((visibility("default")))
