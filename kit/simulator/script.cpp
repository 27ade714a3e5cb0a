// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "script.h"

#include "scriptrunner.h"
#include "words.h"

#include <QtCore/QFile>
#include <QtCore/QTextStream>

QString Script::load(const QString &file, const QString &name)
{
    m_name = name;
    QFile device(file);
    if (!device.open(QIODevice::ReadOnly | QIODevice::Text))
        return QStringLiteral("cannot read the script %1: %2").arg(name, device.errorString());
    QTextStream stream(&device);
    stream.setCodec("UTF-8");
    for (int number = 1; !stream.atEnd(); ++number) {
        const QString error = readLine(stream.readLine(), number);
        if (!error.isEmpty())
            return error;
    }
    return {};
}

QString Script::readLine(const QString &text, int number)
{
    Statement statement{number, {}};
    if (text.trimmed().startsWith(QLatin1Char('#')))
        return {};
    if (!splitWords(text, &statement.words))
        return place(statement) + QStringLiteral("a quote is not closed");
    if (statement.words.isEmpty())
        return {};
    const QString fault = ScriptRunner::fault(statement.words);
    if (!fault.isEmpty())
        return place(statement) + fault;
    m_statements.append(statement);
    return {};
}

QString Script::place(const Statement &statement) const
{
    return QStringLiteral("%1:%2: ").arg(m_name).arg(statement.line);
}
