// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "scenarios.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTextStream>

static const QString folder = QStringLiteral(":/scenarios/");
static const QString suffix = QStringLiteral(".script");

QStringList Scenarios::names()
{
    QStringList names;
    for (const QString &file : QDir(folder).entryList({QLatin1Char('*') + suffix}, QDir::Files))
        names.append(file.chopped(suffix.size()));
    names.sort();
    return names;
}

QString Scenarios::file(const QString &name) { return folder + name + suffix; }

// The first comment that is not about the file's licence.
static QString description(const QString &name)
{
    QFile file(Scenarios::file(name));
    file.open(QIODevice::ReadOnly);
    QTextStream stream(&file);
    stream.setCodec("UTF-8");
    QString line = stream.readLine();
    while (!stream.atEnd() && (line.isEmpty() || line.contains(QLatin1String("SPDX-"))))
        line = stream.readLine();
    return line.mid(1).trimmed();
}

QString Scenarios::list()
{
    const QStringList all = names();
    int width = 0;
    for (const QString &name : all)
        width = qMax(width, name.size());
    QStringList lines;
    for (const QString &name : all)
        lines.append(QStringLiteral("%1  %2").arg(name, -width).arg(description(name)));
    return lines.join(QLatin1Char('\n'));
}
