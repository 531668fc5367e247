// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include <benchmark/benchmark.h>

BENCHMARK_MAIN();
