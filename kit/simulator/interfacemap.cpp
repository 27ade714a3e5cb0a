// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "interfacemap.h"

#include "typedvalue.h"

static const QStringList shortNames
    = {QStringLiteral("Call1"), QStringLiteral("DTMF1"), QStringLiteral("AudioControl1")};

QString interfaceName(const QString &word)
{
    return shortNames.contains(word) ? QStringLiteral("zelkovar.Call.") + word : word;
}

QString interfaceFault(const QString &word)
{
    if (dottedNameFault(interfaceName(word)).isEmpty())
        return {};
    return QStringLiteral("\"%1\" is no interface; there are %2, and full names with dots")
        .arg(word, shortNames.join(QStringLiteral(", ")));
}

static QString readProperty(const QString &word, int equals, QVariantMap *properties)
{
    QVariant value;
    const QString error = readValue(word.mid(equals + 1), &value);
    if (error.isEmpty())
        properties->insert(word.left(equals), value);
    return error;
}

QString readInterfaces(const QStringList &words, BusInterfaceMap *interfaces)
{
    QString current;
    QString error;
    for (const QString &word : words) {
        const int equals = word.indexOf(QLatin1Char('='));
        if (equals < 0) {
            error = interfaceFault(word);
            current = interfaceName(word);
            interfaces->insert(current, {});
        } else if (current.isEmpty()) {
            error = QStringLiteral("\"%1\" belongs to no interface; name one before it").arg(word);
        } else {
            error = readProperty(word, equals, &(*interfaces)[current]);
        }
        if (!error.isEmpty())
            return error;
    }
    return {};
}
