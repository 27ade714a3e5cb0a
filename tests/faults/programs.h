// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_PROGRAMS_H
#define TESTS_PROGRAMS_H

#include <QtCore/QString>

/** Files that the build has made, and the documentation. */
namespace Programs {

QString voicecalld();
QString plugin();
QString pathTaker();
QString simulator();
QString faultyApplication();
/** The page that advises limits. */
QString limitsPage();

} // namespace Programs

/** Whether this build has sanitizers: they make a program larger and slower than it is. */
#ifdef __SANITIZE_ADDRESS__
constexpr bool isSanitized = true;
#else
constexpr bool isSanitized = false;
#endif

#endif
