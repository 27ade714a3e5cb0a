// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_PRINTERS_H
#define TESTS_PRINTERS_H

#include <QtCore/QString>
#include <QtCore/QtDebug>
#include <ostream>

/** Lets a failed expectation show text as text; found by GoogleTest through the type. */
inline void PrintTo(const QString &text, std::ostream *stream)
{
    QString quoted;
    QDebug(&quoted).nospace() << text;
    *stream << quoted.toStdString();
}

#endif
