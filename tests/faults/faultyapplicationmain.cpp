// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "faultyapplication.h"

#include <cstdio>
#include <exception>

int main()
try {
    return FaultyApplication().run();
} catch (const std::exception &error) {
    std::fprintf(stderr, "faultyapplication: %s\n", error.what());
    return 1;
}
