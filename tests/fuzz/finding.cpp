// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "finding.h"

#include <cstdio>
#include <cstdlib>

void reportFinding(const std::string &what)
{
    std::fprintf(stderr, "FINDING: %s\n", what.c_str());
    std::abort();
}
