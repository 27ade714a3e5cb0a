// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef CALLCTL_FAILURE_H
#define CALLCTL_FAILURE_H

#include <QtCore/QString>
#include <stdexcept>

/** What the program's exit tells; listed in --help. */
enum class ExitCode { Success = 0, NotDone = 1, WrongCommandLine = 2, NoHost = 3, NoSuchCall = 4 };

/** Ends the command with a reason for people, and an exit code. */
class Failure : public std::runtime_error
{
public:
    Failure(ExitCode code, const QString &reason) : std::runtime_error(reason.toStdString()), m_code(code) { }

    ExitCode code() const { return m_code; }
    QString reason() const { return QString::fromUtf8(what()); }

private:
    ExitCode m_code;
};

#endif
