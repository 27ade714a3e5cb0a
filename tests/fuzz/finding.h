// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_FINDING_H
#define TESTS_FINDING_H

#include <string>

/** Says what does not hold, and ends the process so that the input at hand is kept as a finding. */
[[noreturn]] void reportFinding(const std::string &what);

/** Reports `what` as a finding unless `holds`. */
inline void require(bool holds, const char *what)
{
    if (!holds)
        reportFinding(what);
}

#endif
