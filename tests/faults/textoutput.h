// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_TEXTOUTPUT_H
#define TESTS_TEXTOUTPUT_H

#include <QtCore/QString>
#include <ostream>

/** Lets the reason of a failure be told with texts of Qt. */
inline std::ostream &operator<<(std::ostream &stream, const QString &text) { return stream << text.toStdString(); }

#endif
